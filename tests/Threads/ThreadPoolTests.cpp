#include <Infrastructure/OxaCore/ThreadPool.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Support/Allocations.h"
#include "Support/Eventually.h"

using namespace Oxa::Core;
using TestSupport::Eventually;

namespace {

static_assert(std::is_base_of_v<Task, ThreadPool<int>>);
static_assert(!std::is_copy_constructible_v<ThreadPool<int>>);

using Pool = ThreadPool<int>;
using Work = std::function<void(int)>;

// Items in the queue and at work are the pool's own affair; an explicit instantiation is the one way past access
// control.
int CountOf(Pool& pool);

template <std::atomic<std::int32_t> Pool::*Count>
struct Look {
  friend int CountOf(Pool& pool) { return pool.*Count; }
};
template struct Look<&Pool::m_iCount>;

class Calling : public CallbackArg<int> {
 public:
  explicit Calling(Work work) : m_work(std::move(work)) {}
  void operator()(int item) override { m_work(item); }

 private:
  Work m_work;
};

boost::shared_ptr<CallbackArg<int>> Call(Work work) { return boost::make_shared<Calling>(std::move(work)); }

// As debuggers see it.
std::string ThisThreadsName() {
  char name[16];
  return pthread_getname_np(pthread_self(), name, sizeof name) == 0 ? name : "";
}

// What the callbacks of a test note down.
class MyClass {
 public:
  explicit MyClass(int together) : m_iTogether(together) {}

  // Waits until as many have begun as are to be together.
  void Meet(int) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_threads.insert(Thread::GetCurrentId());
    if (++m_iBegun == m_iTogether) m_met.notify_all();
    m_met.wait_for(lock, std::chrono::seconds(30), [this] { return m_iBegun >= m_iTogether; });
    ++m_iDone;
  }
  bool Done(int count) {
    return Eventually([&] {
      const std::lock_guard<std::mutex> lock(m_mutex);
      return m_iDone == count;
    });
  }

  std::set<unsigned long> m_threads;

 private:
  const int m_iTogether;
  std::mutex m_mutex;  // guards the rest
  std::condition_variable m_met;
  int m_iBegun = 0;
  int m_iDone = 0;
};

// Keeps the callbacks inside until it opens.
class Gate {
 public:
  void Pass(int) {
    ++m_iInside;
    while (!m_bOpen) std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  void Open() { m_bOpen = true; }
  bool Inside(int count) {
    return Eventually([&] { return m_iInside == count; });
  }
  boost::shared_ptr<CallbackArg<int>> Callback() {
    return boost::make_shared<MethodCallbackArg<Gate, int>>(this, &Gate::Pass);
  }

 private:
  std::atomic<int> m_iInside{0};
  std::atomic<bool> m_bOpen{false};
};

// --- Work

TEST(ThreadPool, ThreeThreadsTakeThreeTasksThatWaitForEachOther) {
  MyClass myClass(3);
  ThreadPool<int> pool("Pool", 3);
  pool.Start();
  const auto callback = boost::make_shared<MethodCallbackArg<MyClass, int>>(&myClass, &MyClass::Meet);
  for (int item = 0; item < 3; ++item) pool.Enqueue(callback, item);
  EXPECT_TRUE(myClass.Done(3));
  EXPECT_TRUE(myClass.m_threads.size() == 3);
}

TEST(ThreadPool, OneThreadDoesAllByItself) {
  MyClass myClass(1);
  ThreadPool<int> pool("Pool", 1);
  pool.Start();
  const auto callback = boost::make_shared<MethodCallbackArg<MyClass, int>>(&myClass, &MyClass::Meet);
  for (int item = 0; item < 3; ++item) pool.Enqueue(callback, item);
  EXPECT_TRUE(myClass.Done(3));
  EXPECT_TRUE(myClass.m_threads.size() == 1);
}

TEST(ThreadPool, NamesItsThreadsByTheirIndex) {
  MyClass myClass(3);
  std::mutex mutex;
  std::set<std::string> names;
  ThreadPool<int> pool("Names", 3);
  pool.Start();
  const auto callback = Call([&](int item) {
    myClass.Meet(item);
    const std::lock_guard<std::mutex> lock(mutex);
    names.insert(ThisThreadsName());
  });
  for (int item = 0; item < 3; ++item) pool.Enqueue(callback, item);
  EXPECT_TRUE(Eventually([&] { return CountOf(pool) == 0; }));
  const std::lock_guard<std::mutex> lock(mutex);
  EXPECT_THAT(names, testing::ElementsAre("Names_0", "Names_1", "Names_2"));
}

TEST(ThreadPool, OneThreadKeepsTheOrder) {
  std::vector<int> items;
  ThreadPool<int> pool("Pool", 1);
  const auto callback = Call([&](int item) { items.push_back(item); });
  for (int item = 0; item < 100; ++item) pool.Enqueue(callback, item);
  pool.Start();
  EXPECT_TRUE(Eventually([&] { return CountOf(pool) == 0; }));
  ASSERT_EQ(100u, items.size());
  EXPECT_TRUE(std::is_sorted(items.begin(), items.end()));
}

TEST(ThreadPool, WaitsForStart) {
  std::atomic<int> called{0};
  ThreadPool<int> pool("Pool", 2);
  const auto callback = Call([&](int) { ++called; });
  for (int item = 0; item < 10; ++item) pool.Enqueue(callback, item);
  EXPECT_EQ(10, CountOf(pool));
  EXPECT_EQ(0, called);
  pool.Start();
  EXPECT_TRUE(Eventually([&] { return called == 10; }));
}

TEST(ThreadPool, WithoutThreadsKeepsItemsWaitingAndDropsThem) {
  for (const int threads : {0, -1, -1000}) {
    const boost::shared_ptr<CallbackArg<int>> callback = Call([](int) { FAIL(); });
    {
      ThreadPool<int> pool("None", threads);
      pool.Start();
      pool.Enqueue(callback, 1);
      EXPECT_EQ(2, callback.use_count());
      EXPECT_EQ(1, CountOf(pool));
    }
    EXPECT_EQ(1, callback.use_count());
  }
}

TEST(ThreadPool, CarriesItemsOfAnyKind) {
  struct Sum {
    void Add(boost::shared_ptr<double> value) { m_dSum = m_dSum + *value; }
    std::atomic<double> m_dSum{0};
  } sum;
  ThreadPool<boost::shared_ptr<double>> pool("Pool", 1);
  pool.Start();
  const auto callback =
      boost::make_shared<MethodCallbackArg<Sum, boost::shared_ptr<double>>>(&sum, &Sum::Add);
  pool.Enqueue(callback, boost::make_shared<double>(1.5));
  pool.Enqueue(callback, boost::make_shared<double>(2.5));
  EXPECT_TRUE(Eventually([&] { return sum.m_dSum == 4.0; }));
}

TEST(ThreadPool, CarriesWhatCanOnlyBeMoved) {
  std::atomic<int> seen{0};
  class Taking : public CallbackArg<std::unique_ptr<int>> {
   public:
    explicit Taking(std::atomic<int>& seen) : m_seen(seen) {}
    void operator()(std::unique_ptr<int> item) override { m_seen = *item; }

   private:
    std::atomic<int>& m_seen;
  };
  ThreadPool<std::unique_ptr<int>> pool("Pool", 1);
  pool.Start();
  pool.Enqueue(boost::make_shared<Taking>(seen), std::make_unique<int>(7));
  EXPECT_TRUE(Eventually([&] { return seen == 7; }));
}

TEST(ThreadPool, LetsGoOfWorkThatIsDone) {
  const boost::shared_ptr<CallbackArg<int>> callback = Call([](int) {});
  ThreadPool<int> pool("Pool", 1);
  pool.Start();
  pool.Enqueue(callback, 1);
  EXPECT_TRUE(Eventually([&] { return CountOf(pool) == 0; }));
  EXPECT_EQ(1, callback.use_count());
}

TEST(ThreadPool, CallbacksMayEnqueue) {
  std::atomic<int> called{0};
  ThreadPool<int> pool("Pool", 2);
  boost::shared_ptr<CallbackArg<int>> callback;
  callback = Call([&](int left) {
    ++called;
    if (left > 0) pool.Enqueue(callback, left - 1);
  });
  pool.Start();
  pool.Enqueue(callback, 99);
  EXPECT_TRUE(Eventually([&] { return called == 100; }));
}

// --- Failures

TEST(ThreadPool, SurvivesWhatItsCallbacksThrow) {
  std::atomic<int> called{0};
  ThreadPool<int> pool("Pool", 2);
  pool.Start();
  const auto callback = Call([&](int item) {
    ++called;
    if (item % 3 == 0) throw std::runtime_error("bad item");
    if (item % 3 == 1) throw item;
    OXA_RAISE_ERROR("Test.Pool", NullPointer("item"));
  });
  for (int item = 0; item < 300; ++item) pool.Enqueue(callback, item);
  EXPECT_TRUE(Eventually([&] { return called == 300; }));
  EXPECT_TRUE(Eventually([&] { return CountOf(pool) == 0; }));
}

TEST(ThreadPool, LetsGoOfWorkBeforeItCountsAsDoneAlsoWhereItFailed) {
  for (const bool failing : {false, true}) {
    std::atomic<int> countedAtItsEnd{-1};
    ThreadPool<int> pool("Pool", 1);
    pool.Start();
    const Work work = [failing](int) {
      if (failing) throw std::runtime_error("failed");
    };
    pool.Enqueue(boost::shared_ptr<CallbackArg<int>>(new Calling(work),
                                                     [&](CallbackArg<int>* callback) {
                                                       countedAtItsEnd = CountOf(pool);
                                                       delete callback;
                                                     }),
                 1);
    EXPECT_TRUE(Eventually([&] { return countedAtItsEnd != -1; }));
    EXPECT_EQ(1, countedAtItsEnd);
  }
}

TEST(ThreadPool, PassesOverANullCallback) {
  std::atomic<int> called{0};
  ThreadPool<int> pool("Pool", 1);
  pool.Start();
  pool.Enqueue(boost::shared_ptr<CallbackArg<int>>(), 1);
  pool.Enqueue(Call([&](int) { ++called; }), 2);
  EXPECT_TRUE(Eventually([&] { return called == 1; }));
  EXPECT_TRUE(Eventually([&] { return CountOf(pool) == 0; }));
}

TEST(ThreadPool, RefusedItemIsDroppedAndDoesntCount) {
  testing::internal::CaptureStderr();
  const boost::shared_ptr<CallbackArg<int>> callback = Call([](int) {});
  ThreadPool<int> pool("Full", 0);
  for (int item = 0; item < 3000; ++item) pool.Enqueue(callback, item);
  EXPECT_EQ(3000, CountOf(pool));
  EXPECT_EQ(3001, callback.use_count());
  pool.Enqueue(callback, 3000);
  EXPECT_EQ(3000, CountOf(pool));
  EXPECT_EQ(3001, callback.use_count());
  testing::internal::GetCapturedStderr();
}

TEST(ThreadPool, ReportsLikeEveryQueueFrom1000On) {
  const boost::shared_ptr<CallbackArg<int>> callback = Call([](int) {});
  ThreadPool<int> pool("Reporting", 0);
  testing::internal::CaptureStderr();
  for (int item = 0; item < 999; ++item) pool.Enqueue(callback, item);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  testing::internal::CaptureStderr();
  for (int item = 0; item < 100; ++item) pool.Enqueue(callback, item);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("[^\n]*Reporting\n {11}new high watermark \\(1000 items\\)\n"));
  testing::internal::CaptureStderr();
  pool.Enqueue(callback, 1);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("(1100 items)\n"));
  testing::internal::CaptureStderr();
  for (int item = 1100; item < 3000; ++item) pool.Enqueue(callback, item);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::EndsWith("high watermark (3000 items) reached hard limit (3000 items)\n\n"));
}

TEST(ThreadPool, WithoutMemoryForTheItemCountsNothing) {
  const boost::shared_ptr<CallbackArg<int>> callback = Call([](int) {});
  ThreadPool<int> pool("Pool", 0);
  int enqueued = 0;
  for (unsigned long failing = 1; failing < 3; ++failing)
    for (int attempt = 0; attempt < 100; ++attempt) {
      const TestSupport::FailAllocation failure(failing);
      try {
        pool.Enqueue(callback, 1);
        ++enqueued;
      } catch (const std::bad_alloc&) {
      }
    }
  EXPECT_LT(enqueued, 200);
  EXPECT_EQ(enqueued, CountOf(pool));
  EXPECT_EQ(enqueued + 1, callback.use_count());
}

// --- Start and end

TEST(ThreadPool, EndWaitsForCallbacksAtWorkAndDropsTheRest) {
  Gate gate;
  std::atomic<int> late{0};
  auto pool = std::make_unique<ThreadPool<int>>("Pool", 2);
  pool->Start();
  pool->Enqueue(gate.Callback(), 1);
  pool->Enqueue(gate.Callback(), 2);
  const boost::shared_ptr<CallbackArg<int>> waiting = Call([&](int) { ++late; });
  ASSERT_TRUE(gate.Inside(2));
  for (int item = 0; item < 50; ++item) pool->Enqueue(waiting, item);
  std::atomic<bool> ended{false};
  std::thread end([&] {
    pool.reset();
    ended = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(ended);
  gate.Open();
  end.join();
  EXPECT_EQ(1, waiting.use_count());
}

TEST(ThreadPool, CallbacksMayEnqueueWhileThePoolEnds) {
  Gate gate;
  auto pool = std::make_unique<Pool>("Pool", 1);
  Pool& used = *pool;
  const boost::shared_ptr<CallbackArg<int>> late = Call([](int) {});
  pool->Start();
  pool->Enqueue(Call([&](int item) {
                  gate.Pass(item);
                  used.Enqueue(late, item);
                }),
                1);
  ASSERT_TRUE(gate.Inside(1));
  std::thread end([&] { pool.reset(); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // where it is too short, the item is called
  gate.Open();
  end.join();
  EXPECT_EQ(1, late.use_count());
}

TEST(ThreadPool, EndsRightAfterStart) {
  for (int round = 0; round < 10; ++round) {
    ThreadPool<int> pool("Pool", 1 + round % 3);
    pool.Start();
  }
}

TEST(ThreadPool, EndsWithoutEverHavingStarted) {
  ThreadPool<int> pool("Pool", 3);
  pool.Enqueue(Call([](int) { FAIL(); }), 1);
}

TEST(ThreadPool, SecondStartChangesNothingForRunningThreads) {
  MyClass myClass(2);
  ThreadPool<int> pool("Pool", 2);
  pool.Start();
  pool.Start();
  const auto callback = boost::make_shared<MethodCallbackArg<MyClass, int>>(&myClass, &MyClass::Meet);
  pool.Enqueue(callback, 1);
  pool.Enqueue(callback, 2);
  EXPECT_TRUE(myClass.Done(2));
  pool.Start();
  EXPECT_EQ(2u, myClass.m_threads.size());
}

TEST(ThreadPool, CallbackMayStartThePoolAgain) {
  std::atomic<int> called{0};
  ThreadPool<int> pool("Pool", 2);
  pool.Start();
  pool.Enqueue(Call([&](int) {
                 pool.Start();
                 ++called;
               }),
               1);
  EXPECT_TRUE(Eventually([&] { return called == 1; }));
}

}  // namespace
