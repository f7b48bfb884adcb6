#include <Infrastructure/OxaCore/ProcessMutex.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "ErrorHandling/TestAlerts.h"
#include "Support/Allocations.h"
#include "Support/ChildProcess.h"
#include "Support/Eventually.h"
#include "Threads/ThreadTestSupport.h"

using namespace Oxa::Core;
using AlertTests::Recorder;
using TestSupport::Eventually;
using TestSupport::Holder;
using TestSupport::MillisecondsOf;

namespace {

static_assert(std::is_base_of_v<IMutex, ProcessMutex>);
static_assert(!std::is_copy_constructible_v<ProcessMutex> && !std::is_copy_assignable_v<ProcessMutex>);

constexpr int iFREE = 0;
constexpr int iTAKEN = 1;

const std::string sNAME_THAT_CANT_BE_HAD(100000, 'n');

// A lock of this test alone; what stands behind it is removed at the end.
class ProcessMutexTest : public testing::Test {
 protected:
  ProcessMutexTest()
      : m_sName("TestProcessMutex." + std::to_string(::getpid()) + "." +
                testing::UnitTest::GetInstance()->current_test_info()->name() + "." +
                std::to_string(++s_iNumber)),
        m_mutex(m_sName) {}
  ~ProcessMutexTest() override { EXPECT_EQ(0, ::unlink(File().c_str())) << "is to be there under this name"; }

  // Every name has the same prefix, whatever session it is used in.
  std::string File() const { return "/dev/shm/oxacore.lock.Global%5C" + m_sName; }

  int OtherProcess(const std::string& command) const {
    return TestSupport::RunChild({PROCESS_MUTEX_HOST, command, m_sName}).m_iStatus;
  }

  Holder HoldByOtherThread() {
    return Holder([this] { m_mutex.Lock(); }, [this] { m_mutex.Unlock(); });
  }

  // By a thread of this process that ends.
  void Abandon() {
    std::thread([this] { m_mutex.Lock(); }).join();
  }

  void ExpectHeldAtLevels(int levels) {
    for (int level = 0; level < levels; ++level) {
      EXPECT_EQ(iTAKEN, OtherProcess("try")) << level;
      m_mutex.Unlock();
    }
    EXPECT_EQ(iFREE, OtherProcess("try"));
  }

  static int s_iNumber;  // a test that runs again in this process gets a new lock
  const std::string m_sName;
  ProcessMutex m_mutex;
};

int ProcessMutexTest::s_iNumber = 0;
// Leaves the lock only by being killed.
class LockingForEver : public Task {
 public:
  explicit LockingForEver(ProcessMutex& mutex) : m_mutex(mutex) {}
  int Run(TaskDirective&) override {
    m_mutex.Lock();
    while (true) ::usleep(1000);
  }

 private:
  ProcessMutex& m_mutex;
};

double ThreadMilliseconds() {
  timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

template <class Action>
std::string ToldOf(const Action& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

bool TellsOfNoHandle(const std::string& told) {
  return told.find("): Failed Assertion(m_hMutex != 0)\n") != std::string::npos;
}

TEST_F(ProcessMutexTest, BackslashesInNamesAreReplaced) {
  ProcessMutex mutex("Test\\Backslash\\Replacement");
  EXPECT_EQ("Test/Backslash/Replacement", mutex.GetName());
  ::unlink("/dev/shm/oxacore.lock.Global%5CTest%2FBackslash%2FReplacement");
}

TEST_F(ProcessMutexTest, OtherNamesStayAsTheyAre) {
  EXPECT_EQ(m_sName, m_mutex.GetName());
  EXPECT_EQ(&m_mutex.GetName(), &m_mutex.GetName());
}

TEST_F(ProcessMutexTest, NamesThatDifferInTheirSeparatorsAreOneLock) {
  const std::string start = "OxaCoreTest" + std::to_string(::getpid());
  ProcessMutex one(start + "\\x"), two(start + "/x");
  one.Lock();
  bool locked = true;
  std::thread([&] { locked = two.TryLock(); }).join();
  EXPECT_FALSE(locked);
  one.Unlock();
  ::unlink(("/dev/shm/oxacore.lock.Global%5C" + start + "%2Fx").c_str());
}

TEST_F(ProcessMutexTest, AnotherProcessCantTakeWhatIsHeldHere) {
  m_mutex.Lock();
  EXPECT_EQ(iTAKEN, OtherProcess("try"));
  m_mutex.Unlock();
  EXPECT_EQ(iFREE, OtherProcess("try"));
}

TEST_F(ProcessMutexTest, TheOwnerLocksAgainAndUnlocksAsManyTimes) {
  m_mutex.Lock();
  m_mutex.Lock(Elapse(1, Elapse::Seconds));
  EXPECT_TRUE(m_mutex.TryLock());
  EXPECT_TRUE(m_mutex.TryLock(Elapse(1, Elapse::Seconds)));
  ExpectHeldAtLevels(4);
}

TEST_F(ProcessMutexTest, ObjectsOfOneNameAreOneLock) {
  ProcessMutex other(m_sName);
  m_mutex.Lock();
  EXPECT_TRUE(other.TryLock());
  m_mutex.Unlock();
  EXPECT_EQ(iTAKEN, OtherProcess("try"));
  other.Unlock();
  EXPECT_EQ(iFREE, OtherProcess("try"));
}

TEST_F(ProcessMutexTest, DestructionDoesNotUnlock) {
  {
    ProcessMutex other(m_sName);
    other.Lock();
  }
  ExpectHeldAtLevels(1);
}

TEST_F(ProcessMutexTest, OnlyTheOwnerUnlocks) {
  Recorder recorder;
  m_mutex.Unlock();
  Holder holder = HoldByOtherThread();
  m_mutex.Unlock();
  EXPECT_EQ(iTAKEN, OtherProcess("try"));
  EXPECT_TRUE(recorder.m_heard.empty());
}

TEST_F(ProcessMutexTest, AGuardHoldsItForItsScope) {
  {
    const Lock lock(m_mutex, Elapse(1, Elapse::Seconds));
    EXPECT_EQ(iTAKEN, OtherProcess("try"));
  }
  EXPECT_EQ(iFREE, OtherProcess("try"));
}

TEST_F(ProcessMutexTest, LockOfAFreeOneTellsNobody) {
  Recorder recorder;
  m_mutex.Lock();
  m_mutex.Unlock();
  m_mutex.Lock(Elapse(0));
  m_mutex.Unlock();
  EXPECT_TRUE(recorder.m_heard.empty());
}

TEST_F(ProcessMutexTest, LockWithoutLimitWaitsForTheOwner) {
  m_mutex.Lock();
  std::atomic<bool> begun{false}, locked{false};
  std::thread waiter([&] {
    begun = true;
    m_mutex.Lock(IMutex::sINFINITE);
    locked = true;
    m_mutex.Unlock();
  });
  EXPECT_TRUE(Eventually([&] { return begun.load(); }));
  EXPECT_FALSE(locked);
  m_mutex.Unlock();
  waiter.join();
  EXPECT_TRUE(locked);
}

TEST_F(ProcessMutexTest, LockRaisesWhenItsLimitRunsOut) {
  Holder holder = HoldByOtherThread();
  bool raised = false;
  EXPECT_LE(100.0, MillisecondsOf([&] {
              try {
                m_mutex.Lock(Elapse(100, Elapse::MilliSeconds));
              } catch (LockTimeout& error) {
                raised = true;
                EXPECT_EQ("Attempt to lock mutex timed out after waiting for " +
                              Elapse(100, Elapse::MilliSeconds).ToString(),
                          error.GetData(AlertInfo::sMESSAGE));
                EXPECT_NE(std::string::npos, error.GetData(AlertInfo::sMESSAGE).find("00:00:00.100.000.000"));
                EXPECT_EQ("Oxa.Core.ProcessMutex", error.GetData(AlertInfo::sLOG_NAME));
                EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
              }
            }));
  EXPECT_TRUE(raised);
}

TEST_F(ProcessMutexTest, ALimitBelowAMillisecondMakesOneAttempt) {
  Holder holder = HoldByOtherThread();
  for (const Elapse& limit : {Elapse(0), Elapse(999, Elapse::MicroSeconds), Elapse(-5)})
    EXPECT_THROW(m_mutex.Lock(limit), LockTimeout) << limit.ToString();
  holder.Leave();
  for (const Elapse& limit : {Elapse(0), Elapse(999, Elapse::MicroSeconds), Elapse(-5)}) {
    m_mutex.Lock(limit);
    m_mutex.Unlock();
  }
}

TEST_F(ProcessMutexTest, AGuardOnALockThatTimesOutHoldsNothing) {
  Holder holder = HoldByOtherThread();
  EXPECT_THROW(Lock(m_mutex, Elapse(10, Elapse::MilliSeconds)), LockTimeout);
  holder.Leave();
  EXPECT_EQ(iFREE, OtherProcess("try"));
}

TEST_F(ProcessMutexTest, WhatAProcessLeavesIsAbandoned) {
  for (const char* const end : {"leave", "die"}) {
    OtherProcess(end);
    Recorder recorder;
    m_mutex.Lock();
    EXPECT_EQ(std::vector<std::string>{"warning Acquired process lock named " + m_sName +
                                       " after lock owner terminated before releasing lock"},
              recorder.m_heard);
    ExpectHeldAtLevels(1);
    m_mutex.Lock();
    m_mutex.Unlock();
    EXPECT_EQ(1u, recorder.m_heard.size()) << "told once";
  }
}

// Keeps what it hears of warnings.
class WarningListener : public AlertListener {
 public:
  WarningListener() { AlertManager::Instance()->AddAlertListener(*this); }
  ~WarningListener() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Error&) override {}
  void ErrorHandled(Error&) override {}
  void WarningRaised(Warning& warning) override {
    m_bAbandoned = dynamic_cast<WaitAbandoned*>(&warning) != nullptr;
    m_sLogName = warning.GetData(AlertInfo::sLOG_NAME);
    m_eSeverity = warning.GetSeverity();
  }

  bool m_bAbandoned = false;
  std::string m_sLogName;
  AlertInfo::ESeverity m_eSeverity{};
};

TEST_F(ProcessMutexTest, WhatAKilledThreadHeldIsAbandoned) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  const boost::shared_ptr<Thread> victim = Thread::Create("Victim");
  const boost::shared_ptr<Task> task(new LockingForEver(m_mutex));
  ASSERT_TRUE(victim->Start(task, Elapse(5)));
  ASSERT_TRUE(Eventually([this] { return !m_mutex.TryLock() || (m_mutex.Unlock(), false); }));
  EXPECT_TRUE(victim->Kill(Elapse(5)));
  Recorder recorder;
  m_mutex.Lock();
  EXPECT_EQ(std::vector<std::string>{"warning Acquired process lock named " + m_sName +
                                     " after lock owner terminated before releasing lock"},
            recorder.m_heard);
  ExpectHeldAtLevels(1);
}

TEST_F(ProcessMutexTest, LockWithALimitWarnsOfAbandonmentToo) {
  Abandon();
  WarningListener listener;
  m_mutex.Lock(Elapse(10, Elapse::Seconds));
  EXPECT_TRUE(listener.m_bAbandoned);
  EXPECT_EQ("Oxa.Core.ProcessMutex", listener.m_sLogName);
  EXPECT_EQ(AlertInfo::eWARNING, listener.m_eSeverity);
  ExpectHeldAtLevels(1);
}

TEST_F(ProcessMutexTest, WithoutMemoryForTheWarningTheLockIsHeldAllTheSame) {
  for (unsigned long number = 1; number <= 40; ++number) {
    Abandon();
    {
      const TestSupport::FailAllocation failing(number);
      EXPECT_NO_THROW(m_mutex.Lock()) << number;
    }
    EXPECT_TRUE(m_mutex.TryLock());
    m_mutex.Unlock();
    m_mutex.Unlock();
    bool locked = false;
    std::thread([&] {
      locked = m_mutex.TryLock();
      m_mutex.Unlock();
    }).join();
    EXPECT_TRUE(locked) << number;
  }
}

TEST_F(ProcessMutexTest, TryLockOfAFreeOne) {
  for (const Elapse& limit : {Elapse(0), Elapse(-1), Elapse(1), IMutex::sINFINITE}) {
    EXPECT_TRUE(m_mutex.TryLock(limit));
    ExpectHeldAtLevels(1);
  }
}

TEST_F(ProcessMutexTest, TryLockOfATakenOne) {
  Holder holder = HoldByOtherThread();
  Recorder recorder;
  EXPECT_FALSE(m_mutex.TryLock());
  EXPECT_FALSE(m_mutex.TryLock(Elapse(-1)));
  EXPECT_FALSE(m_mutex.TryLock(Elapse(-93000000000000000, Elapse::TimerTicks)));  // too much for nanoseconds
  EXPECT_LE(100.0, MillisecondsOf([&] { EXPECT_FALSE(m_mutex.TryLock(Elapse(100, Elapse::MilliSeconds))); }));
  EXPECT_TRUE(recorder.m_heard.empty());
}

// Longer than nanoseconds can count. Whoever begins late only makes the test weaker.
TEST_F(ProcessMutexTest, TryLockWithTheLongestLimitGetsWhatIsUnlocked) {
  std::atomic<bool> begun{false}, locked{false};
  std::thread waiter;
  {
    Holder holder = HoldByOtherThread();
    waiter = std::thread([&] {
      begun = true;
      locked = m_mutex.TryLock(Elapse(LLONG_MAX, Elapse::TimerTicks));
      if (locked) m_mutex.Unlock();
    });
    EXPECT_TRUE(Eventually([&] { return begun.load(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  waiter.join();
  EXPECT_TRUE(locked);
}

TEST_F(ProcessMutexTest, TryLockWithALimitPollsWithoutAPause) {
  Holder holder = HoldByOtherThread();
  const double before = ThreadMilliseconds();
  EXPECT_FALSE(m_mutex.TryLock(Elapse(300, Elapse::MilliSeconds)));
  EXPECT_LT(20.0, ThreadMilliseconds() - before);
}

TEST_F(ProcessMutexTest, TryLockGetsWhatIsUnlockedWithinItsLimit) {
  m_mutex.Lock();
  std::atomic<bool> begun{false}, locked{false};
  std::thread waiter([&] {
    begun = true;
    locked = m_mutex.TryLock(Elapse(60));
    m_mutex.Unlock();
  });
  EXPECT_TRUE(Eventually([&] { return begun.load(); }));
  m_mutex.Unlock();
  waiter.join();
  EXPECT_TRUE(locked);
}

TEST_F(ProcessMutexTest, TryLockWithoutTimeOwnsTheAbandonedLockThatItCallsAFailure) {
  OtherProcess("die");
  Recorder recorder;
  EXPECT_FALSE(m_mutex.TryLock());
  ExpectHeldAtLevels(1);
  EXPECT_TRUE(recorder.m_heard.empty());
}

TEST_F(ProcessMutexTest, TryLockWithTimeTakesAnAbandonedLockTwice) {
  OtherProcess("die");
  Recorder recorder;
  EXPECT_TRUE(m_mutex.TryLock(Elapse(10)));
  ExpectHeldAtLevels(2);
  EXPECT_TRUE(recorder.m_heard.empty());
}

TEST_F(ProcessMutexTest, ALockThatCantBeHadIsToldByAnAssertion) {
  EXPECT_TRUE(TellsOfNoHandle(ToldOf([] { ProcessMutex mutex(sNAME_THAT_CANT_BE_HAD); })));
  EXPECT_FALSE(TellsOfNoHandle(ToldOf([this] { ProcessMutex mutex(m_sName); })));
}

TEST_F(ProcessMutexTest, LockOfOneThatCantBeHadRaises) {
  testing::internal::CaptureStderr();
  ProcessMutex mutex(sNAME_THAT_CANT_BE_HAD);
  testing::internal::GetCapturedStderr();
  std::string message;
  const auto lock = [&] {
    try {
      mutex.Lock();
    } catch (WaitFailed& error) {
      message = error.GetData(AlertInfo::sMESSAGE);
      EXPECT_EQ("Oxa.Core.ProcessMutex", error.GetData(AlertInfo::sLOG_NAME));
      EXPECT_EQ("OperatingSystem", error.GetData(AlertInfo::sCATEGORY));
    }
  };
  EXPECT_TRUE(TellsOfNoHandle(ToldOf(lock)));
  EXPECT_EQ("Failed to acquire lock for process mutex named " + sNAME_THAT_CANT_BE_HAD +
                " due to following error: \n\nInvalid argument",
            message);
}

// The system counts the levels of a lock, and has an end to that.
class FullProcessMutexTest : public ProcessMutexTest {
 protected:
  FullProcessMutexTest() {
    m_mutex.Lock();
    LevelsOfTheSystem() = UINT_MAX;
  }
  ~FullProcessMutexTest() override {
    LevelsOfTheSystem() = 1;
    m_mutex.Unlock();
    EXPECT_EQ(iFREE, OtherProcess("try"));
  }

  unsigned& LevelsOfTheSystem() {
    constexpr std::size_t placeOfTheLock = 64;
    if (m_pPage == nullptr) {
      const int file = ::open(File().c_str(), O_RDWR | O_CLOEXEC);
      m_pPage = static_cast<char*>(::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
      ::close(file);
      if (m_pPage == MAP_FAILED) std::abort();
    }
    return reinterpret_cast<pthread_mutex_t*>(m_pPage + placeOfTheLock)->__data.__count;
  }

 private:
  char* m_pPage = nullptr;
};

TEST_F(FullProcessMutexTest, LockRaisesWithTheTextOfTheSystem) {
  for (const Elapse& limit : {IMutex::sINFINITE, Elapse(10)}) {
    try {
      m_mutex.Lock(limit);
      ADD_FAILURE();
    } catch (WaitFailed& error) {
      EXPECT_EQ("Failed to acquire lock for process mutex named " + m_sName +
                    " due to following error: \n\nResource temporarily unavailable",
                error.GetData(AlertInfo::sMESSAGE));
    }
  }
}

TEST_F(FullProcessMutexTest, TryLockFailsAndTellsNobody) {
  Recorder recorder;
  EXPECT_FALSE(m_mutex.TryLock());
  EXPECT_FALSE(m_mutex.TryLock(Elapse(10, Elapse::MilliSeconds)));
  EXPECT_TRUE(recorder.m_heard.empty());
}

TEST_F(ProcessMutexTest, TheOthersOfOneThatCantBeHadAssertAndRaiseNothing) {
  testing::internal::CaptureStderr();
  ProcessMutex mutex(sNAME_THAT_CANT_BE_HAD);
  testing::internal::GetCapturedStderr();
  EXPECT_TRUE(TellsOfNoHandle(ToldOf([&] { EXPECT_FALSE(mutex.TryLock()); })));
  EXPECT_TRUE(TellsOfNoHandle(ToldOf([&] {
    EXPECT_LE(50.0, MillisecondsOf([&] { EXPECT_FALSE(mutex.TryLock(Elapse(50, Elapse::MilliSeconds))); }));
  })));
  EXPECT_TRUE(TellsOfNoHandle(ToldOf([&] { mutex.Unlock(); })));
}

TEST_F(ProcessMutexTest, KeepsThreadsApart) {
  int count = 0;
  std::vector<std::thread> workers;
  for (int worker = 0; worker < 3; ++worker)
    workers.emplace_back([&] {
      ProcessMutex mine(m_sName);
      for (int round = 0; round < 2000; ++round) {
        const Lock lock(mine);
        ++count;
      }
    });
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(6000, count);
}

}  // namespace
