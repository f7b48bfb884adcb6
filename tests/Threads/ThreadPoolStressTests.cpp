// Pools that are filled from many sides and destroyed at every moment of their life.
#include <Infrastructure/OxaCore/ThreadPool.h>

#include <gtest/gtest.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Support/Eventually.h"

using namespace Oxa::Core;
using TestSupport::Eventually;

namespace {

#ifdef OXACORE_SOAK
constexpr int iITEMS = 300000;
constexpr int iROUNDS = 1000;
#else
constexpr int iITEMS = 5000;
constexpr int iROUNDS = 22;
#endif

// Fails on every seventh item.
class Counter {
 public:
  void Take(int item) {
    m_llSum += item;
    ++m_iCalls;
    if (item % 7 == 0) throw std::runtime_error("seventh");
  }
  boost::shared_ptr<CallbackArg<int>> Callback() {
    return boost::make_shared<MethodCallbackArg<Counter, int>>(this, &Counter::Take);
  }
  int Calls() const { return m_iCalls; }
  long long Sum() const { return m_llSum; }

 private:
  std::atomic<long long> m_llSum{0};
  std::atomic<int> m_iCalls{0};
};

TEST(ThreadPoolStress, EachItemOfManyWritersIsCalledOnce) {
  Counter counter;
  ThreadPool<int> pool("Stress", 4);
  pool.Start();
  const auto callback = counter.Callback();
  std::atomic<int> sent{0};
  std::vector<std::thread> writers;
  for (int writer = 0; writer < 3; ++writer)
    writers.emplace_back([&] {
      for (int item = 1; item <= iITEMS; ++item) {
        // Far enough from the limit of the pool, where items are dropped.
        while (sent - counter.Calls() > 500) std::this_thread::yield();
        ++sent;
        pool.Enqueue(callback, item);
      }
    });
  for (std::thread& writer : writers) writer.join();
  EXPECT_TRUE(Eventually([&] { return counter.Calls() == 3 * iITEMS; }));
  EXPECT_EQ(3LL * iITEMS * (iITEMS + 1) / 2, counter.Sum());
  EXPECT_EQ(3 * iITEMS, counter.Calls());
}

TEST(ThreadPoolStress, EndsAtAnyMomentOfItsWork) {
  for (int round = 0; round < iROUNDS; ++round) {
    Counter counter;
    {
      ThreadPool<int> pool("Ending", 1 + round % 3);
      const auto callback = counter.Callback();
      if (round % 2 == 0) pool.Start();
      for (int item = 0; item < round * 5; ++item) pool.Enqueue(callback, item);
      if (round % 2 != 0) pool.Start();
      for (int item = 0; item < round % 11; ++item) std::this_thread::yield();
    }
    const int calls = counter.Calls();
    EXPECT_LE(calls, round * 5);
    std::this_thread::yield();
    EXPECT_EQ(calls, counter.Calls());
  }
}

TEST(ThreadPoolStress, ManyPoolsComeAndGoAtOnce) {
  std::vector<std::thread> owners;
  for (int owner = 0; owner < 4; ++owner)
    owners.emplace_back([owner] {
      for (int round = 0; round < iROUNDS / 8 + 1; ++round) {
        Counter counter;
        ThreadPool<int> pool("Many", 2);
        pool.Start();
        for (int item = 0; item < 20 * owner; ++item) pool.Enqueue(counter.Callback(), item);
      }
    });
  for (std::thread& owner : owners) owner.join();
}

}  // namespace
