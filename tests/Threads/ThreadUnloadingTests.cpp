// One test in a program of its own: from the unloading there is no way back.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <gtest/gtest.h>

#include "Core/LibraryState.h"
#include "ErrorHandling/Hooks.h"
#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;

namespace {

std::atomic<int> s_iLogged{0};

}  // namespace

TEST(ThreadWhileUnloading, EndsWithoutTheLogAndWithoutARaise) {
  using Oxa::Core::TheHooks;
  TheHooks().logThreadError = [](const std::string&) { ++s_iLogged; };
  TheHooks().logErrorRaised = [](Error&) { ++s_iLogged; };
  Oxa::Core::SetLibraryUnloading();
  Hearing hearing;
  const SharedThread thread = Thread::Create("T");
  thread->AddListener(hearing);
  EXPECT_TRUE(thread->Start(SharedTask()));  // the raise returns, so this is told once
  EXPECT_TRUE(Eventually([&] { return hearing.Heard().size() == 1 && thread.use_count() == 1; }));
  EXPECT_EQ(Thread::eTHREAD_ERROR, thread->GetState());
  EXPECT_TRUE(thread->Start(Do([](TaskDirective&) -> int { throw 1; })));
  EXPECT_TRUE(Eventually([&] { return hearing.Heard().size() == 2 && thread.use_count() == 1; }));
  EXPECT_TRUE(thread->Start(Do([](TaskDirective&) -> int {
    throw Oxa::Core::InvalidParameter("gain");  // a raise would return
  })));
  EXPECT_TRUE(Eventually([&] { return hearing.Heard().size() == 3 && thread.use_count() == 1; }));
  EXPECT_EQ("error T: Invalid Parameter: gain = {Not Provided}", hearing.Heard().back());
  EXPECT_EQ(0, s_iLogged);
}
