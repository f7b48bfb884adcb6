#include "AutoTest/Module/StreamValues.h"

#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <string>

namespace Oxa::Core {

namespace {

const char* const sWORD = "value";
const wchar_t* const sWIDE_WORD = L"value";
// The longest that a stream reads without allocating, and the shortest that it allocates for.
constexpr std::size_t aTEXT_SIZES[] = {255, 256};
constexpr std::size_t aWIDE_TEXT_SIZES[] = {127, 128};

template <class T>
void Check(DataInputStream& in, const T& expected) {
  T value = T();
  in >> value;
  OXA_TEST_ASSERT(value == expected);
}

void CheckNumbers(DataInputStream& in) {
  Check<char>(in, 'c');
  Check<signed char>(in, -2);
  Check<unsigned char>(in, 254);
  Check<bool>(in, true);
  Check<short>(in, -16);
  Check<unsigned short>(in, 65535);
  Check<int>(in, -32);
  Check<unsigned int>(in, 4294967295u);
  Check<long>(in, -64);
  Check<unsigned long>(in, 4294967295u);
  Check<long long>(in, -9223372036854775807LL);
  Check<unsigned long long>(in, 64);
  Check<float>(in, 1.0f);
  Check<double>(in, 2.0);
}

}  // namespace

void WriteStreamValues(DataOutputStream& out) {
  out << 'c' << static_cast<signed char>(-2) << static_cast<unsigned char>(254) << true
      << static_cast<short>(-16) << static_cast<unsigned short>(65535) << -32 << 4294967295u << -64L
      << 4294967295UL << -9223372036854775807LL << 64ULL << 1.0f << 2.0;
  out << std::string(sWORD) << std::wstring(sWIDE_WORD) << std::string();
  for (const std::size_t size : aTEXT_SIZES) out << std::string(size, 't');
  for (const std::size_t size : aWIDE_TEXT_SIZES) out << std::wstring(size, L'w');
}

void CheckStreamValues(DataInputStream& in) {
  CheckNumbers(in);
  Check<std::string>(in, sWORD);
  Check<std::wstring>(in, sWIDE_WORD);
  Check<std::string>(in, std::string());
  for (const std::size_t size : aTEXT_SIZES) Check(in, std::string(size, 't'));
  for (const std::size_t size : aWIDE_TEXT_SIZES) Check(in, std::wstring(size, L'w'));
}

}  // namespace Oxa::Core
