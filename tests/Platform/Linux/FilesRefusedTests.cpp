// What becomes of files where the system refuses a call, or doesn't know it: sandboxes and odd volumes do so.
#include <errno.h>
#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Files.h"
#include "Support/SystemCallFilter.h"
#include "Support/TemporaryFolder.h"

namespace Platform = Oxa::Core::Platform;
using Platform::FileHandle;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

namespace {

void Refuse(long call, int code) {
  const auto answer = SECCOMP_RET_ERRNO | static_cast<unsigned>(code);
  if (!TestSupport::AnswerSystemCall(static_cast<int>(call), answer)) {
    SUCCEED() << "there are no filters here";
    _exit(0);
  }
}

// A refusal is for ever, so each has a process of its own, which ends with 0 if all is well there.
template <class Operation>
void ExpectInAProcessOfItsOwn(const Operation& operation) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(operation(); _exit(testing::Test::HasFailure() ? 1 : 0), testing::ExitedWithCode(0), "");
}

void ListWhereNoEntriesAreTold() {
  Refuse(SYS_getdents64, EIO);
  std::vector<std::string> names = {"before"};
  EXPECT_EQ(EIO, Platform::ListDirectory("/", "*", names));
  EXPECT_EQ(std::vector<std::string>{"before"}, names);
}

TEST(FilesRefusedDeathTest, AFolderThatCantBeReadOnIsTold) {
  ExpectInAProcessOfItsOwn(&ListWhereNoEntriesAreTold);
}

void RenameInTwoSteps(int code) {
  const TemporaryFolder folder;
  const std::string from = folder.Write("from", "new");
  const std::string taken = folder.Write("taken", "old");
  const std::string link = folder.File("link");
  std::filesystem::create_symlink("nowhere", link);
  Refuse(SYS_renameat2, code);
  EXPECT_EQ(EEXIST, Platform::RenameFileUnlessTaken(from.c_str(), taken.c_str()));
  EXPECT_EQ(EEXIST, Platform::RenameFileUnlessTaken(from.c_str(), link.c_str()));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ("old", ReadFile(taken));
  EXPECT_EQ(0, Platform::RenameFileUnlessTaken(from.c_str(), folder.File("free").c_str()));
  EXPECT_EQ("new", ReadFile(folder.File("free")));
  EXPECT_EQ(ENOENT, Platform::RenameFileUnlessTaken(from.c_str(), folder.File("other").c_str()));
}

TEST(FilesRefusedDeathTest, RenamingToAFreeNameTakesTwoStepsWhereOneWontDo) {
  for (const int code : {EINVAL, ENOSYS}) ExpectInAProcessOfItsOwn([=] { RenameInTwoSteps(code); });
}

void RenameNotAtAll() {
  const TemporaryFolder folder;
  const std::string from = folder.Write("from", "new");
  Refuse(SYS_renameat2, EIO);
  EXPECT_EQ(EIO, Platform::RenameFileUnlessTaken(from.c_str(), folder.File("free").c_str()));
  EXPECT_TRUE(std::filesystem::exists(from));
}

TEST(FilesRefusedDeathTest, AnyOtherFailureOfARenameIsOne) { ExpectInAProcessOfItsOwn(&RenameNotAtAll); }

void ReserveWhere(int code, int expected) {
  const TemporaryFolder folder;
  int opened = -1;
  FileHandle file = FileHandle::OpenForWriting(folder.File("file").c_str(), opened);
  ASSERT_EQ(0, opened);
  Refuse(SYS_fallocate, code);
  EXPECT_EQ(expected, file.Reserve(10));
}

TEST(FilesRefusedDeathTest, WhoCantBeAskedForRoomDoesntSayThatThereIsNone) {
  for (const int code : {EOPNOTSUPP, ENOSYS, EPERM}) ExpectInAProcessOfItsOwn([=] { ReserveWhere(code, 0); });
  ExpectInAProcessOfItsOwn([] { ReserveWhere(ENOSPC, ENOSPC); });
}

void CloseWhere(int code, int expected) {
  const TemporaryFolder folder;
  int opened = -1;
  FileHandle file = FileHandle::OpenForWriting(folder.File("file").c_str(), opened);
  ASSERT_EQ(0, opened);
  Refuse(SYS_close, code);
  EXPECT_EQ(expected, file.Close());
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(0, file.Close()) << "once";
}

TEST(FilesRefusedDeathTest, AFileIsClosedWhateverComesBack) {
  ExpectInAProcessOfItsOwn([] { CloseWhere(EINTR, 0); });
  ExpectInAProcessOfItsOwn([] { CloseWhere(EIO, EIO); });
}

}  // namespace
