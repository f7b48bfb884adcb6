#include "ShownText.h"

#include <gtest/gtest.h>

namespace {

using Station::Quoted;
using Station::Shown;

TEST(ShownText, KeepsPrintableAscii) {
  std::string all;
  for (char c = 0x20; c < 0x7F; ++c) all += c;
  EXPECT_EQ(all, Shown(all));
}

TEST(ShownText, ShowsEveryOtherByte) {
  for (int byte = 0; byte < 256; ++byte) {
    if (byte >= 0x20 && byte < 0x7F) continue;
    char expected[8];
    std::snprintf(expected, sizeof expected, "\\x%02X", static_cast<unsigned>(byte));
    EXPECT_EQ(expected, Shown(std::string(1, static_cast<char>(byte))));
  }
}

TEST(ShownText, ShowsBytesAmongText) {
  EXPECT_EQ("100\\xC2\\xB5s\\x00\\x1B[0m", Shown(std::string("100\xC2\xB5s\0\x1B[0m", 11)));
}

TEST(ShownText, QuotesUpTo60Bytes) {
  EXPECT_EQ("\"\"", Quoted(""));
  EXPECT_EQ("\"a\\x09b\"", Quoted("a\tb"));
  EXPECT_EQ('"' + std::string(60, 'x') + '"', Quoted(std::string(60, 'x')));
  EXPECT_EQ('"' + std::string(60, 'x') + "...\"", Quoted(std::string(61, 'x')));
}

}  // namespace
