#include <Infrastructure/OxaCore/PathName.h>

#include <gtest/gtest.h>

#include <type_traits>

#include "PathName/PathNameSupport.h"

using Oxa::Core::PathName;
using PathNameTests::OpenPathName;
using PathNameTests::Text;

namespace {

struct Parts {
  const char* text;
  const char* base;
  const char* branch;
  const char* baseAndBranch;
  const char* leaf;
  const char* ext;
  const char* leafAndExt;
  bool hasBase;
};

constexpr Parts g_PARTS[] = {
    {"C:\\dir\\file.txt", "C", "\\dir\\", "C:\\dir\\", "file", "txt", "file.txt", true},
    {"\\\\server\\share\\dir\\file.txt", "\\\\server", "\\share\\dir\\", "\\\\server\\share\\dir\\", "file",
     "txt", "file.txt", true},
    {"F:bare\\path\\x", "F", "bare\\path\\", "F:bare\\path\\", "x", "", "x", true},
    {"\\\\server\\share\\dir\\file.txt1", "\\\\server", "\\share\\dir\\", "\\\\server\\share\\dir\\", "file",
     "txt1", "file.txt1", true},
    {"C:\\di r1\\file1.txt", "C", "\\di r1\\", "C:\\di r1\\", "file1", "txt", "file1.txt", true},
    {"C:\\dir\\.txt1", "C", "\\dir\\", "C:\\dir\\", "", "txt1", ".txt1", true},
    {"F:bare\\path\\spa ces\\file.txt", "F", "bare\\path\\spa ces\\", "F:bare\\path\\spa ces\\", "file",
     "txt", "file.txt", true},
    {"Z:the file name", "Z", "", "Z:", "the file name", "", "the file name", true},
    {"F:the file name.the extension", "F", "", "F:", "the file name", "the extension",
     "the file name.the extension", true},
    {"R:.txt", "R", "", "R:", "", "txt", ".txt", true},
    // A server alone has no base to get, and its backslashes are its branch.
    {"\\\\server", "", "\\\\", "\\\\", "server", "", "server", true},
    {"\\\\server\\", "\\\\server", "\\", "\\\\server\\", "", "", "", true},
    {"\\\\server\\x", "\\\\server", "\\", "\\\\server\\", "x", "", "x", true},
    {"\\\\", "", "\\\\", "\\\\", "", "", "", true},
    {"//server/share/x", "", "//server/share/", "//server/share/", "x", "", "x", false},
    {"", "", "", "", "", "", "", false},
    {"bare", "", "", "", "bare", "", "bare", false},
    {"bare/", "", "bare/", "bare/", "", "", "", false},
    {"/", "", "/", "/", "", "", "", false},
    {"/tmp/x", "", "/tmp/", "/tmp/", "x", "", "x", false},
    {"C:", "C", "", "C:", "", "", "", true},
    {"C:\\", "C", "\\", "C:\\", "", "", "", true},
    {":", "", "", ":", "", "", "", true},
    // The dot that counts is the last of the whole text.
    {"file.", "", "", "", "file", "", "file", false},
    {"a.b.c", "", "", "", "a.b", "c", "a.b.c", false},
    {"a.b/c", "", "a.b/", "a.b/", "c", "", "c", false},
    {"a.b/c.", "", "a.b/", "a.b/", "c", "", "c", false},
    {".", "", "", "", "", "", "", false},
    {"..", "", "", "", ".", "", ".", false},
    {"./", "", "./", "./", "", "", "", false},
    {"..\\x", "", "..\\", "..\\", "x", "", "x", false},
    // Mixed separators stay.
    {"C:/a\\b/c", "C", "/a\\b/", "C:/a\\b/", "c", "", "c", true},
    // A colon behind the branch.
    {"a/b:c", "a/b", "", "a/", "b:c", "", "b:c", true},
    {"a.b:c", "a.b", "", "a.b:", "c", "b:c", "c.b:c", true},
};

}  // namespace

TEST(PathNameParts, AreCutFromTheText) {
  for (const Parts& parts : g_PARTS) {
    const PathName path(parts.text);
    EXPECT_EQ(parts.base, path.GetBase()) << parts.text;
    EXPECT_EQ(parts.branch, path.GetBranch()) << parts.text;
    EXPECT_EQ(parts.baseAndBranch, path.GetBaseAndBranch()) << parts.text;
    EXPECT_EQ(parts.leaf, path.GetLeaf()) << parts.text;
    EXPECT_EQ(parts.ext, path.GetExt()) << parts.text;
    EXPECT_EQ(parts.leafAndExt, path.GetLeafAndExt()) << parts.text;
  }
}

TEST(PathNameParts, AreThereOrNot) {
  for (const Parts& parts : g_PARTS) {
    const PathName path(parts.text);
    EXPECT_EQ(parts.hasBase, path.HasBase()) << parts.text;
    EXPECT_EQ(std::string(parts.text).find_first_of("/\\") != std::string::npos, path.HasBranch())
        << parts.text;
    EXPECT_EQ(*parts.ext != 0, path.HasExt()) << parts.text;
    EXPECT_EQ(*parts.leafAndExt != 0, path.HasLeaf()) << parts.text;
  }
}

TEST(PathNameParts, ALeafIsMissingBehindASeparatorOnly) {
  EXPECT_TRUE(PathName(".txt").HasLeaf());
  EXPECT_EQ("", PathName(".txt").GetLeaf());
  EXPECT_FALSE(PathName("C:\\dir\\").HasLeaf());
  EXPECT_FALSE(PathName("file.").HasExt());
}

TEST(PathNameParts, AServerBeginsWithTwoBackslashes) {
  for (const char* text : {"\\\\", "\\\\server", "\\\\\\x", "\\\\server\\share"})
    EXPECT_TRUE(PathName(text).IsUNC()) << text;
  for (const char* text : {"", "\\", "//server/share", "\\/server", "/\\server", "x\\\\server", "C:\\\\x"})
    EXPECT_FALSE(PathName(text).IsUNC()) << text;
}

TEST(PathNameParts, AbsoluteOrRelative) {
  for (const char* text : {"\\Test", "C:Test", ".\\Test", "..\\", ".\\", "", "/tmp/x", "/", "\\C:\\x", "bare",
                           "C:", ":", "a/b", "//server/share"}) {
    EXPECT_FALSE(PathName(text).IsAbsolute()) << text;
    EXPECT_TRUE(PathName(text).IsRelative()) << text;
  }
  for (const char* text :
       {"\\\\Computer\\Test", "C:\\Test", "C:/Test", "\\\\", "\\\\x", "C:\\", ":\\", "long:/x", "a/b:/c"}) {
    EXPECT_TRUE(PathName(text).IsAbsolute()) << text;
    EXPECT_FALSE(PathName(text).IsRelative()) << text;
  }
  EXPECT_FALSE(PathName("C:x:\\y").IsAbsolute());  // the first colon decides
}

// --- Values

TEST(PathNameValue, HoldsTheExactText) {
  EXPECT_EQ("", Text(PathName()));
  EXPECT_EQ("", Text(PathName(static_cast<const char*>(nullptr))));
  EXPECT_EQ("a/..\\B/", Text(PathName(std::string("a/..\\B/"))));
  EXPECT_STREQ("a//b", static_cast<const char*>(PathName("a//b")));
}

TEST(PathNameValue, ComparesByTheExactText) {
  const PathName path("a/b");
  EXPECT_TRUE(path == std::string("a/b"));
  EXPECT_FALSE(path != std::string("a/b"));
  for (const std::string other : {"a/B", "a\\b", "a/b/", "./a/b", ""}) {
    EXPECT_FALSE(path == other);
    EXPECT_TRUE(path != other);
    EXPECT_FALSE(path == PathName(other));
    EXPECT_TRUE(path != PathName(other));
    EXPECT_FALSE(path == other.c_str());
    EXPECT_TRUE(path != other.c_str());
  }
  EXPECT_TRUE(path == "a/b");
  EXPECT_FALSE(path != "a/b");
  EXPECT_TRUE(path == PathName("a/b"));
  EXPECT_FALSE(path != PathName("a/b"));
  EXPECT_TRUE(PathName() == static_cast<const char*>(nullptr));
}

TEST(PathNameValue, IsPlain) {
  EXPECT_FALSE(std::is_polymorphic_v<PathName>);
  EXPECT_TRUE(std::is_copy_constructible_v<PathName>);
  EXPECT_TRUE(std::is_copy_assignable_v<PathName>);
  EXPECT_EQ(0, PathName::NT);
  EXPECT_NE(0, PathName::UNIX);
}

TEST(PathNameValue, CopiesTakeEveryMemberAlong) {
  OpenPathName original("\\\\server\\x");
  original.maxDepth = 7;
  original.maxLeafLength = 1;
  original.maxExtLength = 2;
  original.maxComponentLength = 3;
  original.maxBaseLength = 4;
  original.legalCharacters = "L";
  original.pathSeparators = "\\";
  original.extensionSeparator = ",";
  OpenPathName assigned("y");
  assigned = original;
  for (const OpenPathName& copy : {OpenPathName(original), assigned}) {
    EXPECT_EQ("\\\\server\\x", Text(copy));
    EXPECT_STREQ("\\", copy.baseSeparator);
    EXPECT_EQ('\\', copy.defaultSeparator);
    EXPECT_EQ(7, copy.maxDepth);
    EXPECT_EQ(1u, copy.maxLeafLength);
    EXPECT_EQ(2u, copy.maxExtLength);
    EXPECT_EQ(3u, copy.maxComponentLength);
    EXPECT_EQ(4u, copy.maxBaseLength);
    EXPECT_STREQ("L", copy.legalCharacters);
    EXPECT_STREQ("\\", copy.pathSeparators);
    EXPECT_STREQ(",", copy.extensionSeparator);
  }
}

TEST(PathNameValue, AssignedTextsMayBeItsOwn) {
  PathName path("C:\\a\\b");
  path = static_cast<const std::string&>(path);
  EXPECT_EQ("C:\\a\\b", Text(path));
  path = static_cast<const char*>(path) + 3;
  EXPECT_EQ("a\\b", Text(path));
  path = static_cast<const char*>(nullptr);
  EXPECT_EQ("", Text(path));
}

// --- Parameters

TEST(PathNameParameters, OfTheSupportedFormat) {
  for (const OpenPathName& path :
       {OpenPathName(), OpenPathName(PathName::NT), OpenPathName("x", PathName::NT),
        OpenPathName(std::string("x"), PathName::NT)}) {
    EXPECT_STREQ(" _~!#%&()@`'^$.-", path.legalCharacters);
    EXPECT_STREQ("/\\", path.pathSeparators);
    EXPECT_EQ('/', path.defaultSeparator);
    EXPECT_STREQ(".", path.extensionSeparator);
    EXPECT_STREQ(":", path.baseSeparator);
    EXPECT_EQ(256u, path.maxLeafLength);
    EXPECT_EQ(256u, path.maxExtLength);
    EXPECT_EQ(260u, path.maxComponentLength);
    EXPECT_EQ(1u, path.maxBaseLength);
    EXPECT_EQ(0, path.maxDepth);
  }
}

TEST(PathNameParameters, OfTheFormatThatNobodyApplies) {
  OpenPathName path;
  path.SetUNIX();
  EXPECT_STREQ(" _~!#%&()@`'^$.\\-", path.legalCharacters);
  EXPECT_STREQ("/", path.pathSeparators);
  EXPECT_EQ('/', path.defaultSeparator);
  EXPECT_STREQ(".", path.extensionSeparator);
  EXPECT_STREQ(":", path.baseSeparator);
  EXPECT_EQ(31u, path.maxLeafLength);
  EXPECT_EQ(31u, path.maxExtLength);
  EXPECT_EQ(31u, path.maxComponentLength);
  EXPECT_EQ(31u, path.maxBaseLength);
  EXPECT_EQ(0, path.maxDepth);
}

TEST(PathNameParameters, AnotherFormatChangesNone) {
  OpenPathName path("a/b");
  path.maxDepth = 5;
  path.InitParams(PathName::UNIX);
  EXPECT_EQ(5, path.maxDepth);
  EXPECT_STREQ("/\\", path.pathSeparators);
  path.InitParams(PathName::NT);
  EXPECT_EQ(0, path.maxDepth);
}

TEST(PathNameParameters, WithoutThemNoComponentIsValidAndNothingBreaks) {
  OpenPathName path("C:\\dir/file.txt", PathName::UNIX);
  EXPECT_STREQ("", path.legalCharacters);
  EXPECT_STREQ("", path.pathSeparators);
  EXPECT_EQ('\0', path.defaultSeparator);
  EXPECT_STREQ("", path.extensionSeparator);
  EXPECT_STREQ(":", path.baseSeparator);
  EXPECT_EQ(0u, path.maxLeafLength);
  EXPECT_EQ(0u, path.maxExtLength);
  EXPECT_EQ(0u, path.maxComponentLength);
  EXPECT_EQ(0u, path.maxBaseLength);
  EXPECT_EQ(0, path.maxDepth);
  EXPECT_FALSE(path.IsValid());
  EXPECT_FALSE(path.IsAbsolute());
  EXPECT_FALSE(path.HasBranch());
  EXPECT_FALSE(path.HasExt());
  EXPECT_EQ("C", path.GetBase());
  EXPECT_EQ("", path.GetBranch());
  EXPECT_EQ("C:", path.GetBaseAndBranch());
  EXPECT_EQ("\\dir/file.txt", path.GetLeafAndExt());
  EXPECT_FALSE(path.Exists());
  EXPECT_FALSE(path.IsDir());
  EXPECT_EQ(0u, path.GetLength());
  EXPECT_TRUE(path.CreateDirectoryA());
  EXPECT_TRUE(path.Delete());
  EXPECT_FALSE(path.Delete("x"));
  EXPECT_FALSE(path.Rename("x"));
  path.ForceAsDir();
  path.AddBranch("x");
  path.SetBase("D");
  path.SetBaseAndBranch("E:");
  path.SetExt("y");
  path.SetLeaf("z.w");
  path += "more";
  EXPECT_FALSE(path.IsValid());
  for (const char* text : {"a", "a/b", ":", "\\\\\\", ".", "\\\\server"})
    EXPECT_FALSE(PathName(text, PathName::UNIX).IsValid()) << text;
}

// --- Which separator is appended

TEST(PathNameSeparators, TheFirstOfTheTextIsAppendedFromThenOn) {
  struct Case {
    const char* text;
    char separator;
    const char* base;
    bool found;
  };
  for (const auto& [text, separator, base, found] : {
           Case{"", '/', ":", false},
           Case{"bare", '/', ":", false},
           Case{"a\\b/c", '\\', ":", true},
           Case{"a/b\\c", '/', ":", true},
           Case{"C:\\", '\\', ":", true},
           Case{"\\\\server", '/', "\\", false},
           Case{"\\\\server/x\\y", '/', "\\", true},
           Case{"\\\\server\\x/y", '\\', "\\", true},
           Case{"//server\\x", '/', ":", true},
       }) {
    OpenPathName path(text);
    EXPECT_EQ(separator, path.defaultSeparator) << text;
    EXPECT_STREQ(base, path.baseSeparator) << text;
    EXPECT_EQ(found, path.InitSeparators()) << text;
  }
}

TEST(PathNameSeparators, OneThatIsNotInTheTextStays) {
  OpenPathName path("a\\b");
  path = std::string("bare");
  EXPECT_EQ('\\', path.defaultSeparator);
  path.ForceAsDir();
  EXPECT_EQ("bare\\", Text(path));
  path = "a/b";
  EXPECT_EQ('/', path.defaultSeparator);
  path = "\\\\server";
  EXPECT_EQ('/', path.defaultSeparator);
  EXPECT_STREQ("\\", path.baseSeparator);
  path = "bare";
  EXPECT_STREQ(":", path.baseSeparator);
}

TEST(PathNameSeparators, AssignedTextsKeepTheParameters) {
  OpenPathName path;
  path.maxDepth = 3;
  path = "a/b";
  path = std::string("c/d");
  EXPECT_EQ(3, path.maxDepth);
}

TEST(PathNameSeparators, AreMembersOfTheSetButNotItsEnd) {
  const OpenPathName path;
  EXPECT_TRUE(path.IsPathSeparator('/'));
  EXPECT_TRUE(path.IsPathSeparator('\\'));
  EXPECT_FALSE(path.IsPathSeparator('\0'));
  EXPECT_FALSE(path.IsPathSeparator(':'));
}
