#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <cstdint>
#include <memory>
#include <new>

#include "io/CodeUnits.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.DataOutputStream";
constexpr char sVALUE[] = "value";
constexpr char sTEXT_IN_MEMORY[] = " bytes for a string on its way to the stream";

constexpr std::size_t uSHORT_TEXT = 128;  // code units; one less stays on the stack

// The stream has room for the low 32 bits of a length.
std::uint32_t LengthOnStream(std::size_t length) { return static_cast<std::uint32_t>(length); }

}  // namespace

DataOutputStream::DataOutputStream(BinaryOutputStream& sink) : BinaryOutputStreamFilter(sink) {}
DataOutputStream::~DataOutputStream() = default;

template <class OnStream, class T>
inline DataOutputStream& DataOutputStream::PutNarrowed(T value) {
  const OnStream narrow = static_cast<OnStream>(value);
  if (narrow == value) return Put(narrow);
  OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sVALUE, value));
  return *this;
}

DataOutputStream& DataOutputStream::operator<<(long value) { return PutNarrowed<std::int32_t>(value); }
DataOutputStream& DataOutputStream::operator<<(unsigned long value) {
  return PutNarrowed<std::uint32_t>(value);
}

DataOutputStream& DataOutputStream::operator<<(const std::string& value) {
  const std::uint32_t length = LengthOnStream(value.size());
  Put(length);
  if (length != 0) Write(value.data(), length);
  return *this;
}

DataOutputStream& DataOutputStream::operator<<(const std::wstring& value) {
  std::size_t units = 0;
  if (const wchar_t* const odd = CountUnits(value, units)) {
    OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sVALUE, static_cast<long long>(*odd)));
    return *this;
  }
  const std::uint32_t length = LengthOnStream(units);
  if (length < uSHORT_TEXT) {
    char16_t text[uSHORT_TEXT];
    WriteUnits(value, text, length);
    return *this;
  }
  const std::unique_ptr<char16_t[]> text(new (std::nothrow) char16_t[length]);
  if (!text) {
    OXA_RAISE_ERROR(sLOG_NAME, AllocationFailed(std::to_string(2ULL * length) + sTEXT_IN_MEMORY));
    return *this;
  }
  WriteUnits(value, text.get(), length);
  return *this;
}

void DataOutputStream::WriteUnits(const std::wstring& value, char16_t* text, unsigned int length) {
  SplitIntoUnits(value, text, length);
  Put(length);
  if (length != 0) Write(text, 2ULL * length);
}

}  // namespace Oxa::Core
