// The file that a dump is written into: through a small buffer in static storage, with its table of streams.
#ifndef OXACORE_PLATFORM_LINUX_DUMPFILE_H
#define OXACORE_PLATFORM_LINUX_DUMPFILE_H

#include <cstddef>
#include <cstdint>

#include "Platform/Linux/DumpFormat.h"

namespace Oxa::Core::Platform {

/// The monotonic clock in nanoseconds.
std::int64_t DumpClock() noexcept;

/// Trivial and made for static storage. Once a write has failed (a full disk) the rest is nothing but counting;
/// what is in the file stays of use. Allocates nothing.
class DumpFile {
 public:
  /// Begins at the file's start, with room for the header and the table of streams.
  void Start(int handle, std::uint64_t contents, std::uint32_t time) noexcept;

  bool HasFailed() const noexcept { return m_bFailed; }

  /// Where the next byte goes.
  std::uint64_t Position() const noexcept { return m_uFlushed + m_uBuffered; }

  void Append(const void* bytes, std::size_t size) noexcept;
  template <class Value>
  void AppendValue(const Value& value) noexcept {
    Append(&value, sizeof value);
  }

  /// Puts zero bytes up to a multiple of 8, and gives that place.
  std::uint32_t Align() noexcept;

  /// Appends the process's own memory, without looking at it first, and gives how much of it could be read and
  /// written.
  std::uint64_t AppendMemory(std::uint64_t address, std::uint64_t size) noexcept;

  /// Appends all bytes of an open file, up to `most`. Gives their number.
  std::uint64_t AppendContent(int handle, std::uint64_t most) noexcept;

  /// Text in the form of the format: its length, UTF-16, and an end. Gives its place.
  std::uint32_t AppendText(const char* text) noexcept;

  /// Writes over what is there.
  void Patch(std::uint64_t position, const void* bytes, std::size_t size) noexcept;

  /// Reads back what is there; false if it isn't.
  bool ReadBack(std::uint64_t position, void* bytes, std::size_t size) noexcept;

  /// Enters a stream into the table, or changes its size. From `position` to the end, or `size` bytes.
  void AddStream(std::uint32_t type, std::uint32_t position) noexcept;
  void AddStream(std::uint32_t type, std::uint32_t position, std::uint64_t size) noexcept;

  /// Brings the file to the state of this moment: whatever happens from now on, so much can be read.
  void Publish() noexcept;

  /// Scratch memory for the steps of a dump, between two of their calls.
  static constexpr std::size_t uSCRATCH = 16384;
  static char* Scratch() noexcept;

 private:
  static constexpr std::size_t uBUFFER = 32768;
  static constexpr std::size_t uSTREAMS = 32;

  void Flush() noexcept;
  void WriteTable() noexcept;
  std::uint64_t WriteAt(std::uint64_t position, const char* bytes, std::uint64_t size) noexcept;
  Minidump::Directory* FindStream(std::uint32_t type) noexcept;

  int m_iHandle;
  bool m_bFailed;
  std::uint64_t m_uFlushed;
  std::size_t m_uBuffered;
  std::uint64_t m_uWhole;  // so much of the file is there without a gap
  Minidump::Header m_header;
  Minidump::Directory m_streams[uSTREAMS];
  char m_buffer[uBUFFER];
};

}  // namespace Oxa::Core::Platform

#endif
