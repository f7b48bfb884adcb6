// What becomes of a fault: who can catch it, on which threads, how often, and what is left behind.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>

#include "FaultSites.h"
#include "PlainHosts.h"
#include "Support/Eventually.h"
#include "Support/GuardPages.h"
#include "Support/Sanitized.h"

namespace {

using namespace MSWindows;
using namespace Oxa::Core;
using FaultSites::Recurse;
using TestSupport::GuardPages;

class Ear : public AlertListener {
 public:
  Ear() { AlertManager::Instance()->AddAlertListener(*this); }
  void ErrorRaised(Error& error) override {
    m_sRaised += std::string(error.what()).substr(0, 14) + ";";
    if (m_onRaised) m_onRaised(error);
  }
  void ErrorHandled(Error&) override { ++m_iHandled; }
  void WarningRaised(Warning& warning) override { m_sWarnings += typeid(warning).name(); }

  std::function<void(Error&)> m_onRaised;
  std::string m_sRaised;
  std::string m_sWarnings;
  int m_iHandled = 0;
};

int OverflowsCaught(int times) {
  int caught = 0;
  for (int i = 0; i < times; ++i) {
    volatile int depth = 0;
    try {
      Recurse(&depth);
    } catch (StackOverflow&) {
      if (depth > 50) ++caught;
    }
  }
  return caught;
}

template <class Action>
struct RunAsTask : Task {
  explicit RunAsTask(Action action) : m_action(action) {}
  int Run(TaskDirective&) override {
    m_action();
    return 0;
  }
  Action m_action;
};

template <class Action>
void OnThread(Action action) {
  std::atomic<bool> done{false};
  const auto tell = [&action, &done] {
    action();
    done = true;
  };
  const boost::shared_ptr<Thread> thread = Thread::Create("faults");
  thread->Start(boost::shared_ptr<Task>(new RunAsTask<decltype(tell)>(tell)));
  ASSERT_TRUE(TestSupport::Eventually([&done] { return done.load(); }));
  thread->WaitFor(nullptr);
}

// With as little stack as the system allows, and the faults of which become errors.
void OnHostThread(std::size_t stack, void* (*routine)(void*), void* argument) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, stack));
  pthread_t thread;
  ASSERT_EQ(0, pthread_create(&thread, &attributes, routine, argument));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

void Forward(int levels) {
  try {
    if (levels == 0) {
      FaultWrite(nullptr);
    } else {
      Forward(levels - 1);
    }
  }
  OXA_FORWARD_ERRORS
}

TEST(FaultRoad, AForwardedFaultKeepsItsClassAndIsOneRaise) {
  Ear ear;
  try {
    Forward(3);
    FAIL();
  } catch (AccessViolation& fault) {
    EXPECT_EQ(typeid(AccessViolation), typeid(fault));
    EXPECT_EQ(5U, fault.GetUnwindStack()->size());
    EXPECT_EQ("OperatingSystem", fault.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ("OS.Windows", fault.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ(AlertInfo::eCRITICAL, fault.GetSeverity());
    EXPECT_EQ(0U, std::string(fault.what()).find("Illegal write to virtual address 0 from 0x"));
    EXPECT_EQ("Illegal write ;", ear.m_sRaised);
    EXPECT_EQ(0, ear.m_iHandled);
  }
  EXPECT_EQ(1, ear.m_iHandled);
}

// The stack that they lead to is gone after that.
TEST(FaultRoad, AForwardedFaultLeadsToNoRegisters) {
  Ear ear;
  bool led = false;
  ear.m_onRaised = [&led](Error& error) {
    const _EXCEPTION_POINTERS& pointers = dynamic_cast<SEHError&>(error).GetExceptionPointers();
    led = pointers.ExceptionRecord != nullptr && pointers.ContextRecord != nullptr;
  };
  try {
    Forward(0);
    FAIL();
  } catch (SEHError& fault) {
    EXPECT_EQ(nullptr, fault.GetExceptionPointers().ExceptionRecord);
    EXPECT_EQ(nullptr, fault.GetExceptionPointers().ContextRecord);
  }
  EXPECT_TRUE(led);
}

// Of a type that the library doesn't know, so that the copy is the host's.
TEST(FaultRoad, AForwardedFaultCanBeKeptAsAnExceptionPointer) {
  std::exception_ptr kept;
  try {
    Forward(1);
  } catch (...) {
    kept = std::current_exception();
  }
  EXPECT_THROW(std::rethrow_exception(kept), AccessViolation);
}

TEST(FaultRoad, FaultsNest) {
  int depth = 0;
  std::function<void()> fault = [&] {
    try {
      FaultWrite(nullptr);
    } catch (AccessViolation&) {
      if (++depth < 5) fault();
      throw;
    }
  };
  EXPECT_THROW(fault(), AccessViolation);
  EXPECT_EQ(5, depth);
}

TEST(FaultRoad, CleanUpsOfTheFramesBetweenRun) {
  int alive = 0;
  struct Guard {
    explicit Guard(int& count) : m_count(count) { ++m_count; }
    ~Guard() { --m_count; }
    int& m_count;
  };
  try {
    const Guard outer(alive);
    const Guard inner(alive);
    FaultWrite(nullptr);
  } catch (Error&) {
    EXPECT_EQ(0, alive);
  }
}

TEST(FaultRoad, AFaultInAListenerIsToldAsAWarning) {
  Ear ear;
  bool faulty = true;
  ear.m_onRaised = [&faulty](Error&) {
    if (!faulty) return;
    faulty = false;
    FaultWrite(nullptr);
  };
  try {
    OXA_RAISE_ERROR("Test", LogicError("the first of all errors"));
    FAIL();
  } catch (LogicError& error) {
    EXPECT_STREQ("the first of all errors", error.what());
  }
  EXPECT_EQ("the first of a;Illegal write ;", ear.m_sRaised);
  EXPECT_NE(std::string::npos, ear.m_sWarnings.find("ListenerErrorOnNotification")) << ear.m_sWarnings;
}

class FaultyListener : public NotificationListener {
 public:
  void HearOfIt() { FaultWrite(nullptr); }
};

class Event : public NotificationTo<FaultyListener> {
  void Tell(FaultyListener& listener) override { listener.HearOfIt(); }
};

TEST(FaultRoad, AFaultInNotifyEndsAsListenerErrorOnNotification) {
  Ear ear;
  NotificationSupport source(NotificationSupport::eFIRST_ADDED_FIRST);
  FaultyListener listener;
  source.AddListener(listener);
  Event event;
  source.Broadcast(event);
  EXPECT_NE(std::string::npos, ear.m_sWarnings.find("ListenerErrorOnNotification")) << ear.m_sWarnings;
}

TEST(FaultRoad, AnOverflowOfTheStackIsCaughtThreeTimesInARow) { EXPECT_EQ(3, OverflowsCaught(3)); }

TEST(FaultRoad, AlsoOnAThreadOfTheLibrary) {
  int caught = 0;
  OnThread([&caught] { caught = OverflowsCaught(3); });
  EXPECT_EQ(3, caught);
}

TEST(FaultRoad, AlsoOnAThreadOfTheHost) {
  int caught = 0;
  std::thread thread([&caught] {
    InstallSEHErrorTranslator();
    caught = OverflowsCaught(3);
  });
  thread.join();
  EXPECT_EQ(3, caught);
}

TEST(FaultRoad, AThreadWithTheSmallestStackHasItsFaultsToo) {
  struct Seen {
    int m_iFaults = 0;
    int m_iOverflows = 0;
  } seen;
  const auto routine = [](void* argument) -> void* {
    Seen& found = *static_cast<Seen*>(argument);
    InstallSEHErrorTranslator();
    for (int i = 0; i < 3; ++i) {
      try {
        FaultWrite(nullptr);
      } catch (AccessViolation&) {
        ++found.m_iFaults;
      }
    }
    found.m_iOverflows = OverflowsCaught(3);
    return nullptr;
  };
  OnHostThread(64 * 1024, routine, &seen);
  EXPECT_EQ(3, seen.m_iFaults);
  EXPECT_EQ(3, seen.m_iOverflows);
}

// Blocked signals end the process when an instruction faults.
TEST(FaultRoad, AThreadWithAllSignalsBlockedHasItsFaultsToo) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  bool caught = false;
  std::thread thread([&caught] {
    InstallSEHErrorTranslator();
    try {
      FaultWrite(nullptr);
    } catch (AccessViolation&) {
      caught = true;
    }
  });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  thread.join();
  EXPECT_TRUE(caught);
}

TEST(FaultRoad, InstallingGivesTheTranslatorBefore) {
  EXPECT_EQ(reinterpret_cast<void*>(&SEH_To_OXA_Translator), InstallSEHErrorTranslator());
  void* first = this;
  void* second = nullptr;
  std::thread thread([&] {
    first = InstallSEHErrorTranslator();
    second = InstallSEHErrorTranslator();
  });
  thread.join();
  EXPECT_EQ(nullptr, first);
  EXPECT_EQ(reinterpret_cast<void*>(&SEH_To_OXA_Translator), second);
}

TEST(FaultRoad, TheSignalMaskOutlivesAFault) {
  sigset_t some;
  sigemptyset(&some);
  sigaddset(&some, SIGUSR2);
  pthread_sigmask(SIG_BLOCK, &some, nullptr);
  EXPECT_THROW(FaultWrite(nullptr), AccessViolation);
  sigset_t now;
  pthread_sigmask(SIG_UNBLOCK, &some, &now);
  EXPECT_EQ(1, sigismember(&now, SIGUSR2));
  EXPECT_EQ(0, sigismember(&now, SIGSEGV));
}

// The log may have entries to write as yet.
bool ComesDownTo(std::size_t bytes) {
  return TestSupport::Eventually([bytes] { return ::mallinfo2().uordblks < bytes; });
}

TEST(FaultRoad, TenThousandFaultsLeakNothing) {
  const auto some = [](int times) {
    for (int i = 0; i < times; ++i) {
      try {
        FaultWrite(nullptr);
      } catch (AccessViolation&) {
      }
    }
  };
  some(1000);
  const auto before = ::mallinfo2().uordblks;
  const int pages = GuardPages();
  some(10000);
  if (!TestSupport::bSANITIZED) {
    EXPECT_TRUE(ComesDownTo(before + 100000));  // ten bytes a fault
    EXPECT_LE(GuardPages(), pages + 2);
  }
}

// Each thread has an alternate stack, and gives it back.
TEST(FaultRoad, ThreadsLeaveNoStacksBehind) {
  const auto some = [](int times) {
    for (int i = 0; i < times; ++i) {
      std::thread thread([] {
        InstallSEHErrorTranslator();
        EXPECT_THROW(FaultWrite(nullptr), AccessViolation);
      });
      thread.join();
    }
  };
  some(20);
  const int pages = GuardPages();
  some(200);
  EXPECT_LE(GuardPages(), pages + 8);
}

#ifndef __SANITIZE_THREAD__
TEST(FaultRoad, KilledThreadsLeaveNoStacksBehind) {
  const auto some = [](int times) {
    for (int i = 0; i < times; ++i) {
      std::atomic<bool> running{false};
      const auto wait = [&running] {
        running = true;
        while (true) ::pause();
      };
      const boost::shared_ptr<Thread> thread = Thread::Create("killed");
      thread->Start(boost::shared_ptr<Task>(new RunAsTask<decltype(wait)>(wait)));
      TestSupport::Eventually([&running] { return running.load(); });
      thread->Kill(Elapse(20, Elapse::Seconds));
    }
  };
  some(3);
  const int pages = GuardPages();
  some(20);
  EXPECT_LE(GuardPages(), pages + 12);
}
#endif

TEST(FaultRoad, AListenerMayFaultWhileAnOverflowIsTold) {
  Ear ear;
  bool faulty = true;
  ear.m_onRaised = [&faulty](Error&) {
    if (!faulty) return;
    faulty = false;
    FaultDivide(1, 0);
  };
  EXPECT_EQ(1, OverflowsCaught(1));
  EXPECT_EQ("Stack overflow;Integer divide;", [&ear] {
    std::string raised = ear.m_sRaised;
    const auto at = raised.find("Stack overflow");
    return at == std::string::npos ? raised : "Stack overflow;" + raised.substr(raised.find("Integer"), 15);
  }());
}

TEST(FaultRoad, TheCallStackIsThatOfTheFault) {
  InitializeOxaCore();
  try {
    volatile int depth = 0;
    Recurse(&depth);
  } catch (StackOverflow& fault) {
    if (fault.GetCallStack() == nullptr) GTEST_SKIP() << "no call stacks here";
    ASSERT_FALSE(fault.GetCallStack()->empty());
    EXPECT_LE(fault.GetCallStack()->size(), 100U);
    EXPECT_EQ("FaultSites::Recurse",
              fault.GetCallStack()->front().GetContextInfo().at(CodeContext::sFUNCTION));
  }
}

// Whoever has the lock of a stream when a bad pointer of its caller faults gives it back.
TEST(FaultRoad, ABadPointerGivenToAStreamLeavesNoLockHeld) {
  BinaryPipe pipe(1024, Elapse(0), Elapse(0));
  BufferedBinaryOutputStream buffered(pipe, 256);
  const void* const nowhere = reinterpret_cast<void*>(64);
  EXPECT_THROW(pipe.Write(nowhere, 100), AccessViolation);
  EXPECT_THROW(buffered.Write(nowhere, 100), AccessViolation);
  std::atomic<bool> done{false};
  std::thread other([&] {
    buffered.Write("0123456789", 10);
    buffered.Flush();
    done = true;
  });
  if (!TestSupport::Eventually([&done] { return done.load(); })) {
    std::fputs("the lock is still held\n", stderr);
    ::_exit(1);
  }
  other.join();
  BufferedBinaryInputStream input(pipe, 256);
  EXPECT_THROW(input.Read(const_cast<void*>(nowhere), 10), AccessViolation);
}

// A stream that lets its thread pass the lock is as good, and copies numbers in a way of its own.
TEST(FaultRoad, ABadPointerGivenToAStreamLeavesNobodyPassing) {
  BinaryPipe pipe(8192, Elapse(0), Elapse(0));
  BufferedBinaryOutputStream output(pipe, 4096);
  for (int i = 0; i < 1000; ++i) output.Write('x');
  output.Flush();
  BufferedBinaryInputStream input(pipe, 1000);
  for (int i = 0; i < 500; ++i) ASSERT_EQ('x', input.Read());
  void* const nowhere = reinterpret_cast<void*>(64);
  for (const int count : {2, 3, 4, 8, 100}) {
    EXPECT_THROW(output.Write(nowhere, static_cast<unsigned long long>(count)), AccessViolation) << count;
    EXPECT_THROW(input.Read(nowhere, count), AccessViolation) << count;
  }
  std::atomic<bool> done{false};
  std::thread other([&] {
    output.Write('y');
    done = input.Read() == 'x' && input.AvailableBytes() == 499;
  });
  if (!TestSupport::Eventually([&done] { return done.load(); })) {
    std::fputs("the first thread is still inside, or bytes are gone\n", stderr);
    ::_exit(1);
  }
  other.join();
}

TEST(FaultRoad, AHostWithoutTheFlagCatchesAroundCalls) {
  EXPECT_TRUE(UnpreparedCatchesAroundACall());
  EXPECT_TRUE(UnpreparedCatchesBehindAFunctionThatIsNotPrepared());
  char room[64];
  EXPECT_TRUE(UnpreparedCatchesWhatACopyDid(room, reinterpret_cast<void*>(64), sizeof(room)));
}

TEST(FaultRoad, AHostByAnotherCompilerCatchesAroundCalls) {
#ifdef OXA_CLANG_HOST
  EXPECT_TRUE(ClangCatchesAroundACall());
  EXPECT_TRUE(ClangCatchesBehindAFunctionThatIsNotPrepared());
  char room[64];
  EXPECT_TRUE(ClangCatchesWhatACopyDid(room, reinterpret_cast<void*>(64), sizeof(room)));
#else
  GTEST_SKIP() << "no clang++ here";
#endif
}

TEST(FaultRoad, ABroadcastPassesAListenerThatIsGoneWhateverTheHost) {
  EXPECT_TRUE(PreparedBroadcastsPastAListenerThatIsGone());
  EXPECT_TRUE(UnpreparedBroadcastsPastAListenerThatIsGone());
#ifdef OXA_CLANG_HOST
  EXPECT_TRUE(ClangBroadcastsPastAListenerThatIsGone());
#endif
}

}  // namespace
