#include "Platform/Machine.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace Platform = Oxa::Core::Platform;

TEST(Machine, ProcessIdIsTheSameOnEveryThread) {
  const unsigned long id = Platform::ProcessId();
  EXPECT_NE(0u, id);
  unsigned long other = 0;
  std::thread([&] { other = Platform::ProcessId(); }).join();
  EXPECT_EQ(id, other);
}

TEST(Machine, ExecutablePathNamesThisProgramsFile) {
  std::string path;
  ASSERT_EQ(0, Platform::ExecutablePath(path));
  EXPECT_NE(std::string::npos, path.find("PlatformTests"));
  EXPECT_TRUE(std::ifstream(path).good()) << path;
}

TEST(Machine, HostNameIsWholeAndWithoutATerminator) {
  std::string name;
  ASSERT_EQ(0, Platform::HostName(name));
  EXPECT_FALSE(name.empty());
  EXPECT_EQ(std::string::npos, name.find('\0'));
}

TEST(Machine, OperatingSystemNameIsOneLine) {
  std::string name;
  ASSERT_EQ(0, Platform::OperatingSystemName(name));
  EXPECT_FALSE(name.empty());
  EXPECT_EQ(std::string::npos, name.find_first_of("\r\n"));
  std::string again;
  ASSERT_EQ(0, Platform::OperatingSystemName(again));
  EXPECT_EQ(name, again);
}

TEST(Machine, ThereIsAtLeastOneProcessor) { EXPECT_GE(Platform::NumberOfProcessors(), 1u); }

TEST(Machine, KnownErrorCodeHasATextWithoutLineEnd) {
  std::string text;
  ASSERT_TRUE(Platform::SystemErrorText(ENOENT, text));
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(std::string::npos, text.find_first_of("\r\n"));
  std::string other;
  ASSERT_TRUE(Platform::SystemErrorText(EACCES, other));
  EXPECT_NE(text, other);
}

TEST(Machine, UnknownErrorCodeIsToldAndLeavesTheText) {
  for (const int code : {INT_MAX, INT_MIN, -1, 1000000}) {
    std::string text = "untouched";
    EXPECT_FALSE(Platform::SystemErrorText(code, text)) << code;
    EXPECT_EQ("untouched", text) << code;
  }
}

TEST(Machine, EveryThreadIsToldTheSame) {
  std::string program;
  std::string host;
  std::string system;
  ASSERT_EQ(0, Platform::ExecutablePath(program));
  ASSERT_EQ(0, Platform::HostName(host));
  ASSERT_EQ(0, Platform::OperatingSystemName(system));
  const unsigned long id = Platform::ProcessId();
  const auto ask = [&] {
    std::string name;
    EXPECT_TRUE(Platform::ExecutablePath(name) == 0 && name == program) << name;
    EXPECT_TRUE(Platform::HostName(name) == 0 && name == host) << name;
    EXPECT_TRUE(Platform::OperatingSystemName(name) == 0 && name == system) << name;
    EXPECT_TRUE(Platform::SystemErrorText(ENOENT, name) && !name.empty());
    EXPECT_EQ(id, Platform::ProcessId());
    EXPECT_GE(Platform::NumberOfProcessors(), 1u);
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(ask);
  for (std::thread& thread : threads) thread.join();
}

// What is told goes to the system alone: nothing here changes, whatever the name is like.
TEST(Machine, AnyTextMayBeTheNameOfAThread) {
  std::thread([] {
    for (const std::string& name : {std::string(), std::string("probe"), std::string(100000, 'x'),
                                    std::string("two\nlines"), std::string("\xFF\x80")})
      Platform::TellThreadName(name.c_str());
    EXPECT_NE(0u, Platform::ProcessId());
  }).join();
}
