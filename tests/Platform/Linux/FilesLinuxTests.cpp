#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>

#include "Platform/Files.h"
#include "Platform/Threads.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"
#include "Support/ThreadState.h"

namespace Platform = Oxa::Core::Platform;
using Platform::FileHandle;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

namespace {

constexpr rlim_t uLIMIT = 1000;

// Files can't grow beyond that for as long as it stands.
class LimitFiles {
 public:
  LimitFiles() {
    EXPECT_EQ(0, getrlimit(RLIMIT_FSIZE, &m_before));
    const rlimit limit = {uLIMIT, m_before.rlim_max};
    EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
  }
  LimitFiles(const LimitFiles&) = delete;
  LimitFiles& operator=(const LimitFiles&) = delete;
  ~LimitFiles() { setrlimit(RLIMIT_FSIZE, &m_before); }

 private:
  rlimit m_before = {};
};

bool IsBlocked(int signal) {
  sigset_t set;
  EXPECT_EQ(0, pthread_sigmask(SIG_BLOCK, nullptr, &set));
  return sigismember(&set, signal) == 1;
}

bool IsPending(int signal) {
  sigset_t set;
  EXPECT_EQ(0, sigpending(&set));
  return sigismember(&set, signal) == 1;
}

FileHandle Appending(const std::string& name) {
  int code = -1;
  FileHandle handle = FileHandle::OpenForAppend(name.c_str(), code);
  EXPECT_EQ(0, code);
  return handle;
}

mode_t ModeOf(const std::string& name) {
  struct stat facts = {};
  EXPECT_EQ(0, stat(name.c_str(), &facts));
  return facts.st_mode & 07777;
}

// The number that the next open file gets.
int NextDescriptor() {
  const int next = dup(0);
  close(next);
  return next;
}

}  // namespace

TEST(FilesLinux, NewFilesAndFoldersAreForAllAsFarAsTheMaskLets) {
  const TemporaryFolder folder;
  const mode_t before = umask(0);
  Appending(folder.File("open"));
  Platform::MakeDirectory(folder.File("openFolder").c_str());
  umask(027);
  Appending(folder.File("closed"));
  Platform::MakeDirectory(folder.File("closedFolder").c_str());
  umask(before);
  EXPECT_EQ(0666u, ModeOf(folder.File("open")));
  EXPECT_EQ(0777u, ModeOf(folder.File("openFolder")));
  EXPECT_EQ(0640u, ModeOf(folder.File("closed")));
  EXPECT_EQ(0750u, ModeOf(folder.File("closedFolder")));
}

TEST(FilesLinux, OpenFilesAreNotInherited) {
  const TemporaryFolder folder;
  const int descriptor = NextDescriptor();
  const FileHandle handle = Appending(folder.File("file"));
  EXPECT_NE(0, fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
}

TEST(FilesLinux, NothingStaysOpen) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "bytes");
  const int descriptor = NextDescriptor();
  int code = 0;
  std::vector<std::string> names;
  FileHandle::OpenForReading(folder.Path().c_str(), code);
  Appending(file);
  FileHandle reopened = Appending(file);
  reopened = Appending(file);
  reopened.Close();
  Platform::CopyFile(file.c_str(), folder.File("copy").c_str());
  Platform::CopyFile(file.c_str(), folder.File("no/copy").c_str());
  Platform::ListDirectory(folder.Path().c_str(), "*", names);
  Platform::ListDirectory(folder.File("missing").c_str(), "*", names);
  EXPECT_EQ(descriptor, NextDescriptor());
}

TEST(FilesLinux, LinksAreFollowedButRemovedThemselves) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "bytes");
  const std::string link = folder.File("link");
  std::filesystem::create_symlink(file, link);
  Platform::FileStatus status;
  EXPECT_EQ(0, Platform::Status(link.c_str(), status));
  EXPECT_TRUE(status.m_bRegular);
  EXPECT_EQ(5u, status.m_ullSize);
  EXPECT_EQ(EINVAL, Platform::CopyFile(file.c_str(), link.c_str()));
  EXPECT_EQ("bytes", ReadFile(file));
  EXPECT_EQ(0, Platform::RemoveFile(link.c_str()));
  EXPECT_EQ("bytes", ReadFile(file));
}

TEST(FilesLinux, ALinkThatLeadsNowhereTakesItsName) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "bytes");
  const std::string link = folder.File("link");
  std::filesystem::create_symlink(folder.File("missing"), link);
  EXPECT_EQ(EEXIST, Platform::RenameFileUnlessTaken(file.c_str(), link.c_str()));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(0, Platform::RenameFileUnlessTaken(link.c_str(), folder.File("free").c_str()));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("free")));
  EXPECT_EQ("bytes", ReadFile(file));
}

TEST(FilesLinux, DevicesAreNeitherFilesNorFoldersAndNotCopiedTo) {
  Platform::FileStatus status;
  ASSERT_EQ(0, Platform::Status("/dev/null", status));
  EXPECT_FALSE(status.m_bRegular);
  EXPECT_FALSE(status.m_bDirectory);
  const TemporaryFolder folder;
  EXPECT_EQ(EINVAL, Platform::CopyFile(folder.Write("file", "bytes").c_str(), "/dev/null"));
  EXPECT_EQ(EINVAL, Platform::CopyFile("/dev/null", folder.File("file").c_str()));
  EXPECT_EQ("bytes", ReadFile(folder.File("file")));
}

TEST(FilesLinux, AFullDiskIsTold) {
  FileHandle handle = Appending("/dev/full");
  std::size_t written = 99;
  EXPECT_EQ(ENOSPC, handle.Write("x", 1, written));
  EXPECT_EQ(0u, written);
}

TEST(FilesLinux, TheFullPathOfACurrentFolderThatIsGoneFails) {
  const TemporaryFolder folder;
  ASSERT_EQ(0, Platform::MakeDirectory(folder.File("gone").c_str()));
  const TestSupport::CurrentFolder current(folder.File("gone"));
  ASSERT_EQ(0, Platform::RemoveDirectory(folder.File("gone").c_str()));
  char buffer[4096] = "kept";
  EXPECT_EQ(ENOENT, Platform::FullPath("name", buffer, sizeof buffer));
  EXPECT_STREQ("kept", buffer);
  EXPECT_EQ(0, Platform::FullPath("/name", buffer, sizeof buffer));
  EXPECT_STREQ("/name", buffer);
}

// --- The limit for the size of files

TEST(FilesLinux, AWriteBeyondTheLimitIsShortAndThenFails) {
  const TemporaryFolder folder;
  const LimitFiles limited;
  FileHandle handle = Appending(folder.File("file"));
  const std::string text(uLIMIT - 1, 'x');
  std::size_t written = 0;
  EXPECT_EQ(0, handle.Write(text.data(), text.size(), written));
  EXPECT_EQ(text.size(), written);
  EXPECT_EQ(0, handle.Write("123", 3, written));
  EXPECT_EQ(1u, written);
  EXPECT_EQ(EFBIG, handle.Write("23", 2, written));
  EXPECT_EQ(0u, written);
  EXPECT_EQ(EFBIG, handle.Truncate(uLIMIT + 1));
  EXPECT_EQ(uLIMIT, std::filesystem::file_size(folder.File("file")));
  EXPECT_FALSE(IsBlocked(SIGXFSZ));
  EXPECT_FALSE(IsPending(SIGXFSZ));
}

TEST(FilesLinux, AGuardIsNeededWhereThereIsALimitAndNoGuard) {
  rlimit limit;
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
  EXPECT_EQ(limit.rlim_cur != RLIM_INFINITY, Platform::FileLimitGuard::IsNeeded());
  const LimitFiles limited;
  EXPECT_TRUE(Platform::FileLimitGuard::IsNeeded());
  const Platform::FileLimitGuard guard;
  EXPECT_FALSE(Platform::FileLimitGuard::IsNeeded());
}

TEST(FilesLinux, ALimitThatComesWhileAFileIsOpenCountsAtOnce) {
  const TemporaryFolder folder;
  FileHandle handle = Appending(folder.File("file"));
  std::size_t written = 0;
  const std::string text(uLIMIT, 'x');
  EXPECT_EQ(0, handle.Write(text.data(), text.size(), written));
  const LimitFiles limited;
  EXPECT_EQ(EFBIG, handle.Write("1", 1, written));
  EXPECT_EQ(0u, written);
}

TEST(FilesLinux, RoomBeyondTheLimitIsRefused) {
  const TemporaryFolder folder;
  FileHandle handle = Appending(folder.File("file"));
  const LimitFiles limited;
  EXPECT_EQ(0, handle.Reserve(uLIMIT));
  EXPECT_EQ(EFBIG, handle.Reserve(uLIMIT + 1));
  EXPECT_EQ(0u, std::filesystem::file_size(folder.File("file")));
  EXPECT_FALSE(IsPending(SIGXFSZ));
}

TEST(FilesLinux, ACopyBeyondTheLimitIsRemoved) {
  const TemporaryFolder folder;
  const std::string from = folder.Write("from", std::string(uLIMIT * 2, 'x'));
  const LimitFiles limited;
  EXPECT_EQ(EFBIG, Platform::CopyFile(from.c_str(), folder.File("to").c_str()));
  EXPECT_FALSE(std::filesystem::exists(folder.File("to")));
  EXPECT_FALSE(IsPending(SIGXFSZ));
}

TEST(FilesLinux, GuardsAreNestedAndBelongToTheirThread) {
  {
    const Platform::FileLimitGuard outer;
    EXPECT_TRUE(IsBlocked(SIGXFSZ));
    { const Platform::FileLimitGuard inner; }
    EXPECT_TRUE(IsBlocked(SIGXFSZ));
    raise(SIGXFSZ);
    EXPECT_TRUE(IsPending(SIGXFSZ));
  }
  EXPECT_FALSE(IsBlocked(SIGXFSZ));
  EXPECT_FALSE(IsPending(SIGXFSZ));
}

TEST(FilesLinux, AGuardLeavesTheSignalBlockedForAThreadThatHadIt) {
  std::thread([] {  // so that it ends with what it has blocked
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGXFSZ);
    ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &set, nullptr));
    {
      const Platform::FileLimitGuard guard;
      pthread_kill(pthread_self(), SIGXFSZ);
    }
    EXPECT_TRUE(IsBlocked(SIGXFSZ));
    EXPECT_FALSE(IsPending(SIGXFSZ));
    pthread_kill(pthread_self(), SIGXFSZ);
    {
      const Platform::FileLimitGuard guard;
      pthread_kill(pthread_self(), SIGXFSZ);
    }
    EXPECT_TRUE(IsPending(SIGXFSZ));  // as before
  })
      .join();
}

// --- Signals

namespace {

std::atomic<int> s_iHeard{0};

// Makes `call` on another thread, where it has to wait, has a signal cut in, and lets it go on by `release`.
template <class Call, class Release>
void CutIn(const Call& call, const Release& release) {
  struct sigaction before = {};
  struct sigaction counting = {};  // no call is made again for it
  counting.sa_handler = [](int) { ++s_iHeard; };
  sigaction(SIGUSR1, &counting, &before);
  s_iHeard = 0;
  std::atomic<unsigned long> id{0};
  std::thread other([&] {
    id = Platform::CurrentThreadId();
    call();
  });
  EXPECT_TRUE(TestSupport::Eventually([&] { return id != 0 && TestSupport::ThreadSleeps(id); }));
  pthread_kill(other.native_handle(), SIGUSR1);
  // The thread sanitizer keeps the handler back while system calls go past it, as those of a write do.
#if !defined(__SANITIZE_THREAD__)
  EXPECT_TRUE(TestSupport::Eventually([] { return s_iHeard == 1; }));
#endif
  release();
  other.join();
  sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace

TEST(FilesLinux, AReadGoesOnBehindASignal) {
  const TemporaryFolder folder;
  const std::string pipe = folder.File("pipe");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  int code = -1;
  FileHandle reader = FileHandle::OpenForReading(pipe.c_str(), code);
  ASSERT_EQ(0, code);
  char byte = 0;
  std::size_t done = 0;
  CutIn([&] { code = reader.Read(&byte, 1, done); }, [&] { EXPECT_EQ(1, write(writer, "x", 1)); });
  EXPECT_EQ(0, code);
  EXPECT_EQ(1u, done);
  EXPECT_EQ('x', byte);
  close(writer);
}

TEST(FilesLinux, AWriteGoesOnBehindASignal) {
  const TemporaryFolder folder;
  const std::string pipe = folder.File("pipe");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  int code = -1;
  FileHandle writer = FileHandle::OpenForWriting(pipe.c_str(), code);
  ASSERT_EQ(0, code);
  const int room = fcntl(reader, F_GETPIPE_SZ);
  std::string bytes(static_cast<std::size_t>(room), 'x');
  std::size_t done = 0;
  ASSERT_EQ(0, writer.Write(bytes.data(), bytes.size(), done));
  ASSERT_EQ(bytes.size(), done);
  CutIn([&] { code = writer.Write("y", 1, done); },
        [&] { EXPECT_EQ(room, read(reader, bytes.data(), bytes.size())); });
  EXPECT_EQ(0, code);
  EXPECT_EQ(1u, done);
  char byte = 0;
  EXPECT_EQ(1, read(reader, &byte, 1));
  EXPECT_EQ('y', byte);
  close(reader);
}

// --- Cancellation

// A cancellation inside a function that nothing may leave would end the process.
TEST(FilesLinux, ACancellationWaits) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "bytes");
  struct Work {
    const TemporaryFolder& m_folder;
    const std::string& m_sFile;
    bool m_bDone = false;
    static void* Run(void* work) {
      static_cast<Work*>(work)->Run();
      pthread_testcancel();
      return nullptr;
    }
    // Not inlined: the address sanitizer minds variables on a stack that a cancellation leaves.
    [[gnu::noinline]] void Run() {
      pthread_cancel(pthread_self());
      std::vector<std::string> names;
      std::size_t done = 0;
      char byte = 0;
      FileHandle handle = Appending(m_sFile);
      handle.Write("!", 1, done);
      handle.Truncate(6);
      handle.Close();
      int code = 0;
      FileHandle::OpenForReading(m_sFile.c_str(), code).Read(&byte, 1, done);
      Platform::CopyFile(m_sFile.c_str(), m_folder.File("copy").c_str());
      Platform::RenameFile(m_folder.File("copy").c_str(), m_folder.File("new").c_str());
      Platform::ListDirectory(m_folder.Path().c_str(), "*", names);
      m_bDone = names.size() == 4 && byte == 'b';
    }
  } work{folder, file};
  pthread_t thread;
  ASSERT_EQ(0, pthread_create(&thread, nullptr, Work::Run, &work));
  void* result = nullptr;
  ASSERT_EQ(0, pthread_join(thread, &result));
  EXPECT_EQ(PTHREAD_CANCELED, result);
  EXPECT_TRUE(work.m_bDone);
  EXPECT_EQ("bytes!", ReadFile(folder.File("new")));
}
