#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>

#include "Platform/Files.h"
#include "Support/TemporaryFolder.h"

namespace Platform = Oxa::Core::Platform;
using Platform::FileHandle;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

namespace {

constexpr int iUNTOUCHED = -12345;

void Write(FileHandle& handle, const std::string& text) {
  std::size_t written = 99;
  EXPECT_EQ(0, handle.Write(text.data(), text.size(), written));
  EXPECT_EQ(text.size(), written);
}

std::string Read(FileHandle& handle, std::size_t size) {
  std::string text(size, '\0');
  std::size_t read = 99;
  EXPECT_EQ(0, handle.Read(text.data(), size, read));
  text.resize(read);
  return text;
}

template <class Open>
FileHandle Opened(const Open& open, const std::string& name) {
  int code = iUNTOUCHED;
  FileHandle handle = open(name.c_str(), code);
  EXPECT_EQ(0, code) << name;
  EXPECT_TRUE(handle.IsOpen()) << name;
  return handle;
}

template <class Open>
int CodeOf(const Open& open, const std::string& name) {
  int code = iUNTOUCHED;
  EXPECT_FALSE(open(name.c_str(), code).IsOpen()) << name;
  return code;
}

}  // namespace

TEST(FileHandle, RoomInAdvanceChangesNeitherLengthNorPlace) {
  const TemporaryFolder folder;
  FileHandle handle = Opened(&FileHandle::OpenForWriting, folder.File("file"));
  Write(handle, "abc");
  EXPECT_EQ(0, handle.Reserve(100000));
  std::uint64_t size = 0;
  EXPECT_EQ(0, handle.Size(size));
  EXPECT_EQ(3u, size);
  Write(handle, "d");
  EXPECT_EQ("abcd", ReadFile(folder.File("file")));
  EXPECT_EQ(EBADF, FileHandle().Reserve(1));
}

TEST(FileHandle, AnEmptyOneIsNotOpen) {
  FileHandle handle;
  EXPECT_FALSE(handle.IsOpen());
  EXPECT_EQ(0, handle.Close());
  std::size_t done = 99;
  std::uint64_t size = 42;
  char byte = 0;
  EXPECT_EQ(EBADF, handle.Write("x", 1, done));
  EXPECT_EQ(0u, done);
  done = 99;
  EXPECT_EQ(EBADF, handle.Read(&byte, 1, done));
  EXPECT_EQ(0u, done);
  EXPECT_EQ(EBADF, handle.Seek(0));
  EXPECT_EQ(EBADF, handle.Size(size));
  EXPECT_EQ(42u, size);
  EXPECT_NE(0, handle.Truncate(0));
}

TEST(FileHandle, AppendsBehindTheEndWhereverThatIs) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "old ");
  FileHandle first = Opened(FileHandle::OpenForAppend, name);
  FileHandle second = Opened(FileHandle::OpenForAppend, name);
  Write(first, "1 ");
  Write(second, "2 ");
  EXPECT_EQ(0, first.Seek(0));
  Write(first, "3 ");
  EXPECT_EQ("old 1 2 3 ", ReadFile(name));
  EXPECT_EQ(0, second.Truncate(4));
  Write(first, "4");
  EXPECT_EQ("old 4", ReadFile(name));
}

TEST(FileHandle, AppendingAndWritingMakeAMissingFile) {
  const TemporaryFolder folder;
  EXPECT_TRUE(Opened(FileHandle::OpenForAppend, folder.File("a")).IsOpen());
  EXPECT_TRUE(Opened(FileHandle::OpenForWriting, folder.File("w")).IsOpen());
  EXPECT_TRUE(std::filesystem::is_regular_file(folder.File("a")));
  EXPECT_TRUE(std::filesystem::is_regular_file(folder.File("w")));
  EXPECT_EQ(ENOENT, CodeOf(FileHandle::OpenForReading, folder.File("r")));
  EXPECT_FALSE(std::filesystem::exists(folder.File("r")));
}

TEST(FileHandle, WritingGoesOverWhatIsThereWithoutCuttingIt) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "abcdef");
  FileHandle handle = Opened(FileHandle::OpenForWriting, name);
  Write(handle, "XY");
  EXPECT_EQ("XYcdef", ReadFile(name));
  EXPECT_EQ(0, handle.Seek(5));
  Write(handle, "Z!");
  EXPECT_EQ("XYcdeZ!", ReadFile(name));
  EXPECT_EQ(0, handle.Seek(9));
  Write(handle, ".");
  EXPECT_EQ(std::string("XYcdeZ!\0\0.", 10), ReadFile(name));
}

TEST(FileHandle, CreatingWantsAFreeName) {
  const TemporaryFolder folder;
  {
    FileHandle handle = Opened(FileHandle::CreateForWriting, folder.File("new"));
    Write(handle, "mine");
  }
  EXPECT_EQ(EEXIST, CodeOf(FileHandle::CreateForWriting, folder.File("new")));
  EXPECT_EQ("mine", ReadFile(folder.File("new")));
}

TEST(FileHandle, ReadsToTheEnd) {
  const TemporaryFolder folder;
  FileHandle handle = Opened(FileHandle::OpenForReading, folder.Write("file", "abcdef"));
  EXPECT_EQ("abcd", Read(handle, 4));
  EXPECT_EQ("ef", Read(handle, 4));
  EXPECT_EQ("", Read(handle, 4));
  EXPECT_EQ(0, handle.Seek(1));
  EXPECT_EQ("bc", Read(handle, 2));
  EXPECT_EQ(0, handle.Seek(100));
  EXPECT_EQ("", Read(handle, 2));
  EXPECT_NE(0, handle.Seek(UINT64_MAX));
  std::size_t written = 99;
  EXPECT_EQ(EBADF, handle.Write("x", 1, written));
  EXPECT_EQ(0u, written);
}

TEST(FileHandle, SizeAndTruncate) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "abcdef");
  FileHandle handle = Opened(FileHandle::OpenForWriting, name);
  std::uint64_t size = 0;
  EXPECT_EQ(0, handle.Size(size));
  EXPECT_EQ(6u, size);
  EXPECT_EQ(0, handle.Truncate(2));
  EXPECT_EQ("ab", ReadFile(name));
  EXPECT_EQ(0, handle.Truncate(4));
  EXPECT_EQ(std::string("ab\0\0", 4), ReadFile(name));
  EXPECT_EQ(0, handle.Size(size));
  EXPECT_EQ(4u, size);
}

TEST(FileHandle, RefusesFoldersAndNamesThatCannotBe) {
  const TemporaryFolder folder;
  for (const auto open :
       {FileHandle::OpenForAppend, FileHandle::OpenForWriting, FileHandle::OpenForReading}) {
    EXPECT_EQ(EISDIR, CodeOf(open, folder.Path()));
    EXPECT_EQ(ENOENT, CodeOf(open, folder.File("no/folder")));
    EXPECT_EQ(ENOENT, CodeOf(open, ""));
    EXPECT_EQ(ENAMETOOLONG, CodeOf(open, std::string(100000, 'x')));
  }
}

TEST(FileHandle, MovesAndClosesOnce) {
  const TemporaryFolder folder;
  const std::string name = folder.File("file");
  FileHandle first = Opened(FileHandle::OpenForAppend, name);
  FileHandle second(std::move(first));
  EXPECT_FALSE(first.IsOpen());  // NOLINT(bugprone-use-after-move): that is what is asked
  EXPECT_TRUE(second.IsOpen());
  FileHandle third = Opened(FileHandle::OpenForAppend, folder.File("other"));
  third = std::move(second);
  EXPECT_FALSE(second.IsOpen());  // NOLINT(bugprone-use-after-move)
  Write(third, "whole");
  FileHandle& alias = third;
  third = std::move(alias);
  Write(third, " still");
  EXPECT_EQ("whole still", ReadFile(name));
  EXPECT_EQ(0, third.Close());
  EXPECT_FALSE(third.IsOpen());
  EXPECT_EQ(0, third.Close());
}
