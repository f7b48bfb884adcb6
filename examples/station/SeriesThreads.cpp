#include "SeriesThreads.h"

#include <boost/make_shared.hpp>
#include <cstddef>
#include <string>
#include <utility>

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::Error;
using Oxa::Core::Thread;

namespace {

const char* const sNO_THREAD = "the system gives it no thread";

// A thread that is about to begin counts as idle, and idle is none of these.
bool HasEnded(const Thread& thread) {
  return thread.IsState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR);
}

std::string WhyGivenUp(Thread& thread) {
  if (!thread.IsState(Thread::eTHREAD_ERROR)) return std::string();
  const boost::shared_ptr<Error> spError = thread.GetLastError();
  return spError ? spError->what() : sNO_THREAD;
}

}  // namespace

SeriesThreads::SeriesThreads(const Plan& plan, Clock& clock, SampleQueue& queue, Recorder* recorder) {
  for (const Series& series : plan.m_series) {
    auto faulty = WantsFaultyClock(series.m_sName) ? std::make_unique<FaultyClock>(clock) : nullptr;
    Clock& itsClock = faulty ? *faulty : clock;
    const auto spTask = boost::make_shared<SeriesTask>(series, m_workers.size(), itsClock, queue, recorder);
    m_workers.push_back({std::move(faulty), spTask, Thread::Create(spTask->GetThreadName())});
  }
  for (const Worker& worker : m_workers) worker.m_spThread->Start(worker.m_spTask);
}

SeriesThreads::~SeriesThreads() {
  while (AreAtWork()) {
    Stop();
    OxaSleep(Elapse(1, Elapse::MilliSeconds), false);
  }
}

bool SeriesThreads::AreAtWork() const {
  for (const Worker& worker : m_workers) {
    if (!HasEnded(*worker.m_spThread)) return true;
  }
  return false;
}

void SeriesThreads::Stop() {
  for (const Worker& worker : m_workers) worker.m_spThread->Stop();
}

void SeriesThreads::TellOutcome(std::vector<Measurement>& measurements) const {
  for (std::size_t i = 0; i < m_workers.size(); ++i) {
    measurements[i].m_ulRetries = m_workers[i].m_spTask->GetRetries();
    measurements[i].m_sGivenUp = WhyGivenUp(*m_workers[i].m_spThread);
  }
}

}  // namespace Station
