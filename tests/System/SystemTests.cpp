#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "Core/LibraryGlobals.h"
#include "Platform/Machine.h"
#include "Platform/Threads.h"

using Oxa::Core::LibraryGlobals;
using Oxa::Core::System;
namespace Platform = Oxa::Core::Platform;

namespace {

using Fact = void (System::*)(std::string&) const;

// What the operation gives, into a text that wasn't empty before.
std::string Ask(Fact fact) {
  std::string value = "what was there before";
  (System::Instance()->*fact)(value);
  return value;
}

// A global that is built after System.
struct LaterGlobal {
  static System* s_pSeenAtBirth;
  static System* s_pSeenAtDeath;
  LaterGlobal() { s_pSeenAtBirth = System::Instance(); }
  ~LaterGlobal() { s_pSeenAtDeath = System::Instance(); }
};

System* LaterGlobal::s_pSeenAtBirth = nullptr;
System* LaterGlobal::s_pSeenAtDeath = nullptr;

}  // namespace

// --- The object

TEST(System, InstanceIsTheGlobalOfThatName) {
  ASSERT_NE(nullptr, System::Instance());
  EXPECT_EQ(LibraryGlobals()->Get<System>("System"), System::Instance());
}

TEST(System, LaterGlobalFindsItAtBirthAndAtDeath) {
  LibraryGlobals()->Add<LaterGlobal>("LaterGlobal");
  EXPECT_EQ(System::Instance(), LaterGlobal::s_pSeenAtBirth);
  LibraryGlobals()->Remove<LaterGlobal>("LaterGlobal");
  EXPECT_EQ(System::Instance(), LaterGlobal::s_pSeenAtDeath);
}

TEST(System, InstanceStaysTheFirstWhileAnotherComesAndGoes) {
  System* const first = System::Instance();
  ASSERT_NE(nullptr, LibraryGlobals()->Add<System>("Another"));
  EXPECT_EQ(first, System::Instance());
  LibraryGlobals()->Remove<System>("Another");
  EXPECT_EQ(first, System::Instance());
}

TEST(System, InstanceIsNullOnceTheGlobalIsGone) {
  EXPECT_EXIT(
      {
        LibraryGlobals()->Remove<System>("System");
        std::_Exit(System::Instance() == nullptr ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

// --- What doesn't change

TEST(System, Product) {
  EXPECT_EQ("OxaCore", Ask(&System::GetProductName));
  EXPECT_EQ("2.1.6", Ask(&System::GetProductVersion));
}

TEST(System, HostNameIsWhole) {
  std::string host;
  ASSERT_EQ(0, Platform::HostName(host));
  EXPECT_EQ(host, Ask(&System::GetHostName));
}

TEST(System, OsNameIdentifiesTheSystem) {
  std::string name;
  ASSERT_EQ(0, Platform::OperatingSystemName(name));
  EXPECT_EQ(name, Ask(&System::GetOsName));
}

TEST(System, NumberOfProcessorsIsTheSystems) {
  EXPECT_EQ(Platform::NumberOfProcessors(), System::Instance()->GetNumProcessors());
}

// --- The process

TEST(System, ProcessNameAndPathAreTheExecutables) {
  std::string executable;
  ASSERT_EQ(0, Platform::ExecutablePath(executable));
  EXPECT_EQ(executable, Ask(&System::GetProcessPath) + Ask(&System::GetProcessName));
  EXPECT_EQ(std::string::npos, Ask(&System::GetProcessName).find('/'));
}

TEST(System, ProcessPathEndsInASeparator) { EXPECT_EQ('/', Ask(&System::GetProcessPath).back()); }

TEST(System, SetProcessPathTakesWhatItIsGiven) {
  const std::string before = Ask(&System::GetProcessPath);
  for (const std::string path : {"/no/separator/at/the/end", "", "x\\", "//a//"}) {
    System::Instance()->SetProcessPath(path);
    EXPECT_EQ(path, Ask(&System::GetProcessPath));
  }
  System::Instance()->SetProcessPath(before);
}

TEST(System, SetProcessNameTakesWhatItIsGiven) {
  const std::string before = Ask(&System::GetProcessName);
  for (const std::string name : {"My Station", ""}) {
    System::Instance()->SetProcessName(name);
    EXPECT_EQ(name, Ask(&System::GetProcessName));
  }
  System::Instance()->SetProcessName(before);
}

// Nobody ever reads half of a text.
TEST(System, ProcessNameAndPathAreSetWhileOthersAsk) {
  const std::string nameBefore = Ask(&System::GetProcessName), pathBefore = Ask(&System::GetProcessPath);
  const std::string texts[] = {std::string(20000, 'a'), std::string(20000, 'b')};  // long to copy
  System::Instance()->SetProcessName(texts[0]);
  System::Instance()->SetProcessPath(texts[0]);
  std::atomic<int> wrong{0};
  const auto isOne = [&texts](const std::string& text) { return text == texts[0] || text == texts[1]; };
  std::vector<std::thread> threads;
  threads.reserve(6);
  for (int number = 0; number < 6; ++number) {
    threads.emplace_back([&, sets = number < 2] {
      for (int round = 0; round < 5000; ++round) {
        if (sets) System::Instance()->SetProcessName(texts[round % 2]);
        if (sets) System::Instance()->SetProcessPath(texts[round % 2]);
        if (!isOne(Ask(&System::GetProcessName))) ++wrong;
        if (!isOne(Ask(&System::GetProcessPath))) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, wrong);
  System::Instance()->SetProcessName(nameBefore);
  System::Instance()->SetProcessPath(pathBefore);
}

TEST(System, ProcessIdIsANumberAndItsText) {
  EXPECT_EQ(Platform::ProcessId(), System::Instance()->GetProcessId());
  EXPECT_EQ(std::to_string(Platform::ProcessId()), Ask(&System::GetProcessId));
}

// --- Threads

TEST(System, ThreadIdIsANumberAndItsText) {
  const unsigned long own = System::Instance()->GetCurrentThreadId();
  EXPECT_EQ(Platform::CurrentThreadId(), own);
  std::thread([own] {
    const unsigned long other = System::Instance()->GetCurrentThreadId();
    EXPECT_NE(own, other);
    EXPECT_EQ(std::to_string(other), Ask(&System::GetCurrentThreadId));
  }).join();
}

TEST(System, ThreadThatWasNeverNamedHasAnEmptyName) {
  std::thread([] { EXPECT_EQ("", Ask(&System::GetCurrentThreadName)); }).join();
}

TEST(System, SecondNameReplacesTheFirst) {
  std::thread([] {
    System::Instance()->SetCurrentThreadName("first");
    EXPECT_EQ("first", Ask(&System::GetCurrentThreadName));
    System::Instance()->SetCurrentThreadName("a second that is longer");
    EXPECT_EQ("a second that is longer", Ask(&System::GetCurrentThreadName));
    System::Instance()->SetCurrentThreadName("");
    EXPECT_EQ("", Ask(&System::GetCurrentThreadName));
  }).join();
}

TEST(System, NameIsTheThreadsOwn) {
  std::thread([] {
    System::Instance()->SetCurrentThreadName("outer");
    std::thread([] {
      EXPECT_EQ("", Ask(&System::GetCurrentThreadName));
      System::Instance()->SetCurrentThreadName("inner");
    }).join();
    EXPECT_EQ("outer", Ask(&System::GetCurrentThreadName));
  }).join();
}

TEST(System, ManyThreadsNameThemselvesAndAskAtOnce) {
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  threads.reserve(8);
  for (int number = 0; number < 8; ++number) {
    threads.emplace_back([number, &wrong] {
      for (int round = 0; round < 500; ++round) {
        const std::string name = "thread " + std::to_string(number) + " round " + std::to_string(round);
        System::Instance()->SetCurrentThreadName(name);
        if (Ask(&System::GetCurrentThreadName) != name) ++wrong;
        if (Ask(&System::GetProcessPath).empty()) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, wrong);
}
