#if defined(__x86_64__)

#include "Platform/Linux/DumpFile.h"

#include <errno.h>
#include <string.h>
#include <time.h>

#include <algorithm>

#include "Platform/Linux/RawCall.h"
#include "Platform/Linux/Utf16.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t uMEMORY_AT_ONCE = 1U << 20U;

alignas(16) char s_scratch[DumpFile::uSCRATCH];

long Signed(std::uint64_t value) noexcept { return static_cast<long>(value); }

}  // namespace

std::int64_t DumpClock() noexcept {
  timespec now = {};
  RawCall(SYS_clock_gettime, CLOCK_MONOTONIC, RawArgument(&now));
  return now.tv_sec * 1000000000LL + now.tv_nsec;
}

char* DumpFile::Scratch() noexcept { return s_scratch; }

void DumpFile::Start(int handle, std::uint64_t contents, std::uint32_t time) noexcept {
  m_iHandle = handle;
  m_bFailed = false;
  m_uFlushed = 0;
  m_uBuffered = 0;
  m_uWhole = 0;
  m_header = {Minidump::uSIGNATURE, Minidump::uVERSION, 0, sizeof(Minidump::Header), 0, time, contents};
  memset(m_streams, 0, sizeof m_streams);
  AppendValue(m_header);
  Append(m_streams, sizeof m_streams);
}

void DumpFile::Append(const void* bytes, std::size_t size) noexcept {
  const char* from = static_cast<const char*>(bytes);
  while (size > 0) {
    const std::size_t part = std::min(size, uBUFFER - m_uBuffered);
    memcpy(m_buffer + m_uBuffered, from, part);
    m_uBuffered += part;
    from += part;
    size -= part;
    if (m_uBuffered == uBUFFER) Flush();
  }
}

std::uint32_t DumpFile::Align() noexcept {
  static const char zeros[8] = {};
  Append(zeros, (8 - Position() % 8) % 8);
  return static_cast<std::uint32_t>(Position());
}

void DumpFile::Flush() noexcept {
  if (!m_bFailed) WriteAt(m_uFlushed, m_buffer, m_uBuffered);
  m_uFlushed += m_uBuffered;
  m_uBuffered = 0;
}

// Memory that can't be read ends it, and is no failure of the file.
std::uint64_t DumpFile::WriteAt(std::uint64_t position, const char* bytes, std::uint64_t size) noexcept {
  std::uint64_t done = 0;
  while (done < size) {
    const long written = RawCall(SYS_pwrite64, m_iHandle, RawArgument(bytes + done), Signed(size - done),
                                 Signed(position + done));
    if (written > 0) {
      done += static_cast<std::uint64_t>(written);
    } else if (written == -EFAULT) {
      break;
    } else if (written != -EINTR) {
      m_bFailed = true;
      break;
    }
  }
  if (position <= m_uWhole) m_uWhole = std::max(m_uWhole, position + done);
  return done;
}

std::uint64_t DumpFile::AppendMemory(std::uint64_t address, std::uint64_t size) noexcept {
  Flush();
  const char* const from = reinterpret_cast<const char*>(address);
  std::uint64_t done = 0;
  while (done < size && !m_bFailed) {
    const std::uint64_t part = std::min(size - done, uMEMORY_AT_ONCE);
    const std::uint64_t written = WriteAt(m_uFlushed, from + done, part);
    m_uFlushed += written;
    done += written;
    if (written < part) break;
  }
  return done;
}

std::uint64_t DumpFile::AppendContent(int handle, std::uint64_t most) noexcept {
  std::uint64_t done = 0;
  while (done < most && !m_bFailed) {
    const long read = RawCall(SYS_read, handle, RawArgument(s_scratch),
                              Signed(std::min<std::uint64_t>(uSCRATCH, most - done)));
    if (read == -EINTR) continue;
    if (read <= 0) break;
    Append(Scratch(), static_cast<std::size_t>(read));
    done += static_cast<std::uint64_t>(read);
  }
  return done;
}

std::uint32_t DumpFile::AppendText(const char* text) noexcept {
  const std::uint32_t place = Align();
  std::uint32_t bytes = 0;
  AppendValue(bytes);
  char16_t units[2];
  while (*text != 0) {
    const std::size_t count = NextUtf16(text, units);
    Append(units, count * sizeof units[0]);
    bytes += static_cast<std::uint32_t>(count * sizeof units[0]);
  }
  AppendValue(char16_t{0});
  Patch(place, &bytes, sizeof bytes);
  return place;
}

void DumpFile::Patch(std::uint64_t position, const void* bytes, std::size_t size) noexcept {
  if (position >= m_uFlushed && position + size <= Position()) {
    memcpy(m_buffer + (position - m_uFlushed), bytes, size);
    return;
  }
  Flush();
  // What is there can be written over on a full disk too.
  if (position + size <= m_uWhole) WriteAt(position, static_cast<const char*>(bytes), size);
}

bool DumpFile::ReadBack(std::uint64_t position, void* bytes, std::size_t size) noexcept {
  Flush();
  char* const to = static_cast<char*>(bytes);
  std::size_t done = 0;
  while (done < size) {
    const long read =
        RawCall(SYS_pread64, m_iHandle, RawArgument(to + done), Signed(size - done), Signed(position + done));
    if (read == -EINTR) continue;
    if (read <= 0) return false;
    done += static_cast<std::size_t>(read);
  }
  return true;
}

Minidump::Directory* DumpFile::FindStream(std::uint32_t type) noexcept {
  Minidump::Directory* const end = m_streams + m_header.m_uStreams;
  Minidump::Directory* const found =
      std::find_if(m_streams, end, [type](const auto& stream) { return stream.m_uType == type; });
  if (found != end) return found;
  if (m_header.m_uStreams == uSTREAMS) return nullptr;
  ++m_header.m_uStreams;
  return end;
}

void DumpFile::AddStream(std::uint32_t type, std::uint32_t position) noexcept {
  AddStream(type, position, Position() - position);
}

void DumpFile::AddStream(std::uint32_t type, std::uint32_t position, std::uint64_t size) noexcept {
  Minidump::Directory* const stream = FindStream(type);
  if (stream != nullptr) *stream = {type, {static_cast<std::uint32_t>(size), position}};
}

void DumpFile::Publish() noexcept {
  Flush();
  if (m_uWhole >= sizeof m_header + sizeof m_streams) WriteTable();
}

// Streams that the file has no room for would make it unreadable: they are left out.
void DumpFile::WriteTable() noexcept {
  Minidump::Header header = m_header;
  Minidump::Directory streams[uSTREAMS] = {};
  header.m_uStreams = 0;
  for (std::uint32_t i = 0; i < m_header.m_uStreams; ++i) {
    const Minidump::Location& where = m_streams[i].m_location;
    if (std::uint64_t{where.m_uPosition} + where.m_uSize <= m_uWhole)
      streams[header.m_uStreams++] = m_streams[i];
  }
  WriteAt(sizeof header, reinterpret_cast<const char*>(streams), sizeof streams);
  WriteAt(0, reinterpret_cast<const char*>(&header), sizeof header);
}

}  // namespace Oxa::Core::Platform

#endif
