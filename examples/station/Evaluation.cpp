#include "Evaluation.h"

#include <Infrastructure/OxaCore/Callback.h>
#include <Infrastructure/OxaCore/Semaphore.h>
#include <Infrastructure/OxaCore/ThreadPool.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <cstddef>
#include <deque>

namespace Station {

using Oxa::Core::CallbackArg;
using Oxa::Core::Elapse;
using Oxa::Core::GlobalCallbackArg;
using Oxa::Core::Semaphore;
using Oxa::Core::ThreadPool;

namespace {

const char* const sPOOL_NAME = "Statistics";
constexpr int iTHREADS = 2;

// The statistics of one series, and the news that they are there.
class Job {
 public:
  Job(Measurement& measurement, Semaphore& done) : m_measurement(measurement), m_done(done) {}

  void DoOnce() {
    if (m_bTaken.exchange(true)) return;
    const NewsAtEnd news{m_done};
    m_measurement.m_statistics = Summarize(m_measurement.m_latenesses);
  }

 private:
  // A pool swallows what a job throws, and whoever waits for the job must not wait for ever.
  struct NewsAtEnd {
    Semaphore& m_done;
    ~NewsAtEnd() { m_done.Post(1); }
  };

  Measurement& m_measurement;
  Semaphore& m_done;
  std::atomic<bool> m_bTaken{false};
};

void Do(Job* job) { job->DoOnce(); }

// A system that is short of threads may have none to give to the pool. Then the one that waits does the work.
void AwaitAll(std::deque<Job>& jobs, Semaphore& done) {
  const Elapse patience(1, Elapse::Seconds);
  for (std::size_t left = jobs.size(); left > 0;) {
    if (done.TimedWait(patience)) {
      --left;
    } else {
      for (Job& job : jobs) job.DoOnce();
    }
  }
}

}  // namespace

void Evaluate(std::vector<Measurement>& measurements) {
  Semaphore done(0);
  std::deque<Job> jobs;
  for (Measurement& measurement : measurements) jobs.emplace_back(measurement, done);
  const boost::shared_ptr<CallbackArg<Job*>> spDo = boost::make_shared<GlobalCallbackArg<Job*>>(&Do);
  ThreadPool<Job*> pool(sPOOL_NAME, iTHREADS);
  pool.Start();
  for (Job& job : jobs) pool.Enqueue(spDo, &job);
  AwaitAll(jobs, done);
}

}  // namespace Station
