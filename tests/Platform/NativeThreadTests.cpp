#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "Platform/Kill.h"
#include "Platform/NativeThread.h"
#include "Support/Eventually.h"

namespace Platform = Oxa::Core::Platform;
using Platform::Deadline;
using Platform::NativeThread;
using TestSupport::Eventually;
using EKillEnd = NativeThread::EKillEnd;
using Shared = boost::shared_ptr<NativeThread>;

namespace {

// A thread with the work that it is to do.
class Working {
 public:
  explicit Working(std::function<unsigned int()> work) : m_work(std::move(work)) {}
  Working(const Working&) = delete;
  Working& operator=(const Working&) = delete;

  int Start(std::uint32_t stackSize = 65536) {
    return NativeThread::Start(m_thread, stackSize, &Run, this, m_ulId);
  }
  bool EndsWith(unsigned int expected) {
    unsigned int code = 0;
    return Eventually([&] { return m_thread->HasEnded(code); }) && code == expected;
  }
  NativeThread* operator->() const { return m_thread.get(); }
  unsigned long Id() const { return m_ulId; }
  NativeThread::KillResult Kill() { return m_thread->Kill(57005, Deadline::InMilliseconds(10000)); }

 private:
  static unsigned int Run(void* self) { return static_cast<Working*>(self)->m_work(); }

  const std::function<unsigned int()> m_work;
  Shared m_thread = NativeThread::Create();
  unsigned long m_ulId = 0;
};

#if defined(__SANITIZE_THREAD__)
#define SKIP_KILLS() GTEST_SKIP() << "the thread sanitizer holds the signals of kills back"
#else
#define SKIP_KILLS() static_cast<void>(0)
#endif

}  // namespace

TEST(NativeThread, RunsItsRoutineAndTellsItsIdAndItsCode) {
  std::atomic<unsigned long> id{0};
  Working thread([&id] {
    id = Platform::CurrentThreadId();
    return 17u;
  });
  ASSERT_EQ(0, thread.Start());
  const unsigned long told = thread.Id();
  EXPECT_TRUE(thread.EndsWith(17));
  EXPECT_EQ(id, told);
  EXPECT_NE(0u, told);
}

TEST(NativeThread, TheIdIsRightHoweverFastTheThreadIs) {
  for (int i = 0; i != 500; ++i) {
    std::atomic<unsigned long> id{0};
    Working thread([&id] {
      id = Platform::CurrentThreadId();
      return 0u;
    });
    ASSERT_EQ(0, thread.Start());
    const unsigned long told = thread.Id();
    ASSERT_TRUE(thread.EndsWith(0));
    ASSERT_EQ(id, told);
  }
}

TEST(NativeThread, HasNotEndedWhileItRuns) {
  std::atomic<bool> end{false};
  Working thread([&end] { return Eventually([&end] { return end.load(); }) ? 1u : 2u; });
  ASSERT_EQ(0, thread.Start());
  unsigned int code;
  EXPECT_FALSE(thread->HasEnded(code));
  end = true;
  EXPECT_TRUE(thread.EndsWith(1));
}

TEST(NativeThread, KnowsWhatStackItWasAskedFor) {
  std::atomic<std::uint32_t> asked{0};
  Working thread([&asked] {
    asked = NativeThread::OwnStackSize();
    return 0u;
  });
  ASSERT_EQ(0, thread.Start(123457));
  EXPECT_TRUE(thread.EndsWith(0));
  EXPECT_EQ(123457u, asked);
  EXPECT_EQ(0u, NativeThread::OwnStackSize());
}

// A little of it is the system's own.
TEST(NativeThread, HasRoomForAMegabyteWhateverWasAskedFor) {
  constexpr std::size_t room = 900 * 1024;
  Working thread([] {
    volatile char bytes[room];
    for (std::size_t i = 0; i < room; i += 4096) bytes[i] = 1;
    return static_cast<unsigned int>(bytes[4096]);
  });
  ASSERT_EQ(0, thread.Start(1));
  EXPECT_TRUE(thread.EndsWith(1));
}

TEST(NativeThread, ManyGiveTheirStacksBack) {
  for (int i = 0; i != 3000; ++i) {  // 3 GB of stacks if they were kept
    Working thread([] { return 0u; });
    ASSERT_EQ(0, thread.Start());
    ASSERT_TRUE(thread.EndsWith(0));
  }
  EXPECT_TRUE(NativeThread::AwaitEnding(Deadline::InMilliseconds(10000)));
}

TEST(NativeThread, AKilledOneEndsWhereItStands) {
  SKIP_KILLS();
  std::atomic<int> destroyed{0};
  std::atomic<bool> begun{false};
  Working thread([&]() -> unsigned int {
    struct Destroyed {
      std::atomic<int>& m_count;
      ~Destroyed() { ++m_count; }
    } object{destroyed};
    begun = true;
    while (true) {
    }
  });
  ASSERT_EQ(0, thread.Start());
  ASSERT_TRUE(Eventually([&begun] { return begun.load(); }));
  EXPECT_EQ(EKillEnd::eKILLED, thread.Kill().m_eEnd);
  EXPECT_TRUE(thread.EndsWith(57005));
  EXPECT_EQ(0, destroyed);
  EXPECT_EQ(EKillEnd::eENDED, thread.Kill().m_eEnd);
  EXPECT_TRUE(NativeThread::AwaitEnding(Deadline::InMilliseconds(10000)));
}

TEST(NativeThread, AKillRightAfterTheStartArrives) {
  SKIP_KILLS();
  for (int i = 0; i != 200; ++i) {
    Working thread([]() -> unsigned int {
      while (true) {
      }
    });
    ASSERT_EQ(0, thread.Start());
    ASSERT_EQ(EKillEnd::eKILLED, thread.Kill().m_eEnd);
  }
}

TEST(NativeThread, AKillWaitsForAHoldAndForNestedOnes) {
  SKIP_KILLS();
  std::atomic<int> step{0};
  Working thread([&]() -> unsigned int {
    Platform::HoldKill outer;
    {
      const Platform::HoldKill inner;
      step = 1;
      Eventually([&] { return step == 2; });
    }
    step = 3;
    Eventually([&] { return step == 4; });
    step = 5;
    outer.Release();
    step = 6;
    return 0;
  });
  ASSERT_EQ(0, thread.Start());
  ASSERT_TRUE(Eventually([&] { return step == 1; }));
  std::atomic<bool> killed{false};
  std::thread killer([&] {
    EXPECT_EQ(EKillEnd::eKILLED, thread.Kill().m_eEnd);
    killed = true;
  });
  step = 2;
  ASSERT_TRUE(Eventually([&] { return step == 3; }));
  EXPECT_FALSE(killed);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  step = 4;
  killer.join();
  EXPECT_EQ(5, step);
}

TEST(NativeThread, AHoldThatOutlastsTheKillersPatienceIsNoEnd) {
  SKIP_KILLS();
  std::atomic<bool> in{false}, end{false};
  Working thread([&] {
    const Platform::HoldKill hold;
    in = true;
    Eventually([&] { return end.load(); });
    return 3u;
  });
  ASSERT_EQ(0, thread.Start());
  ASSERT_TRUE(Eventually([&] { return in.load(); }));
  const NativeThread::KillResult result = thread->Kill(57005, Deadline::InMilliseconds(20));
  EXPECT_EQ(EKillEnd::eFAILED, result.m_eEnd);
  EXPECT_NE(0, result.m_iCode);
  end = true;
  EXPECT_TRUE(thread.EndsWith(3));
}

TEST(NativeThread, CleanUpsOfAKilledOneRunNewestFirst) {
  SKIP_KILLS();
  static std::atomic<int> s_order{0};
  static std::atomic<bool> s_begun{false};
  s_order = 0;
  Working thread([]() -> unsigned int {
    const Platform::KillCleanUp outer([](void*) { s_order = s_order * 10 + 1; }, nullptr);
    const Platform::KillCleanUp inner([](void*) { s_order = s_order * 10 + 2; }, nullptr);
    {
      const Platform::KillCleanUp over([](void*) { s_order = s_order * 10 + 3; }, nullptr);
    }
    s_begun = true;
    while (true) {
    }
  });
  ASSERT_EQ(0, thread.Start());
  ASSERT_TRUE(Eventually([] { return s_begun.load(); }));
  EXPECT_EQ(EKillEnd::eKILLED, thread.Kill().m_eEnd);
  EXPECT_EQ(21, s_order);
}

TEST(NativeThread, OneThatRefusesKillsEndsByItself) {
  SKIP_KILLS();
  std::atomic<bool> in{false}, end{false};
  Working thread([&] {
    NativeThread::RefuseKills();
    in = true;
    Eventually([&] { return end.load(); });
    return 9u;
  });
  ASSERT_EQ(0, thread.Start());
  ASSERT_TRUE(Eventually([&] { return in.load(); }));
  EXPECT_EQ(EKillEnd::eENDED, thread.Kill().m_eEnd);
  EXPECT_FALSE(NativeThread::AwaitEnding(Deadline::InMilliseconds(20)));
  end = true;
  EXPECT_TRUE(thread.EndsWith(9));
  EXPECT_TRUE(NativeThread::AwaitEnding(Deadline::InMilliseconds(10000)));
}

TEST(NativeThread, MayCountAsEndedBeforeItIs) {
  std::atomic<bool> in{false}, end{false};
  Working thread([&] {
    NativeThread::CountAsEnded();
    in = true;
    Eventually([&] { return end.load(); });
    return 9u;
  });
  ASSERT_EQ(0, thread.Start());
  ASSERT_TRUE(Eventually([&] { return in.load(); }));
  EXPECT_TRUE(thread.EndsWith(0));
  end = true;
  EXPECT_TRUE(NativeThread::AwaitEnding(Deadline::InMilliseconds(10000)));
}

TEST(NativeThread, PrioritiesOfTheDeadAreNoMatter) {
  Working thread([] { return 0u; });
  ASSERT_EQ(0, thread.Start());
  ASSERT_TRUE(thread.EndsWith(0));
  for (const int priority : {-15, -2, -1, 0, 1, 2, 15}) thread->SetPriority(priority);
}
