#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>
#include <pthread.h>

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
