#include "Platform/Files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.h"
#include "Support/Together.h"

namespace Platform = Oxa::Core::Platform;
using TestSupport::CurrentFolder;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

namespace {

std::string WithBackslashes(std::string name) {
  for (char& character : name)
    if (character == '/') character = '\\';
  return name;
}

Platform::FileStatus StatusOf(const std::string& name) {
  Platform::FileStatus status;
  EXPECT_EQ(0, Platform::Status(name.c_str(), status)) << name;
  return status;
}

std::string FullPathOf(const std::string& name) {
  char buffer[4096];
  EXPECT_EQ(0, Platform::FullPath(name.c_str(), buffer, sizeof buffer)) << name;
  return buffer;
}

std::vector<std::string> Listed(const std::string& folder, const char* pattern) {
  std::vector<std::string> names;
  EXPECT_EQ(0, Platform::ListDirectory(folder.c_str(), pattern, names));
  return names;
}

const std::string sTOO_LONG(100000, 'x');

}  // namespace

// --- Status, folders, names

TEST(Files, StatusTellsFilesFromFolders) {
  const TemporaryFolder folder;
  const auto file = StatusOf(folder.Write("file", "12345"));
  EXPECT_TRUE(file.m_bRegular);
  EXPECT_FALSE(file.m_bDirectory);
  EXPECT_EQ(5u, file.m_ullSize);
  const auto self = StatusOf(folder.Path());
  EXPECT_FALSE(self.m_bRegular);
  EXPECT_TRUE(self.m_bDirectory);
}

TEST(Files, StatusOfWhatIsMissingLeavesTheResult) {
  const TemporaryFolder folder;
  for (const std::string& name : {folder.File("missing"), std::string(), folder.File(sTOO_LONG)}) {
    Platform::FileStatus status;
    status.m_ullSize = 42;
    EXPECT_NE(0, Platform::Status(name.c_str(), status));
    EXPECT_EQ(42u, status.m_ullSize);
  }
  Platform::FileStatus status;
  EXPECT_EQ(ENOENT, Platform::Status(folder.File("missing").c_str(), status));
  EXPECT_EQ(ENAMETOOLONG, Platform::Status(sTOO_LONG.c_str(), status));
}

TEST(Files, BackslashesSeparateAsSlashesDo) {
  const TemporaryFolder folder;
  const std::string inner = WithBackslashes(folder.File("inner"));
  ASSERT_EQ(0, Platform::MakeDirectory(inner.c_str()));
  EXPECT_TRUE(std::filesystem::is_directory(folder.File("inner")));
  int code = 0;
  ASSERT_TRUE(Platform::FileHandle::OpenForAppend((inner + "\\file").c_str(), code).IsOpen());
  EXPECT_EQ(0, code);
  EXPECT_TRUE(StatusOf(inner + "\\file").m_bRegular);
  EXPECT_EQ(0, Platform::CopyFile((inner + "\\file").c_str(), (inner + "\\copy").c_str()));
  EXPECT_EQ(0, Platform::RenameFile((inner + "\\copy").c_str(), (inner + "\\new").c_str()));
  EXPECT_EQ((std::vector<std::string>{"file", "new"}), Listed(inner, "*e*"));
  EXPECT_EQ(0, Platform::RemoveFile((inner + "\\new").c_str()));
  EXPECT_EQ(0, Platform::RemoveFile((inner + "\\file").c_str()));
  EXPECT_EQ(0, Platform::RemoveDirectory(inner.c_str()));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(Files, AFolderIsMadeWithItsParentThereAndItsNameFree) {
  const TemporaryFolder folder;
  EXPECT_EQ(ENOENT, Platform::MakeDirectory(folder.File("a/b").c_str()));
  EXPECT_EQ(0, Platform::MakeDirectory(folder.File("a").c_str()));
  EXPECT_EQ(0, Platform::MakeDirectory(folder.File("a/b").c_str()));
  EXPECT_EQ(EEXIST, Platform::MakeDirectory(folder.File("a/b").c_str()));
  EXPECT_NE(0, Platform::MakeDirectory(folder.Write("file", "").c_str()));
}

TEST(Files, OnlyEmptyFoldersAreRemoved) {
  const TemporaryFolder folder;
  ASSERT_EQ(0, Platform::MakeDirectory(folder.File("a").c_str()));
  const std::string file = folder.Write("a/file", "");
  EXPECT_NE(0, Platform::RemoveDirectory(folder.File("a").c_str()));
  EXPECT_NE(0, Platform::RemoveDirectory(file.c_str()));
  EXPECT_NE(0, Platform::RemoveFile(folder.File("a").c_str()));
  EXPECT_EQ(0, Platform::RemoveFile(file.c_str()));
  EXPECT_EQ(ENOENT, Platform::RemoveFile(file.c_str()));
  EXPECT_EQ(0, Platform::RemoveDirectory(folder.File("a").c_str()));
  EXPECT_EQ(ENOENT, Platform::RemoveDirectory(folder.File("a").c_str()));
}

TEST(Files, RenamingReplacesAFile) {
  const TemporaryFolder folder;
  const std::string from = folder.Write("from", "new");
  const std::string to = folder.Write("to", "old");
  EXPECT_EQ(0, Platform::RenameFile(from.c_str(), to.c_str()));
  EXPECT_EQ("new", ReadFile(to));
  EXPECT_FALSE(std::filesystem::exists(from));
  EXPECT_EQ(ENOENT, Platform::RenameFile(from.c_str(), to.c_str()));
  EXPECT_EQ(ENAMETOOLONG, Platform::RenameFile(to.c_str(), sTOO_LONG.c_str()));
  EXPECT_EQ(ENAMETOOLONG, Platform::RenameFile(sTOO_LONG.c_str(), to.c_str()));
  EXPECT_EQ("new", ReadFile(to));
}

TEST(Files, ANameThatIsTakenIsKeptFromAFileThatWantsAFreeOne) {
  const TemporaryFolder folder;
  const std::string from = folder.Write("from", "new");
  const std::string to = folder.Write("to", "old");
  ASSERT_EQ(0, Platform::MakeDirectory(folder.File("folder").c_str()));
  EXPECT_EQ(EEXIST, Platform::RenameFileUnlessTaken(from.c_str(), to.c_str()));
  EXPECT_EQ(EEXIST, Platform::RenameFileUnlessTaken(from.c_str(), folder.File("folder").c_str()));
  EXPECT_EQ("new", ReadFile(from));
  EXPECT_EQ("old", ReadFile(to));
  EXPECT_EQ(0, Platform::RenameFileUnlessTaken(from.c_str(), WithBackslashes(folder.File("free")).c_str()));
  EXPECT_EQ("new", ReadFile(folder.File("free")));
  EXPECT_FALSE(std::filesystem::exists(from));
  EXPECT_EQ(ENOENT, Platform::RenameFileUnlessTaken(from.c_str(), folder.File("other").c_str()));
  EXPECT_EQ(ENAMETOOLONG, Platform::RenameFileUnlessTaken(to.c_str(), sTOO_LONG.c_str()));
  EXPECT_EQ(ENAMETOOLONG, Platform::RenameFileUnlessTaken(sTOO_LONG.c_str(), to.c_str()));
}

TEST(Files, OfManyWhoWantOneFreeNameOneGetsIt) {
  constexpr int threads = 4;
  const TemporaryFolder folder;
  for (int round = 0; round < 200; ++round) {
    const std::string to = folder.File("to" + std::to_string(round));
    std::atomic<int> winners{0};
    for (int index = 0; index < threads; ++index) folder.Write(std::to_string(index), "");
    TestSupport::Together(threads, [&](int index) {
      if (Platform::RenameFileUnlessTaken(folder.File(std::to_string(index)).c_str(), to.c_str()) == 0)
        ++winners;
    });
    EXPECT_EQ(1, winners) << round;
  }
}

// --- Copies

TEST(Files, ACopyHasAllBytesAndReplacesALongerFile) {
  const TemporaryFolder folder;
  std::string bytes;
  for (int i = 0; i < 300000; ++i) bytes += static_cast<char>(i * 7);
  const std::string from = folder.Write("from", bytes);
  const std::string to = folder.Write("to", std::string(500000, 'x'));
  EXPECT_EQ(0, Platform::CopyFile(from.c_str(), to.c_str()));
  EXPECT_EQ(bytes, ReadFile(to));
  EXPECT_EQ(bytes, ReadFile(from));
  EXPECT_EQ(0, Platform::CopyFile(folder.Write("empty", "").c_str(), to.c_str()));
  EXPECT_EQ(0u, StatusOf(to).m_ullSize);
}

TEST(Files, AFileIsNotCopiedOntoItselfNorFromOrToAFolder) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "bytes");
  EXPECT_EQ(EINVAL, Platform::CopyFile(file.c_str(), file.c_str()));
  EXPECT_EQ(EINVAL, Platform::CopyFile(file.c_str(), (folder.Path() + "/./file").c_str()));
  EXPECT_EQ("bytes", ReadFile(file));
  EXPECT_EQ(EISDIR, Platform::CopyFile(folder.Path().c_str(), folder.File("new").c_str()));
  EXPECT_FALSE(std::filesystem::exists(folder.File("new")));
  EXPECT_EQ(EISDIR, Platform::CopyFile(file.c_str(), folder.Path().c_str()));
  EXPECT_EQ(ENOENT, Platform::CopyFile(folder.File("missing").c_str(), file.c_str()));
  EXPECT_EQ("bytes", ReadFile(file));
  EXPECT_EQ(ENOENT, Platform::CopyFile(file.c_str(), folder.File("no/folder").c_str()));
}

// --- Names made absolute

TEST(Files, AFullPathBeginsAtTheCurrentFolder) {
  const TemporaryFolder folder;
  const CurrentFolder current(folder.Path());
  const std::string here = std::filesystem::current_path().generic_string();
  EXPECT_EQ(here + "/name", FullPathOf("name"));
  EXPECT_EQ(here + "/a/b.c", FullPathOf("a/b.c"));
  EXPECT_EQ(here + "/a/b.c", FullPathOf("a\\b.c"));
  EXPECT_EQ(here, FullPathOf(""));
  EXPECT_EQ(here, FullPathOf("."));
  EXPECT_EQ(here + "/", FullPathOf("./"));
  EXPECT_EQ(here + "/dir/", FullPathOf("dir\\"));
  EXPECT_EQ(std::filesystem::current_path().parent_path().generic_string() + "/x", FullPathOf("../x"));
}

TEST(Files, AFullPathIsResolvedByItsText) {
  struct Case {
    const char* name;
    const char* full;
  };
  for (const auto& [name, full] : {
           Case{"/", "/"},
           Case{"//", "/"},
           Case{"/a", "/a"},
           Case{"\\a\\b", "/a/b"},
           Case{"/a//b///c", "/a/b/c"},
           Case{"/a/./b/.", "/a/b"},
           Case{"/a/./b/./", "/a/b/"},
           Case{"/a/../b", "/b"},
           Case{"/a/b/../../c", "/c"},
           Case{"/..", "/"},
           Case{"/../../a", "/a"},
           Case{"/a/..", "/"},
           Case{"/a/../", "/"},
           Case{"/nowhere/at/all/...", "/nowhere/at/all/..."},
           Case{"/.hidden/..x/x..", "/.hidden/..x/x.."},
       })
    EXPECT_EQ(full, FullPathOf(name)) << name;
}

TEST(Files, AFullPathThatDoesNotFitIsRefused) {
  char buffer[6] = "kept";
  EXPECT_EQ(ERANGE, Platform::FullPath("/abcde", buffer, sizeof buffer));
  EXPECT_STREQ("kept", buffer);
  EXPECT_EQ(ERANGE, Platform::FullPath("/", buffer, 1));
  EXPECT_EQ(ENAMETOOLONG, Platform::FullPath(sTOO_LONG.c_str(), buffer, sizeof buffer));
  EXPECT_STREQ("kept", buffer);
  EXPECT_EQ(0, Platform::FullPath("/abcd", buffer, sizeof buffer));
  EXPECT_STREQ("/abcd", buffer);
  EXPECT_EQ(0, Platform::FullPath("/", buffer, 2));
  EXPECT_STREQ("/", buffer);
}

// --- Lists and patterns

TEST(Files, AListIsSortedAndHasFoldersAndBothDots) {
  const TemporaryFolder folder;
  for (const char* name : {"b.txt", "a.txt", "B.txt", "c", "a"}) folder.Write(name, "");
  ASSERT_EQ(0, Platform::MakeDirectory(folder.File("folder").c_str()));
  EXPECT_EQ((std::vector<std::string>{".", "..", "B.txt", "a", "a.txt", "b.txt", "c", "folder"}),
            Listed(folder.Path(), "*"));
  EXPECT_EQ((std::vector<std::string>{"B.txt", "a.txt", "b.txt"}), Listed(folder.Path(), "?.txt"));
  EXPECT_EQ(std::vector<std::string>{"b.txt"}, Listed(folder.Path(), "b*"));
}

TEST(Files, AListIsAppended) {
  const TemporaryFolder folder;
  folder.Write("a", "");
  std::vector<std::string> names = {"z", "y"};
  EXPECT_EQ(0, Platform::ListDirectory(folder.Path().c_str(), "a", names));
  EXPECT_EQ((std::vector<std::string>{"z", "y", "a"}), names);
  EXPECT_EQ(0, Platform::ListDirectory(folder.Path().c_str(), "nothing", names));
  EXPECT_EQ((std::vector<std::string>{"z", "y", "a"}), names);
}

TEST(Files, AMissingFolderOrAFileHasNoList) {
  const TemporaryFolder folder;
  std::vector<std::string> names = {"kept"};
  EXPECT_EQ(ENOENT, Platform::ListDirectory(folder.File("missing").c_str(), "*", names));
  EXPECT_EQ(ENOTDIR, Platform::ListDirectory(folder.Write("file", "").c_str(), "*", names));
  EXPECT_EQ(ENOENT, Platform::ListDirectory("", "*", names));
  EXPECT_EQ(ENAMETOOLONG, Platform::ListDirectory(sTOO_LONG.c_str(), "*", names));
  EXPECT_EQ(std::vector<std::string>{"kept"}, names);
}

TEST(Files, ALargeFolderIsListedWhole) {
  const TemporaryFolder folder;
  std::vector<std::string> expected;
  for (int i = 0; i < 1500; ++i) {
    expected.push_back("a name that is long enough for many blocks " + std::to_string(10000 + i));
    folder.Write(expected.back(), "");
  }
  EXPECT_EQ(expected, Listed(folder.Path(), "a*"));
}

TEST(Files, NameForSystemHasItsSeparatorsOnly) {
  EXPECT_EQ("a/b//c.d/", Platform::NameForSystem("a\\b/\\c.d\\"));
  EXPECT_EQ("", Platform::NameForSystem(""));
}

TEST(NamePattern, StarAndQuestionMark) {
  struct Case {
    const char* name;
    const char* pattern;
    bool matches;
  };
  for (const auto& [name, pattern, matches] : {
           Case{"", "", true},
           Case{"", "*", true},
           Case{"", "?", false},
           Case{"a", "", false},
           Case{"a", "a", true},
           Case{"a", "A", false},
           Case{"a", "?", true},
           Case{"ab", "?", false},
           Case{"a", "??", false},
           Case{"abc", "*", true},
           Case{"abc", "a*", true},
           Case{"abc", "*c", true},
           Case{"abc", "*b*", true},
           Case{"abc", "a*c", true},
           Case{"abc", "*d*", false},
           Case{"abc", "***", true},
           Case{"abc", "a**c", true},
           Case{"abc", "a?c", true},
           Case{"abc", "?*?", true},
           Case{"a", "?*?", false},
           Case{"a.txt", "*.txt", true},
           Case{"a.txt.old", "*.txt", false},
           Case{"a.txt.txt", "*.txt", true},
           Case{"name", "*.*", false},
           Case{".", "*.*", true},
           Case{"a[b]", "a[b]", true},
           Case{"ab", "a[b]", false},
           Case{"aab", "*ab", true},
           Case{"mississippi", "m*iss*pi", true},
           Case{"mississippi", "m*iss*sp?", false},
           Case{"\xe4", "?", true},
       })
    EXPECT_EQ(matches, Platform::MatchesPattern(name, pattern)) << name << " " << pattern;
}

// By trial: a recursive matcher is the model.
TEST(NamePattern, AgreesWithARecursiveMatcherOnAllShortTexts) {
  struct Model {
    static bool Matches(const char* name, const char* pattern) {
      if (*pattern == 0) return *name == 0;
      if (*pattern == '*') return Matches(name, pattern + 1) || (*name != 0 && Matches(name + 1, pattern));
      return *name != 0 && (*pattern == '?' || *pattern == *name) && Matches(name + 1, pattern + 1);
    }
  };
  std::vector<std::string> names = {""};
  std::vector<std::string> patterns = {""};
  for (std::size_t i = 0; i < names.size() && names[i].size() < 5; ++i)
    for (const char c : {'a', 'b'}) names.push_back(names[i] + c);
  for (std::size_t i = 0; i < patterns.size() && patterns[i].size() < 5; ++i)
    for (const char c : {'a', 'b', '*', '?'}) patterns.push_back(patterns[i] + c);
  for (const std::string& name : names)
    for (const std::string& pattern : patterns)
      ASSERT_EQ(Model::Matches(name.c_str(), pattern.c_str()),
                Platform::MatchesPattern(name.c_str(), pattern.c_str()))
          << name << " " << pattern;
}
