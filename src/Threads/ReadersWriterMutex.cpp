#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Lock.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

/// Room for so many readers is kept from the start: a lock that allocates can fail.
constexpr std::size_t g_USUAL_READERS = 16;

constexpr std::uint64_t g_CLOSED = ~std::uint64_t{0};

/// The bit of the gate that stands for a thread, among others.
std::uint64_t GateBit(unsigned long threadID) { return std::uint64_t{1} << (threadID % 64); }

/// A step as the logger hears of it.
struct Step {
  const char* m_pCode;
  const char* m_pText;
};

constexpr Step g_CONSTRUCTED = {"RWC", "ReadersWriterMutex constructor"};
constexpr Step g_DESTROYED = {"RWD", "ReadersWriterMutex destructor"};
constexpr Step g_READER_STARTED = {"RW>", "WaitReaderLock started"};
constexpr Step g_READER_SUCCEEDED = {"RW+", "WaitReaderLock succeeded"};
constexpr Step g_TIMED_READER_STARTED = {"RT>", "TimedWaitReaderLock started"};
constexpr Step g_TIMED_READER_SUCCEEDED = {"RT+", "TimedWaitReaderLock succeeded"};
constexpr Step g_TIMED_READER_FAILED = {"RT<", "TimedWaitReaderLock failed"};
constexpr Step g_TRY_READER_SUCCEEDED = {"RY+", "TryWaitReaderLock succeeded"};
constexpr Step g_READER_STOOD_BACK = {"RLB", "ReaderLock broadcast writers"};
constexpr Step g_READER_UNLOCKED = {"RL-", "ReaderUnlock"};
constexpr Step g_READER_WOKE_WRITERS = {"RUB", "ReaderUnlock broadcast writers"};
constexpr Step g_WRITER_STARTED = {"WW>", "WaitWriterLock started"};
constexpr Step g_WRITER_SUCCEEDED = {"WW+", "WaitWriterLock succeeded"};
constexpr Step g_TIMED_WRITER_STARTED = {"WT>", "TimedWaitWriterLock started"};
constexpr Step g_TIMED_WRITER_SUCCEEDED = {"WT+", "TimedWaitWriterLock succeeded"};
constexpr Step g_TIMED_WRITER_FAILED = {"WT<", "TimedWaitWriterLock failed"};
constexpr Step g_WRITER_WOKE_READERS = {"WBR", "TimedWaitWriterLock broadcast readers"};
constexpr Step g_TRY_WRITER_SUCCEEDED = {"WY+", "TryWaitWriterLock succeeded"};
constexpr Step g_WRITER_UNLOCKED = {"WL-", "WriterUnlock"};
constexpr Step g_WRITER_WOKE_ALL = {"WB*", "WriterUnlock broadcast all"};

/// One thread more that waits; it counts until End, or until an error takes the thread out of the wait.
class Waiting {
 public:
  explicit Waiting(int& count) : m_pCount(&count) { ++count; }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting() { End(); }

  void End() {
    if (m_pCount != nullptr) --*m_pCount;
    m_pCount = nullptr;
  }

 private:
  int* m_pCount;
};

/// Runs `action` at the end of the scope, however that is left, unless it was cancelled.
template <class Action>
class AtEnd {
 public:
  explicit AtEnd(const Action& action) : m_action(action) {}
  AtEnd(const AtEnd&) = delete;
  AtEnd& operator=(const AtEnd&) = delete;
  ~AtEnd() {
    if (!m_bCancelled) m_action();
  }

  void Cancel() { m_bCancelled = true; }

 private:
  const Action m_action;
  bool m_bCancelled = false;
};

}  // namespace

ReadersWriterMutex::ReadersWriterMutex(LogFunction logger)
    : m_monitor(true), m_writer(0, 0), m_pLogger(logger), m_uGate(logger != nullptr ? g_CLOSED : 0) {
  m_readers.reserve(g_USUAL_READERS);
  if (m_pLogger == nullptr) return;
  Lock monitor(m_monitor);
  Trace(g_CONSTRUCTED);
}

ReadersWriterMutex::~ReadersWriterMutex() {
  if (m_pLogger == nullptr) return;
  try {
    Lock monitor(m_monitor);
    Trace(g_DESTROYED);
  } catch (...) {
    // A monitor that can't be had any more keeps nobody from dying.
  }
}

void ReadersWriterMutex::WaitReaderLock() {
  const unsigned long threadID = Platform::CurrentThreadId();
  if (TakeSlot(threadID)) return;
  Lock monitor(m_monitor);
  Waiting waiting(m_iReadersWaiting);
  Trace(g_READER_STARTED);
  while (!PrivateTryWaitReaderLock(threadID)) m_monitor.Wait();
  waiting.End();
  Trace(g_READER_SUCCEEDED);
}

bool ReadersWriterMutex::TimedWaitReaderLock(const Elapse& timeout) {
  const unsigned long threadID = Platform::CurrentThreadId();
  if (TakeSlot(threadID)) return true;
  const Time deadline(timeout);
  Lock monitor(m_monitor);
  Waiting waiting(m_iReadersWaiting);
  Trace(g_TIMED_READER_STARTED);
  bool locked = WaitForReaderTurn(threadID, deadline);
  waiting.End();
  locked = locked || PrivateTryWaitReaderLock(threadID);
  Trace(locked ? g_TIMED_READER_SUCCEEDED : g_TIMED_READER_FAILED);
  return locked;
}

bool ReadersWriterMutex::TryWaitReaderLock() {
  const unsigned long threadID = Platform::CurrentThreadId();
  if (TakeSlot(threadID)) return true;
  Lock monitor(m_monitor);
  const bool locked = PrivateTryWaitReaderLock(threadID);
  if (locked) Trace(g_TRY_READER_SUCCEEDED);
  return locked;
}

void ReadersWriterMutex::ReaderUnlock() {
  const unsigned long threadID = Platform::CurrentThreadId();
  if (LeaveSlot(threadID)) return;
  Lock monitor(m_monitor);
  const Readers::iterator it = FindReader(threadID);
  if (!OXA_ASSERT(it != m_readers.end())) return;
  if (!OXA_ASSERT(it->second > 0)) return;
  const bool last = --it->second == 0;
  if (last) RemoveReader(it);
  Trace(g_READER_UNLOCKED);
  if (!last || m_iWritersWaiting < 1) return;
  Trace(g_READER_WOKE_WRITERS);
  m_monitor.Broadcast();
}

void ReadersWriterMutex::WaitWriterLock() {
  const unsigned long threadID = Platform::CurrentThreadId();
  Lock monitor(m_monitor);
  CloseGate();
  AtEnd givenUp([this] { LetReadersGo(); });
  Waiting waiting(m_iWritersWaiting);
  Trace(g_WRITER_STARTED);
  if (!PrivateTryWaitWriterLock(threadID)) WaitForWriterTurn(threadID);
  waiting.End();
  givenUp.Cancel();
  Trace(g_WRITER_SUCCEEDED);
}

bool ReadersWriterMutex::TimedWaitWriterLock(const Elapse& timeout) {
  const Time deadline(timeout);
  const unsigned long threadID = Platform::CurrentThreadId();
  Lock monitor(m_monitor);
  CloseGate();
  const bool upgrades = IsActiveReader(threadID);
  AtEnd givenUp([this] { LetReadersGo(); });
  Waiting waiting(m_iWritersWaiting);
  Trace(g_TIMED_WRITER_STARTED);
  bool locked = WaitForWriterTurn(threadID, deadline);
  waiting.End();
  if (!locked && PrivateTryWaitWriterLock(threadID)) {
    if (upgrades) SetActive(threadID, true);
    locked = true;
  }
  Trace(locked ? g_TIMED_WRITER_SUCCEEDED : g_TIMED_WRITER_FAILED);
  if (locked) givenUp.Cancel();
  return locked;
}

bool ReadersWriterMutex::TryWaitWriterLock() {
  const unsigned long threadID = Platform::CurrentThreadId();
  Lock monitor(m_monitor);
  CloseGate();
  const bool locked = PrivateTryWaitWriterLock(threadID);
  if (locked) {
    Trace(g_TRY_WRITER_SUCCEEDED);
  } else {
    UpdateGate();
  }
  return locked;
}

void ReadersWriterMutex::WriterUnlock() {
  const unsigned long threadID = Platform::CurrentThreadId();
  Lock monitor(m_monitor);
  const bool written = OXA_ASSERT(m_writer.second > 0);
  const bool ours = OXA_ASSERT(m_writer.first == threadID);
  if (!written || !ours) return;
  if (--m_writer.second == 0) UpdateGate();
  Trace(g_WRITER_UNLOCKED);
  if (m_writer.second > 0 || (m_iWritersWaiting < 1 && m_iReadersWaiting < 1)) return;
  // Only writers wait, and this thread's own read lock keeps them out: nobody could use the wake.
  if (m_iReadersWaiting < 1 && IsActiveReader(threadID)) return;
  Trace(g_WRITER_WOKE_ALL);
  m_monitor.Broadcast();
}

/// One attempt to read, with the monitor held. Nested reads always pass: one that stood back for a waiting
/// writer would wait for a thread that waits for it.
bool ReadersWriterMutex::PrivateTryWaitReaderLock(unsigned long threadID) {
  if (m_writer.second > 0 && m_writer.first != threadID) return false;
  const Readers::iterator it = FindReader(threadID);
  if (it != m_readers.end()) {
    ++it->second;
    return true;
  }
  if (m_writer.second == 0 && m_iWritersWaiting > 0) {
    Trace(g_READER_STOOD_BACK);
    m_monitor.Broadcast();
    return false;
  }
  AddReader(threadID, 1);
  return true;
}

/// One attempt to write, with the monitor held. A reader that is alone is upgraded.
bool ReadersWriterMutex::PrivateTryWaitWriterLock(unsigned long threadID) {
  if (m_writer.second != 0) {
    if (m_writer.first != threadID) return false;
    ++m_writer.second;
    return true;
  }
  const std::size_t active = m_activeReaders + CountSlots();
  if (active > 1) return false;
  if (active == 1 && !IsActiveReader(threadID)) return false;
  m_writer = {threadID, 1};
  return true;
}

/// Tries until this thread reads or the time is over.
bool ReadersWriterMutex::WaitForReaderTurn(unsigned long threadID, const Time& deadline) {
  while (!PrivateTryWaitReaderLock(threadID)) {
    if (!m_monitor.TimedWait(deadline.TimeLeft())) return false;
  }
  return true;
}

/// Waits until this thread writes, after a first attempt that failed. A reader that upgrades stands in no
/// writer's way meanwhile: of two that upgrade at once, both step aside and one gets in.
void ReadersWriterMutex::WaitForWriterTurn(unsigned long threadID) {
  const bool upgrades = IsActiveReader(threadID);
  MoveToTable(threadID);
  if (upgrades) SetActive(threadID, false);
  const AtEnd putBack([this, threadID, upgrades] {
    if (upgrades) SetActive(threadID, true);
  });
  do {
    m_monitor.Wait();
  } while (!PrivateTryWaitWriterLock(threadID));
}

/// Tries until this thread writes or the time is over. Here a reader that upgrades stands in the way again
/// for each attempt that follows a wake. When the time is over it is left standing aside; an error puts it back.
bool ReadersWriterMutex::WaitForWriterTurn(unsigned long threadID, const Time& deadline) {
  const bool upgrades = IsActiveReader(threadID);
  AtEnd putBack([this, threadID, upgrades] {
    if (upgrades) SetActive(threadID, true);
  });
  while (!PrivateTryWaitWriterLock(threadID)) {
    MoveToTable(threadID);
    if (upgrades) SetActive(threadID, false);
    if (!m_monitor.TimedWait(deadline.TimeLeft())) {
      putBack.Cancel();
      return false;
    }
    if (upgrades) SetActive(threadID, true);
  }
  return true;
}

/// After a writer that gives up or that an error took out of its wait: if it was the last one, the gate opens,
/// and the readers that stood back for it wake.
void ReadersWriterMutex::LetReadersGo() {
  UpdateGate();
  if (m_iWritersWaiting > 0 || m_writer.second != 0) return;
  Trace(g_WRITER_WOKE_READERS);
  m_monitor.Broadcast();
}

template <class Step>
inline void ReadersWriterMutex::Trace(const Step& step) {
  if (m_pLogger != nullptr) CallLogger(step.m_pCode, step.m_pText);
}

/// Tells the logger, with the monitor held. The map that it gets is made for it: without a logger nobody
/// pays.
void ReadersWriterMutex::CallLogger(const char* code, const char* text) {
  try {
    const ReaderCounts readers(m_readers.begin(), m_readers.end());
    m_pLogger(m_writer, readers, m_iWritersWaiting, m_iReadersWaiting, code, text);
  } catch (const std::bad_alloc&) {
    // A step without memory for its report goes unreported: locks have to work then as well.
  }
}

ReadersWriterMutex::Readers::iterator ReadersWriterMutex::FindReader(unsigned long threadID) noexcept {
  return std::find_if(m_readers.begin(), m_readers.end(),
                      [threadID](const Reader& reader) { return reader.first == threadID; });
}

bool ReadersWriterMutex::IsActiveReader(unsigned long threadID) noexcept {
  if (SlotOf(threadID).m_ulThread.load(std::memory_order_relaxed) == threadID) return true;
  const Readers::iterator it = FindReader(threadID);
  return it != m_readers.end() && it->m_bActive;
}

/// Lets a thread that holds a read lock stand in the way of writers, or not.
void ReadersWriterMutex::SetActive(unsigned long threadID, bool active) noexcept {
  const Readers::iterator it = FindReader(threadID);
  if (it == m_readers.end() || it->m_bActive == active) return;
  it->m_bActive = active;
  active ? ++m_activeReaders : --m_activeReaders;
}

void ReadersWriterMutex::AddReader(unsigned long threadID, unsigned long count) {
  m_readers.push_back({{threadID, count}, true});
  ++m_activeReaders;
  UpdateGate();
}

void ReadersWriterMutex::RemoveReader(Readers::iterator reader) noexcept {
  if (reader->m_bActive) --m_activeReaders;
  *reader = m_readers.back();
  m_readers.pop_back();
  UpdateGate();
}

inline ReadersWriterMutex::Slot& ReadersWriterMutex::SlotOf(unsigned long threadID) noexcept {
  return m_slots[threadID % uSLOTS];
}

/// Takes a read lock without the monitor, as long as no writer is about and nobody listens to the steps: then
/// what the monitor would do is to enter the thread and to leave again, and nobody could tell the difference.
///
/// A reader shows itself in its slot and then looks at the gate; a writer closes the gate and then looks at
/// the slots. Both in one order that all threads agree on, so that at least one of them sees the other. A
/// reader that finds the gate closed behind itself steps back and goes by the monitor, where it wakes a writer
/// that may have seen it.
bool ReadersWriterMutex::TakeSlot(unsigned long threadID) noexcept {
  Slot& slot = SlotOf(threadID);
  const std::uint64_t bit = GateBit(threadID);
  unsigned long holder = slot.m_ulThread.load(std::memory_order_relaxed);
  if (holder == threadID) {
    ++slot.m_ulCount;  // nested: passes the gate
    return true;
  }
  if (holder != 0 || (m_uGate.load(std::memory_order_relaxed) & bit) != 0) return false;
  if (!slot.m_ulThread.compare_exchange_strong(holder, threadID)) return false;
  if ((m_uGate.load() & bit) != 0) {
    slot.m_ulThread.store(0);
    return false;
  }
  slot.m_ulCount = 1;
  return true;
}

/// Gives back a read lock that stands in the thread's slot; false if there is none. The last one looks at the
/// gate behind itself: a writer that closed it may wait for exactly this.
bool ReadersWriterMutex::LeaveSlot(unsigned long threadID) {
  Slot& slot = SlotOf(threadID);
  if (slot.m_ulThread.load(std::memory_order_relaxed) != threadID) return false;
  if (--slot.m_ulCount > 0) return true;
  slot.m_ulThread.store(0);
  if (m_uGate.load() != g_CLOSED) return true;
  Lock monitor(m_monitor);
  if (m_iWritersWaiting > 0) m_monitor.Broadcast();
  return true;
}

std::size_t ReadersWriterMutex::CountSlots() const noexcept {
  return static_cast<std::size_t>(std::count_if(
      std::begin(m_slots), std::end(m_slots), [](const Slot& slot) { return slot.m_ulThread.load() != 0; }));
}

/// With the monitor held, ahead of any attempt to write: nobody takes a slot from now on.
void ReadersWriterMutex::CloseGate() noexcept {
  if (m_uGate.load(std::memory_order_relaxed) != g_CLOSED) m_uGate.store(g_CLOSED);
}

/// With the monitor held and the gate closed: the thread's read locks move from its slot to the table, where
/// they can be set aside.
void ReadersWriterMutex::MoveToTable(unsigned long threadID) {
  Slot& slot = SlotOf(threadID);
  if (slot.m_ulThread.load(std::memory_order_relaxed) != threadID) return;
  AddReader(threadID, slot.m_ulCount);
  slot.m_ulThread.store(0, std::memory_order_release);
}

/// Opens the gate, if nobody writes or waits to write, to all threads but those of the table. A reader's locks
/// stand in one place, or their count would be two.
void ReadersWriterMutex::UpdateGate() noexcept {
  if (m_pLogger != nullptr || m_writer.second != 0 || m_iWritersWaiting != 0) return;
  std::uint64_t gate = 0;
  for (const Reader& reader : m_readers) gate |= GateBit(reader.first);
  m_uGate.store(gate);
}

}  // namespace Oxa::Core
