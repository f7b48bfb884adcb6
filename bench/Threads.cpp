// A thread from its start to the moment when its owner knows that it has ended. Ours comes with a state that can
// be waited for, a stop flag, a name that debuggers see and a place for its error.
#include <Infrastructure/OxaCore/Thread.h>

#include <boost/shared_ptr.hpp>
#include <thread>
#include <vector>

#include "BenchSupport.h"

#ifdef OXA_PEER_QT
#include <QThread>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/Runnable.h>
#include <Poco/Thread.h>
#endif
#ifdef OXA_PEER_BOOST
#include <boost/thread/thread.hpp>
#endif

namespace {

using Oxa::Core::Task;
using Oxa::Core::TaskDirective;
using Oxa::Core::Thread;

constexpr int g_iTHREADS = 4000;

class Nothing : public Task {
 public:
  int Run(TaskDirective&) override { return 0; }
};

// Only the first run of a Thread can be waited for without a doubt which run it was, and the end of a Thread takes
// its required 100 ms: hence one object for each run, made beforehand and never destroyed.
void Ours(benchmark::State& state) {
  const boost::shared_ptr<Task> task(new Nothing);
  auto& threads = *new std::vector<boost::shared_ptr<Thread>>;
  for (int i = 0; i != g_iTHREADS; ++i) threads.push_back(Thread::Create("Bench"));
  auto next = threads.begin();
  for (auto _ : state) {
    Thread& thread = **next++;
    thread.Start(task);
    thread.WaitForState(Thread::eTHREAD_COMPLETED);
  }
}
OXA_BENCH("Thread, start to end", "Ours", Ours)->UseRealTime()->Iterations(g_iTHREADS);

void Std(benchmark::State& state) {
  for (auto _ : state) std::thread([] {}).join();
}
OXA_BENCH("Thread, start to end", "std", Std)->UseRealTime()->Iterations(g_iTHREADS);

#ifdef OXA_PEER_QT
class QtNothing : public QThread {
  void run() override {}
};

void Qt(benchmark::State& state) {
  for (auto _ : state) {
    QtNothing thread;
    thread.start();
    thread.wait();
  }
}
OXA_BENCH("Thread, start to end", "Qt", Qt)->UseRealTime()->Iterations(g_iTHREADS);
#endif

#ifdef OXA_PEER_POCO
class PocoNothing : public Poco::Runnable {
 public:
  void run() override {}
};

void PocoThread(benchmark::State& state) {
  PocoNothing nothing;
  for (auto _ : state) {
    Poco::Thread thread;
    thread.start(nothing);
    thread.join();
  }
}
OXA_BENCH("Thread, start to end", "Poco", PocoThread)->UseRealTime()->Iterations(g_iTHREADS);
#endif

#ifdef OXA_PEER_BOOST
void BoostThread(benchmark::State& state) {
  for (auto _ : state) boost::thread([] {}).join();
}
OXA_BENCH("Thread, start to end", "boost", BoostThread)->UseRealTime()->Iterations(g_iTHREADS);
#endif

}  // namespace
