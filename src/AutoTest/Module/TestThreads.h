// Threads of a self-test.
#ifndef OXACORE_AUTOTEST_MODULE_TESTTHREADS_H
#define OXACORE_AUTOTEST_MODULE_TESTTHREADS_H

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Oxa::Core {

/// Threads that do the same. What they wait for has to come, or to be given up, by itself: whoever ends a test waits
/// for them.
class TestThreads {
 public:
  /// Calls `action` with 0 to `count` - 1, each on a thread of its own.
  TestThreads(int count, const std::function<void(int)>& action);
  TestThreads(const TestThreads&) = delete;
  TestThreads& operator=(const TestThreads&) = delete;
  ~TestThreads() { Wait(); }

  /// Waits until all have ended. Raises a Test::Failure with the text of what one of them failed by.
  void Join();

 private:
  TestThreads() = default;
  void Run(const std::function<void(int)>& action, int index);
  void NoteFailure(const std::string& text);
  void Wait();

  std::mutex m_mutex;  // guards m_sFailure
  std::string m_sFailure;
  std::vector<std::thread> m_threads;
};

/// What `question` answers on another thread.
bool OnAnotherThread(const std::function<bool()>& question);

}  // namespace Oxa::Core

#endif
