// The typed input stream: whatever the bytes, every operator gives what a plain reference gives, and leaves the rest
// of the bytes to the next.
//
// The first byte tells how many operators there are and what pieces the source gives, the bytes behind it which; all
// others are read by them.
#include <Infrastructure/OxaCore/io/DataStreams.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "FuzzTarget.h"
#include "MemorySource.h"

namespace {

using namespace Oxa::Core;
using namespace OxaFuzz;

constexpr std::size_t uLONGEST = 100000;  // text; a longer one only takes memory

// The bytes that the stream should still have.
class Reference {
 public:
  explicit Reference(std::string bytes) : m_sBytes(std::move(bytes)) {}

  /// Replaces the first of the `size` bytes at `value` by those that are there.
  void Take(void* value, std::size_t size) {
    const std::size_t got = std::min(size, m_sBytes.size() - m_uAt);
    if (got > 0) std::memcpy(value, m_sBytes.data() + m_uAt, got);
    m_uAt += got;
  }

  /// The length of the text that comes next.
  std::size_t PeekLength() {
    unsigned char bytes[4] = {};
    const std::size_t before = m_uAt;
    Take(bytes, sizeof bytes);
    m_uAt = before;
    return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | std::size_t(bytes[3]) << 24;
  }

  std::size_t Left() const { return m_sBytes.size() - m_uAt; }

 private:
  const std::string m_sBytes;
  std::size_t m_uAt = 0;
};

template <class Value>
Value Preset() {
  Value value;
  std::memset(&value, 1, sizeof value);
  return value;
}

struct Run {
  DataInputStream in;
  Reference reference;

  // A number of `Size` bytes on the stream, widened with its sign where the variable is larger.
  template <class Value, class Wire = Value>
  bool Number() {
    Value value = Preset<Value>();
    in >> value;
    Wire expected = Preset<Wire>();
    const bool whole = reference.Left() >= sizeof(Wire);
    reference.Take(&expected, sizeof expected);
    const Value wide = static_cast<Value>(expected);
    Check(!whole || std::memcmp(&wide, &value, sizeof value) == 0, "a number is that of its bytes");
    return true;
  }

  // Behind a cut-off one there is nothing more.
  template <class Value>
  bool Character() {
    Value value = 7;
    const bool there = reference.Left() > 0;
    try {
      in >> value;
    } catch (const XIOEndOfStream&) {
      Check(!there && value == 7, "the end of the stream is told where it is, and nowhere else");
      return false;
    }
    Check(there, "the end of the stream is told");
    Value expected = 0;
    reference.Take(&expected, 1);
    Check(value == expected, "a character is its byte");
    return true;
  }

  bool Bool() {
    bool value = true;
    in >> value;
    unsigned char expected = 1;
    reference.Take(&expected, 1);
    Check(value == (expected != 0), "a bool is false only of the byte 0");
    return true;
  }

  bool String() {
    const std::size_t length = reference.PeekLength();
    if (length > uLONGEST) return false;
    std::string value = "before";
    in >> value;
    unsigned char skipped[4];
    reference.Take(skipped, sizeof skipped);
    std::string expected(length, '\0');
    reference.Take(expected.data(), length);
    CheckSame(expected, value, "a text has its length and its bytes");
    return true;
  }

  bool WString() {
    const std::size_t length = reference.PeekLength();
    if (length > uLONGEST) return false;
    std::wstring value = L"before";
    in >> value;
    unsigned char skipped[4];
    reference.Take(skipped, sizeof skipped);
    std::string bytes(2 * length, '\0');
    reference.Take(bytes.data(), bytes.size());
    Check(Joined(bytes) == value, "a wide text has its code units, pairs joined");
    return true;
  }

  static std::wstring Joined(const std::string& bytes) {
    std::wstring text;
    const auto unit = [&bytes](std::size_t at) {
      return static_cast<unsigned>(static_cast<unsigned char>(bytes[2 * at]) |
                                   static_cast<unsigned char>(bytes[2 * at + 1]) << 8);
    };
    const std::size_t count = bytes.size() / 2;
    for (std::size_t at = 0; at < count; ++at) {
      const unsigned high = unit(at);
      const bool pair = high >= 0xD800 && high < 0xDC00 && at + 1 < count && unit(at + 1) >= 0xDC00 &&
                        unit(at + 1) < 0xE000;
      text += static_cast<wchar_t>(pair ? 0x10000 + ((high - 0xD800) << 10) + (unit(at + 1) - 0xDC00) : high);
      at += pair ? 1 : 0;
    }
    return text;
  }

  /// False if there is no more to be done.
  bool Step(unsigned operation) {
    switch (operation % 18) {
      case 0:
        return Character<char>();
      case 1:
        return Character<signed char>();
      case 2:
        return Character<unsigned char>();
      case 3:
        return Bool();
      case 4:
        return Number<short>();
      case 5:
        return Number<unsigned short>();
      case 6:
        return Number<int>();
      case 7:
        return Number<unsigned int>();
      case 8:
        return Number<long, int>();
      case 9:
        return Number<unsigned long, unsigned int>();
      case 10:
        return Number<long long>();
      case 11:
        return Number<unsigned long long>();
      case 12:
        return Number<float>();
      case 13:
        return Number<double>();
      case 14:
      case 15:
        return String();
      default:
        return WString();
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  if (size == 0) return 0;
  const std::size_t operations = std::min<std::size_t>(data[0] % 32, size - 1);
  const std::string bytes(reinterpret_cast<const char*>(data) + 1 + operations, size - 1 - operations);
  MemorySource source(bytes, 1 + data[0] / 32);
  Run run{DataInputStream(source), Reference(bytes)};
  for (std::size_t i = 0; i < operations; ++i)
    if (!run.Step(data[1 + i])) return 0;
  Check(source.AvailableBytes() == run.reference.Left(), "what wasn't asked for is still there");
  return 0;
}
