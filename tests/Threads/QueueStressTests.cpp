// Many writers and readers on one queue.
#include <Infrastructure/OxaCore/Queue.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#include "Support/Eventually.h"

using namespace Oxa::Core;
using TestSupport::Eventually;

namespace {

#ifdef OXACORE_SOAK
constexpr int iITEMS = 1000000;
constexpr int iROUNDS = 5000;
#else
constexpr int iITEMS = 20000;
constexpr int iROUNDS = 200;
#endif
constexpr int iWRITERS = 3;
constexpr int iREADERS = 3;
constexpr std::uint32_t uNEVER = 0xFFFFFFFF;

struct Item {
  int m_iWriter;
  int m_iNumber;
};

using Items = Queue<Item>;

// What one reader got: of each writer its numbers, in the order of their coming.
class Reader {
 public:
  explicit Reader(Items& queue) : m_queue(queue), m_thread([this] { Run(); }) {}
  void Join() { m_thread.join(); }
  const std::vector<int>& NumbersOf(int writer) const { return m_numbers[writer]; }

  static std::atomic<bool> s_bStop;

 private:
  void Run() {
    Item item;
    while (!s_bStop || m_queue.GetCount() > 0) {
      m_queue.GetSemaphore().Wait();
      m_queue.WakeNext();
      if (m_queue.TryPop(item)) m_numbers[item.m_iWriter].push_back(item.m_iNumber);
    }
  }

  Items& m_queue;
  std::vector<int> m_numbers[iWRITERS];
  std::thread m_thread;  // last: it uses the others
};
std::atomic<bool> Reader::s_bStop{false};

// Pushes its numbers; a refused one is tried again.
void Write(Items& queue, int writer, std::atomic<int>& refused) {
  for (int number = 0; number < iITEMS;) {
    if (queue.Push(Item{writer, number})) {
      ++number;
    } else {
      ++refused;
      std::this_thread::yield();
    }
  }
}

void RunWriters(Items& queue, std::atomic<int>& refused) {
  std::vector<std::thread> writers;
  for (int writer = 0; writer < iWRITERS; ++writer)
    writers.emplace_back(&Write, std::ref(queue), writer, std::ref(refused));
  for (std::thread& writer : writers) writer.join();
}

void ExpectEachOnceAndInOrder(const std::vector<std::unique_ptr<Reader>>& readers, int writer) {
  std::vector<int> all;
  for (const auto& reader : readers) {
    const std::vector<int>& numbers = reader->NumbersOf(writer);
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    all.insert(all.end(), numbers.begin(), numbers.end());
  }
  std::sort(all.begin(), all.end());
  ASSERT_EQ(static_cast<std::size_t>(iITEMS), all.size());
  for (int number = 0; number < iITEMS; ++number) ASSERT_EQ(number, all[static_cast<std::size_t>(number)]);
}

void ExpectAllThrough(std::uint32_t hardLimit) {
  Items queue("stress", nullptr, uNEVER, 1, hardLimit);
  Reader::s_bStop = false;
  std::vector<std::unique_ptr<Reader>> readers;
  for (int reader = 0; reader < iREADERS; ++reader) readers.push_back(std::make_unique<Reader>(queue));
  std::atomic<int> refused{0};
  RunWriters(queue, refused);
  Reader::s_bStop = true;
  queue.SetReleased(true);
  for (const auto& reader : readers) reader->Join();
  EXPECT_EQ(0u, queue.GetCount());
  for (int writer = 0; writer < iWRITERS; ++writer) ExpectEachOnceAndInOrder(readers, writer);
}

TEST(QueueStress, EachItemOfManyWritersComesOnceAndInOrder) { ExpectAllThrough(uNEVER); }

TEST(QueueStress, EachItemComesThroughATinyQueueToo) { ExpectAllThrough(3); }

TEST(QueueStress, ReleaseWakesAllReadersHoweverManyThereAre) {
  for (int round = 0; round < iROUNDS; ++round) {
    Queue<int> queue("released", nullptr, uNEVER, 1, uNEVER);
    std::atomic<int> woken{0};
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 1 + round % 8; ++reader)
      readers.emplace_back([&] {
        queue.GetSemaphore().Wait();
        queue.WakeNext();
        int item;
        EXPECT_FALSE(queue.TryPop(item));
        ++woken;
      });
    queue.SetReleased(true);
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(1 + round % 8, woken);
    EXPECT_EQ(1u, queue.GetSemaphore().GetCount());
  }
}

TEST(QueueStress, ReleaseWhileItemsComeLosesNone) {
  for (int round = 0; round < iROUNDS; ++round) {
    Queue<int> queue("released", nullptr, uNEVER, 1, uNEVER);
    std::atomic<int> popped{0};
    std::atomic<bool> stop{false};
    std::vector<std::thread> readers;
    for (int reader = 0; reader < iREADERS; ++reader)
      readers.emplace_back([&] {
        int item;
        while (!stop) {
          queue.GetSemaphore().Wait();
          queue.WakeNext();
          if (queue.TryPop(item)) ++popped;
        }
      });
    std::thread writer([&] {
      for (int item = 0; item < 50; ++item) queue.Push(item);
    });
    if (round % 2 == 0) writer.join();
    stop = true;
    queue.SetReleased(true);
    for (std::thread& reader : readers) reader.join();
    if (writer.joinable()) writer.join();
    EXPECT_EQ(50u, static_cast<std::size_t>(popped) + queue.GetCount());
  }
}

TEST(QueueStress, DrainAmidWritersAndReadersLosesNone) {
  static std::atomic<int> discarded;
  discarded = 0;
  Queue<int> queue(
      "drained", [](int&) { ++discarded; }, uNEVER, 1, uNEVER);
  std::atomic<int> popped{0};
  std::atomic<bool> end{false};
  std::thread reader([&] {
    int item;
    while (!end)
      if (queue.TryPop(item)) ++popped;
  });
  std::thread drainer([&] {
    while (!end) queue.Drain();
  });
  std::vector<std::thread> writers;
  for (int writer = 0; writer < iWRITERS; ++writer)
    writers.emplace_back([&] {
      for (int item = 0; item < iITEMS; ++item) queue.Push(item);
    });
  for (std::thread& writer : writers) writer.join();
  EXPECT_TRUE(Eventually([&] { return popped + discarded == iWRITERS * iITEMS; }));
  end = true;
  reader.join();
  drainer.join();
  EXPECT_EQ(0u, queue.GetCount());
}

}  // namespace
