#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <fstream>
#include <string>
#include <thread>

using Oxa::Core::System;

namespace {

// What the kernel calls the calling thread.
std::string NameInTheKernel() {
  char name[16] = {};
  EXPECT_EQ(0, pthread_getname_np(pthread_self(), name, sizeof name));
  return name;
}

}  // namespace

TEST(ThreadNameOnLinux, GoesToTheKernelAsFarAsItFits) {
  std::thread([] {
    System::Instance()->SetCurrentThreadName("LogManager Thread");
    EXPECT_EQ("LogManager Thre", NameInTheKernel());
    std::string name;
    System::Instance()->GetCurrentThreadName(name);
    EXPECT_EQ("LogManager Thread", name);
    System::Instance()->SetCurrentThreadName("short");
    EXPECT_EQ("short", NameInTheKernel());
  }).join();
}

TEST(ThreadNameOnLinux, IsTheCallingThreads) {
  const std::string before = NameInTheKernel();
  std::thread([] { System::Instance()->SetCurrentThreadName("other"); }).join();
  EXPECT_EQ(before, NameInTheKernel());
}

// Only a privileged process can have an id given anew at once; elsewhere it takes the kernel millions of threads.
TEST(ThreadNameOnLinux, AnIdThatIsGivenAnewHasTheNameOfBefore) {
  unsigned long named = 0;
  std::thread([&named] {
    named = System::Instance()->GetCurrentThreadId();
    System::Instance()->SetCurrentThreadName("former");
  }).join();
  for (int attempt = 0; attempt < 100; ++attempt) {  // other processes take ids meanwhile
    std::ofstream lastId("/proc/sys/kernel/ns_last_pid");
    if (!(lastId << named - 1 << std::flush)) GTEST_SKIP() << "not allowed to choose the next id";
    unsigned long id = 0;
    std::string name = "none";
    std::thread([&id, &name] {
      id = System::Instance()->GetCurrentThreadId();
      System::Instance()->GetCurrentThreadName(name);
    }).join();
    if (id != named) continue;
    EXPECT_EQ("former", name);
    return;
  }
  GTEST_SKIP() << "the id is always somebody else's";
}
