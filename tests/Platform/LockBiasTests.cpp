#include "Platform/LockBias.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "Support/Eventually.h"
#include "Support/Together.h"

namespace {

using namespace Oxa::Core::Platform;
using TestSupport::Holder;

constexpr int iENOUGH = 64;
#ifdef OXACORE_SOAK
constexpr std::chrono::seconds tSTRESS(20);
#else
constexpr std::chrono::milliseconds tSTRESS(300);
#endif

// A lock with its bias, and plain numbers that they guard.
class Guarded {
 public:
  // Whether it passed, in either way.
  bool Add() {
    thread_local bool t_bAsStep = false;
    t_bAsStep = !t_bAsStep;
    if (t_bAsStep ? AddAsStep() : AddInScope()) return true;
    Take();
    Count();
    m_lock.Unlock();
    return false;
  }

  bool AddAsStep() {
    return m_bias.Pass([this] {
      Count();
      return true;
    });
  }

  bool AddInScope() {
    const LockBias::Passage passage(m_bias);
    if (passage) Count();
    return static_cast<bool>(passage);
  }

  // Takes its time, so that others can meet it half done.
  void Count() {
    EXPECT_EQ(m_llBegun, m_llNumber);
    ++m_llBegun;
    for (volatile int i = 0; i != 10;) i = i + 1;
    ++m_llNumber;
  }

  void Take() {
    m_lock.Lock();
    m_bias.Taken();
  }
  void TakeAndLeave(int times = 1) {
    for (int i = 0; i != times; ++i) {
      Take();
      m_lock.Unlock();
    }
  }
  bool Passes() { return static_cast<bool>(LockBias::Passage(m_bias)); }

  LockBias m_bias;
  ReentrantLock m_lock;
  long long m_llBegun = 0;
  long long m_llNumber = 0;
};

void OnAnotherThread(const std::function<void()>& action) { std::thread(action).join(); }

TEST(LockBias, FavoursAThreadThatCameOftenEnough) {
  Guarded guarded;
  EXPECT_FALSE(guarded.Passes());
  guarded.TakeAndLeave(iENOUGH - 1);
  EXPECT_FALSE(guarded.Passes());
  guarded.TakeAndLeave();
  EXPECT_TRUE(guarded.Passes());
}

TEST(LockBias, KeepsItsFavouriteThatTakesTheLockAllTheSame) {
  Guarded guarded;
  guarded.TakeAndLeave(iENOUGH);
  guarded.TakeAndLeave(3 * iENOUGH);
  EXPECT_TRUE(guarded.Passes());
  guarded.Take();
  EXPECT_TRUE(guarded.Passes());
  guarded.m_lock.Unlock();
}

TEST(LockBias, LetsNobodyElsePass) {
  Guarded guarded;
  guarded.TakeAndLeave(iENOUGH);
  OnAnotherThread([&] { EXPECT_FALSE(guarded.Passes()); });
  EXPECT_TRUE(guarded.Passes());
}

TEST(LockBias, EndsTheFavourWhenAnotherThreadTakesTheLock) {
  Guarded guarded;
  guarded.TakeAndLeave(iENOUGH);
  OnAnotherThread([&] { guarded.TakeAndLeave(); });
  EXPECT_FALSE(guarded.Passes());
}

TEST(LockBias, WantsTwiceAsMuchAfterAWithdrawal) {
  Guarded guarded;
  guarded.TakeAndLeave(iENOUGH);
  OnAnotherThread([&] { guarded.TakeAndLeave(); });
  guarded.TakeAndLeave(2 * iENOUGH - 1);
  EXPECT_FALSE(guarded.Passes());
  guarded.TakeAndLeave();
  EXPECT_TRUE(guarded.Passes());
}

TEST(LockBias, CountsTurnsOfOneThreadOnly) {
  Guarded guarded;
  guarded.TakeAndLeave(iENOUGH - 1);
  OnAnotherThread([&] { guarded.TakeAndLeave(); });
  guarded.TakeAndLeave(iENOUGH - 1);
  EXPECT_FALSE(guarded.Passes());
}

TEST(LockBias, WaitsForWhoIsInside) {
  Guarded guarded;
  std::atomic<bool> leave{false};
  std::atomic<bool> inside{false};
  std::atomic<bool> left{false};
  std::thread favourite([&] {
    guarded.TakeAndLeave(iENOUGH);
    const LockBias::Passage passage(guarded.m_bias);
    inside = static_cast<bool>(passage);
    while (!leave) std::this_thread::yield();
    left = true;
  });
  EXPECT_TRUE(TestSupport::Eventually([&] { return inside.load(); }));
  std::atomic<bool> takes{false};
  std::thread other([&] {
    takes = true;
    guarded.Take();
    EXPECT_TRUE(left);
    guarded.m_lock.Unlock();
  });
  EXPECT_TRUE(TestSupport::Eventually([&] { return takes.load(); }));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // the more time, the likelier a failure shows
  leave = true;
  favourite.join();
  other.join();
}

TEST(LockBias, DoesNotWaitForAThreadThatEndedInside) {
  Guarded guarded;
  alignas(LockBias::Passage) unsigned char room[sizeof(LockBias::Passage)];
  OnAnotherThread([&] {
    guarded.TakeAndLeave(iENOUGH);
    EXPECT_TRUE(static_cast<bool>(*::new (room) LockBias::Passage(guarded.m_bias)));
  });
  guarded.TakeAndLeave(2 * iENOUGH);
  EXPECT_TRUE(guarded.Passes());
}

TEST(LockBias, FavoursFourThreadsThatLiveAtOnceAndNoFifth) {
  Guarded guarded;
  int enough = iENOUGH;
  const auto passesInTheEnd = [&] {
    guarded.TakeAndLeave(enough);
    enough *= 2;
    return guarded.Passes();
  };
  {
    std::vector<std::unique_ptr<Holder>> holders;
    for (int i = 0; i != 4; ++i) {
      holders.push_back(std::make_unique<Holder>([&] { EXPECT_TRUE(passesInTheEnd()); }, [] {}));
    }
    EXPECT_FALSE(passesInTheEnd());
  }
  // Those four have ended, and their places are free; this thread has to begin to count anew for that.
  OnAnotherThread([&] { guarded.TakeAndLeave(); });
  EXPECT_TRUE(passesInTheEnd());
}

// One thread adds all the time, and the others come by now and then.
TEST(LockBias, ExcludesLikeTheLock) {
  Guarded guarded;
  std::atomic<long long> passed{0};
  long long added[3] = {};
  const auto end = std::chrono::steady_clock::now() + tSTRESS;
  TestSupport::Together(3, [&](int index) {
    while (std::chrono::steady_clock::now() < end) {
      for (int i = 0; i != (index == 0 ? 1000 : 1); ++i) {
        if (guarded.Add()) passed.fetch_add(1, std::memory_order_relaxed);
        ++added[index];
      }
      if (index != 0) std::this_thread::sleep_for(std::chrono::microseconds(150 * index));
    }
  });
  EXPECT_EQ(added[0] + added[1] + added[2], guarded.m_llNumber);
  EXPECT_LT(0, passed);
}

}  // namespace
