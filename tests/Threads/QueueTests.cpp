#include <Infrastructure/OxaCore/Queue.h>

#include <Infrastructure/OxaCore/System.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "Support/Allocations.h"
#include "Support/Eventually.h"
#include "Support/SecondsNow.h"

using namespace Oxa::Core;

namespace {

static_assert(std::has_virtual_destructor_v<Queue<int>>);
static_assert(!std::is_copy_constructible_v<Queue<int>>);
static_assert(std::is_same_v<Semaphore&, decltype(std::declval<Queue<int>&>().GetSemaphore())>);

constexpr std::uint32_t uNEVER = 1000000;

std::string ToldBy(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

class Silent : public Queue<int> {
 public:
  explicit Silent(std::uint32_t hardLimit = uNEVER) : Queue<int>("silent", nullptr, uNEVER, 1, hardLimit) {}
};

// "hh:mm:ss - " and what stands behind it.
void ExpectReport(const std::string& told, const std::string& behindTime) {
  ASSERT_THAT(told, testing::MatchesRegex("[0-2][0-9]:[0-5][0-9]:[0-6][0-9] - (.|\n)*"));
  EXPECT_EQ(behindTime, told.substr(11));
}

std::string Report(const std::string& queue, const std::string& level) {
  std::string process;
  System::Instance()->GetProcessName(process);
  return process + " / " + queue + "\n           " + level;
}

std::string PushAndListen(Queue<int>& queue, int count) {
  return ToldBy([&] {
    for (int item = 0; item < count; ++item) EXPECT_TRUE(queue.Push(item));
  });
}

class QueueNamed : public testing::Test {
 protected:
  void SetUp() override {
    System::Instance()->GetProcessName(m_sBefore);
    System::Instance()->SetProcessName("Probe");
  }
  void TearDown() override { System::Instance()->SetProcessName(m_sBefore); }

 private:
  std::string m_sBefore;
};

// --- Items

TEST(Queue, GivesItemsInTheOrderOfTheirComing) {
  Silent queue;
  for (int item = 0; item < 5; ++item) EXPECT_TRUE(queue.Push(item));
  int popped = -1;
  for (int item = 0; item < 5; ++item) {
    EXPECT_TRUE(queue.TryPop(popped));
    EXPECT_EQ(item, popped);
  }
  EXPECT_FALSE(queue.TryPop(popped));
  EXPECT_EQ(4, popped);
}

TEST(Queue, CountsItsItems) {
  Silent queue;
  EXPECT_EQ(0u, queue.GetCount());
  queue.Push(1);
  queue.Push(2);
  EXPECT_EQ(2u, queue.GetCount());
  int item;
  queue.TryPop(item);
  EXPECT_EQ(1u, queue.GetCount());
}

TEST(Queue, RefusesThe3001stItemOf3000) {
  Queue<int> queue("full", nullptr, uNEVER, 100, 3000);
  for (int item = 0; item < 3000; ++item) ASSERT_TRUE(queue.Push(item));
  EXPECT_FALSE(queue.Push(3000));
  EXPECT_EQ(3000u, queue.GetCount());
  EXPECT_EQ(3000u, queue.GetSemaphore().GetCount());
  int item = -1;
  EXPECT_TRUE(queue.TryPop(item));
  EXPECT_EQ(0, item);
  EXPECT_TRUE(queue.Push(3001));
}

TEST(Queue, OfHardLimitZeroRefusesAll) {
  Queue<int> queue("none", nullptr, 0, 0, 0);
  EXPECT_EQ("", ToldBy([&] { EXPECT_FALSE(queue.Push(1)); }));
  EXPECT_EQ(0u, queue.GetSemaphore().GetCount());
}

TEST(Queue, PostsOnceForEachItem) {
  Silent queue(2);
  EXPECT_EQ(0u, queue.GetSemaphore().GetCount());
  queue.Push(1);
  EXPECT_EQ(1u, queue.GetSemaphore().GetCount());
  queue.Push(2);
  queue.Push(3);
  EXPECT_EQ(2u, queue.GetSemaphore().GetCount());
}

TEST(Queue, LeavesTheSemaphoreAloneWhenItPopsOrDrains) {
  Silent queue;
  queue.Push(1);
  queue.Push(2);
  int item;
  queue.TryPop(item);
  EXPECT_EQ(2u, queue.GetSemaphore().GetCount());
  queue.Drain();
  EXPECT_EQ(2u, queue.GetSemaphore().GetCount());
  queue.TryPop(item);
  EXPECT_EQ(2u, queue.GetSemaphore().GetCount());
}

TEST(Queue, GivesSeveralAtOnceInTheOrderOfTheirComing) {
  Silent queue;
  for (int item = 1; item <= 5; ++item) queue.Push(item);
  int items[4] = {0, 0, 0, 0};
  EXPECT_EQ(0u, queue.TryPopSome(items, 0));
  EXPECT_EQ(3u, queue.TryPopSome(items, 3));
  EXPECT_THAT(items, testing::ElementsAre(1, 2, 3, 0));
  EXPECT_EQ(2u, queue.TryPopSome(items, 4));
  EXPECT_THAT(items, testing::ElementsAre(4, 5, 3, 0));
  EXPECT_EQ(0u, queue.TryPopSome(items, 4));
  EXPECT_EQ(5u, queue.GetSemaphore().GetCount());
}

TEST(Queue, TakesASharedPointerByReferenceAndLeavesItToTheCallerWhenFull) {
  Queue<boost::shared_ptr<int>> queue("pointers", nullptr, uNEVER, 1, 1);
  boost::shared_ptr<int> kept = boost::make_shared<int>(1);
  boost::shared_ptr<int> given = boost::make_shared<int>(2);
  EXPECT_TRUE(queue.Push(kept));
  EXPECT_EQ(2, kept.use_count());
  EXPECT_FALSE(queue.Push(kept));
  EXPECT_EQ(2, kept.use_count());
  EXPECT_FALSE(queue.Push(std::move(given)));
  EXPECT_EQ(2, *given);  // NOLINT(bugprone-use-after-move): promised
  boost::shared_ptr<int> popped;
  queue.TryPop(popped);
  EXPECT_TRUE(queue.Push(std::move(given)));
  EXPECT_FALSE(given);  // NOLINT(bugprone-use-after-move): what is asked
}

TEST(Queue, HoldsWhatCanOnlyBeMoved) {
  Queue<std::unique_ptr<int>> queue("movable", nullptr, uNEVER, 1, uNEVER);
  EXPECT_TRUE(queue.Push(std::make_unique<int>(7)));
  std::unique_ptr<int> popped;
  EXPECT_TRUE(queue.TryPop(popped));
  EXPECT_EQ(7, *popped);
  queue.Push(std::make_unique<int>(8));
  queue.Drain();
  EXPECT_EQ(0u, queue.GetCount());
}

TEST(Queue, DestroysWhatItPops) {
  Queue<boost::shared_ptr<int>> queue("pointers", nullptr, uNEVER, 1, uNEVER);
  const boost::shared_ptr<int> item = boost::make_shared<int>(1);
  queue.Push(item);
  boost::shared_ptr<int> popped;
  queue.TryPop(popped);
  EXPECT_EQ(2, item.use_count());
}

// --- Names

struct Unnamed {};
struct OtherUnnamed {};

template <class T>
std::string NameOfNext() {
  Queue<T> queue("", nullptr, 1, 1, 2);
  const std::string told = ToldBy([&] { queue.Push(T()); });
  const std::size_t start = told.find("Queue #");
  return start == std::string::npos ? told : told.substr(start, told.find('\n') - start);
}

TEST(Queue, NamesItselfByACountOfItsOwnType) {
  EXPECT_EQ("Queue #0", NameOfNext<Unnamed>());
  EXPECT_EQ("Queue #1", NameOfNext<Unnamed>());
  EXPECT_EQ("Queue #0", NameOfNext<OtherUnnamed>());
  const Queue<Unnamed> named("named", nullptr, 1, 1, 1);
  EXPECT_EQ("Queue #2", NameOfNext<Unnamed>());
}

// --- Watermark

TEST_F(QueueNamed, ReportsAt1000At1100AndAtTheHardLimit) {
  Queue<int> queue("Entries", nullptr, 1000, 100, 3000);
  EXPECT_EQ("", PushAndListen(queue, 999));
  ExpectReport(PushAndListen(queue, 1), Report("Entries", "new high watermark (1000 items)\n"));
  EXPECT_EQ("", PushAndListen(queue, 99));
  ExpectReport(PushAndListen(queue, 1), Report("Entries", "new high watermark (1100 items)\n"));
  EXPECT_EQ("", PushAndListen(queue, 99));
  for (int level = 1200; level < 3000; level += 100) {
    ExpectReport(PushAndListen(queue, 1),
                 Report("Entries", "new high watermark (" + std::to_string(level) + " items)\n"));
    EXPECT_EQ("", PushAndListen(queue, 99));
  }
  ExpectReport(PushAndListen(queue, 1),
               Report("Entries", "high watermark (3000 items) reached hard limit (3000 items)\n\n"));
  EXPECT_EQ("", ToldBy([&] { EXPECT_FALSE(queue.Push(1)); }));
}

// A stream that a cancellation is let into takes nothing more, from anybody.
TEST_F(QueueNamed, ReportsAreWholeAlsoWhereTheThreadIsCancelled) {
  Queue<int> queue("Entries", nullptr, 1, 1, 10);
  bool pushed = false;
  bool cameBack = false;
  const std::string told = ToldBy([&] {
    std::thread([&] {
      pthread_cancel(pthread_self());
      pushed = queue.Push(1);
      pthread_testcancel();
      cameBack = true;
    }).join();
  });
  ExpectReport(told, Report("Entries", "new high watermark (1 items)\n"));
  EXPECT_TRUE(pushed);
  EXPECT_FALSE(cameBack);
  ExpectReport(PushAndListen(queue, 1), Report("Entries", "new high watermark (2 items)\n"));
}

TEST_F(QueueNamed, ReportsTheHardLimitBetweenTwoSteps) {
  Queue<int> queue("Entries", nullptr, 2, 100, 5);
  EXPECT_EQ("", PushAndListen(queue, 4));
  ExpectReport(PushAndListen(queue, 1),
               Report("Entries", "high watermark (5 items) reached hard limit (5 items)\n\n"));
}

TEST_F(QueueNamed, FirstReportWaitsForAWholeStepFromZero) {
  Queue<int> queue("Entries", nullptr, 2, 4, 100);
  EXPECT_EQ("", PushAndListen(queue, 3));
  ExpectReport(PushAndListen(queue, 1), Report("Entries", "new high watermark (4 items)\n"));
}

TEST_F(QueueNamed, SaysNothingOfAHardLimitBelowTheFirstLevel) {
  Queue<int> queue("Entries", nullptr, 10, 1, 5);
  EXPECT_EQ("", PushAndListen(queue, 5));
}

TEST_F(QueueNamed, StepOfZeroReportsEachNewPeak) {
  Queue<int> queue("Entries", nullptr, 1, 0, 100);
  ExpectReport(PushAndListen(queue, 1), Report("Entries", "new high watermark (1 items)\n"));
  ExpectReport(PushAndListen(queue, 1), Report("Entries", "new high watermark (2 items)\n"));
}

TEST_F(QueueNamed, ReportsAPeakOnce) {
  Queue<int> queue("Entries", nullptr, 2, 1, 4);
  EXPECT_NE("", PushAndListen(queue, 3));
  queue.Drain();
  EXPECT_EQ("", PushAndListen(queue, 3));
  ExpectReport(PushAndListen(queue, 1),
               Report("Entries", "high watermark (4 items) reached hard limit (4 items)\n\n"));
  queue.Drain();
  EXPECT_EQ("", PushAndListen(queue, 4));
}

// A zone that no machine has by itself.
class Zone {
 public:
  explicit Zone(const char* name) {
    if (const char* const before = std::getenv("TZ")) m_before = before;
    Set(name);
  }
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;
  ~Zone() { m_before ? Set(m_before->c_str()) : static_cast<void>(unsetenv("TZ")); }

 private:
  static void Set(const char* name) { setenv("TZ", name, 1); }

  std::optional<std::string> m_before;
};

TEST_F(QueueNamed, ReportsTheLocalTime) {
  const Zone zone("Probe-5:17");
  Queue<int> queue("Entries", nullptr, 1, 1, 9);
  const std::time_t before = TestSupport::SecondsNow();
  const std::string told = PushAndListen(queue, 1);
  const std::time_t after = TestSupport::SecondsNow();
  bool found = false;
  for (std::time_t moment = before; moment <= after; ++moment) {
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S - ", std::localtime(&moment));
    found = found || told.compare(0, 11, text) == 0;
  }
  EXPECT_TRUE(found) << told;
}

// Keeps what it is given, and how often it was to be flushed.
class Sink : public std::stringbuf {
 public:
  int m_iWrites = 0;
  int m_iFlushes = 0;

 private:
  std::streamsize xsputn(const char* text, std::streamsize length) override {
    ++m_iWrites;
    return std::stringbuf::xsputn(text, length);
  }
  int sync() override {
    ++m_iFlushes;
    return 0;
  }
};

TEST_F(QueueNamed, ReportsInOnePieceAndFlushes) {
  Sink sink;
  std::streambuf* const before = std::cerr.rdbuf(&sink);
  std::cerr << std::nounitbuf;
  Queue<int> queue("Entries", nullptr, 1, 1, 9);
  queue.Push(1);
  std::cerr << std::unitbuf;
  std::cerr.rdbuf(before);
  ExpectReport(sink.str(), Report("Entries", "new high watermark (1 items)\n"));
  EXPECT_EQ(1, sink.m_iWrites);
  EXPECT_EQ(1, sink.m_iFlushes);
}

TEST_F(QueueNamed, ReportLeavesOutAProcessWithoutAName) {
  System::Instance()->SetProcessName("");
  Queue<int> queue("Entries", nullptr, 1, 1, 9);
  ExpectReport(PushAndListen(queue, 1), "Entries\n           new high watermark (1 items)\n");
}

TEST_F(QueueNamed, ReportWithoutMemoryIsLeftOutAndTheItemIsThere) {
  Queue<int> queue("Entries", nullptr, 1, 1, 9);
  EXPECT_EQ("", ToldBy([&] {
              const TestSupport::FailAllocation noMemory(1);
              EXPECT_TRUE(queue.Push(1));
            }));
  EXPECT_EQ(1u, queue.GetCount());
  EXPECT_EQ(1u, queue.GetSemaphore().GetCount());
  ExpectReport(PushAndListen(queue, 1), Report("Entries", "new high watermark (2 items)\n"));
}

TEST_F(QueueNamed, ReportToAThrowingStreamIsLeftOutAndTheItemIsThere) {
  Queue<int> queue("Entries", nullptr, 1, 1, 9);
  std::cerr.setstate(std::ios_base::badbit);
  EXPECT_THROW(std::cerr.exceptions(std::ios_base::badbit), std::ios_base::failure);
  EXPECT_TRUE(queue.Push(1));
  std::cerr.exceptions(std::ios_base::goodbit);
  std::cerr.clear();
  EXPECT_EQ(1u, queue.GetCount());
  EXPECT_EQ(1u, queue.GetSemaphore().GetCount());
}

// --- Discarding

std::vector<int> g_cleaned;

void Clean(int& item) { g_cleaned.push_back(item); }

void CleanOrThrow(int& item) {
  g_cleaned.push_back(item);
  if (item == 2) throw std::runtime_error("clean-up");
}

class QueueCleanup : public testing::Test {
 protected:
  void SetUp() override { g_cleaned.clear(); }
};

// It may wait for another thread that uses the queue.
TEST(Queue, IsFreeWhileAnItemIsCleanedUp) {
  static Queue<int>* s_pQueue;
  static bool s_bFree;
  Queue<int> queue(
      "asked",
      [](int&) {
        std::atomic<bool> asked{false};
        std::thread asking([&asked] { asked = s_pQueue->GetCount() == 0; });
        s_bFree = TestSupport::Eventually([&asked] { return asked.load(); });
        if (!s_bFree) std::abort();  // the other one waits for this thread, and can't be joined
        asking.join();
      },
      uNEVER, 1, uNEVER);
  s_pQueue = &queue;
  EXPECT_TRUE(queue.Push(1));
  queue.Drain();
  EXPECT_TRUE(s_bFree);
}

TEST_F(QueueCleanup, DrainGivesEachItemToTheCleanup) {
  Queue<int> queue("cleaned", &Clean, uNEVER, 1, uNEVER);
  for (int item : {1, 2, 3}) queue.Push(item);
  queue.Drain();
  EXPECT_THAT(g_cleaned, testing::ElementsAre(1, 2, 3));
  EXPECT_EQ(0u, queue.GetCount());
  queue.Drain();
  EXPECT_EQ(3u, g_cleaned.size());
}

TEST_F(QueueCleanup, PoppedAndRefusedItemsAreNotCleaned) {
  Queue<int> queue("cleaned", &Clean, uNEVER, 1, 1);
  queue.Push(1);
  EXPECT_FALSE(queue.Push(2));
  int item;
  queue.TryPop(item);
  EXPECT_TRUE(g_cleaned.empty());
}

TEST_F(QueueCleanup, DestructorDrains) {
  {
    Queue<int> queue("cleaned", &Clean, uNEVER, 1, uNEVER);
    for (int item : {1, 2, 3}) queue.Push(item);
  }
  EXPECT_THAT(g_cleaned, testing::ElementsAre(1, 2, 3));
}

TEST_F(QueueCleanup, DrainWithoutCleanupDestroysTheItems) {
  Queue<boost::shared_ptr<int>> queue("pointers", nullptr, uNEVER, 1, uNEVER);
  const boost::shared_ptr<int> item = boost::make_shared<int>(1);
  queue.Push(item);
  queue.Drain();
  EXPECT_EQ(1, item.use_count());
}

TEST_F(QueueCleanup, WhatTheCleanupThrowsLeavesDrainAndTheRestStays) {
  Queue<int> queue("cleaned", &CleanOrThrow, uNEVER, 1, uNEVER);
  for (int item : {1, 2, 3}) queue.Push(item);
  EXPECT_THROW(queue.Drain(), std::runtime_error);
  EXPECT_EQ(1u, queue.GetCount());
  queue.Drain();
  EXPECT_THAT(g_cleaned, testing::ElementsAre(1, 2, 3));
}

TEST_F(QueueCleanup, WhatTheCleanupThrowsEndsInTheDestructorAndTheRestIsCleaned) {
  {
    Queue<int> queue("cleaned", &CleanOrThrow, uNEVER, 1, uNEVER);
    for (int item : {1, 2, 3}) queue.Push(item);
  }
  EXPECT_THAT(g_cleaned, testing::ElementsAre(1, 2, 3));
}

Queue<int>* g_pPushedInto = nullptr;

void PushAgain(int& item) {
  g_cleaned.push_back(item);
  g_pPushedInto->Push(item + 10);
}

TEST_F(QueueCleanup, MayUseTheQueueAndDrainStillEnds) {
  Queue<int> queue("cleaned", &PushAgain, uNEVER, 1, 100);
  g_pPushedInto = &queue;
  queue.Push(1);
  queue.Push(2);
  queue.Drain();
  EXPECT_THAT(g_cleaned, testing::ElementsAre(1, 2));
  EXPECT_EQ(2u, queue.GetCount());
}

// --- Items that throw

struct Fragile {
  static bool s_bThrow;
  int m_iValue = 0;

  Fragile() = default;
  explicit Fragile(int value) : m_iValue(value) {}
  Fragile(const Fragile& other) : m_iValue(other.m_iValue) { Break(); }
  Fragile& operator=(const Fragile& other) {
    Break();
    m_iValue = other.m_iValue;
    return *this;
  }
  static void Break() {
    if (s_bThrow) throw std::runtime_error("copy");
  }
};
bool Fragile::s_bThrow = false;

TEST_F(QueueNamed, ItemWhoseCopyThrowsIsNotStoredAndRaisesNoWatermark) {
  Queue<Fragile> queue("Fragile", nullptr, 2, 1, 9);
  queue.Push(Fragile(1));
  Fragile::s_bThrow = true;
  EXPECT_EQ("", ToldBy([&] { EXPECT_THROW(queue.Push(Fragile(2)), std::runtime_error); }));
  Fragile::s_bThrow = false;
  EXPECT_EQ(1u, queue.GetCount());
  EXPECT_EQ(1u, queue.GetSemaphore().GetCount());
  ExpectReport(ToldBy([&] { queue.Push(Fragile(3)); }), Report("Fragile", "new high watermark (2 items)\n"));
}

TEST_F(QueueNamed, ItemWhoseAssignmentThrowsStaysInTheQueue) {
  Queue<Fragile> queue("Fragile", nullptr, uNEVER, 1, 9);
  queue.Push(Fragile(1));
  Fragile popped;
  Fragile::s_bThrow = true;
  EXPECT_THROW(queue.TryPop(popped), std::runtime_error);
  Fragile::s_bThrow = false;
  EXPECT_EQ(1u, queue.GetCount());
  EXPECT_TRUE(queue.TryPop(popped));
  EXPECT_EQ(1, popped.m_iValue);
}

TEST(Queue, WithoutMemoryForTheItemIsAsItWas) {
  Silent queue;
  for (int item = 0; item < 10000; ++item) {
    const std::size_t before = queue.GetCount();
    try {
      const TestSupport::FailAllocation noMemory(1);
      queue.Push(item);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(before, queue.GetCount());
      EXPECT_EQ(before, queue.GetSemaphore().GetCount());
      return;
    }
  }
  FAIL() << "10000 items took no memory";
}

// --- Release

TEST(Queue, ReleasePostsOnceOnlyOnAChangeToTrue) {
  Silent queue;
  queue.SetReleased(false);
  EXPECT_EQ(0u, queue.GetSemaphore().GetCount());
  queue.SetReleased(true);
  queue.SetReleased(true);
  EXPECT_EQ(1u, queue.GetSemaphore().GetCount());
  queue.SetReleased(false);
  EXPECT_EQ(1u, queue.GetSemaphore().GetCount());
  queue.SetReleased(true);
  EXPECT_EQ(2u, queue.GetSemaphore().GetCount());
}

TEST(Queue, WakeNextPostsOnlyWhileReleased) {
  Silent queue;
  queue.WakeNext();
  EXPECT_EQ(0u, queue.GetSemaphore().GetCount());
  queue.SetReleased(true);
  queue.WakeNext();
  EXPECT_EQ(2u, queue.GetSemaphore().GetCount());
  queue.SetReleased(false);
  queue.WakeNext();
  EXPECT_EQ(2u, queue.GetSemaphore().GetCount());
}

TEST(Queue, KeepsItsItemsWhenReleased) {
  Silent queue;
  queue.Push(1);
  queue.SetReleased(true);
  EXPECT_TRUE(queue.Push(2));
  EXPECT_EQ(2u, queue.GetCount());
}

}  // namespace
