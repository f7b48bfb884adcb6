#include <gtest/gtest.h>

#include <string>

#include "Platform/Files.h"
#include "Support/ChildProcess.h"

namespace {

using Oxa::Core::Platform::FileHandle;

TEST(FileEnd, IsTheLengthAndWhereTheNextWriteGoes) {
  const TestSupport::TemporaryFile file;
  int code = 0;
  FileHandle handle = FileHandle::OpenForWriting(file.Name().c_str(), code);
  std::uint64_t end = 99;
  EXPECT_EQ(0, handle.SeekToEnd(end));
  EXPECT_EQ(0U, end);
  std::size_t written = 0;
  EXPECT_EQ(0, handle.Write("abcdef", 6, written));
  EXPECT_EQ(0, handle.Seek(2));
  EXPECT_EQ(0, handle.SeekToEnd(end));
  EXPECT_EQ(6U, end);
  EXPECT_EQ(0, handle.Write("g", 1, written));
  EXPECT_EQ("abcdefg", file.Content());
}

TEST(FileEnd, OfWhatSomebodyElseAppendedIsBehindThat) {
  const TestSupport::TemporaryFile file;
  int code = 0;
  FileHandle one = FileHandle::OpenForAppend(file.Name().c_str(), code);
  FileHandle other = FileHandle::OpenForAppend(file.Name().c_str(), code);
  std::size_t written = 0;
  EXPECT_EQ(0, one.Write("abc", 3, written));
  EXPECT_EQ(0, other.Write("de", 2, written));
  std::uint64_t end = 0;
  EXPECT_EQ(0, one.SeekToEnd(end));
  EXPECT_EQ(5U, end);
}

TEST(FileEnd, OfAClosedFileIsRefused) {
  FileHandle handle;
  std::uint64_t end = 99;
  EXPECT_NE(0, handle.SeekToEnd(end));
  EXPECT_EQ(99U, end);
}

}  // namespace
