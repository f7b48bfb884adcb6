#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/PathName.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "PathName/PathNameSupport.h"
#include "Support/TemporaryFolder.h"

using namespace Oxa::Core;
using PathNameTests::OpenPathName;
using PathNameTests::Text;
using TestSupport::CurrentFolder;
using TestSupport::TemporaryFolder;

namespace {

using Edit = void (PathName::*)(const std::string&);

struct Case {
  const char* before;
  const char* argument;
  const char* after;
};

template <std::size_t N>
void ExpectEdits(Edit edit, const Case (&cases)[N]) {
  for (const Case& one : cases) {
    PathName path(one.before);
    (path.*edit)(one.argument);
    EXPECT_EQ(one.after, Text(path)) << one.before << " with " << one.argument;
  }
}

std::string Here() { return std::filesystem::current_path().string(); }

}  // namespace

TEST(PathNameEdits, SetBase) {
  ExpectEdits(&PathName::SetBase,
              {
                  {"C:\\dir\\file1.txt", "d:", "d:\\dir\\file1.txt"},
                  {"C:\\dir\\file1.txt", "d", "d:\\dir\\file1.txt"},
                  {"C:\\dir\\file1.txt", "\\\\server\\", "\\\\server\\dir\\file1.txt"},
                  {"C:\\dir\\file1.txt", "\\\\server", "\\\\server\\dir\\file1.txt"},
                  {"\\\\server\\share\\file1.txt", "d:", "d:\\share\\file1.txt"},
                  {"\\\\server\\share\\file1.txt", "d", "d:\\share\\file1.txt"},
                  {"\\\\server\\share\\file1.txt", "\\\\server2\\", "\\\\server2\\share\\file1.txt"},
                  {"\\\\server\\share\\file1.txt", "\\\\server2", "\\\\server2\\share\\file1.txt"},
                  {"C:\\temp\\x", "", "\\temp\\x"},
                  {"x", "d", "d:/x"},
                  {"C:x", "d", "d:/x"},
                  {"", "d", "d:/"},
                  {"", "", "/"},
                  {"file.", "d", "d:/file"},
                  {"x/y", "\\\\s\\\\", "\\\\s\\x/y"},
                  {"x/y", "\\\\", "\\x/y"},
                  {"x/y", "\\", "\\:x/y"},
              });
}

TEST(PathNameEdits, SetBaseAndBranch) {
  ExpectEdits(&PathName::SetBaseAndBranch,
              {
                  {"C:\\dir\\file1.txt", "d:\\dir2", "d:\\dir2\\file1.txt"},
                  {"C:\\dir\\file1.txt", "d:\\dir2\\", "d:\\dir2\\file1.txt"},
                  {"C:\\dir\\file1.txt", "\\\\server\\share", "\\\\server\\share\\file1.txt"},
                  {"C:\\dir\\file1.txt", "\\\\server\\share\\", "\\\\server\\share\\file1.txt"},
                  {"\\\\server\\share\\dir1\\file1.txt", "\\\\server2\\share2\\dir2",
                   "\\\\server2\\share2\\dir2\\file1.txt"},
                  {"\\\\server\\share\\dir1\\file1.txt", "\\\\server2\\share2\\dir2\\",
                   "\\\\server2\\share2\\dir2\\file1.txt"},
                  {"C:\\dir\\file1.txt", "", "file1.txt"},
                  {"x", "dir\\sub", "dir\\sub/x"},  // the separator of before
                  {"C:\\dir\\", "d:/e", "d:/e\\"},
                  {"", "dir", "dir/"},
              });
}

TEST(PathNameEdits, SetBranch) {
  ExpectEdits(&PathName::SetBranch, {
                                        {"C:\\dir\\file.txt", "\\other", "C:\\other\\file.txt"},
                                        {"C:\\dir\\file.txt", "\\other\\", "C:\\other\\file.txt"},
                                        {"C:\\dir\\file.txt", "other/", "C:other/file.txt"},
                                        {"C:\\dir\\file.txt", "", "C:\\file.txt"},
                                        {"dir/file.txt", "other", "other/file.txt"},
                                        {"file.txt", "", "/file.txt"},
                                        {"", "", "/"},
                                        {"\\\\server\\share\\x", "share2\\", "\\\\server\\share2\\x"},
                                        {"\\\\server\\share\\x", "", "\\\\server\\x"},
                                    });
}

TEST(PathNameEdits, ABranchOfAServerReadAndSetAgainDoublesItsBackslash) {
  PathName path("\\\\server\\share\\x");
  path.SetBranch(path.GetBranch());
  EXPECT_EQ("\\\\server\\\\share\\x", Text(path));
}

TEST(PathNameEdits, AddBranch) {
  ExpectEdits(&PathName::AddBranch, {
                                        {"C:\\dir\\file.txt", "sub", "C:\\dir\\sub\\file.txt"},
                                        {"C:\\dir\\file.txt", "sub\\", "C:\\dir\\sub\\file.txt"},
                                        {"dir/", "sub", "dir/sub/"},
                                        {"file.txt", "sub", "sub/file.txt"},
                                        {"", "sub", "sub/"},
                                        {"dir/x", "", "dir/x"},
                                        {"dir/x", "/sub", "dir//sub/x"},
                                        {"\\\\server\\share\\x", "sub", "\\\\server\\\\share\\sub\\x"},
                                    });
}

TEST(PathNameEdits, SetLeafAndExt) {
  ExpectEdits(&PathName::SetLeafAndExt, {
                                            {"C:\\dir\\file.txt", "new.xml", "C:\\dir\\new.xml"},
                                            {"C:\\dir\\file.txt", "", "C:\\dir\\"},
                                            {"C:file.txt", "new", "C:new"},
                                            {"file.txt", "a/b.c", "a/b.c"},
                                            {"dir/", "x.", "dir/x."},
                                            {"", "x", "x"},
                                        });
}

TEST(PathNameEdits, SetLeafKeepsTheExtension) {
  ExpectEdits(&PathName::SetLeaf, {
                                      {"C:\\dir\\file.txt", "new", "C:\\dir\\new.txt"},
                                      {"C:\\dir\\file.txt", "new.xml", "C:\\dir\\new.txt"},
                                      {"C:\\dir\\file.txt", "new.a.b", "C:\\dir\\new.a.txt"},
                                      {"C:\\dir\\file.txt", ".new", "C:\\dir\\.new.txt"},
                                      {"C:\\dir\\file.txt", ".new.xml", "C:\\dir\\.new.xml.txt"},
                                      {"C:\\dir\\file.txt", "new.", "C:\\dir\\new.txt"},
                                      {"C:\\dir\\file.txt", "", "C:\\dir\\.txt"},
                                      {"C:\\dir\\file", "new.xml", "C:\\dir\\new"},
                                      {"file.", "new", "new"},
                                      {"C:file.txt", "new", "C:new.txt"},
                                  });
}

TEST(PathNameEdits, SetExt) {
  ExpectEdits(&PathName::SetExt, {
                                     {"C:\\dir\\file.txt", "xml", "C:\\dir\\file.xml"},
                                     {"C:\\dir\\file.txt", ".xml", "C:\\dir\\file.xml"},
                                     {"C:\\dir\\file.txt", "", "C:\\dir\\file"},
                                     {"C:\\dir\\file", "xml", "C:\\dir\\file.xml"},
                                     {"file.", "xml", "file.xml"},
                                     {"file.", "", "file"},
                                     {"a.b.c", "d", "a.b.d"},
                                     {"dir.x/", "y", "dir.x/.y"},
                                     {"file.txt", ".", "file."},
                                     {"file.txt", "..x", "file..x"},
                                     {"", "x", ".x"},
                                 });
}

TEST(PathNameEdits, ForceAsDir) {
  for (const auto& [before, after] : {std::pair{"", ""},
                                      {"dir", "dir/"},
                                      {"dir/", "dir/"},
                                      {"dir\\", "dir\\"},
                                      {"a\\b", "a\\b\\"},
                                      {"C:", "C:/"},
                                      {"file.txt", "file.txt/"},
                                      {"\\\\server", "\\\\server/"}}) {
    PathName path(before);
    path.ForceAsDir();
    EXPECT_EQ(after, Text(path));
  }
}

TEST(PathNameEdits, ArgumentsMayBeTheTextItself) {
  PathName path("d:\\x\\");
  path.SetBaseAndBranch(path);
  EXPECT_EQ("d:\\x\\", Text(path));
  path.SetLeafAndExt(path);
  EXPECT_EQ("d:\\x\\d:\\x\\", Text(path));
  PathName base("d");
  base.SetBase(base);
  EXPECT_EQ("d:/d", Text(base));
  PathName grown("a/b");
  grown += grown;
  EXPECT_EQ("a/b/a/b", Text(grown));
  grown += static_cast<const char*>(grown);
  EXPECT_EQ("a/b/a/b/a/b/a/b", Text(grown));
  grown.SetBranch(grown);
  EXPECT_EQ("a/b/a/b/a/b/a/b/b", Text(grown));
}

// --- Separators that these edits leave as they were

TEST(PathNameEdits, OnlyBaseEditsLookForSeparatorsAnew) {
  OpenPathName path("x");
  path.SetBranch("a\\b\\");
  EXPECT_EQ('/', path.defaultSeparator);
  path.AddBranch("c");
  EXPECT_EQ("a\\b\\c/x", Text(path));
  path.SetLeafAndExt("d\\e");
  path.SetLeaf("f\\g");
  path.SetExt("h\\i");
  path += "\\j\\k";
  EXPECT_EQ('/', path.defaultSeparator);
  path.SetBaseAndBranch("l\\m\\");
  EXPECT_EQ('\\', path.defaultSeparator);
  path = "n/o";
  path.SetLeafAndExt("p\\q");
  EXPECT_EQ('/', path.defaultSeparator);
  path.SetBase("\\\\server");
  EXPECT_EQ('/', path.defaultSeparator);  // the first behind the server
  EXPECT_STREQ("\\", path.baseSeparator);
}

TEST(PathNameEdits, AServerThatABranchBringsIsNotNoticed) {
  OpenPathName path("x");
  path.SetBranch("\\\\server\\share\\");
  EXPECT_EQ("\\\\server\\share\\x", Text(path));
  EXPECT_TRUE(path.IsUNC());
  EXPECT_STREQ(":", path.baseSeparator);
  EXPECT_EQ("", path.GetBase());
  EXPECT_TRUE(path.HasBase());
}

TEST(PathNameEdits, AServerThatIsCutOffStillEndsTheBase) {
  OpenPathName path("\\\\server\\share\\dir\\x");
  path.ForceRelative("\\\\server");
  EXPECT_EQ("share\\dir\\x", Text(path));
  EXPECT_STREQ("\\", path.baseSeparator);
  EXPECT_TRUE(path.HasBase());
  EXPECT_EQ("share", path.GetBase());
  EXPECT_EQ("dir\\", path.GetBranch());
  EXPECT_FALSE(path.IsValid());
}

TEST(PathNameEdits, BehindACutServerADriveDoesNotCountAsOne) {
  PathName path("\\\\server\\C:/x");
  path.ForceRelative("\\\\server");
  EXPECT_EQ("C:/x", Text(path));
  EXPECT_FALSE(path.HasBase());
  EXPECT_FALSE(path.IsAbsolute());
  path.SetBaseAndBranch(path.GetBaseAndBranch());  // looks anew
  EXPECT_TRUE(path.HasBase());
  EXPECT_TRUE(path.IsAbsolute());
}

// --- operator+=

TEST(PathNameAppend, GoesOnBehindTheFolder) {
  for (const Case& one : {
           Case{"dir\\name", "more", "dir\\name\\more"},
           Case{"dir\\name\\", "more", "dir\\name\\more"},
           Case{"dir\\name", "\\more", "dir\\name\\more"},
           Case{"dir\\name", "/more/x.txt", "dir\\name\\more/x.txt"},
           Case{"dir\\name", "\\/more", "dir\\name\\/more"},
           Case{"name", "more", "name/more"},
           Case{"C:", "x", "C:/x"},
           Case{"dir.x/name", "more", "dir.x/name/more"},
           Case{"dir.x/", "more", "dir.x/more"},
           Case{"file.", "x", "file./x"},
           Case{"..", "x", "../x"},
           Case{".", "x", "./x"},
           Case{"dir", "", "dir"},
           Case{"dir", "/", "dir/"},
           Case{"", "C:\\x.txt", "C:\\x.txt"},
           Case{"", "", ""},
       }) {
    PathName path(one.before);
    path += one.argument;
    EXPECT_EQ(one.after, Text(path)) << one.before;
    PathName same(one.before);
    same += std::string(one.argument);
    EXPECT_EQ(one.after, Text(same)) << one.before;
  }
}

TEST(PathNameAppend, NullAddsNothing) {
  PathName path("file.txt");
  path += static_cast<const char*>(nullptr);
  path += "";
  EXPECT_EQ("file.txt", Text(path));
}

TEST(PathNameAppend, ToTheEmptyTextIsAnAssignment) {
  OpenPathName path;
  path += "a\\b";
  EXPECT_EQ('\\', path.defaultSeparator);
  OpenPathName longer("a/b");
  longer += "c\\d";
  EXPECT_EQ('/', longer.defaultSeparator);
}

TEST(PathNameAppend, ToAFileNameRaises) {
  PathName path("dir\\100%1%.txt");
  try {
    path += "x";
    FAIL();
  } catch (LogicError& error) {
    EXPECT_STREQ("Cannot append to a PathName that is a file name: dir\\100%1%.txt", error.what());
    EXPECT_EQ("Oxa.Core.PathName", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_EQ("dir\\100%1%.txt", Text(path));
  EXPECT_THROW(path += std::string("x"), LogicError);
}

TEST(PathNameAppend, OfWhatHasABaseRaises) {
  for (const char* before : {"dir\\name", "dir/", "C:\\x", "x"}) {
    for (const char* added : {"C:x", "C:\\x", "\\\\server\\x", "a:b"}) {
      PathName path(before);
      try {
        path += added;
        FAIL() << before << " " << added;
      } catch (InvalidParameter& error) {
        EXPECT_EQ("aPath", error.GetData(InvalidParameter::sPARAM_NAME));
        EXPECT_EQ("Oxa.Core.PathName", error.GetData(AlertInfo::sLOG_NAME));
      }
      EXPECT_EQ(before, Text(path));
    }
  }
}

// Both are wrong: the file name is told.
TEST(PathNameAppend, OfABaseToAFileNameTellsOfTheFileName) {
  PathName path("file.txt");
  try {
    path += "C:\\x";
    FAIL();
  } catch (InvalidParameter&) {
    FAIL();
  } catch (LogicError& error) {
    EXPECT_STREQ("Cannot append to a PathName that is a file name: file.txt", error.what());
  }
}

// --- Absolute and relative

TEST(PathNameForce, ABareNameBecomesAbsoluteInTheCurrentFolder) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  OpenPathName path("bare.txt");
  EXPECT_TRUE(path.ForceAbsolute());
  EXPECT_EQ(Here() + "/bare.txt", Text(path));
  PathName up("..\\x");
  EXPECT_TRUE(up.ForceAbsolute());
  EXPECT_EQ(std::filesystem::current_path().parent_path().string() + "/x", Text(up));
  PathName dir("dir\\");
  EXPECT_TRUE(dir.ForceAbsolute());
  EXPECT_EQ(Here() + "/dir/", Text(dir));
}

TEST(PathNameForce, AnAbsoluteNameStays) {
  for (const char* text : {"\\\\Computer\\Test", "C:\\Test", "C:/a/../b", "/tmp/x", "/tmp/x/"}) {
    PathName path(text);
    EXPECT_TRUE(path.ForceAbsolute());
    EXPECT_EQ(text, Text(path));
  }
}

TEST(PathNameForce, MakingItAbsoluteLeavesTheSeparatorsThatAreAppended) {
  OpenPathName path("a\\b");
  ASSERT_TRUE(path.ForceAbsolute());
  EXPECT_EQ('\\', path.defaultSeparator);
  path.ForceAsDir();
  EXPECT_EQ(Here() + "/a/b\\", Text(path));
}

TEST(PathNameForce, ANameOf260CharactersIsTooLong) {
  const std::string fits = '/' + std::string(258, 'x');
  PathName path(fits);
  EXPECT_TRUE(path.ForceAbsolute());
  EXPECT_EQ(fits, Text(path));
  path = fits + 'x';
  EXPECT_FALSE(path.ForceAbsolute());
  EXPECT_EQ(fits + 'x', Text(path));
  path = fits + "xx/../..";
  EXPECT_TRUE(path.ForceAbsolute());
  EXPECT_EQ("/", Text(path));
}

TEST(PathNameForce, AnEmptyReferenceTakesTheBaseAway) {
  for (const auto& [before, after] : {std::pair{"c:\\temp\\test.txt", "\\temp\\test.txt"},
                                      {"\\\\server\\share\\x", "\\share\\x"},
                                      {"c:x", "/x"},
                                      {"\\temp\\x", "\\temp\\x"},
                                      {"x", "x"},
                                      {"", ""}}) {
    PathName path(before);
    path.ForceRelative("");
    EXPECT_EQ(after, Text(path));
  }
}

TEST(PathNameForce, AReferenceIsCutOffWithOneBackslash) {
  for (const auto& [before, reference, after] : {
           Case{"C:\\a\\b\\c", "C:\\a", "b\\c"}, Case{"C:\\a\\b\\c", "c:\\A", "b\\c"},
           Case{"C:\\a\\b\\c", "C:\\a\\", "b\\c"}, Case{"C:\\a\\\\b", "C:\\a", "\\b"},
           Case{"C:\\a/b", "C:\\a", "/b"},  // no other separator is cut
           Case{"C:\\abc", "C:\\a", "bc"}, Case{"C:\\a", "C:\\a", ""}, Case{"C:\\a\\b", "C:\\x", "C:\\a\\b"},
           Case{"C:\\a\\b", "C:/a", "C:\\a\\b"}, Case{"C:\\a", "C:\\a\\b", "C:\\a"},
           Case{"\\\\server\\share\\x", "\\\\SERVER\\share", "x"}, Case{"/tmp/x/y", "/tmp/x", "/y"},
           Case{"/tmp/x/y", "/tmp/x/", "y"},
           Case{"/tmp/C:\\a", "C:\\a", "/tmp/C:/a"},  // absolute by the system, and not at its start
       }) {
    PathName path(before);
    path.ForceRelative(reference);
    EXPECT_EQ(after, Text(path)) << before << " " << reference;
  }
}

TEST(PathNameForce, BothAreMadeAbsoluteBeforeTheReferenceIsCutOff) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  PathName path("dir/x");
  path.ForceRelative("dir/");
  EXPECT_EQ("x", Text(path));
  path = "dir\\x";
  path.ForceRelative("dir");
  EXPECT_EQ("/x", Text(path));
  path = "dir/x";
  path.ForceRelative(Here());
  EXPECT_EQ("/dir/x", Text(path));
  path = "dir/x";
  path.ForceRelative("other");
  EXPECT_EQ(Here() + "/dir/x", Text(path));
}
