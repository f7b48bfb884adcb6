// Many threads take, nest, upgrade and give back both locks at random, while everything that the mutex promises
// is checked: on plain data that only its locks protect, on counters beside it, and on every call of its logger.

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Threads/ReadersWriterTrace.h"

namespace Oxa::Core::Testing {

namespace {

#ifdef OXACORE_SOAK
constexpr std::chrono::seconds g_DURATION(60);
#else
constexpr std::chrono::milliseconds g_DURATION(2500);
#endif
constexpr std::chrono::seconds g_STANDSTILL(60);
constexpr int g_DEEPEST = 4;

/// What the threads share.
struct Playground {
  explicit Playground(ReadersWriterMutex::LogFunction logger) : m_mutex(logger) {}

  ReadersWriterMutex m_mutex;
  long m_lFirst = 0;   // plain: guarded by m_mutex, always equal to m_lSecond for a reader
  long m_lSecond = 0;  // plain
  std::atomic<int> m_iWriters{0};
  /// Threads that hold a read lock which keeps writers out. Raised behind the lock, lowered ahead of the unlock
  /// and of a wait for an upgrade: never too high.
  std::atomic<int> m_iReaders{0};
  std::atomic<bool> m_bStop{false};
  std::atomic<long> m_lSteps{0};
  std::atomic<long> m_lWrites{0};
  std::atomic<long> m_lUpgrades{0};
  std::atomic<long> m_lTimeouts{0};
  std::atomic<long> m_lTraced{0};
  std::atomic<long> m_lFaults{0};
};

/// What one thread knows of its own locks.
struct Holdings {
  unsigned long id = 0;
  unsigned long reads = 0;
  unsigned long writes = 0;
  /// A timed upgrade ran out of time: the read locks protect nothing until all are given back.
  bool aside = false;
  Playground* playground = nullptr;

  bool KeepsWritersOut() const { return reads > 0 && !aside; }
};

thread_local Holdings* t_pHoldings = nullptr;

void Expect(Playground& playground, bool holds, const char* what) {
  if (holds) return;
  if (playground.m_lFaults.fetch_add(1) < 20) ADD_FAILURE() << what;
}

/// Checks each call against what the calling thread is about to hold.
void CheckTrace(const std::pair<unsigned long, unsigned long>& writer,
                const ReadersWriterMutex::ReaderCounts& readers, int writersWaiting, int readersWaiting,
                const char* code, const char*) {
  if (t_pHoldings == nullptr) return;
  const Holdings& mine = *t_pHoldings;
  Playground& playground = *mine.playground;
  playground.m_lTraced.fetch_add(1, std::memory_order_relaxed);
  Expect(playground, writersWaiting >= 0 && readersWaiting >= 0, "waiting counts are not negative");
  for (const auto& reader : readers) Expect(playground, reader.second > 0, "entries have counts above 0");
  const auto it = readers.find(mine.id);
  const unsigned long reads = it == readers.end() ? 0 : it->second;
  const std::string step(code);
  const bool gotRead = step == "RW+" || step == "RT+" || step == "RY+";
  const bool gotWrite = step == "WW+" || step == "WT+" || step == "WY+";
  const bool gaveRead = step == "RL-" || step == "RUB";
  const bool gaveWrite = step == "WL-" || step == "WB*";
  Expect(playground, reads == mine.reads + (gotRead ? 1 : 0) - (gaveRead ? 1 : 0), "read recursion counts");
  const unsigned long writes = writer.first == mine.id ? writer.second : 0;
  Expect(playground, writes == mine.writes + (gotWrite ? 1 : 0) - (gaveWrite ? 1 : 0),
         "write recursion counts");
  if (step == "RLB") Expect(playground, writersWaiting > 0 && writer.second == 0, "when readers stand back");
  if (step == "WBR") Expect(playground, writersWaiting == 0 && writer.second == 0, "when readers are let go");
}

class Player {
 public:
  Player(Playground& playground, unsigned seed) : m_playground(playground), m_random(seed) {}

  void Run() {
    m_mine.id = IdOfThisThread();
    m_mine.playground = &m_playground;
    t_pHoldings = &m_mine;
    while (!m_playground.m_bStop) {
      Step();
      m_playground.m_lSteps.fetch_add(1, std::memory_order_relaxed);
    }
    while (m_mine.reads > 0) Unread();
    while (m_mine.writes > 0) Unwrite();
    t_pHoldings = nullptr;
  }

 private:
  unsigned Roll(unsigned sides) { return static_cast<unsigned>(m_random() % sides); }

  void Step() {
    const unsigned roll = Roll(100);
    if (m_mine.reads + m_mine.writes >= g_DEEPEST || roll < 45) return GiveBack();
    if (roll < 80) return Read();
    if (roll < 95) return Write();
    std::this_thread::yield();
  }

  Elapse Limit() { return Elapse(Roll(4), Elapse::MilliSeconds); }

  void Read() {
    const bool locked = TakeRead();
    if (!locked) return;
    if (++m_mine.reads == 1) m_playground.m_iReaders.fetch_add(1);
    Look();
  }

  bool TakeRead() {
    const unsigned form = Roll(3);
    bool locked = true;
    if (form == 0) m_playground.m_mutex.WaitReaderLock();
    if (form == 1) locked = m_playground.m_mutex.TimedWaitReaderLock(Limit());
    if (form == 2) locked = m_playground.m_mutex.TryWaitReaderLock();
    Expect(m_playground, locked || m_mine.reads == 0 || (m_mine.aside && m_mine.writes == 0),
           "nested reads always pass");
    return locked;
  }

  void Write() {
    const bool keptOut = m_mine.KeepsWritersOut();
    const unsigned form = Roll(3);
    bool locked = true;
    // Whoever waits for an upgrade stands aside meanwhile.
    if (keptOut && form != 2) m_playground.m_iReaders.fetch_sub(1);
    if (form == 0) m_playground.m_mutex.WaitWriterLock();
    if (form == 1) locked = m_playground.m_mutex.TimedWaitWriterLock(Limit());
    if (form == 2) locked = m_playground.m_mutex.TryWaitWriterLock();
    Expect(m_playground, locked || m_mine.writes == 0, "nested writes always pass");
    if (keptOut && form == 1 && !locked) m_mine.aside = true;
    if (keptOut && form != 2 && locked) m_playground.m_iReaders.fetch_add(1);
    if (!locked) {
      m_playground.m_lTimeouts.fetch_add(1, std::memory_order_relaxed);
      return;
    }
    if (keptOut) m_playground.m_lUpgrades.fetch_add(1, std::memory_order_relaxed);
    if (++m_mine.writes == 1) m_playground.m_iWriters.fetch_add(1);
    Change();
  }

  void GiveBack() {
    if (m_mine.reads > 0 && (m_mine.writes == 0 || Roll(2) == 0)) return Unread();
    if (m_mine.writes > 0) Unwrite();
  }

  void Unread() {
    Look();
    if (m_mine.reads == 1) {
      if (!m_mine.aside) m_playground.m_iReaders.fetch_sub(1);
    }
    m_playground.m_mutex.ReaderUnlock();
    if (--m_mine.reads == 0) m_mine.aside = false;
  }

  void Unwrite() {
    Change();
    if (m_mine.writes == 1) m_playground.m_iWriters.fetch_sub(1);
    m_playground.m_mutex.WriterUnlock();
    --m_mine.writes;
  }

  /// What any holder may rely on.
  void Look() {
    if (m_mine.writes == 0 && !m_mine.KeepsWritersOut()) return;
    const int others = m_playground.m_iWriters.load() - (m_mine.writes > 0 ? 1 : 0);
    Expect(m_playground, others == 0, "nobody else writes beside a holder");
    Expect(m_playground, m_playground.m_lFirst == m_playground.m_lSecond, "readers see whole changes");
  }

  /// What the writer may rely on.
  void Change() {
    Look();
    const int others = m_playground.m_iReaders.load() - (m_mine.KeepsWritersOut() ? 1 : 0);
    Expect(m_playground, others == 0, "nobody else reads beside the writer");
    ++m_playground.m_lFirst;
    if (Roll(8) == 0) std::this_thread::yield();
    ++m_playground.m_lSecond;
    m_playground.m_lWrites.fetch_add(1, std::memory_order_relaxed);
  }

  Playground& m_playground;
  std::mt19937 m_random;
  Holdings m_mine;
};

/// Ends the process when nothing moves any more: a hang could not be cleaned up.
void WatchUntil(Playground& playground, std::chrono::steady_clock::time_point end) {
  auto lastMove = std::chrono::steady_clock::now();
  long seen = -1;
  while (std::chrono::steady_clock::now() < end && playground.m_lFaults == 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const long steps = playground.m_lSteps;
    if (steps != seen) lastMove = std::chrono::steady_clock::now();
    seen = steps;
    if (std::chrono::steady_clock::now() - lastMove < g_STANDSTILL) continue;
    std::fprintf(stderr, "The readers-writer mutex hangs after %ld steps\n", steps);
    std::abort();
  }
}

void Play(unsigned threads, ReadersWriterMutex::LogFunction logger) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  Playground playground(logger);
  std::vector<std::unique_ptr<Player>> players;
  std::vector<std::thread> running;
  for (unsigned i = 0; i < threads; ++i) {
    players.push_back(std::make_unique<Player>(playground, seed + i));
    running.emplace_back(&Player::Run, players.back().get());
  }
  WatchUntil(playground, std::chrono::steady_clock::now() + g_DURATION);
  playground.m_bStop = true;
  for (std::thread& thread : running) thread.join();
  EXPECT_EQ(0, playground.m_iReaders);
  EXPECT_EQ(0, playground.m_iWriters);
  EXPECT_EQ(playground.m_lFirst, playground.m_lSecond);
  EXPECT_EQ(playground.m_lWrites, playground.m_lFirst);
  EXPECT_GT(playground.m_lWrites, 0);
  EXPECT_GT(playground.m_lUpgrades, 0);
  EXPECT_GT(playground.m_lTimeouts, 0);
  EXPECT_EQ(logger != nullptr, playground.m_lTraced > 0);
  EXPECT_TRUE(playground.m_mutex.TryWaitWriterLock()) << "nothing is left behind";
  playground.m_mutex.WriterUnlock();
  std::printf("%ld steps, %ld writes, %ld upgrades, %ld refusals, %ld calls of the logger\n",
              playground.m_lSteps.load(), playground.m_lWrites.load(), playground.m_lUpgrades.load(),
              playground.m_lTimeouts.load(), playground.m_lTraced.load());
}

TEST(ReadersWriterStress, EightThreadsUntraced) { Play(8, nullptr); }
TEST(ReadersWriterStress, EightThreadsTraced) { Play(8, &CheckTrace); }
TEST(ReadersWriterStress, ThreeThreadsUntraced) { Play(3, nullptr); }
// More threads than there are slots, and more readers than the table has room for from the start.
TEST(ReadersWriterStress, TwentyFourThreadsUntraced) { Play(24, nullptr); }

/// Nothing but the two steps in which a reader and a writer may miss one another, as often as can be.
TEST(ReadersWriterStress, AReaderAndAWriterNeverMissOneAnother) {
  Playground playground(nullptr);
  std::thread reader([&playground] {
    while (!playground.m_bStop) {
      if (!playground.m_mutex.TryWaitReaderLock()) continue;
      Expect(playground, playground.m_iWriters.load(std::memory_order_relaxed) == 0,
             "a writer beside a reader");
      playground.m_mutex.ReaderUnlock();
      playground.m_lSteps.fetch_add(1, std::memory_order_relaxed);
    }
  });
  const auto end = std::chrono::steady_clock::now() + g_DURATION / 2;
  while (std::chrono::steady_clock::now() < end && playground.m_lFaults == 0) {
    if (!playground.m_mutex.TryWaitWriterLock()) continue;
    playground.m_iWriters.store(1, std::memory_order_relaxed);
    for (int i = 0; i < 20; ++i) ++playground.m_lFirst;
    playground.m_iWriters.store(0, std::memory_order_relaxed);
    playground.m_mutex.WriterUnlock();
    ++playground.m_lWrites;
  }
  playground.m_bStop = true;
  reader.join();
  EXPECT_EQ(0, playground.m_lFaults);
  EXPECT_GT(playground.m_lWrites, 0);
  EXPECT_GT(playground.m_lSteps, 0);
  std::printf("%ld reads, %ld writes\n", playground.m_lSteps.load(), playground.m_lWrites.load());
}

}  // namespace

}  // namespace Oxa::Core::Testing
