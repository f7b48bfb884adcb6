#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/RegistryName.h"
#include "Platform/Secrets.h"
#include "Support/EndedByForce.h"
#include "Support/TemporaryFolder.h"

namespace Platform = Oxa::Core::Platform;
using Platform::FileOfValue;
using Platform::FolderOfKey;

namespace {

// What a disk does with a file that is to be brought there: 0 or the system's error code.
std::function<int(int file)> s_onSync;

}  // namespace

// In place of the system's.
extern "C" int fsync(int fd) {
  if (!s_onSync) return static_cast<int>(::syscall(SYS_fsync, fd));
  errno = s_onSync(fd);
  return errno == 0 ? 0 : -1;
}

namespace {

TEST(RegistryName, OfAKeyIsAFolderForEachPart) {
  EXPECT_EQ("/Software/Acme/Probe 2.1", FolderOfKey("Software\\Acme\\Probe 2.1"));
  EXPECT_EQ("/%", FolderOfKey(""));
  EXPECT_EQ("/%/A/%", FolderOfKey("\\A\\"));
  EXPECT_EQ("/%2E/%2E./%2Ehidden/a.b.", FolderOfKey(".\\..\\.hidden\\a.b."));
  EXPECT_EQ("/a%2Fb", FolderOfKey("a/b"));
  EXPECT_EQ("/\xc3\xa9%25%3D%00%7F", FolderOfKey(std::string("\xc3\xa9%=\0\x7f", 6)));
}

TEST(RegistryName, OfAValueIsAFileThatNoKeyCanBe) {
  EXPECT_EQ("Password=", FileOfValue("Password"));
  EXPECT_EQ("%5Ca%3D=", FileOfValue("\\a="));
  EXPECT_EQ("%=", FileOfValue(""));
}

mode_t ModeOf(const std::string& name) {
  struct stat facts = {};
  EXPECT_EQ(0, stat(name.c_str(), &facts)) << name;
  return facts.st_mode & 07777U;
}

TEST(Registry, BelongsToItsUserAlone) {
  const TestSupport::TemporaryFolder folder;
  const std::string config = folder.File("config");
  ::setenv("XDG_CONFIG_HOME", config.c_str(), 1);
  umask(0);
  ASSERT_EQ(0, Platform::CreateRegistryKey(HKEY_LOCAL_MACHINE, "A\\B"));
  ASSERT_EQ(0, Platform::WriteRegistryValue(HKEY_LOCAL_MACHINE, "A\\B", "V", {1}));
  const std::string key = config + "/OxaCore/registry/HKEY_LOCAL_MACHINE/A/B";
  EXPECT_EQ(0600U, ModeOf(key + "/V="));
  for (std::string name = key; name.size() >= config.size(); name.erase(name.rfind('/')))
    EXPECT_EQ(0700U, ModeOf(name)) << name;
}

TEST(Registry, BringsAValueToTheDiskBeforeItTakesThePlaceOfAnother) {
  const TestSupport::TemporaryFolder folder;
  const Platform::RegistryFolder there(folder.Path().c_str());
  ASSERT_EQ(0, Platform::CreateRegistryKey(HKEY_CURRENT_USER, "K"));
  ASSERT_EQ(0, Platform::WriteRegistryValue(HKEY_CURRENT_USER, "K", "V", {'o', 'l', 'd'}));
  std::vector<std::string> seen;
  s_onSync = [&](int file) {
    char bytes[10];
    const ssize_t size = ::pread(file, bytes, sizeof bytes, 0);
    seen.emplace_back(bytes, size > 0 ? static_cast<std::size_t>(size) : 0);
    seen.push_back(folder.Read("HKEY_CURRENT_USER/K/V="));
    return 0;
  };
  EXPECT_EQ(0, Platform::WriteRegistryValue(HKEY_CURRENT_USER, "K", "V", {'n', 'e', 'w'}));
  EXPECT_EQ((std::vector<std::string>{"new", "old"}), seen);
  s_onSync = [](int) { return EIO; };
  EXPECT_EQ(EIO, Platform::WriteRegistryValue(HKEY_CURRENT_USER, "K", "V", {'b', 'a', 'd'}));
  s_onSync = nullptr;
  EXPECT_EQ("new", folder.Read("HKEY_CURRENT_USER/K/V="));
}

std::ptrdiff_t CountIn(const std::string& folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

TEST(Registry, AKillWaitsUntilAValueStands) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the thread sanitizer holds the signals of kills back";
#endif
  const TestSupport::TemporaryFolder folder;
  const std::string path = folder.Path();
  const std::string key = "K";
  const std::string name = "V";
  const std::vector<unsigned char> bytes = {'n', 'e', 'w'};
  const std::ptrdiff_t files = CountIn("/proc/self/fd");
  TestSupport::KilledThread::Run([&](std::atomic<bool>& now) {
    const Platform::RegistryFolder there(path.c_str());
    s_onSync = [&](int) {
      now = true;
      TestSupport::KilledThread::GiveAKillTime();
      return 0;
    };
    Platform::CreateRegistryKey(HKEY_CURRENT_USER, key);
    Platform::WriteRegistryValue(HKEY_CURRENT_USER, key, name, bytes);
  });
  s_onSync = nullptr;
  EXPECT_EQ("new", folder.Read("HKEY_CURRENT_USER/K/V="));
  EXPECT_EQ(1, CountIn(folder.File("HKEY_CURRENT_USER/K")));
  EXPECT_EQ(files, CountIn("/proc/self/fd"));
}

TEST(Registry, ACancellationWaits) {
  const TestSupport::TemporaryFolder folder;
  std::vector<unsigned char> bytes;
  EXPECT_TRUE(TestSupport::CancelledThread::Finishes([&] {
    const Platform::RegistryFolder there(folder.Path().c_str());
    Platform::CreateRegistryKey(HKEY_CURRENT_USER, "K");
    Platform::WriteRegistryValue(HKEY_CURRENT_USER, "K", "V", {1});
    Platform::ReadRegistryValue(HKEY_CURRENT_USER, "K", "V", bytes);
  }));
  EXPECT_EQ(std::vector<unsigned char>{1}, bytes);
}

TEST(Registry, WaitsForNoPipeAndReadsNoFlood) {
  const TestSupport::TemporaryFolder folder;
  const Platform::RegistryFolder there(folder.Path().c_str());
  ASSERT_EQ(0, Platform::CreateRegistryKey(HKEY_CURRENT_USER, "K"));
  const std::string key = folder.File("HKEY_CURRENT_USER/K/");
  ASSERT_EQ(0, mkfifo((key + "Pipe=").c_str(), 0600));
  std::vector<unsigned char> bytes;
  EXPECT_EQ(EINVAL, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "K", "Pipe", bytes));
  folder.Write("HKEY_CURRENT_USER/K/Flood=", "");
  std::filesystem::resize_file(key + "Flood=", (16U << 20U) + 1);
  EXPECT_EQ(EFBIG, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "K", "Flood", bytes));
  EXPECT_TRUE(bytes.empty());
}

TEST(Registry, WritesNothingThatItWouldNotRead) {
  const TestSupport::TemporaryFolder folder;
  const Platform::RegistryFolder there(folder.Path().c_str());
  ASSERT_EQ(0, Platform::CreateRegistryKey(HKEY_CURRENT_USER, "K"));
  ASSERT_EQ(0, Platform::WriteRegistryValue(HKEY_CURRENT_USER, "K", "V", {1}));
  std::vector<unsigned char> bytes((16U << 20U) + 1);
  EXPECT_EQ(EFBIG, Platform::WriteRegistryValue(HKEY_CURRENT_USER, "K", "V", bytes));
  ASSERT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "K", "V", bytes));
  EXPECT_EQ(std::vector<unsigned char>{1}, bytes);
  bytes.assign(16U << 20U, 2);
  ASSERT_EQ(0, Platform::WriteRegistryValue(HKEY_CURRENT_USER, "K", "V", bytes));
  bytes.clear();
  ASSERT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "K", "V", bytes));
  EXPECT_EQ(16U << 20U, bytes.size());
}

TEST(Registry, AnotherFolderIsTheThreadsOwn) {
  const TestSupport::TemporaryFolder folder;
  ::setenv("XDG_CONFIG_HOME", folder.File("config").c_str(), 1);
  const std::string own = folder.File("own");
  const Platform::RegistryFolder there(own.c_str());
  std::thread([] { EXPECT_EQ(0, Platform::CreateRegistryKey(HKEY_CURRENT_USER, "Other")); }).join();
  EXPECT_EQ(0, Platform::CreateRegistryKey(HKEY_CURRENT_USER, "Mine"));
  EXPECT_TRUE(folder.Has("config/OxaCore/registry/HKEY_CURRENT_USER/Other"));
  EXPECT_FALSE(folder.Has("own/HKEY_CURRENT_USER/Other"));
  EXPECT_TRUE(folder.Has("own/HKEY_CURRENT_USER/Mine"));
}

TEST(Registry, AFolderThatCannotBeMadeIsTold) {
  const TestSupport::TemporaryFolder folder;
  folder.Write("file", "");
  const std::string below = folder.File("file/registry");
  const Platform::RegistryFolder there(below.c_str());
  EXPECT_EQ(ENOTDIR, Platform::CreateRegistryKey(HKEY_CURRENT_USER, "K"));
}

}  // namespace
