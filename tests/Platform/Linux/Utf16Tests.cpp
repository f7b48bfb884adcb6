// Names in UTF-16: every length of a character, and bytes that are none.
#include "Platform/Linux/Utf16.h"

#include <string>

#include <gtest/gtest.h>

namespace Oxa::Core::Platform {
namespace {

std::u16string Utf16Of(const std::string& text) {
  std::u16string result;
  for (const char* at = text.c_str(); at < text.c_str() + text.size();) {
    char16_t units[2] = {};
    result.append(units, NextUtf16(at, units));
  }
  return result;
}

TEST(Utf16, ACharacterUpTo65535IsOneUnit) {
  EXPECT_EQ(Utf16Of("a"), u"a");
  EXPECT_EQ(Utf16Of("\xc2\xb5"), u"\u00b5");
  EXPECT_EQ(Utf16Of("\xdf\xbf"), u"\u07ff");
  EXPECT_EQ(Utf16Of("\xe0\xa0\x80"), u"\u0800");
  EXPECT_EQ(Utf16Of("\xe2\x82\xac"), u"\u20ac");
  EXPECT_EQ(Utf16Of("\xef\xbf\xbf"), u"\uffff");
}

TEST(Utf16, ACharacterBeyond65535IsTwo) {
  EXPECT_EQ(Utf16Of("\xf0\x90\x80\x80"), (std::u16string{char16_t{0xd800}, char16_t{0xdc00}}));
  EXPECT_EQ(Utf16Of("\xf0\x9f\x98\x80"), (std::u16string{char16_t{0xd83d}, char16_t{0xde00}}));
  EXPECT_EQ(Utf16Of("\xf4\x8f\xbf\xbf"), (std::u16string{char16_t{0xdbff}, char16_t{0xdfff}}));
}

TEST(Utf16, BytesThatAreNoCharacterStandForThemselves) {
  EXPECT_EQ(Utf16Of("\x80z"), (std::u16string{0x80, u'z'}));
  EXPECT_EQ(Utf16Of("\xff"), (std::u16string{0xff}));
  EXPECT_EQ(Utf16Of("\xe2\x82"), (std::u16string{0xe2, 0x82}));                      // cut off
  EXPECT_EQ(Utf16Of("\xc0\xaf"), (std::u16string{0xc0, 0xaf}));                      // longer than need be
  EXPECT_EQ(Utf16Of("\xe0\x9f\xbf"), (std::u16string{0xe0, 0x9f, 0xbf}));            // so is this
  EXPECT_EQ(Utf16Of("\xed\xa0\x80"), (std::u16string{0xed, 0xa0, 0x80}));            // half of a pair
  EXPECT_EQ(Utf16Of("\xf4\x90\x80\x80"), (std::u16string{0xf4, 0x90, 0x80, 0x80}));  // beyond the last
}

}  // namespace
}  // namespace Oxa::Core::Platform
