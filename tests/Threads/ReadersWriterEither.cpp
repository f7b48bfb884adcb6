#include "Threads/ReadersWriterEither.h"

#include <Infrastructure/OxaCore/Lock.h>

#include <algorithm>
#include <iterator>

namespace Oxa::Core::Testing {

namespace {

int ReadersWaitingNow(const ReadersWriterMutex& mutex);
int WritersWaitingNow(const ReadersWriterMutex& mutex);

template <Condition ReadersWriterMutex::*Monitor, int ReadersWriterMutex::*Writers,
          int ReadersWriterMutex::*Readers, std::size_t (ReadersWriterMutex::*CountSlots)() const noexcept>
struct Inside {
  friend Condition& TheMonitor(ReadersWriterMutex& mutex) { return mutex.*Monitor; }
  friend int WritersWaitingNow(const ReadersWriterMutex& mutex) { return mutex.*Writers; }
  friend int ReadersWaitingNow(const ReadersWriterMutex& mutex) { return mutex.*Readers; }
  friend std::size_t SlotsTakenNow(const ReadersWriterMutex& mutex) { return (mutex.*CountSlots)(); }
};
Condition& TheMonitor(ReadersWriterMutex& mutex);
std::size_t SlotsTakenNow(const ReadersWriterMutex& mutex);

template struct Inside<&ReadersWriterMutex::m_monitor, &ReadersWriterMutex::m_iWritersWaiting,
                       &ReadersWriterMutex::m_iReadersWaiting, &ReadersWriterMutex::CountSlots>;

constexpr unsigned long g_SLOTS = 8;

bool ShareASlot(Worker& one, Worker& other) { return one.Id() % g_SLOTS == other.Id() % g_SLOTS; }

}  // namespace

Condition& MonitorOf(ReadersWriterMutex& mutex) { return TheMonitor(mutex); }

std::size_t SlotsTaken(const ReadersWriterMutex& mutex) { return SlotsTakenNow(mutex); }

int WritersWaiting(ReadersWriterMutex& mutex) {
  const Lock monitor(TheMonitor(mutex));
  return WritersWaitingNow(mutex);
}

int ReadersWaiting(ReadersWriterMutex& mutex) {
  const Lock monitor(TheMonitor(mutex));
  return ReadersWaitingNow(mutex);
}

ReadersWriterEither::ReadersWriterEither()
    : m_first(AddWorker()),
      m_second(AddWorker()),
      m_third(AddWorker()),
      m_mutex(IsTraced() ? &Trace::Log : nullptr) {
  Trace::Clear();
}

ReadersWriterEither::~ReadersWriterEither() { Trace::SetHook(nullptr); }

// Those that share a slot with an earlier one stay, idle, so that the next has another id.
Worker& ReadersWriterEither::AddWorker() {
  while (true) {
    m_workers.push_back(std::make_unique<Worker>());
    Worker& latest = *m_workers.back();
    const auto shares = [&latest](const auto& other) { return ShareASlot(*other, latest); };
    if (std::none_of(m_workers.begin(), std::prev(m_workers.end()), shares)) return latest;
  }
}

void ReadersWriterEither::ExpectTrace(const std::string& codesAndCounts, const char* why) {
  if (!IsTraced()) return;
  EXPECT_EQ(codesAndCounts, Trace::CodesAndCounts()) << why;
}

void ReadersWriterEither::ExpectCount(int count, const std::string& code) {
  if (!IsTraced()) return;
  EXPECT_EQ(count, Trace::CountOf(code));
}

void ReadersWriterEither::ExpectReaders(std::size_t count) {
  if (!IsTraced()) return;
  EXPECT_EQ(count, Trace::Last().readers.size());
}

void ReadersWriterEither::ExpectText(std::size_t entry, const std::string& text) {
  if (!IsTraced()) return;
  const std::vector<TraceEntry> entries = Trace::Entries();
  ASSERT_LT(entry, entries.size());
  EXPECT_EQ(text, entries[entry].text);
}

void ReadersWriterEither::ExpectSlots(std::size_t count) const {
  EXPECT_EQ(IsTraced() ? 0 : count, SlotsTaken(m_mutex));
}

bool ReadersWriterEither::AwaitWriters(int count) {
  return Eventually([this, count] { return WritersWaiting(m_mutex) == count; });
}

bool ReadersWriterEither::AwaitReaders(int count) {
  return Eventually([this, count] { return ReadersWaiting(m_mutex) == count; });
}

void ReadersWriterEither::Read(Worker& worker) {
  worker.Do([this] { m_mutex.WaitReaderLock(); });
}

void ReadersWriterEither::Unread(Worker& worker) {
  worker.Do([this] { m_mutex.ReaderUnlock(); });
}

void ReadersWriterEither::Unwrite(Worker& worker) {
  worker.Do([this] { m_mutex.WriterUnlock(); });
}

bool ReadersWriterEither::CanWrite(Worker& worker) {
  return worker.Ask([this] {
    if (!m_mutex.TryWaitWriterLock()) return false;
    m_mutex.WriterUnlock();
    return true;
  });
}

// Whoever is counted lets the monitor go by falling asleep: whatever comes next finds it asleep.
void ReadersWriterEither::BlockWriter(Worker& worker) {
  const int before = WritersWaiting(m_mutex);
  worker.Start([this] { m_mutex.WaitWriterLock(); });
  ASSERT_TRUE(AwaitWriters(before + 1));
}

void ReadersWriterEither::BlockReader(Worker& worker) {
  const int before = ReadersWaiting(m_mutex);
  worker.Start([this] { m_mutex.WaitReaderLock(); });
  ASSERT_TRUE(AwaitReaders(before + 1));
}

}  // namespace Oxa::Core::Testing
