#include <Infrastructure/OxaCore/PathName.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "PathName/PathNameSupport.h"

using Oxa::Core::PathName;
using PathNameTests::OpenPathName;

namespace {

bool IsValid(const std::string& text) { return PathName(text).IsValid(); }

std::string X(std::size_t count) { return std::string(count, 'x'); }

const char* const g_pPUNCTUATION = " _~!#%&()@`'^$.-";

bool IsLetterOrDigit(int c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

TEST(PathNameValidity, WellFormedNames) {
  for (const char* text :
       {"Test.txt", "_Test.txt.txt", "bare.fi_le", "spaces bare.fi.le", "under_score_bare.file", "bare",
        "spaces bare", "underscore_bare", "/.txt", "\\Test.txt", "a:", "\\\\Computer\\path", "D:\\path",
        "D:/path", "..\\path", ".\\path", "W:\\path\\no\\spaces\\file.txt", "X:\\path\\with 2 spaces",
        "C:\\path\\no\\spaces"})
    EXPECT_TRUE(IsValid(text)) << text;
}

TEST(PathNameValidity, IllFormedNames) {
  for (const char* text : {"*.txt", "|.txt", "?.txt", "<.txt", ">.txt", ";.txt", "\".txt", ":.txt"})
    EXPECT_FALSE(IsValid(text)) << text;
}

TEST(PathNameValidity, TheEmptyNameIsNone) {
  EXPECT_FALSE(IsValid(""));
  EXPECT_FALSE(PathName().IsValid());
}

TEST(PathNameValidity, ColonsAloneAreNone) {
  for (const char* text : {":", "::", ":::", ":/", ":\\", "::\\x", "\\\\\\", "\\\\\\\\"})
    EXPECT_FALSE(IsValid(text)) << text;
}

TEST(PathNameValidity, EachCharacterByItself) {
  for (int c = 1; c < 256; ++c) {
    const bool legal = IsLetterOrDigit(c) || std::strchr(g_pPUNCTUATION, c) != nullptr;
    const auto character = static_cast<char>(c);
    const bool separates = c == '/' || c == '\\';
    EXPECT_EQ(legal || separates, IsValid(std::string("a/x") + character + "y")) << c;
    EXPECT_EQ(legal || separates || c == ':', IsValid(std::string("x") + character)) << c;
    EXPECT_EQ(legal, IsValid(std::string(1, character) + ":")) << c;
  }
  EXPECT_FALSE(IsValid(std::string("x\0y", 3)));
}

TEST(PathNameValidity, ADriveIsOneCharacterAndOneColon) {
  EXPECT_TRUE(IsValid("C:x"));
  EXPECT_TRUE(IsValid("C:"));
  EXPECT_TRUE(IsValid("C:\\"));
  EXPECT_TRUE(IsValid("1:x"));
  EXPECT_TRUE(IsValid("_:x"));
  EXPECT_FALSE(IsValid("CD:x"));
  EXPECT_FALSE(IsValid("*:x"));
  EXPECT_FALSE(IsValid("C:x:y"));
  EXPECT_FALSE(IsValid("C::"));
  EXPECT_FALSE(IsValid("a/b:c"));
  EXPECT_FALSE(IsValid("/:c"));
  // The colon in front is passed over, and what is behind it is taken for the drive.
  EXPECT_TRUE(IsValid(":a"));
  EXPECT_FALSE(IsValid(":a\\b"));
}

TEST(PathNameValidity, TheFirstFolderBehindADriveAndSeparatorIsNotLookedAt) {
  EXPECT_TRUE(IsValid("C:\\|||junk|||\\test"));
  EXPECT_TRUE(IsValid("C:/|||junk|||"));
  EXPECT_TRUE(IsValid("C:\\" + X(1000) + "\\test"));
  EXPECT_FALSE(IsValid("C:\\ok\\|||junk|||"));
  EXPECT_FALSE(IsValid("C:|||junk|||temp\\test"));
  EXPECT_FALSE(IsValid("C:|||junk|||"));
  EXPECT_FALSE(IsValid("C:ok\\|||junk|||"));
  EXPECT_FALSE(IsValid("\\|||junk|||"));
}

TEST(PathNameValidity, TheShareOfAServerIsNotLookedAt) {
  EXPECT_TRUE(IsValid("\\\\server\\|||junk|||\\test"));
  EXPECT_TRUE(IsValid("\\\\server\\|||junk|||"));
  EXPECT_FALSE(IsValid("\\\\server\\share\\|||junk|||"));
}

TEST(PathNameValidity, TwoCharactersOfAServerAreNotLookedAt) {
  EXPECT_TRUE(IsValid("\\\\**server\\share"));
  EXPECT_TRUE(IsValid("\\\\*\\share"));
  EXPECT_FALSE(IsValid("\\\\se*ver\\share"));
  EXPECT_TRUE(IsValid("\\\\" + X(500) + "\\share"));  // and its length doesn't count
  // Without a separator behind it the server is a component like others.
  EXPECT_TRUE(IsValid("\\\\server"));
  EXPECT_FALSE(IsValid("\\\\**server"));
  EXPECT_FALSE(IsValid("\\\\" + X(257)));
  // "/" ends no server.
  EXPECT_FALSE(IsValid("\\\\se*ver/share"));
  EXPECT_FALSE(IsValid("\\\\server/share\\x"));
  EXPECT_TRUE(IsValid("\\\\x/share\\y"));  // "/" is one of the two characters... of "x/share"
}

TEST(PathNameValidity, NoTwoSeparatorsSideBySide) {
  for (const char* text : {"a//b", "a\\\\b", "a/\\b", "a\\/b", "//a", "/\\a", "a//", "C:\\\\x", "C://", "//",
                           "\\\\server\\\\share", "\\\\server\\/share", "\\\\//x", "\\\\server\\share\\\\"})
    EXPECT_FALSE(IsValid(text)) << text;
  EXPECT_TRUE(IsValid("a/b\\c/"));
  EXPECT_TRUE(IsValid("\\\\\\server"));  // two belong to the server, one stands alone
}

TEST(PathNameValidity, SeparatorsAndDotsAlone) {
  for (const char* text : {"/", "\\", "\\\\", ".", "..", "./", "../..", "...", "C:\\.", "file."})
    EXPECT_TRUE(IsValid(text)) << text;
}

TEST(PathNameValidity, LengthsOfComponents) {
  struct Case {
    std::string component;
    bool valid;
  };
  for (const auto& [component, valid] : {
           Case{X(256), true},
           Case{X(257), false},
           Case{X(256) + ".", true},
           Case{X(256) + ".xxx", true},    // 260
           Case{X(256) + ".xxxx", false},  // 261
           Case{X(257) + ".", false},
           Case{"." + X(257), true},  // one more behind the dot than told
           Case{"." + X(258), false},
           Case{"x." + X(257), true},
           Case{"x." + X(258), false},
           Case{"xx." + X(257), true},
           Case{"xx." + X(258), false},
           Case{"a." + X(250) + ".b", true},  // the last dot counts
           Case{"a." + X(255) + ".b", false},
       }) {
    EXPECT_EQ(valid, IsValid(component)) << component;
    EXPECT_EQ(valid, IsValid("dir/" + component)) << component;
    EXPECT_EQ(valid, IsValid(component + "/dir")) << component;
  }
  EXPECT_TRUE(IsValid(X(256) + "/" + X(256) + "/" + X(256)));
}

TEST(PathNameValidity, DepthIsLimitedWhereALimitIsSet) {
  OpenPathName path("a/b/c");
  path.maxDepth = 1;
  EXPECT_FALSE(path.IsValid());
  path = "a/b";
  EXPECT_TRUE(path.IsValid());
  path = "C:\\untested\\a\\b";
  EXPECT_TRUE(path.IsValid());
  path = "C:\\untested\\a\\b\\c";
  EXPECT_FALSE(path.IsValid());
  path.maxDepth = 2;
  EXPECT_TRUE(path.IsValid());
}

TEST(PathNameValidity, EachLimitForLengthsCountsByItself) {
  OpenPathName leaf("ab.cd");
  leaf.maxLeafLength = 1;
  EXPECT_FALSE(leaf.IsValid());
  leaf = "a.cd";
  EXPECT_TRUE(leaf.IsValid());
  OpenPathName ext("ab.cd");
  ext.maxExtLength = 0;
  EXPECT_FALSE(ext.IsValid());
  ext = "ab.c";
  EXPECT_TRUE(ext.IsValid());
  OpenPathName component("ab.cd");
  component.maxComponentLength = 4;
  EXPECT_FALSE(component.IsValid());
  component = "ab.c";
  EXPECT_TRUE(component.IsValid());
}

TEST(PathNameValidity, ParametersDecide) {
  OpenPathName path("a+b");
  EXPECT_FALSE(path.IsValid());
  path.legalCharacters = "+";
  EXPECT_TRUE(path.IsValid());
  path.SetUNIX();
  path = "a\\b";
  EXPECT_TRUE(path.IsValid());  // a legal character there
  path = "long name:/untested/x";
  EXPECT_TRUE(path.IsValid());
  path = X(32);
  EXPECT_FALSE(path.IsValid());
}
