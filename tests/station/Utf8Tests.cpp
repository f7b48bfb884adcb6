#include "Utf8.h"

#include <gtest/gtest.h>

namespace {

using Station::FromUtf8;
using Station::ToUtf8;

TEST(Utf8, KeepsAscii) {
  std::string all;
  for (int code = 0; code < 0x80; ++code) all += static_cast<char>(code);
  EXPECT_EQ(all, ToUtf8(all));
}

TEST(Utf8, KnowsTheSignsOfTheUnits) {
  EXPECT_EQ("\xC2\xB5sec", ToUtf8("\xB5sec"));
  EXPECT_EQ("\xC2\xB5m\xC2\xB1", ToUtf8("\xB5m\xB1"));
  EXPECT_EQ(
      "20 \xC2\xB0"
      "C",
      ToUtf8("20 \xB0"
             "C"));
}

TEST(Utf8, TakesAByteAsItsCodePoint) {
  EXPECT_EQ("\xC2\xA0", ToUtf8("\xA0"));
  EXPECT_EQ("\xC2\xBF\xC3\x80", ToUtf8("\xBF\xC0"));
  EXPECT_EQ("\xC3\xBF", ToUtf8("\xFF"));
}

TEST(Utf8, KnowsTheWayBack) {
  for (int code = 0; code < 0x100; ++code) {
    const std::string single(1, static_cast<char>(code));
    EXPECT_EQ(single, FromUtf8(single)) << code;
    const bool isPrintable = code < 0x80 || code >= 0xA0;
    EXPECT_EQ(isPrintable, single == FromUtf8(ToUtf8(single))) << code;
  }
  EXPECT_EQ("1 \xB5sec\xB1", FromUtf8("1 \xC2\xB5sec\xC2\xB1"));
  EXPECT_EQ("\xB5s", FromUtf8("\xCE\xBCs"));
}

TEST(Utf8, LeavesWhatHasNoSingleByte) {
  for (const char* const text :
       {"", "\xC2", "x\xC3", "\xC2x", "\xC3\xC3", "\xC4\x80", "\xCE\xBB", "\xE2\x82\xAC"})
    EXPECT_EQ(text, FromUtf8(text));
}

TEST(Utf8, LetsNoControlCharacterAboveAsciiThrough) {
  for (int code = 0x80; code < 0xA0; ++code)
    EXPECT_EQ(
        "a\xEF\xBF\xBD"
        "b",
        ToUtf8(std::string("a") + static_cast<char>(code) + "b"))
        << code;
}

}  // namespace
