#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include "io/CodeUnits.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.DataInputStream";
constexpr char sTEXT_IN_MEMORY[] = " bytes for a string from the stream";

constexpr std::size_t uSHORT_TEXT = 256;  // bytes; a text of one less stays on the stack

// Goes on after a first read of `got`. Gives how many bytes from the buffer's front on came from the source. That
// isn't `total`, which every result below 0 takes something off.
unsigned long long GatherOn(BinaryInputStream& source, void* buffer, unsigned long long count,
                            long long got) {
  auto total = static_cast<unsigned long long>(got);
  unsigned long long filled = got > 0 ? std::min(total, count) : 0;
  while (total < count) {
    got = source.Read(static_cast<unsigned char*>(buffer) + total, static_cast<long long>(count - total));
    total += static_cast<unsigned long long>(got);
    if (got > 0) filled = std::max(filled, std::min(total, count));
  }
  return filled;
}

// What comes in one piece has its own short way.
inline unsigned long long Gather(BinaryInputStream& source, void* buffer, unsigned long long count) {
  if (count == 0) return 0;
  const long long got = source.Read(buffer, static_cast<long long>(count));
  if (got == static_cast<long long>(count)) return count;
  return GatherOn(source, buffer, count, got);
}

void RaiseAllocationFailed(unsigned long long bytes) {
  OXA_RAISE_ERROR(sLOG_NAME, AllocationFailed(std::to_string(bytes) + sTEXT_IN_MEMORY));
}

template <class Text>
void MakeRoom(Text& text, std::size_t length) {
  if (text.capacity() < length) text.reserve(length);
}

// Makes `text` of `length` characters, of which `filled` bytes came. Without memory it stays as it is.
void Assign(std::string& text, const char* units, std::size_t filled, std::size_t length) {
  MakeRoom(text, length);
  text.assign(units, filled);
  if (filled < length) text.resize(length);
}

// The same for code units. One of which half came counts as come, with its other half 0.
void Assign(std::wstring& text, char16_t* units, std::size_t filled, std::size_t length) {
  MakeRoom(text, length);
  if (filled % 2 != 0) reinterpret_cast<char*>(units)[filled] = 0;
  const std::size_t came = (filled + 1) / 2;
  text.resize(came);
  text.resize(JoinUnits(units, came, text.data()));
  text.resize(text.size() + (length - came));
}

template <class Text, class Unit>
void ReadInto(BinaryInputStream& source, Text& text, Unit* units, std::size_t length) {
  const unsigned long long filled = Gather(source, units, length * sizeof(Unit));
  try {
    Assign(text, units, static_cast<std::size_t>(filled), length);
  } catch (const std::bad_alloc&) {
    RaiseAllocationFailed(length * sizeof(Unit));
  }
}

template <class Unit, class Text>
void ReadText(BinaryInputStream& source, Text& text) {
  std::uint32_t length = 0;
  Gather(source, &length, sizeof length);
  if (length < uSHORT_TEXT / sizeof(Unit)) {
    Unit units[uSHORT_TEXT / sizeof(Unit)];
    return ReadInto(source, text, units, length);
  }
  const std::unique_ptr<Unit[]> units(new (std::nothrow) Unit[length]);
  if (!units) return RaiseAllocationFailed(std::size_t(length) * sizeof(Unit));
  ReadInto(source, text, units.get(), length);
}

}  // namespace

DataInputStream::DataInputStream(BinaryInputStream& source) : BinaryInputStreamFilter(source) {}
DataInputStream::~DataInputStream() = default;

void DataInputStream::ReadFully(void* buffer, unsigned long long count) { Gather(*m_source, buffer, count); }

void DataInputStream::ReadOn(void* buffer, unsigned long long count, long long got) {
  GatherOn(*m_source, buffer, count, got);
}

template <class T>
inline DataInputStream& DataInputStream::TakeChar(T& value) {
  const int byte = m_source->Read();
  if (byte >= 0) {
    value = static_cast<T>(byte);
  } else {
    OXA_RAISE_ERROR(sLOG_NAME, XIOEndOfStream(0, 1));
  }
  return *this;
}

// By a variable of the width that the stream has; the caller's stays whole if nothing comes.
template <class OnStream, class T>
inline DataInputStream& DataInputStream::TakeNarrowed(T& value) {
  auto narrow = static_cast<OnStream>(value);
  if (Gather(*m_source, &narrow, sizeof narrow) != 0) value = narrow;
  return *this;
}

DataInputStream& DataInputStream::operator>>(signed char& value) { return TakeChar(value); }
DataInputStream& DataInputStream::operator>>(char& value) { return TakeChar(value); }
DataInputStream& DataInputStream::operator>>(unsigned char& value) { return TakeChar(value); }
DataInputStream& DataInputStream::operator>>(long& value) { return TakeNarrowed<std::int32_t>(value); }
DataInputStream& DataInputStream::operator>>(unsigned long& value) {
  return TakeNarrowed<std::uint32_t>(value);
}

// A bool of another value than 0 and 1 would be none.
DataInputStream& DataInputStream::operator>>(bool& value) {
  auto byte = static_cast<unsigned char>(value);
  ReadFully(&byte, sizeof byte);
  value = byte != 0;
  return *this;
}

DataInputStream& DataInputStream::operator>>(std::string& value) {
  ReadText<char>(*m_source, value);
  return *this;
}

DataInputStream& DataInputStream::operator>>(std::wstring& value) {
  ReadText<char16_t>(*m_source, value);
  return *this;
}

}  // namespace Oxa::Core
