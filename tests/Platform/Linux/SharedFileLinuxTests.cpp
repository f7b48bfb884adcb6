// What forked children, other programs and things that are no plain files mean for shared files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <utility>

#include "Platform/Files.h"
#include "Support/ChildProcess.h"
#include "Support/TemporaryFolder.h"

namespace {

using Oxa::Core::Platform::EDisposition;
using Oxa::Core::Platform::EOrigin;
using Oxa::Core::Platform::FileAccess;
using Oxa::Core::Platform::FileHandle;
using TestSupport::TemporaryFolder;

constexpr FileAccess READS{true, false};
constexpr FileAccess WRITES{false, true};

FileHandle Open(const std::string& name, const FileAccess& access, int& code) {
  return FileHandle::OpenShared(name.c_str(), access, EDisposition::eOPEN_EXISTING, code);
}

int CodeOf(const std::string& name, const FileAccess& access) {
  int code = -12345;
  Open(name, access, code);
  return code;
}

// Two ends of a pipe: one process says a word, and the other waits for it.
class Word {
 public:
  Word() {
    if (pipe2(m_ends, O_CLOEXEC) != 0) std::abort();
  }
  Word(const Word&) = delete;
  Word& operator=(const Word&) = delete;
  ~Word() {
    close(m_ends[0]);
    close(m_ends[1]);
  }
  void Say() const { EXPECT_EQ(1, write(m_ends[1], "!", 1)); }
  void Await() const {
    char byte = 0;
    EXPECT_EQ(1, read(m_ends[0], &byte, 1));
  }

 private:
  int m_ends[2] = {-1, -1};
};

}  // namespace

TEST(SharedFileLinux, AChildThatStillHasItKeepsNothingWhenTheParentCloses) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  int code = -1;
  FileHandle writer = Open(name, WRITES, code);
  ASSERT_EQ(0, code);
  const pid_t child = fork();
  if (child == 0) {
    pause();
    _exit(0);
  }
  EXPECT_EQ(EWOULDBLOCK, CodeOf(name, WRITES));
  EXPECT_EQ(0, writer.Close());
  EXPECT_EQ(0, CodeOf(name, WRITES));
  kill(child, SIGKILL);
  EXPECT_EQ(-SIGKILL, TestSupport::AwaitChild(child, std::chrono::seconds(60)));
}

TEST(SharedFileLinux, NorDoesItWhereTheHandleWasMoved) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  int code = -1;
  FileHandle assigned;
  assigned = Open(name, WRITES, code);
  ASSERT_EQ(0, code);
  FileHandle writer(std::move(assigned));
  const pid_t child = fork();
  if (child == 0) {
    pause();
    _exit(0);
  }
  EXPECT_EQ(0, writer.Close());
  EXPECT_EQ(0, CodeOf(name, WRITES));
  kill(child, SIGKILL);
  EXPECT_EQ(-SIGKILL, TestSupport::AwaitChild(child, std::chrono::seconds(60)));
}

TEST(SharedFileLinux, AChildThatClosesItsCopyTakesNothingAway) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  int code = -1;
  FileHandle writer = Open(name, WRITES, code);
  ASSERT_EQ(0, code);
  const pid_t child = fork();
  if (child == 0) _exit(writer.Close());
  EXPECT_EQ(0, TestSupport::AwaitChild(child, std::chrono::seconds(60)));
  EXPECT_EQ(EWOULDBLOCK, CodeOf(name, WRITES));
}

TEST(SharedFileLinux, AnotherProcessIsKeptOutUntilTheWriterIsKilled) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  const Word opened;
  const pid_t child = fork();
  if (child == 0) {
    int code = -1;
    const FileHandle writer = Open(name, WRITES, code);
    opened.Say();
    pause();
    _exit(code);
  }
  opened.Await();
  EXPECT_EQ(EWOULDBLOCK, CodeOf(name, WRITES));
  EXPECT_EQ(0, CodeOf(name, READS));
  kill(child, SIGKILL);
  EXPECT_EQ(-SIGKILL, TestSupport::AwaitChild(child, std::chrono::seconds(60)));
  EXPECT_EQ(0, CodeOf(name, WRITES));
}

TEST(SharedFileLinux, ClaimsAreThoseOfOtherProgramsThatClaimWholeFiles) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(0, flock(file, LOCK_SH | LOCK_NB));
  EXPECT_EQ(EWOULDBLOCK, CodeOf(name, WRITES));
  EXPECT_EQ(0, CodeOf(name, READS));
  close(file);
  int code = -1;
  const FileHandle writer = Open(name, WRITES, code);
  const int other = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(-1, flock(other, LOCK_SH | LOCK_NB));
  close(other);
}

TEST(SharedFileLinux, ProgramsThatAreStartedDontInheritIt) {
  const TemporaryFolder folder;
  const int before = dup(0);
  close(before);
  int code = -1;
  const FileHandle handle = Open(folder.Write("file", "content"), READS, code);
  EXPECT_EQ(FD_CLOEXEC, fcntl(before, F_GETFD));
}

TEST(SharedFileLinux, DevicesAndPipesAreNobodysAlone) {
  int code = -1;
  const FileHandle one = Open("/dev/full", WRITES, code);
  EXPECT_EQ(0, code);
  EXPECT_EQ(0, CodeOf("/dev/full", WRITES));
  FileHandle::OpenShared("/dev/full", WRITES, EDisposition::eCREATE_ALWAYS, code);
  EXPECT_EQ(0, code);
}

TEST(SharedFileLinux, APipeHasNoPlace) {
  const TemporaryFolder folder;
  const std::string name = folder.File("pipe");
  ASSERT_EQ(0, mkfifo(name.c_str(), 0600));
  int code = -1;
  FileHandle handle =
      FileHandle::OpenShared(name.c_str(), FileAccess{true, true}, EDisposition::eOPEN_EXISTING, code);
  ASSERT_EQ(0, code);
  std::uint64_t place = 99;
  EXPECT_EQ(ESPIPE, handle.Move(0, EOrigin::eBEGIN, place));
  EXPECT_EQ(ESPIPE, handle.Position(place));
  EXPECT_EQ(99U, place);
}
