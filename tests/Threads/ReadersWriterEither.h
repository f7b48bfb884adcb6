// A fixture whose tests run with a logger, where every step goes by the monitor and is traced, and without one,
// where readers pass one another beside it. What can't be seen in a trace is read inside the mutex.
#ifndef OXACORE_TESTS_THREADS_READERSWRITEREITHER_H
#define OXACORE_TESTS_THREADS_READERSWRITEREITHER_H

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Threads/ReadersWriterTrace.h"

namespace Oxa::Core::Testing {

// What the mutex keeps to itself, had by the one way past access control that the language grants: the explicit
// instantiations in the source file.
Condition& MonitorOf(ReadersWriterMutex& mutex);
/// Read locks that stand in slots, beside the monitor.
std::size_t SlotsTaken(const ReadersWriterMutex& mutex);
/// How many wait at this moment; the monitor is taken for it. Whoever is counted is asleep or about to look again.
int WritersWaiting(ReadersWriterMutex& mutex);
int ReadersWaiting(ReadersWriterMutex& mutex);

class ReadersWriterEither : public ::testing::TestWithParam<bool> {
 private:
  std::vector<std::unique_ptr<Worker>> m_workers;

 protected:
  ReadersWriterEither();
  ~ReadersWriterEither() override;

  static bool IsTraced() { return GetParam(); }
  /// What was traced since the last Clear, where it is.
  static void ExpectTrace(const std::string& codesAndCounts, const char* why = "");
  static void ExpectText(std::size_t entry, const std::string& text);
  static void ExpectCount(int count, const std::string& code);
  /// How many readers the latest step saw.
  static void ExpectReaders(std::size_t count);
  /// How many read locks stand in slots; none where a logger listens.
  void ExpectSlots(std::size_t count) const;
  bool AwaitWriters(int count);
  bool AwaitReaders(int count);

  void Read(Worker& worker);
  void Unread(Worker& worker);
  void Unwrite(Worker& worker);
  /// Whether `worker` gets the write lock without waiting. It gives it back.
  bool CanWrite(Worker& worker);
  /// Starts a wait, and comes back when it is one.
  void BlockWriter(Worker& worker);
  void BlockReader(Worker& worker);

  // No two of them share a slot.
  Worker& m_first;
  Worker& m_second;
  Worker& m_third;
  ReadersWriterMutex m_mutex;

 private:
  Worker& AddWorker();
};

inline std::string NameOfEither(const ::testing::TestParamInfo<bool>& info) {
  return info.param ? "Traced" : "Untraced";
}

}  // namespace Oxa::Core::Testing

#endif
