#include "Platform/Machine.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace Platform = Oxa::Core::Platform;

namespace {

// What a shell command prints, without the last line end.
std::string OutputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
  std::string text;
  for (int c = fgetc(pipe.get()); c != EOF; c = fgetc(pipe.get())) text += static_cast<char>(c);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

// Set in a copy of this program, to the path of its file.
const char sCHILD_FLAG[] = "OXACORE_MACHINE_TEST_CHILD";

}  // namespace

TEST(MachineLinux, ProcessIdIsTheSystems) {
  EXPECT_EQ(static_cast<unsigned long>(getpid()), Platform::ProcessId());
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(Platform::ProcessId() == static_cast<unsigned long>(getpid()) ? 0 : 1);
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
}

TEST(MachineLinux, ThreadNameIsCutToFifteenBytes) {
  std::thread([] {
    char name[16] = {};
    for (const char* const told : {"probe", "of exactly 15 b", "of exactly 15 bytes and more", ""}) {
      Platform::TellThreadName(told);
      ASSERT_EQ(0, pthread_getname_np(pthread_self(), name, sizeof name));
      EXPECT_EQ(std::string(told).substr(0, 15), name);
    }
  }).join();
}

TEST(MachineLinux, ExecutablePathIsTheKernels) {
  std::string path;
  ASSERT_EQ(0, Platform::ExecutablePath(path));
  EXPECT_EQ(std::filesystem::read_symlink("/proc/self/exe").string(), path);
}

// Runs a copy of this program, which removes its own file and compares the path that it is told then.
TEST(MachineLinux, ExecutablePathKeepsItsNameWhenTheFileIsGone) {
  if (const char* expected = getenv(sCHILD_FLAG)) {
    std::filesystem::remove(expected);
    std::string path;
    ASSERT_EQ(0, Platform::ExecutablePath(path));
    EXPECT_EQ(expected, path);
    return;
  }
  char pattern[] = "/tmp/oxacore-machine-XXXXXX";
  const std::filesystem::path folder = mkdtemp(pattern);
  const std::filesystem::path copy = folder / std::string(200, 'p') / std::string(200, 'q') / "copy of me";
  std::filesystem::create_directories(copy.parent_path());
  std::filesystem::copy_file(std::filesystem::read_symlink("/proc/self/exe"), copy);
  const std::string command = std::string(sCHILD_FLAG) + "='" + copy.string() + "' '" + copy.string() +
                              "' --gtest_filter=MachineLinux.ExecutablePathKeepsItsNameWhenTheFileIsGone";
  EXPECT_EQ(0, system((command + " >/dev/null").c_str()));
  std::filesystem::remove_all(folder);
}

TEST(MachineLinux, HostNameIsTheSystems) {
  std::string name;
  ASSERT_EQ(0, Platform::HostName(name));
  EXPECT_EQ(OutputOf("uname -n"), name);
}

TEST(MachineLinux, OperatingSystemNameIsKernelAndDistribution) {
  std::string name;
  ASSERT_EQ(0, Platform::OperatingSystemName(name));
  const std::string distribution = OutputOf(". /etc/os-release && printf %s \"$PRETTY_NAME\"");
  EXPECT_EQ(OutputOf("uname -sr") + (distribution.empty() ? "" : " (" + distribution + ")"), name);
}

TEST(MachineLinux, NumberOfProcessorsIsWhatIsOnline) {
  EXPECT_EQ(OutputOf("getconf _NPROCESSORS_ONLN"), std::to_string(Platform::NumberOfProcessors()));
}

TEST(MachineLinux, ErrorTexts) {
  std::string text;
  ASSERT_TRUE(Platform::SystemErrorText(ENOENT, text));
  EXPECT_EQ("No such file or directory", text);
  ASSERT_TRUE(Platform::SystemErrorText(ETIMEDOUT, text));
  EXPECT_EQ("Connection timed out", text);
  ASSERT_TRUE(Platform::SystemErrorText(0, text));
  EXPECT_EQ("Success", text);
  EXPECT_FALSE(Platform::SystemErrorText(41, text));
}
