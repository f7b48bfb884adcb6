#include <Infrastructure/OxaCore/CallbackTask.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Queue.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <boost/make_shared.hpp>
#include <iostream>

using namespace Oxa::Core;

// Samples until it is told to stop; its result is how many samples found room.
class Sampler : public Task {
 public:
  explicit Sampler(Queue<int>& queue) : m_queue(queue) {}
  int Run(TaskDirective& directive) override {
    int samples = 0;
    while (!directive.TimedWaitForStopRequest(Elapse(1, Elapse::MilliSeconds)))
      if (m_queue.Push(samples)) ++samples;
    return samples;
  }

 private:
  Queue<int>& m_queue;
};

void TakeTen() {
  Queue<int> queue("Samples", nullptr, 1000, 100, 3000);  // reported from 1000 on, full at 3000
  const boost::shared_ptr<Thread> thread = Thread::Create("Sampler");
  thread->Start(boost::make_shared<Sampler>(queue));
  for (int got = 0, sample = 0; got < 10;) {
    queue.GetSemaphore().Wait();
    if (queue.TryPop(sample)) ++got;
  }
  if (thread->Stop(Elapse(30)) && thread->GetResult() >= 10) std::cout << "ten samples, and stopped\n";
}

void Fail() { OXA_RAISE_ERROR("Example.Fail", HardwareError("The probe is gone")); }

// Any function can be a task. What it raises is logged, told and kept, and ends nothing but its thread.
void KeepError() {
  const boost::shared_ptr<Thread> thread = Thread::Create("Doomed");
  thread->Start(boost::make_shared<CallbackTask>(boost::make_shared<GlobalCallback>(&Fail)));
  thread->WaitForState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR);
  std::cout << thread->GetName() << ": " << thread->GetLastError()->what() << '\n';
}

int main() {
  InitializeOxaCore();
  TakeTen();
  KeepError();
  ShutdownOxaCore();
}
