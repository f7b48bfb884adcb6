#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/PathName.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "PathName/PathNameSupport.h"
#include "Support/TemporaryFolder.h"

using namespace Oxa::Core;
using PathNameTests::OpenPathName;
using PathNameTests::Text;
using TestSupport::CurrentFolder;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

namespace {

std::string WithBackslashes(std::string text) {
  for (char& character : text)
    if (character == '/') character = '\\';
  return text;
}

bool IsFolder(const std::string& name) { return std::filesystem::is_directory(name); }

}  // namespace

// --- What is there

TEST(PathNameOnDisk, TheSeparatorAtTheEndDecidesWhatIsAskedFor) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file.txt", "");
  EXPECT_TRUE(PathName(folder.Path() + '/').Exists());
  EXPECT_TRUE(PathName(folder.Path() + '\\').Exists());
  EXPECT_FALSE(PathName(folder.Path()).Exists());
  EXPECT_TRUE(PathName(file).Exists());
  EXPECT_TRUE(PathName(WithBackslashes(file)).Exists());
  EXPECT_FALSE(PathName(file + '/').Exists());
  EXPECT_FALSE(PathName(folder.File("missing")).Exists());
  EXPECT_FALSE(PathName(folder.File("missing/")).Exists());
}

TEST(PathNameOnDisk, NothingIsThereOfAnEmptyName) {
  EXPECT_FALSE(PathName().Exists());
  EXPECT_FALSE(PathName().IsDir());
  EXPECT_EQ(0u, PathName().GetLength());
}

// Less its one separator nothing is left of it.
TEST(PathNameOnDisk, ARootAloneIsNotFound) {
  EXPECT_FALSE(PathName("/").Exists());
  EXPECT_FALSE(PathName("/").IsDir());
}

TEST(PathNameOnDisk, WhatIsNeitherFileNorFolderDoesNotExist) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink(folder.File("missing"), folder.File("link"));
  for (const std::string& name : {folder.File("link"), std::string("/dev/null")}) {
    EXPECT_FALSE(PathName(name).Exists()) << name;
    EXPECT_FALSE(PathName(name).IsDir()) << name;
    EXPECT_EQ(0u, PathName(name).GetLength()) << name;
  }
  EXPECT_TRUE(PathName(folder.File("link")).Delete());
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link")));
}

TEST(PathNameOnDisk, IsDirWhateverTheNameLooksLike) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "");
  std::filesystem::create_directory(folder.File("looks.like.txt"));
  EXPECT_TRUE(PathName(folder.Path()).IsDir());
  EXPECT_TRUE(PathName(folder.Path() + '/').IsDir());
  EXPECT_TRUE(PathName(folder.File("looks.like.txt")).IsDir());
  EXPECT_FALSE(PathName(file).IsDir());
  EXPECT_FALSE(PathName(file + '/').IsDir());
  EXPECT_FALSE(PathName(folder.File("missing")).IsDir());
}

TEST(PathNameOnDisk, DotsAreFolders) {
  EXPECT_TRUE(PathName(".").Exists());    // no leaf
  EXPECT_FALSE(PathName("..").Exists());  // its leaf is "."
  EXPECT_TRUE(PathName("..").IsDir());
  EXPECT_TRUE(PathName("../").Exists());
}

TEST(PathNameOnDisk, LengthIsThatOfPlainFiles) {
  const TemporaryFolder folder;
  EXPECT_EQ(5u, PathName(folder.Write("file", "12345")).GetLength());
  EXPECT_EQ(5u, PathName(folder.File("file/")).GetLength());
  EXPECT_EQ(0u, PathName(folder.File("file//")).GetLength());  // only one separator is taken away
  EXPECT_EQ(0u, PathName(folder.Write("empty", "")).GetLength());
  EXPECT_EQ(0u, PathName(folder.Path()).GetLength());
  EXPECT_EQ(0u, PathName(folder.File("missing")).GetLength());
}

TEST(PathNameOnDisk, LengthHas32Bits) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("sparse", "");
  std::error_code failed;
  std::filesystem::resize_file(file, 0xfffffff0u, failed);
  if (failed) GTEST_SKIP() << "no file of 4 GB here: " << failed.message();
  EXPECT_EQ(0xfffffff0u, PathName(file).GetLength());
  std::filesystem::resize_file(file, 0x100000007u, failed);
  if (failed) GTEST_SKIP() << "no file of 4 GB here: " << failed.message();
  EXPECT_EQ(7u, PathName(file).GetLength());
}

// --- Folders made and removed

TEST(PathNameOnDisk, ANewFolderComesAndGoes) {
  const TemporaryFolder folder;
  PathName path;
  path.SetBaseAndBranch(folder.Path());
  path.AddBranch("TmpName");
  EXPECT_EQ(folder.Path() + "/TmpName/", Text(path));
  EXPECT_FALSE(path.Exists());
  EXPECT_TRUE(path.CreateDirectoryA());
  EXPECT_TRUE(path.Exists());
  EXPECT_TRUE(path.IsDir());
  EXPECT_TRUE(path.Delete());
  EXPECT_FALSE(path.Exists());
}

TEST(PathNameOnDisk, AllFoldersOfTheBranchAreMadeButNotTheLeaf) {
  const TemporaryFolder folder;
  EXPECT_TRUE(PathName(folder.File("a/b\\c/leaf")).CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("a/b/c")));
  EXPECT_FALSE(std::filesystem::exists(folder.File("a/b/c/leaf")));
  EXPECT_TRUE(PathName(folder.File("a/b/c/d/")).CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("a/b/c/d")));
  EXPECT_TRUE(PathName(folder.File("a/b/c/d/")).CreateDirectoryA());
}

TEST(PathNameOnDisk, FoldersAreMadeInTheCurrentOne) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  EXPECT_TRUE(PathName("x/y/").CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("x/y")));
  EXPECT_TRUE(PathName(".\\z\\").CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("z")));
}

TEST(PathNameOnDisk, WithoutABranchThereIsNothingToMake) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  for (const char* text : {"", "leaf", "leaf.txt", "C:", "C:leaf", "/", "/leaf"})
    EXPECT_TRUE(PathName(text).CreateDirectoryA()) << text;
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(PathNameOnDisk, FoldersOfAServerAreMadeWithoutIt) {
  const TemporaryFolder folder;
  EXPECT_TRUE(PathName("\\\\server" + WithBackslashes(folder.File("a/b/"))).CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("a/b")));
}

TEST(PathNameOnDisk, AFileInTheWayEndsTheMaking) {
  const TemporaryFolder folder;
  folder.Write("file", "kept");
  EXPECT_FALSE(PathName(folder.File("file/sub/")).CreateDirectoryA());
  EXPECT_FALSE(PathName(folder.File("file/")).CreateDirectoryA());
  EXPECT_FALSE(PathName(folder.File("a/../file/b/")).CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("a")));  // what was made before stays
  EXPECT_EQ("kept", ReadFile(folder.File("file")));
}

// A drive is part of the name here, so there has to be such a folder.
TEST(PathNameOnDisk, ADriveIsPartOfTheName) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  PathName path("C:/x/");
  EXPECT_FALSE(path.CreateDirectoryA());
  std::filesystem::create_directory("C:");
  EXPECT_TRUE(path.CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("C:/x")));
  EXPECT_TRUE(path.Exists());
}

// The base that is set into an empty name doesn't come through the setting of the branch.
TEST(PathNameOnDisk, FoldersOfAServerAreMadeWithoutTheServer) {
  const TemporaryFolder folder;
  PathName path("\\\\server" + WithBackslashes(folder.Path()) + "\\new\\");
  EXPECT_TRUE(path.CreateDirectoryA());
  EXPECT_TRUE(IsFolder(folder.File("new")));
  EXPECT_FALSE(path.Exists());
}

// --- Delete

TEST(PathNameOnDisk, WhatIsNotThereCountsAsDeleted) {
  const TemporaryFolder folder;
  EXPECT_TRUE(PathName(folder.File("missing")).Delete());
  EXPECT_TRUE(PathName(folder.File("missing/")).Delete());
  EXPECT_TRUE(PathName().Delete());
  // Named without its separator a folder doesn't exist, and stays.
  EXPECT_TRUE(PathName(folder.Path()).Delete());
  EXPECT_TRUE(IsFolder(folder.Path()));
}

TEST(PathNameOnDisk, FilesAndEmptyFoldersAreDeleted) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.File("dir"));
  PathName file(folder.Write("dir/file", ""));
  PathName dir(folder.File("dir/"));
  EXPECT_FALSE(dir.Delete());
  EXPECT_TRUE(file.Delete());
  EXPECT_FALSE(file.Exists());
  EXPECT_TRUE(dir.Delete());
  EXPECT_FALSE(dir.Exists());
}

TEST(PathNameOnDisk, AFileOfAFolderIsDeletedByItsName) {
  const TemporaryFolder folder;
  PathName path(folder.Path());
  PathName closed(folder.Path() + '\\');
  folder.Write("a", "");
  folder.Write("b", "");
  std::filesystem::create_directory(folder.File("dir"));
  EXPECT_TRUE(path.Delete("a"));
  EXPECT_FALSE(path.Delete("a"));
  EXPECT_TRUE(closed.Delete("b"));
  EXPECT_FALSE(closed.Delete("b"));
  EXPECT_FALSE(path.Delete(""));
  EXPECT_FALSE(path.Delete("dir"));
  EXPECT_TRUE(IsFolder(folder.File("dir")));
  EXPECT_FALSE(PathName(folder.Write("file", "")).Delete("x"));
  EXPECT_FALSE(PathName(folder.File("missing")).Delete("x"));
}

// --- Rename

TEST(PathNameOnDisk, AFileIsRenamedInItsFolder) {
  const TemporaryFolder folder;
  OpenPathName path(WithBackslashes(folder.Write("old.txt", "bytes")));
  EXPECT_TRUE(path.Rename("new.xml"));
  EXPECT_EQ(WithBackslashes(folder.File("new.xml")), Text(path));
  EXPECT_EQ("bytes", ReadFile(folder.File("new.xml")));
  EXPECT_FALSE(std::filesystem::exists(folder.File("old.txt")));
}

TEST(PathNameOnDisk, ABareNameIsRenamedInTheCurrentFolder) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  folder.Write("old", "bytes");
  PathName path("old");
  EXPECT_TRUE(path.Rename("new"));
  EXPECT_EQ("new", Text(path));
  EXPECT_EQ("bytes", ReadFile("new"));
}

TEST(PathNameOnDisk, NothingIsRenamedToATakenNameOrFromNowhere) {
  const TemporaryFolder folder;
  PathName path(folder.Write("old", "old"));
  folder.Write("taken", "taken");
  EXPECT_FALSE(path.Rename("taken"));
  EXPECT_FALSE(path.Rename("old"));
  EXPECT_FALSE(path.Rename("no/folder"));
  EXPECT_FALSE(path.Rename(""));
  EXPECT_EQ(folder.File("old"), Text(path));
  EXPECT_EQ("old", ReadFile(folder.File("old")));
  EXPECT_EQ("taken", ReadFile(folder.File("taken")));
  PathName missing(folder.File("missing"));
  EXPECT_FALSE(missing.Rename("new"));
  EXPECT_EQ(folder.File("missing"), Text(missing));
  PathName self(folder.Path() + '/');
  EXPECT_FALSE(self.Rename("inside"));
}

TEST(PathNameOnDisk, AFolderNamedWithoutItsSeparatorIsNotRenamed) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.File("dir"));
  EXPECT_FALSE(PathName(folder.File("dir")).Rename("new"));
  EXPECT_TRUE(IsFolder(folder.File("dir")));
}

TEST(PathNameOnDisk, ARenamedNameAppendsTheFirstOfItsSeparators) {
  const TemporaryFolder folder;
  folder.Write("old", "");
  OpenPathName path("old");
  path.SetBranch(WithBackslashes(folder.Path()));
  ASSERT_EQ('/', path.defaultSeparator);
  EXPECT_TRUE(path.Rename("new"));
  EXPECT_EQ('\\', path.defaultSeparator);
}

// The new name is looked for in the root of the drive, and the dot in the drive makes no file name of it.
TEST(PathNameOnDisk, AFileOfADriveWithoutAFolderIsRenamedToItsRoot) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  folder.Write("a.b:c", "bytes");
  PathName path("a.b:c");
  EXPECT_EQ("c.b:c", path.GetLeafAndExt());
  EXPECT_FALSE(path.Rename("new"));
  std::filesystem::create_directory("a.b:");
  EXPECT_TRUE(path.Rename("new"));
  EXPECT_EQ("a.b:/new", Text(path));
  EXPECT_EQ("bytes", ReadFile("a.b:/new"));
}

// Such a name doesn't Exist, but somebody has it.
TEST(PathNameOnDisk, NothingIsRenamedOverWhatIsNoPlainFile) {
  const TemporaryFolder folder;
  PathName path(folder.Write("old", "old"));
  std::filesystem::create_symlink(folder.File("missing"), folder.File("link"));
  std::filesystem::create_directory(folder.File("dir"));
  for (const char* name : {"link", "dir"}) {
    EXPECT_FALSE(path.Rename(name)) << name;
    EXPECT_EQ(folder.File("old"), Text(path));
  }
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link")));
  EXPECT_EQ("old", ReadFile(folder.File("old")));
}

TEST(PathNameOnDisk, RenamingToAnotherDriveRaises) {
  const TemporaryFolder folder;
  PathName path(folder.Write("old", "bytes"));
  EXPECT_THROW(path.Rename("C:new"), InvalidParameter);
  EXPECT_EQ(folder.File("old"), Text(path));
  EXPECT_TRUE(path.Exists());
}

// --- ReadDirectory

TEST(PathNameOnDisk, AFolderIsListedByItsPatternAndSorted) {
  const TemporaryFolder folder;
  for (const char* name : {"b.txt", "a.txt", "B.txt", "plain"}) folder.Write(name, "");
  std::filesystem::create_directory(folder.File("dir"));
  for (const std::string& text :
       {folder.Path(), folder.Path() + '/', WithBackslashes(folder.Path()) + '\\'}) {
    std::vector<std::string> entries;
    EXPECT_TRUE(PathName(text).ReadDirectory(entries, "*"));
    EXPECT_EQ((std::vector<std::string>{".", "..", "B.txt", "a.txt", "b.txt", "dir", "plain"}), entries);
    entries.clear();
    EXPECT_TRUE(PathName(text).ReadDirectory(entries, "?.txt"));
    EXPECT_EQ((std::vector<std::string>{"B.txt", "a.txt", "b.txt"}), entries);
    entries.clear();
    EXPECT_TRUE(PathName(text).ReadDirectory(entries, "b*"));
    EXPECT_EQ(std::vector<std::string>{"b.txt"}, entries);
  }
}

TEST(PathNameOnDisk, AListIsAppendedToWhatIsThere) {
  const TemporaryFolder folder;
  folder.Write("a", "");
  std::vector<std::string> entries = {"z"};
  EXPECT_TRUE(PathName(folder.Path()).ReadDirectory(entries, "a"));
  EXPECT_TRUE(PathName(folder.Path()).ReadDirectory(entries, "a"));
  EXPECT_EQ((std::vector<std::string>{"z", "a", "a"}), entries);
}

TEST(PathNameOnDisk, NoMatchIsNoFailureButNoFolderIs) {
  const TemporaryFolder folder;
  std::vector<std::string> entries;
  EXPECT_TRUE(PathName(folder.Path()).ReadDirectory(entries, "nothing*"));
  EXPECT_TRUE(PathName(folder.Path()).ReadDirectory(entries, ""));
  EXPECT_FALSE(PathName(folder.File("missing")).ReadDirectory(entries, "*"));
  EXPECT_FALSE(PathName(folder.Write("file", "")).ReadDirectory(entries, "*"));
  EXPECT_TRUE(entries.empty());
}

TEST(PathNameOnDisk, TheListOfTheEmptyNameIsThatOfTheRoot) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  folder.Write("a file of the current folder", "");
  std::vector<std::string> ofNone, ofRoot;
  EXPECT_TRUE(PathName().ReadDirectory(ofNone, "*"));
  EXPECT_TRUE(PathName("/").ReadDirectory(ofRoot, "*"));
  EXPECT_EQ(ofRoot, ofNone);
}

TEST(PathNameOnDisk, APatternMayBeginWithFolders) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.File("dir"));
  folder.Write("dir/a.txt", "");
  std::vector<std::string> entries;
  EXPECT_TRUE(PathName(folder.Path()).ReadDirectory(entries, "dir/*.txt"));
  EXPECT_TRUE(PathName(folder.Path()).ReadDirectory(entries, "dir\\*.txt"));
  EXPECT_EQ((std::vector<std::string>{"a.txt", "a.txt"}), entries);
  EXPECT_FALSE(PathName(folder.Path()).ReadDirectory(entries, "missing/*"));
}
