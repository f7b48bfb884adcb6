#include <Infrastructure/OxaCore/Notifications.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

using namespace Oxa::Core;

#if defined(OXACORE_SOAK)
constexpr auto DURATION = std::chrono::seconds(60);
#else
constexpr auto DURATION = std::chrono::milliseconds(1500);
#endif

constexpr auto eFIRST = NotificationSupport::eFIRST_ADDED_FIRST;

class Counter : public NotificationListener {
 public:
  std::atomic<long> m_lHeard{0};
  std::atomic<long> m_lRemoved{0};

 protected:
  void NotificationSourceIsRemoved(const NotificationSupport&) override { ++m_lRemoved; }
};

class Tick : public Notification {
 public:
  void Notify(NotificationListener& listener) override {
    if (auto* const counter = dynamic_cast<Counter*>(&listener)) ++counter->m_lHeard;
  }
};

// As a subclass has to that others may remove on another thread: it leaves before it changes.
class LeavingCounter : public Counter {
 public:
  explicit LeavingCounter(NotificationSupport& source) : m_source(source) {}
  ~LeavingCounter() override { m_source.RemoveListener(*this); }

 private:
  NotificationSupport& m_source;
};

// Runs every job over and over, each on a thread of its own, with the thread's random source.
void RunTogether(const std::vector<std::function<void(std::minstd_rand&)>>& jobs) {
  const auto end = std::chrono::steady_clock::now() + DURATION;
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i != jobs.size(); ++i) {
    threads.emplace_back([&jobs, end, i] {
      std::minstd_rand random(static_cast<unsigned>(i + 1));
      while (std::chrono::steady_clock::now() < end) jobs[i](random);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// Hears as the second of two listeners in one object.
class First : public NotificationListener {};
class SecondCounter : public First, public Counter {};

class TypedTick : public NotificationTo<Counter> {
  void Tell(Counter& counter) override { ++counter.m_lHeard; }
};

// Listeners come and go while others broadcast; the one that stays hears everything.
TEST(NotificationStress, ListenersComeAndGoDuringBroadcasts) {
  NotificationSupport support(NotificationSupport::eLAST_ADDED_FIRST);
  Counter permanent;
  support.AddListener(permanent);
  std::vector<std::unique_ptr<Counter>> passing;
  for (int i = 0; i < 40; ++i) passing.push_back(std::make_unique<Counter>());
  std::atomic<long> broadcasts{0};
  const auto broadcast = [&](std::minstd_rand&) {
    Tick tick;
    support.Broadcast(tick);
    ++broadcasts;
  };
  const auto change = [&](std::minstd_rand& random) {
    Counter& counter = *passing[random() % passing.size()];
    if (random() % 2 == 0) {
      support.AddListener(counter);
    } else {
      support.RemoveListener(counter);
    }
  };
  const auto look = [&](std::minstd_rand&) {
    EXPECT_TRUE(support.HasListeners());
    EXPECT_GE(support.GetNumListeners(), 1);
    EXPECT_LE(support.GetNumListeners(), 41);
  };
  RunTogether({broadcast, broadcast, change, change, look});
  EXPECT_EQ(broadcasts, permanent.m_lHeard);
  EXPECT_GT(broadcasts, 0);
}

// Nobody is passed over nor told twice by a broadcast that meets a list in which everybody moves up by one.
TEST(NotificationStress, WhoMovesUpInTheListHearsEachBroadcastOnce) {
  NotificationSupport support(NotificationSupport::eFIRST_ADDED_FIRST);
  Counter passing[6];
  Counter staying;
  long broadcasts = 0;
  long misses = 0;
  const auto broadcast = [&](std::minstd_rand&) {
    support.RemoveListener(staying);
    support.AddListener(staying);
    Tick tick;
    support.Broadcast(tick);
    misses += staying.m_lHeard != ++broadcasts;
    broadcasts = staying.m_lHeard;
  };
  const auto change = [&](std::minstd_rand& random) {
    Counter& counter = passing[random() % 6];
    support.RemoveListener(counter);
    support.AddListener(counter);
  };
  RunTogether({broadcast, change});
  EXPECT_EQ(0, misses);
  EXPECT_GT(broadcasts, 0);
}

// What an event finds out of one thread's listeners isn't taken for that of another's.
TEST(NotificationStress, OneEventIsBroadcastByManyThreads) {
  TypedTick tick;
  const auto broadcast = [&tick](std::minstd_rand&) {
    NotificationSupport support(eFIRST);
    Counter counters[2];
    SecondCounter seconds[2];
    for (Counter& counter : counters) support.AddListener(counter);
    for (SecondCounter& second : seconds) support.AddListener(static_cast<First&>(second));
    support.Broadcast(tick);
    for (Counter& counter : counters) EXPECT_EQ(1, counter.m_lHeard);
    for (SecondCounter& second : seconds) EXPECT_EQ(1, second.m_lHeard);
  };
  RunTogether({broadcast, broadcast, broadcast});
}

// Sources and listeners die on different threads at once, whichever is first. The listeners are of the base
// class: the vtable of a subclass changes at its death, which others may not see happen.
TEST(NotificationStress, SourcesAndListenersDieAtOnce) {
  const auto end = std::chrono::steady_clock::now() + DURATION;
  long rounds = 0;
  for (; std::chrono::steady_clock::now() < end; ++rounds) {
    std::vector<std::unique_ptr<NotificationSupport>> sources;
    std::vector<std::unique_ptr<NotificationListener>> listeners;
    for (int i = 0; i < 8; ++i) {
      sources.push_back(std::make_unique<NotificationSupport>(eFIRST));
      listeners.push_back(std::make_unique<NotificationListener>());
    }
    for (auto& source : sources) {
      for (auto& listener : listeners) source->AddListener(*listener);
    }
    std::atomic<int> ready{0};
    const auto destroy = [&ready](auto& objects) {
      ++ready;
      while (ready < 2) std::this_thread::yield();
      for (auto& object : objects) object.reset();
    };
    std::thread other([&] { destroy(sources); });
    destroy(listeners);
    other.join();
  }
  EXPECT_GT(rounds, 0);
}

// Removing everybody from one side takes the locks in the other order than a listener's death would by itself.
TEST(NotificationStress, EverybodyIsRemovedWhileListenersDie) {
  NotificationSupport support(eFIRST);
  const auto removeAll = [&](std::minstd_rand&) { support.RemoveAllListeners(); };
  const auto liveShortly = [&](std::minstd_rand&) {
    NotificationListener listener;
    support.AddListener(listener);
  };
  const auto leaveAndDie = [&](std::minstd_rand&) {
    LeavingCounter counter(support);
    support.AddListener(counter);
  };
  RunTogether({removeAll, liveShortly, liveShortly, leaveAndDie, leaveAndDie});
  EXPECT_FALSE(support.HasListeners());
}

// Short-lived listeners and short-lived sources around a permanent one of either kind.
TEST(NotificationStress, ShortLivesOnBothSides) {
  NotificationSupport permanentSource(eFIRST);
  Counter permanentListener;
  permanentSource.AddListener(permanentListener);
  std::atomic<long> sourcesDied{0};
  const auto shortListener = [&](std::minstd_rand&) {
    Counter counter;
    permanentSource.AddListener(counter);
  };
  const auto shortSource = [&](std::minstd_rand&) {
    {
      NotificationSupport source(eFIRST);
      source.AddListener(permanentListener);
      Tick tick;
      source.Broadcast(tick);
    }
    ++sourcesDied;
  };
  RunTogether({shortListener, shortListener, shortSource, shortSource});
  EXPECT_EQ(sourcesDied, permanentListener.m_lRemoved);
  EXPECT_EQ(sourcesDied, permanentListener.m_lHeard);
  EXPECT_EQ(1, permanentSource.GetNumListeners());
}

}  // namespace
