#include <Infrastructure/OxaCore/ModuleTestSuite.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/ThreadPool.h>

#include <functional>
#include <list>
#include <set>

#include "AutoTest/Module/EndOfThread.h"
#include "AutoTest/Module/Patience.h"
#include "AutoTest/Module/RaisedMessage.h"
#include "AutoTest/Module/TestMethods.h"
#include "AutoTest/Module/TestThreads.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.Test.Threads";
constexpr char sFAILURE[] = "a thread of the self-test fails";
constexpr char sKILLED[] = "Thread named Kill Thread killed by call to Thread::Kill()";
constexpr char sUNIMPLEMENTED[] =
    "TaskDirective::WaitForStopRequest called but wasn't implemented by the TaskDirective subclass";
constexpr char sDEFAULT_NAME[] = "OxaThread ";
constexpr int iSTOPPED = 7;
constexpr int iNOT_STOPPED = 8;
constexpr int iBEGUN = Thread::eTHREAD_RUNNING | Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR;
constexpr int iENDED = Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR;

using SharedThread = boost::shared_ptr<Thread>;
using SharedTask = boost::shared_ptr<Task>;
using Work = std::function<int(TaskDirective&)>;

Elapse Moment() { return Elapse(50, Elapse::MilliSeconds); }

class WorkTask : public Task {
 public:
  explicit WorkTask(const Work& work) : m_work(work) {}
  int Run(TaskDirective& directive) override { return m_work(directive); }

 private:
  Work m_work;
};

SharedTask MakeTask(const Work& work) { return SharedTask(new WorkTask(work)); }

int WaitForStop(TaskDirective& directive) {
  return directive.TimedWaitForStopRequest(Patience()) ? iSTOPPED : iNOT_STOPPED;
}

int Fail(TaskDirective&) {
  OXA_RAISE_ERROR(sLOG_NAME, LogicError(sFAILURE));
  return 0;
}

// A thread that begins with this object, and that has ended when this object is gone.
class Running {
 public:
  Running(const std::string& name, const Work& work) : Running(Thread::Create(name), work) {}
  Running(const SharedThread& thread, const Work& work) : m_spThread(thread), m_end(thread) {
    OXA_TEST_ASSERT(m_spThread->Start(MakeTask(work)));
    OXA_TEST_ASSERT(m_spThread->TimedWaitForState(iBEGUN, Patience()));
  }

  Thread* operator->() const { return m_spThread.get(); }
  const SharedThread& Get() const { return m_spThread; }

  /// Waits for its end by itself.
  void Await() const { OXA_TEST_ASSERT(m_spThread->TimedWaitForState(iENDED, Patience())); }

 private:
  const SharedThread m_spThread;
  const EndOfThread m_end;
};

// --- Threads

void CheckStartAndStop() {
  const SharedThread thread = Thread::Create("Start And Stop");
  const EndOfThread end(thread);
  const SharedTask task = MakeTask(WaitForStop);
  OXA_TEST_ASSERT(thread->IsState(Thread::eTHREAD_IDLE) && !thread->HasBegun());
  for (int round = 0; round < 2; ++round) {
    OXA_TEST_ASSERT(thread->Start(task, Patience()));
    OXA_TEST_ASSERT(thread->IsState(Thread::eTHREAD_RUNNING) && thread->IsRunning() && thread->IsAlive());
    OXA_TEST_ASSERT(!thread->IsState(Thread::eTHREAD_ERROR) && thread->GetTask() == task);
    OXA_TEST_ASSERT(Becomes([&thread] { return thread->GetResult() == -1; }));
    OXA_TEST_ASSERT(thread->Stop(Patience()));
    OXA_TEST_ASSERT(thread->HasCompleted() && !thread->IsAlive());
    OXA_TEST_EQUALS(iSTOPPED, thread->GetResult());
  }
}

void CheckWaits() {
  const Running thread("Waits", WaitForStop);
  Elapse limit = Moment();
  OXA_TEST_ASSERT(!thread->WaitFor(&limit));
  SharedThread threads[] = {SharedThread(), thread.Get()};
  OXA_TEST_ASSERT(!Thread::WaitForAll(threads, 2, &limit));
  thread->Stop();
  Elapse patience = Patience();
  OXA_TEST_ASSERT(Thread::WaitForAll(threads, 2, &patience));
  OXA_TEST_ASSERT(thread->WaitFor(nullptr) && thread->TryWaitForState(Thread::eTHREAD_NOT_RUNNING));
}

void CheckOutcomes() {
  const Running good("Good", [](TaskDirective& directive) { return directive.KeepRunning() ? 0 : 1; });
  good.Await();
  OXA_TEST_ASSERT(good->HasCompleted() && good->GetResult() == 0 && !good->GetLastError());
  const Running bad("Bad", Fail);
  bad.Await();
  OXA_TEST_ASSERT(bad->IsState(Thread::eTHREAD_ERROR) && bad->GetResult() == -1);
  OXA_TEST_ASSERT(bad->GetLastError() && bad->GetLastError()->GetData(AlertInfo::sMESSAGE) == sFAILURE);
}

// A directive that can't wait.
class BareDirective : public TaskDirective {
 public:
  bool MustStop() override { return true; }
};

void CheckBareDirective() {
  BareDirective directive;
  OXA_TEST_ASSERT(!directive.KeepRunning());
  OXA_TEST_ASSERT(MessageOf<TaskDirective::UnimplementedInterface>([&] { directive.WaitForStopRequest(); }) ==
                  sUNIMPLEMENTED);
}

// --- Deadlocks that end

// Each has what the other one wants, until both have given up.
void CheckOppositeOrder() {
  Mutex mutexes[2];
  std::atomic<int> holding{0};
  std::atomic<int> gaveUp{0};
  TestThreads threads(2, [&](int own) {
    const Lock lock(mutexes[own]);
    ++holding;
    OXA_TEST_ASSERT(Becomes([&] { return holding == 2; }));
    const std::string message = MessageOf<LockTimeout>([&] { const Lock other(mutexes[1 - own], Moment()); });
    ++gaveUp;
    OXA_TEST_ASSERT(Becomes([&] { return gaveUp == 2; }));
    OXA_TEST_ASSERT(message == "Attempt to lock mutex timed out after waiting for " + Moment().ToString());
  });
  threads.Join();
  OXA_TEST_ASSERT(mutexes[0].TryLock() && mutexes[1].TryLock());
  mutexes[0].Unlock();
  mutexes[1].Unlock();
}

// Each waits for the other one's end.
void CheckMutualWaits() {
  const SharedThread threads[] = {Thread::Create("First"), Thread::Create("Second")};
  const auto work = [&threads](int other) {
    return [&threads, other](TaskDirective& directive) {
      directive.TimedWaitForStopRequest(Patience());
      return threads[other]->TimedWaitForState(Thread::eTHREAD_NOT_RUNNING, Moment()) ? 1 : 0;
    };
  };
  const Running first(threads[0], work(1));
  const Running second(threads[1], work(0));
  first->Stop();
  second->Stop();
  first.Await();
  second.Await();
  OXA_TEST_ASSERT(first->GetResult() + second->GetResult() <= 1);  // one at most saw the other one end
}

// --- What listeners hear

class Recorder : public Thread::Listener {
 public:
  void OnThreadComplete(boost::shared_ptr<Thread> thread) override {
    Note("completed " + thread->GetName() + (thread->HasCompleted() ? "" : ", too early"));
  }
  void OnThreadError(boost::shared_ptr<Thread> thread, Error& error) override {
    Note("failed " + thread->GetName() + ": " + error.GetData(AlertInfo::sMESSAGE));
  }

  std::string GetHeard() {
    const Lock lock(m_mutex);
    return m_sHeard;
  }

 private:
  void Note(const std::string& text) {
    const Lock lock(m_mutex);
    m_sHeard += text + '\n';
  }

  Mutex m_mutex;  // guards m_sHeard
  std::string m_sHeard;
};

// A listener of a thread as long as it lives.
class Hearing {
 public:
  Hearing(const SharedThread& thread, Thread::Listener& listener) : m_spThread(thread), m_listener(listener) {
    m_spThread->AddListener(m_listener);
  }
  Hearing(const Hearing&) = delete;
  Hearing& operator=(const Hearing&) = delete;
  ~Hearing() { m_spThread->RemoveListener(m_listener); }

 private:
  const SharedThread m_spThread;
  Thread::Listener& m_listener;
};

std::string HeardOf(const std::string& name, const Work& work) {
  Recorder recorder;
  const SharedThread thread = Thread::Create(name);
  const Hearing hearing(thread, recorder);
  const Running running(thread, work);
  running.Await();
  return recorder.GetHeard();
}

// --- Pools

class Meeting {
 public:
  explicit Meeting(std::size_t expected) : m_uExpected(expected) {}

  /// Stays until as many as are expected have come.
  void Come(int) {
    {
      const Lock lock(m_mutex);
      m_threads.insert(Thread::GetCurrentId());
      ++m_uCame;
    }
    Becomes([this] { return IsComplete(); });
  }

  bool IsComplete() {
    const Lock lock(m_mutex);
    return m_uCame >= m_uExpected;
  }

  std::size_t CountThreads() {
    const Lock lock(m_mutex);
    return m_threads.size();
  }

 private:
  const std::size_t m_uExpected;
  Mutex m_mutex;  // guards the others
  std::size_t m_uCame = 0;
  std::set<unsigned long> m_threads;
};

// On how many threads `items` items are worked at, by a pool of so many.
std::size_t ThreadsAtWork(int threads, int items, std::size_t together) {
  Meeting meeting(together);
  const boost::shared_ptr<CallbackArg<int>> callback(
      new MethodCallbackArg<Meeting, int>(&meeting, &Meeting::Come));
  ThreadPool<int> pool("Test Pool", threads);
  pool.Start();
  for (int item = 0; item < items; ++item) pool.Enqueue(callback, item);
  OXA_TEST_ASSERT(Becomes([&] { return meeting.IsComplete(); }));
  return meeting.CountThreads();
}

// --- Beginnings

bool IsDefaultName(const std::string& name) {
  const std::string digits = name.substr(sizeof sDEFAULT_NAME - 1);
  return name.rfind(sDEFAULT_NAME, 0) == 0 && digits.size() >= 4 &&
         digits.find_first_not_of("0123456789") == std::string::npos;
}

void CheckSettings() {
  const SharedThread thread = Thread::Create(std::string());
  OXA_TEST_ASSERT(IsDefaultName(thread->GetName()));
  thread->SetName("Renamed");
  thread->SetStackSize(500000);
  thread->SetPriority(Thread::ePRIORITY_BELOW_NORMAL);
  OXA_TEST_ASSERT(thread->GetName() == "Renamed" && thread->GetStackSize() == 500000);
  OXA_TEST_ASSERT(thread->GetPriority() == Thread::ePRIORITY_BELOW_NORMAL);
  OXA_TEST_ASSERT(thread->GetThreadID() == 0 && !thread->IsCurrentThread());
}

void CheckIdentity() {
  const SharedThread thread = Thread::Create("Identity");
  Thread* const raw = thread.get();
  const Running running(thread, [raw](TaskDirective&) {
    return raw->IsCurrentThread() && raw->GetThreadID() == Thread::GetCurrentId() && raw->IsAlive() ? 1 : 0;
  });
  running.Await();
  OXA_TEST_EQUALS(1, thread->GetResult());
  OXA_TEST_ASSERT(thread->GetThreadID() != Thread::GetCurrentId());
}

void CheckManyBeginnings() {
  constexpr int iCOUNT = 4;
  std::atomic<int> begun{0};
  std::vector<SharedThread> threads;
  std::list<EndOfThread> ends;
  const SharedTask task = MakeTask([&begun](TaskDirective& directive) {
    ++begun;
    return WaitForStop(directive);
  });
  for (int i = 0; i < iCOUNT; ++i) {
    threads.push_back(Thread::Create("Startup"));
    ends.emplace_back(threads.back());
    OXA_TEST_ASSERT(threads.back()->Start(task, Patience()));
  }
  OXA_TEST_ASSERT(Becomes([&] { return begun == iCOUNT; }));
  for (const SharedThread& thread : threads) thread->Stop();
  Elapse patience = Patience();
  OXA_TEST_ASSERT(Thread::WaitForAll(threads.data(), threads.size(), &patience));
}

// --- Locks

void CheckLevels() {
  Mutex mutex;
  const auto isFree = [&mutex] {
    return OnAnotherThread([&mutex] {
      const bool locked = mutex.TryLock();
      if (locked) mutex.Unlock();
      return locked;
    });
  };
  const Lock outer(mutex);
  Lock inner(mutex, Patience());
  OXA_TEST_ASSERT(!isFree());
  inner.Release();
  inner.Release();
  OXA_TEST_ASSERT(!isFree());
  mutex.Unlock();
  OXA_TEST_ASSERT(isFree());
  OXA_TEST_ASSERT(mutex.TryLock());  // what the guard gives back
}

void CheckExclusion() {
  constexpr int iTHREADS = 4;
  constexpr int iROUNDS = 5000;
  Mutex mutex;
  int count = 0;
  TestThreads threads(iTHREADS, [&](int) {
    for (int round = 0; round < iROUNDS; ++round) {
      const Lock lock(mutex);
      ++count;
    }
  });
  threads.Join();
  OXA_TEST_EQUALS(iTHREADS * iROUNDS, count);
}

}  // namespace

TEST_OxaThread::TEST_OxaThread() : TestSuite("Oxa::Core::Thread Tests") {
  AddTestMethods(*this, {{"Oxa::Core::Thread Test", &TEST_OxaThread::Threads},
                         {"Deadlock test", &TEST_OxaThread::Deadlock},
                         {"Lifetime Management Test", &TEST_OxaThread::LifetimeManagement},
                         {"Thread Notifications Test", &TEST_OxaThread::ThreadNotifications},
                         {"Thread Pool Test", &TEST_OxaThread::Pool},
                         {"Thread Startup Test", &TEST_OxaThread::Startup},
                         {"Mutex Lock Test", &TEST_OxaThread::MutexLock},
                         {"Kill Thread Test", &TEST_OxaThread::KillThread},
                         {"Named Cross Process Mutex Test", &TEST_OxaThread::CrossProcessMutex}});
}

TEST_OxaThread::~TEST_OxaThread() = default;

void TEST_OxaThread::Threads(std::string&) {
  CheckStartAndStop();
  CheckWaits();
  CheckOutcomes();
  CheckBareDirective();
}

void TEST_OxaThread::Deadlock(std::string&) {
  CheckOppositeOrder();
  CheckMutualWaits();
}

void TEST_OxaThread::LifetimeManagement(std::string&) {
  boost::weak_ptr<Thread> weak;
  {
    const SharedThread thread = Thread::Create("Lifetime");
    weak = thread;
    OXA_TEST_ASSERT(thread->Start(MakeTask(WaitForStop), Patience()));
  }
  {
    const SharedThread again = weak.lock();
    OXA_TEST_ASSERT(again && again->IsRunning());
    const EndOfThread end(again);
    OXA_TEST_ASSERT(again->Stop(Patience()));
  }
  OXA_TEST_ASSERT(Becomes([&weak] { return weak.expired(); }));
}

void TEST_OxaThread::ThreadNotifications(std::string&) {
  OXA_TEST_ASSERT(HeardOf("Completion Thread", [](TaskDirective&) { return 0; }) ==
                  "completed Completion Thread\n");
  OXA_TEST_ASSERT(HeardOf("Error Thread", Fail) == std::string("failed Error Thread: ") + sFAILURE + '\n');
}

void TEST_OxaThread::Pool(std::string&) {
  OXA_TEST_ASSERT(ThreadsAtWork(3, 3, 3) == 3);
  OXA_TEST_ASSERT(ThreadsAtWork(1, 1, 1) == 1);
}

void TEST_OxaThread::Startup(std::string&) {
  CheckSettings();
  CheckIdentity();
  CheckManyBeginnings();
}

void TEST_OxaThread::MutexLock(std::string&) {
  CheckLevels();
  CheckExclusion();
}

void TEST_OxaThread::KillThread(std::string&) {
  const boost::shared_ptr<std::atomic<bool>> begun(new std::atomic<bool>(false));
  const Running victim("Kill Thread", [begun](TaskDirective&) -> int {
    *begun = true;
    const Span span(Patience() + Patience());  // if nobody kills it
    while (!span.IsOver()) OxaSleep(1, Elapse::MilliSeconds, false);
    return iNOT_STOPPED;
  });
  OXA_TEST_ASSERT(Becomes([&begun] { return begun->load(); }));
  OXA_TEST_ASSERT(!victim->Stop(Moment()));
  OXA_TEST_ASSERT(victim->Kill(Patience()));
  OXA_TEST_ASSERT(!victim->IsRunning() && victim->IsState(Thread::eTHREAD_ERROR));
  OXA_TEST_ASSERT(victim->GetLastError() && victim->GetLastError()->GetData(AlertInfo::sMESSAGE) == sKILLED);
  OXA_TEST_ASSERT(victim->Kill(Patience()));
  OXA_TEST_ASSERT(victim->Start(MakeTask(WaitForStop), Patience()));
  OXA_TEST_ASSERT(victim->Stop(Patience()) && victim->GetResult() == iSTOPPED);
}

}  // namespace Oxa::Core
