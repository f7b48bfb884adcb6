// Tasks and listeners that the tests of threads share.
#ifndef OXACORE_TESTS_THREADS_THREADTESTSUPPORT_H
#define OXACORE_TESTS_THREADS_THREADTESTSUPPORT_H

#include <Infrastructure/OxaCore/Thread.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Support/Eventually.h"

/// For tests that kill: the thread sanitizer holds signals back, and a thread that goes without its knowledge is one
/// for ever that it waits for.
#if defined(__SANITIZE_THREAD__)
#define OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED() GTEST_SKIP() << "no kills under the thread sanitizer"
#else
#define OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED() static_cast<void>(0)
#endif

namespace ThreadTests {

using Oxa::Core::Elapse;
using Oxa::Core::Error;
using Oxa::Core::Task;
using Oxa::Core::TaskDirective;
using Oxa::Core::Thread;
using TestSupport::Eventually;

using SharedTask = boost::shared_ptr<Task>;
using SharedThread = boost::shared_ptr<Thread>;

/// Does what it was made with.
class Doing : public Task {
 public:
  using Work = std::function<int(TaskDirective&)>;

  explicit Doing(Work work) : m_work(std::move(work)) {}
  int Run(TaskDirective& directive) override { return m_work(directive); }

 private:
  const Work m_work;
};

inline SharedTask Do(Doing::Work work) { return SharedTask(new Doing(std::move(work))); }

inline SharedTask Give(int result) {
  return Do([result](TaskDirective&) { return result; });
}

inline SharedTask UntilStopped() {
  return Do([](TaskDirective& directive) {
    directive.WaitForStopRequest();
    return 0;
  });
}

/// Keeps what it hears, each as one line: "complete NAME" or "error NAME: MESSAGE".
class Hearing : public Thread::Listener {
 public:
  ~Hearing() override = default;
  void OnThreadComplete(SharedThread thread) override { Keep("complete " + thread->GetName()); }
  void OnThreadError(SharedThread thread, Error& error) override {
    Keep("error " + thread->GetName() + ": " + error.what());
  }

  std::vector<std::string> Heard() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_heard;
  }

 private:
  void Keep(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_heard.push_back(line);
  }

  mutable std::mutex m_mutex;
  std::vector<std::string> m_heard;
};

/// A thread that is stopped and waited for at the end of the scope.
class Running {
 public:
  explicit Running(const SharedTask& task, const std::string& name = "") : m_spThread(Thread::Create(name)) {
    m_spThread->Start(task, Elapse(30));
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
  ~Running() { m_spThread->Stop(Elapse(30)); }

  Thread* operator->() const { return m_spThread.get(); }
  const SharedThread& Get() const { return m_spThread; }

 private:
  const SharedThread m_spThread;
};

}  // namespace ThreadTests

#endif
