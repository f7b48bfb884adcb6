// What the tests of the readers-writer mutex share: a record of its trace, and threads that do as they are
// told.
#ifndef OXACORE_TESTS_THREADS_READERSWRITERTRACE_H
#define OXACORE_TESTS_THREADS_READERSWRITERTRACE_H

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Oxa::Core::Testing {

/// One call of the logger.
struct TraceEntry {
  std::pair<unsigned long, unsigned long> writer;
  ReadersWriterMutex::ReaderCounts readers;
  int writersWaiting;
  int readersWaiting;
  std::string code;
  std::string text;
};

/// The record of all calls since the last Clear; one for the process, since the logger is a plain function.
class Trace {
 public:
  static void Log(const std::pair<unsigned long, unsigned long>& writer,
                  const ReadersWriterMutex::ReaderCounts& readers, int writersWaiting, int readersWaiting,
                  const char* code, const char* text);
  static void Clear();
  static std::vector<TraceEntry> Entries();
  static TraceEntry Last();
  /// The codes in order, with blanks between them.
  static std::string Codes();
  /// The codes, each with the counts of waiting writers and readers: "WW>1,0 WW+0,0".
  static std::string CodesAndCounts();
  static int CountOf(const std::string& code);
  /// Whether `code` has come `count` times before a generous limit is over.
  static bool Await(const std::string& code, int count = 1);
  /// Called at each entry with the monitor held; null for nothing.
  static void SetHook(std::function<void(const std::string& code)> hook);
};

/// Whether `condition` comes true before a generous limit is over.
bool Eventually(const std::function<bool()>& condition);

/// The id under which the mutex knows the calling thread.
unsigned long IdOfThisThread();

/// A thread that does one thing after another.
class Worker {
 public:
  Worker();
  ~Worker();
  /// Does `work` there and waits for its end.
  void Do(std::function<void()> work);
  bool Ask(const std::function<bool()>& question);
  /// Begins `work`, and doesn't wait.
  void Start(std::function<void()> work);
  /// Waits for the end of what was started; false if it doesn't come.
  bool Finish();
  bool IsBusy();
  unsigned long Id();

 private:
  void Run();
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::function<void()> m_work;
  bool m_bStop = false;
  std::thread m_thread;
};

}  // namespace Oxa::Core::Testing

#endif
