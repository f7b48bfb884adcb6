// A thousand threads killed while they lock, unlock, wait, post, try and raise flags as fast as they can, without
// allocating: the library's own short locks must be free afterwards, and every line must go on moving.
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Semaphore.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <thread>

#include "Platform/Threads.h"
#include "Threads/ThreadTestSupport.h"

using namespace ThreadTests;
namespace Platform = Oxa::Core::Platform;
using Oxa::Core::Condition;
using Oxa::Core::MultiWait;
using Oxa::Core::Mutex;
using Oxa::Core::OSError;
using Oxa::Core::Semaphore;
using Platform::Deadline;

namespace {

#if defined(OXACORE_SOAK)
constexpr int iKILLS = 20000;
#else
constexpr int iKILLS = 1000;
#endif

const Elapse g_moment(1, Elapse::MilliSeconds);
const Elapse g_long(20);

// What victims and survivors share.
struct Playground {
  Condition m_condition{true};
  Semaphore m_semaphore{2};
  Platform::Event* m_pEvent = Platform::Event::Create();
  Platform::ShortLock m_shortLock;
  std::atomic<bool> m_bShortLockIsHeld{false};

  ~Playground() { Platform::Event::Destroy(m_pEvent); }

  void UseShortLock() {
    const Platform::ShortGuard guard(m_shortLock);
    m_bShortLockIsHeld = true;
    m_bShortLockIsHeld = false;
  }

  void UseCondition() {
    if (!m_condition.TryLock()) return;
    m_condition.TimedWait(g_moment);
    m_condition.Notify();
    m_condition.Unlock();
  }

  void UseSemaphore() {
    if (m_semaphore.TimedWait(g_moment)) m_semaphore.Post(1);
    if (m_semaphore.TryWait()) m_semaphore.Post(1);
  }

  void UseEvent() {
    m_pEvent->Set();
    m_pEvent->Wait(Deadline::InMilliseconds(1));
  }
};

// A condition that a victim left behind raises at whoever gets it next. That allocates, so it must not be the next
// victim.
void TakeOver(Condition& condition) {
  try {
    condition.Lock();
  } catch (OSError&) {
  }
  condition.Unlock();
}

// Goes on using the playground.
void Survive(Playground& ground, const std::atomic<bool>& end) {
  while (!end) {
    ground.UseShortLock();
    ground.UseSemaphore();
    ground.UseEvent();
    try {
      ground.UseCondition();
    } catch (OSError&) {
      ground.m_condition.Unlock();
    }
  }
}

// All of it works, and soon.
void ExpectAllInOrder(Playground& ground) {
  ASSERT_TRUE(Eventually([&ground] {
    if (!ground.m_shortLock.TryLock()) return false;
    ground.m_shortLock.Unlock();
    return true;
  }));
  ASSERT_FALSE(ground.m_bShortLockIsHeld);
  ground.m_semaphore.Post(1);
  ASSERT_TRUE(ground.m_semaphore.TimedWait(g_long));
  ground.m_pEvent->Set();
  ASSERT_TRUE(Eventually([&ground] {
    ground.m_pEvent->Set();
    return ground.m_pEvent->Wait(Deadline::InMilliseconds(1)).m_eEnd == Platform::EWaitEnd::eSIGNALLED;
  }));
}

void UseMutex(Mutex& mutex) {
  mutex.Lock();
  mutex.Unlock();
  if (mutex.TryLock()) mutex.Unlock();
  if (mutex.TryLock(g_moment)) mutex.Unlock();
}

class KillStress : public testing::Test {
 protected:
  void SetUp() override { OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED(); }

  // Kills threads that run `round` for ever, at moments of chance.
  template <class Round>
  void KillThoseWho(Playground& ground, int kills, Round round) {
    const SharedThread victim = Thread::Create("Victim");
    std::mt19937 random(static_cast<unsigned>(kills));
    std::atomic<bool> begun{false};
    const SharedTask task = Do([&](TaskDirective& directive) {
      begun = true;
      while (true) round(directive);
      return 0;
    });
    for (int i = 0; i != kills; ++i) {
      begun = false;
      ASSERT_TRUE(victim->Start(task));
      ASSERT_TRUE(Eventually([&begun] { return begun.load(); }));
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 200));
      ASSERT_TRUE(victim->Kill(Elapse(10)));
      ASSERT_EQ(Thread::eTHREAD_ERROR, victim->GetState());
      TakeOver(ground.m_condition);
    }
  }
};

}  // namespace

TEST_F(KillStress, AmongSurvivors) {
  Playground ground;
  std::atomic<bool> end{false};
  std::thread survivors[] = {std::thread([&] { Survive(ground, end); }),
                             std::thread([&] { Survive(ground, end); })};
  const SharedThread other = Thread::Create("Other");
  KillThoseWho(ground, iKILLS / 2, [&](TaskDirective& directive) {
    ground.UseShortLock();
    ground.UseSemaphore();
    ground.UseEvent();
    ground.UseCondition();
    directive.MustStop();
    other->GetPriority();
    other->Stop();
  });
  end = true;
  for (std::thread& survivor : survivors) survivor.join();
  ExpectAllInOrder(ground);
  EXPECT_TRUE(other->Start(Give(0)));
  EXPECT_TRUE(Eventually([&other] { return other->HasCompleted(); }));
}

TEST_F(KillStress, InWaitsWithoutALimit) {
  Playground ground;
  std::atomic<bool> end{false};
  std::thread waker([&] {
    while (!end) {
      ground.m_pEvent->Set();
      ground.m_semaphore.Post(1);
      ground.m_condition.Notify();
      std::this_thread::yield();
    }
  });
  KillThoseWho(ground, iKILLS / 4, [&](TaskDirective&) {
    ground.m_semaphore.Wait();
    ground.m_pEvent->Wait(Deadline::Never());
    if (!ground.m_condition.TryLock()) return;
    ground.m_condition.Wait();
    ground.m_condition.Unlock();
  });
  end = true;
  waker.join();
  ExpectAllInOrder(ground);
}

// Whoever dies on its way through the gate leaves it to the others.
TEST_F(KillStress, AtAGate) {
  Playground ground;
  auto gate = std::make_shared<MultiWait>();
  const auto passes = [gate](const Elapse& limit) {
    Elapse timeout(limit);
    gate->releaseWaiters();
    return gate->wait(&timeout);
  };
  KillThoseWho(ground, iKILLS / 4, [&](TaskDirective&) { passes(Elapse(0)); });
  const auto passed = std::make_shared<std::atomic<bool>>(false);
  std::thread([passes, passed] {
    while (!passes(Elapse(0))) {
    }
    *passed = true;
  }).detach();
  EXPECT_TRUE(Eventually([&] { return passed->load(); }));
}

// The mutex is the victim's alone, since it stays held where the victim died with it. Nor is it destroyed: that would
// wait for its owner.
TEST_F(KillStress, WithAMutex) {
  static auto& s_mutexes = *new std::vector<Mutex*>;
  std::atomic<Mutex*> mutex{new Mutex};
  s_mutexes.push_back(mutex);
  int held = 0;
  const SharedThread victim = Thread::Create("Victim");
  for (int i = 0; i != iKILLS / 4; ++i) {
    std::atomic<bool> begun{false};
    ASSERT_TRUE(victim->Start(Do([&](TaskDirective&) {
      begun = true;
      while (true) UseMutex(*mutex);
      return 0;
    })));
    ASSERT_TRUE(Eventually([&begun] { return begun.load(); }));
    ASSERT_TRUE(victim->Kill(Elapse(10)));
    if (mutex.load()->TryLock()) {
      mutex.load()->Unlock();
    } else {
      ++held;
      s_mutexes.push_back(new Mutex);
      mutex = s_mutexes.back();
    }
  }
  EXPECT_GT(held, 0);
  EXPECT_LT(held, iKILLS / 4);
}
