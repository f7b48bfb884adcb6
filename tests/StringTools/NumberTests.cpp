#include <Infrastructure/OxaCore/StringTools.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>
#include <type_traits>

namespace {

using namespace Oxa::Core;
using namespace Oxa::Core::StringTools;

static_assert(std::is_same_v<unsigned char, decltype(ToByte(std::string()))>);
static_assert(std::is_same_v<unsigned short, decltype(ToUnsignedShort(std::string()))>);
static_assert(std::is_same_v<unsigned long, decltype(ToUnsignedLong(std::string()))>);

TEST(Numbers, TheTextDecidesTheRadix) {
  for (const char* text : {"165", "0xA5", "0xa5", "0245"}) {
    EXPECT_EQ(165, ToByte(text)) << text;
    EXPECT_EQ(165, ToShort(text)) << text;
    EXPECT_EQ(165, ToInt(text)) << text;
    EXPECT_EQ(165, ToLong(text)) << text;
    EXPECT_EQ(165u, ToUnsignedShort(text)) << text;
    EXPECT_EQ(165u, ToUnsignedInt(text)) << text;
    EXPECT_EQ(165u, ToUnsignedLong(text)) << text;
  }
}

TEST(Numbers, AGivenRadix) {
  EXPECT_EQ(165, ToByte("10100101", 2));
  EXPECT_EQ(165, ToShort("10100101", 2));
  EXPECT_EQ(165, ToInt("10100101", 2));
  EXPECT_EQ(165, ToLong("10100101", 2));
  EXPECT_EQ(165u, ToUnsignedShort("10100101", 2));
  EXPECT_EQ(165u, ToUnsignedInt("10100101", 2));
  EXPECT_EQ(165u, ToUnsignedLong("10100101", 2));
  EXPECT_EQ(165, ToInt("a5", 16));
  EXPECT_EQ(245, ToInt("0245", 10));
}

TEST(Numbers, Wide) {
  EXPECT_EQ(165, ToByte(TUnicodeStr(L"0xA5")));
  EXPECT_EQ(-165, ToShort(TUnicodeStr(L"-0245")));
  EXPECT_EQ(-165, ToInt(TUnicodeStr(L" -165")));
  EXPECT_EQ(165, ToLong(TUnicodeStr(L"10100101"), 2));
  EXPECT_EQ(65535, ToUnsignedShort(TUnicodeStr(L"-1")));
  EXPECT_EQ(UINT_MAX, ToUnsignedInt(TUnicodeStr(L"0xffffffff")));
  EXPECT_EQ(165u, ToUnsignedLong(TUnicodeStr(L"165")));
}

TEST(Numbers, TheLimitsOf32Bits) {
  EXPECT_EQ(4294967295u, ToUnsignedInt("0xffffffff"));
  EXPECT_EQ(4294967295u, ToUnsignedInt("037777777777"));
  EXPECT_EQ(4294967295u, ToUnsignedInt("4294967295"));
  EXPECT_EQ(INT_MIN, ToInt("-2147483648"));
  EXPECT_EQ(INT_MAX, ToInt("2147483647"));
}

TEST(Numbers, BeyondTheLimitsOf32Bits) {
  EXPECT_EQ(INT_MAX, ToInt("2147483648"));
  EXPECT_EQ(INT_MAX, ToInt("99999999999999999999999"));
  EXPECT_EQ(INT_MIN, ToInt("-2147483649"));
  EXPECT_EQ(INT_MIN, ToInt("-99999999999999999999999"));
  EXPECT_EQ(4294967295u, ToUnsignedInt("4294967296"));
  EXPECT_EQ(4294967295u, ToUnsignedInt("99999999999999999999999"));
  EXPECT_EQ(4294967295u, ToUnsignedInt("-4294967296"));
  EXPECT_EQ(4294967295u, ToUnsignedInt("-99999999999999999999999"));
}

TEST(Numbers, AMinusWrapsUnsignedNumbersAround) {
  EXPECT_EQ(4294967295u, ToUnsignedInt("-1"));
  EXPECT_EQ(1u, ToUnsignedInt("-4294967295"));
  EXPECT_EQ(0u, ToUnsignedInt("-0"));
  EXPECT_EQ(ULONG_MAX, ToUnsignedLong("-1"));
  EXPECT_EQ(65535, ToUnsignedShort("-1"));
  EXPECT_EQ(255, ToByte("-1"));
}

TEST(Numbers, ShortAndByteKeepTheirLowerBits) {
  EXPECT_EQ(4464, ToShort("70000"));
  EXPECT_EQ(-32768, ToShort("32768"));
  EXPECT_EQ(-32768, ToShort("-32768"));
  EXPECT_EQ(4464, ToUnsignedShort("70000"));
  EXPECT_EQ(44, ToByte("300"));
  EXPECT_EQ(-1, ToShort("99999999999"));
  EXPECT_EQ(255, ToByte("99999999999"));
}

TEST(Numbers, LongHasItsOwnLimits) {
  EXPECT_EQ(LONG_MAX, ToLong("99999999999999999999999"));
  EXPECT_EQ(LONG_MIN, ToLong("-99999999999999999999999"));
  EXPECT_EQ(ULONG_MAX, ToUnsignedLong("99999999999999999999999"));
  EXPECT_EQ(LONG_MAX, ToLong(std::to_string(LONG_MAX)));
  EXPECT_EQ(ULONG_MAX, ToUnsignedLong(std::to_string(ULONG_MAX)));
}

TEST(Numbers, WhatIsNoNumberIs0) {
  for (const char* text : {"", " ", "x", "-", "+", "--1", "."}) {
    EXPECT_EQ(0, ToInt(text)) << text;
    EXPECT_EQ(0u, ToUnsignedInt(text)) << text;
    EXPECT_EQ(0, ToByte(text)) << text;
  }
  EXPECT_EQ(0, ToInt("12", 1)) << "no such radix";
}

TEST(Numbers, WhatFollowsIsNotLookedAt) {
  EXPECT_EQ(12, ToInt(" \t+12abc"));
  EXPECT_EQ(12u, ToUnsignedInt("12.9"));
  EXPECT_EQ(0, ToInt("09")) << "octal";
}

TEST(ToBool, TrueTexts) {
  for (const char* text : {"1", "T", "t", "TRUE", "True", "true"}) EXPECT_TRUE(ToBool(text)) << text;
  for (const wchar_t* text : {L"1", L"T", L"t", L"TRUE", L"True", L"true"})
    EXPECT_TRUE(ToBool(TUnicodeStr(text)));
}

TEST(ToBool, AllElseIsFalse) {
  for (const char* text :
       {"0", "false", "", "F", "FALSE", "tRUE", "TRue", " true", "true ", "11", "yes", "tr"}) {
    EXPECT_FALSE(ToBool(text)) << text;
  }
  EXPECT_FALSE(ToBool(TUnicodeStr(L"0")));
  EXPECT_FALSE(ToBool(TUnicodeStr(L"")));
}

// Neither success nor a number that is out of range may be seen by whoever looks at errno next.
template <class Text>
void ExpectErrnoUntouched(const Text& text) {
  errno = ENOENT;
  ToByte(text), ToShort(text), ToUnsignedShort(text), ToInt(text), ToUnsignedInt(text);
  EXPECT_EQ(ENOENT, errno);
  ToLong(text), ToUnsignedLong(text);
  EXPECT_EQ(ENOENT, errno);
  errno = ERANGE;
  EXPECT_EQ(5u, ToUnsignedInt("5")) << "what was out of range before is nothing to this number";
  EXPECT_EQ(ERANGE, errno);
}

TEST(Numbers, LeaveErrnoAlone) {
  ExpectErrnoUntouched(std::string("5"));
  ExpectErrnoUntouched(std::string("99999999999999999999"));
  ExpectErrnoUntouched(TUnicodeStr(L"5"));
  ExpectErrnoUntouched(TUnicodeStr(L"99999999999999999999"));
}

}  // namespace
