#include <Infrastructure/OxaCore/ModuleTestSuite.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <array>
#include <atomic>
#include <numeric>

#include "AutoTest/Module/Patience.h"
#include "AutoTest/Module/TestMethods.h"
#include "AutoTest/Module/TestThreads.h"

namespace Oxa::Core {

namespace {

constexpr char sANNOUNCEMENT[] =
    "In this test multiple threads are trying to either update a 1 MB buffer (writing) or\n"
    "verify its checksum (reading). The test will take about 2 minutes.";

constexpr int iREADERS = 6;
constexpr int iWRITERS = 2;
constexpr std::size_t uBUFFER_SIZE = 1 << 20;
constexpr int iLEVELS = 3;
constexpr unsigned int uLEAST_ROUNDS = 2;  // of all readers, and of all writers: nobody promises fairness

enum EForm { eWAIT, eTIMED, eTRY };

// --- One thread

bool Read(ReadersWriterMutex& mutex, EForm form) {
  if (form == eTIMED) return mutex.TimedWaitReaderLock(Patience());
  if (form == eTRY) return mutex.TryWaitReaderLock();
  mutex.WaitReaderLock();
  return true;
}

bool Write(ReadersWriterMutex& mutex, EForm form) {
  if (form == eTIMED) return mutex.TimedWaitWriterLock(Patience());
  if (form == eTRY) return mutex.TryWaitWriterLock();
  mutex.WaitWriterLock();
  return true;
}

bool OtherCanRead(ReadersWriterMutex& mutex) {
  return OnAnotherThread([&mutex] {
    const bool locked = mutex.TryWaitReaderLock();
    if (locked) mutex.ReaderUnlock();
    return locked;
  });
}

bool OtherCanWrite(ReadersWriterMutex& mutex) {
  return OnAnotherThread([&mutex] {
    const bool locked = mutex.TryWaitWriterLock();
    if (locked) mutex.WriterUnlock();
    return locked;
  });
}

void CheckReading(EForm form) {
  ReadersWriterMutex mutex;
  for (int level = 0; level < iLEVELS; ++level) OXA_TEST_ASSERT(Read(mutex, form));
  for (int level = 0; level < iLEVELS; ++level) {
    OXA_TEST_ASSERT(OtherCanRead(mutex) && !OtherCanWrite(mutex));
    mutex.ReaderUnlock();
  }
  OXA_TEST_ASSERT(OtherCanWrite(mutex));
}

void CheckWriting(EForm form) {
  ReadersWriterMutex mutex;
  for (int level = 0; level < iLEVELS; ++level) OXA_TEST_ASSERT(Write(mutex, form));
  for (int level = 0; level < iLEVELS; ++level) {
    OXA_TEST_ASSERT(!OtherCanRead(mutex) && !OtherCanWrite(mutex));
    mutex.WriterUnlock();
  }
  OXA_TEST_ASSERT(OtherCanRead(mutex) && OtherCanWrite(mutex));
}

// Takes and gives back in turns, the last one first.
void CheckBoth(EForm form, bool writerFirst) {
  ReadersWriterMutex mutex;
  for (int level = 0; level < iLEVELS; ++level) {
    OXA_TEST_ASSERT(writerFirst ? Write(mutex, form) : Read(mutex, form));
    OXA_TEST_ASSERT(writerFirst ? Read(mutex, form) : Write(mutex, form));
  }
  for (int level = 0; level < iLEVELS; ++level) {
    OXA_TEST_ASSERT(!OtherCanRead(mutex));
    writerFirst ? mutex.ReaderUnlock() : mutex.WriterUnlock();
    writerFirst ? mutex.WriterUnlock() : mutex.ReaderUnlock();
  }
  OXA_TEST_ASSERT(OtherCanWrite(mutex));
}

void CheckGuards() {
  ReadersWriterMutex mutex;
  ReadersWriterMutex other;
  {
    ReaderLock reading(mutex);
    OXA_TEST_ASSERT(!OtherCanWrite(mutex));
    reading.Reset(other);
    OXA_TEST_ASSERT(OtherCanWrite(mutex) && !OtherCanWrite(other));
    WriterLock writing(&mutex);
    OXA_TEST_ASSERT(!OtherCanRead(mutex));
    writing.Release();
    OXA_TEST_ASSERT(OtherCanRead(mutex));
  }
  OXA_TEST_ASSERT(OtherCanWrite(other));
}

// --- Many threads

// The test's name in the tree stays what it is: this one exists for the listeners who hear of it.
class Announcement : public Test {
 public:
  Announcement() : Test(sANNOUNCEMENT) {}

 protected:
  Result Execute() override { return Result(GetName(), Result::ePASSED, std::string()); }
};

// A buffer that only ever changes as a whole.
class Buffer {
 public:
  unsigned int GetChecksum() const { return m_uChecksum; }

  void Update(unsigned int seed) {
    const WriterLock lock(m_rwMutex);
    OXA_TEST_ASSERT_MSG(++m_iInside == 1, "somebody else is at the buffer that is being updated");
    for (unsigned int& word : m_words) word = seed = seed * 1664525u + 1013904223u;
    m_uChecksum = Checksum();
    --m_iInside;
  }

  void Verify() {
    const ReaderLock lock(m_rwMutex);
    OXA_TEST_ASSERT_MSG(m_iInside == 0, "the buffer is being updated while it is read");
    OXA_TEST_ASSERT_MSG(Checksum() == m_uChecksum, "the checksum of the buffer is wrong");
  }

 private:
  unsigned int Checksum() const {
    return std::accumulate(m_words.begin(), m_words.end(), 1u,
                           [](unsigned int sum, unsigned int word) { return sum * 31u + word; });
  }

  ReadersWriterMutex m_rwMutex;  // guards the others
  std::vector<unsigned int> m_words = std::vector<unsigned int>(uBUFFER_SIZE / sizeof(unsigned int));
  unsigned int m_uChecksum = Checksum();
  std::atomic<int> m_iInside{0};
};

// Reads and writes for so long; both have to come to the buffer, more than once.
void CheckBuffer(const Elapse& length) {
  Buffer buffer;
  const unsigned int untouched = buffer.GetChecksum();
  std::array<unsigned int, iREADERS + iWRITERS> rounds{};
  const Span span(length);
  TestThreads threads(iREADERS + iWRITERS, [&](int thread) {
    unsigned int& round = rounds[static_cast<std::size_t>(thread)];
    for (; !span.IsOver(); ++round) {
      thread < iWRITERS ? buffer.Update(round * iWRITERS + static_cast<unsigned int>(thread))
                        : buffer.Verify();
    }
  });
  threads.Join();
  const auto readers = rounds.begin() + iWRITERS;
  OXA_TEST_ASSERT_MSG(std::accumulate(rounds.begin(), readers, 0u) >= uLEAST_ROUNDS,
                      "hardly anything was written");
  OXA_TEST_ASSERT_MSG(std::accumulate(readers, rounds.end(), 0u) >= uLEAST_ROUNDS,
                      "hardly anything was read");
  OXA_TEST_ASSERT_MSG(buffer.GetChecksum() != untouched, "nothing was written");
  buffer.Verify();
}

// --- Deadlocks that aren't

// Whoever finds the other one reading gives up reading for as long as it waits.
void CheckTwoUpgrades() {
  ReadersWriterMutex mutex;
  std::atomic<int> reading{0};
  TestThreads threads(2, [&](int) {
    mutex.WaitReaderLock();
    ++reading;
    const bool both = Becomes([&] { return reading == 2; });
    const bool upgraded = mutex.TimedWaitWriterLock(Patience());
    if (upgraded) mutex.WriterUnlock();
    mutex.ReaderUnlock();
    OXA_TEST_ASSERT(both && upgraded);
  });
  threads.Join();
  OXA_TEST_ASSERT(OtherCanWrite(mutex));
}

// A writer that waits keeps new readers out, but not those that read already.
void CheckNestedReader() {
  ReadersWriterMutex mutex;
  mutex.WaitReaderLock();
  bool written = false;
  TestThreads writer(1, [&](int) {
    written = mutex.TimedWaitWriterLock(Patience());
    if (written) mutex.WriterUnlock();
  });
  const bool waits = Becomes([&] { return !OtherCanRead(mutex); });
  const bool nested = mutex.TryWaitReaderLock();
  const bool upgraded = mutex.TryWaitWriterLock();
  if (upgraded) mutex.WriterUnlock();
  if (nested) mutex.ReaderUnlock();
  mutex.ReaderUnlock();
  writer.Join();
  OXA_TEST_ASSERT(waits && nested && upgraded && written);
}

void CheckWriterThatGivesUp() {
  ReadersWriterMutex mutex;
  const Elapse limit(100, Elapse::MilliSeconds);
  mutex.WaitReaderLock();
  const bool written = OnAnotherThread([&] { return mutex.TimedWaitWriterLock(limit); });
  const bool readable = OtherCanRead(mutex);
  mutex.ReaderUnlock();
  OXA_TEST_ASSERT(!written && readable);
  mutex.WaitWriterLock();
  const bool read = OnAnotherThread([&] { return mutex.TimedWaitReaderLock(limit); });
  mutex.WriterUnlock();
  OXA_TEST_ASSERT(!read && OtherCanWrite(mutex));
}

}  // namespace

TEST_OxaRWMutex::TEST_OxaRWMutex() : TestSuite("OxaRWMutex Tests") {
  AddTestMethods(*this, {{"Test OxaRWMutex - single thread", &TEST_OxaRWMutex::SingleThread},
                         {"Test OxaRWMutex - multiple threads", &TEST_OxaRWMutex::MultipleThreads},
                         {"Test OxaRWMutex - deadlock", &TEST_OxaRWMutex::Deadlock}});
}

TEST_OxaRWMutex::~TEST_OxaRWMutex() = default;

void TEST_OxaRWMutex::SingleThread(std::string&) {
  for (const EForm form : {eWAIT, eTIMED, eTRY}) {
    CheckReading(form);
    CheckWriting(form);
    CheckBoth(form, true);
    CheckBoth(form, false);
  }
  CheckGuards();
}

void TEST_OxaRWMutex::MultipleThreads(std::string& text) {
  const Announcement announcement;
  Test::CustomNotification notification(announcement);
  Broadcast(notification);
  text = sANNOUNCEMENT;
  CheckBuffer(Elapse(2, Elapse::Minutes));
}

void TEST_OxaRWMutex::Deadlock(std::string&) {
  CheckTwoUpgrades();
  CheckNestedReader();
  CheckWriterThatGivesUp();
}

}  // namespace Oxa::Core
