#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Notifications.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Notifications/TestListeners.h"
#include "Support/Allocations.h"
#include "Support/Cancelled.h"

namespace {

using namespace NotificationTests;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto eFIRST = NotificationSupport::eFIRST_ADDED_FIRST;

// Three listeners, of which the middle one fails with `fail`.
class ThreeListeners {
 public:
  explicit ThreeListeners(const std::function<void()>& fail) {
    m_listeners[1].m_onEvent = fail;
    for (Listener& listener : m_listeners) m_support.AddListener(listener);
  }

  void Broadcast() {
    Event event;
    m_support.Broadcast(event);
  }

  void ExpectOnlyTheOthersHeard() {
    EXPECT_EQ(1, m_listeners[0].m_iHeard);
    EXPECT_EQ(0, m_listeners[1].m_iHeard);
    EXPECT_EQ(1, m_listeners[2].m_iHeard);
  }

  NotificationSupport m_support{eFIRST};
  Listener m_listeners[3];
};

// Also where the one that fails is the only one, whose list is read in another way.
void ExpectTold(const std::function<void()>& fail, const std::string& text) {
  const std::string message = "Listener threw error during notification: " + text;
  WarningKeeper warnings;
  ThreeListeners three(fail);
  three.Broadcast();
  three.ExpectOnlyTheOthersHeard();
  EXPECT_THAT(warnings.m_messages, ElementsAre(message));
  EXPECT_THAT(warnings.m_logNames, ElementsAre("Oxa.Core.NotificationSupport"));
  NotificationSupport support(eFIRST);
  support.AddListener(three.m_listeners[1]);
  Event event;
  EXPECT_NO_THROW(support.Broadcast(event));
  EXPECT_EQ(0, three.m_listeners[1].m_iHeard);
  EXPECT_THAT(warnings.m_messages, ElementsAre(message, message));
}

// Fails at every warning that it hears, or does what else it is told to.
class BadWarningListener : public AlertListener {
 public:
  explicit BadWarningListener(const std::function<void()>& fail) : m_fail(fail) {
    AlertManager::Instance()->AddAlertListener(*this);
  }
  ~BadWarningListener() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void WarningRaised(Warning&) override {
    ++m_iHeard;
    m_fail();
  }

  int m_iHeard = 0;

 private:
  std::function<void()> m_fail;
};

class Refusing : public NotificationListener {
 public:
  void AddNotificationSource(NotificationSupport&) override { throw std::runtime_error("refused"); }
};

void Cling(const NotificationSupport&) { throw std::runtime_error("clinging"); }

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class TypedEvent : public NotificationTo<Listener> {
  void Tell(Listener& listener) override { listener.Heard(1); }
};

// Five listeners, of which the three in the middle fail; gives in which order they were told.
std::vector<int> ToldInspiteOfFailures(NotificationSupport::ENotificationOrder order) {
  NotificationSupport support(order);
  Listener listeners[5];
  std::vector<int> told;
  for (int i = 0; i < 5; ++i) {
    listeners[i].m_onEvent = [&told, i] {
      told.push_back(i);
      if (i % 4 != 0) throw std::runtime_error("no");
    };
    support.AddListener(listeners[i]);
  }
  TypedEvent event;
  support.Broadcast(event);
  return told;
}

TEST(NotificationFailures, TypedEventGoesOnBehindEachThatFailsInEitherOrder) {
  WarningKeeper warnings;
  EXPECT_THAT(ToldInspiteOfFailures(eFIRST), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(ToldInspiteOfFailures(NotificationSupport::eLAST_ADDED_FIRST), ElementsAre(4, 3, 2, 1, 0));
  EXPECT_EQ(6u, warnings.m_messages.size());
}

TEST(NotificationFailures, RaisedErrorIsToldWithItsMessage) {
  ExpectTold([] { OXA_RAISE_ERROR("Test", NullPointer("p_x")); }, "NULL pointer variable named p_x");
}

TEST(NotificationFailures, ThrownErrorIsToldWithItsMessage) {
  ExpectTold([] { throw LogicError("thrown as it is"); }, "thrown as it is");
}

TEST(NotificationFailures, StandardExceptionIsToldWithItsText) {
  ExpectTold([] { throw std::runtime_error("out of paper"); }, "out of paper");
}

TEST(NotificationFailures, AnythingElseIsToldAsUnknown) {
  ExpectTold([] { throw 42; }, "Unknown Error");
}

TEST(NotificationFailures, WarningIsOfItsClass) {
  const ListenerErrorOnNotification warning("reason");
  EXPECT_EQ("Listener threw error during notification: reason", warning.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ(AlertInfo::eWARNING, warning.GetSeverity());
}

// Each failure is told as a warning, which fails: without a guard this would go on for ever.
TEST(NotificationFailures, ListenerThatFailsAtEveryWarningEndsOnStandardError) {
  BadWarningListener bad([] { throw LogicError("bad & worse"); });
  WarningKeeper warnings;
  testing::internal::CaptureStderr();
  ThreeListeners three([] { throw LogicError("first failure"); });
  three.Broadcast();
  const std::string error = testing::internal::GetCapturedStderr();
  three.ExpectOnlyTheOthersHeard();
  EXPECT_EQ(1, bad.m_iHeard);
  EXPECT_THAT(warnings.m_messages, ElementsAre("Listener threw error during notification: first failure"));
  EXPECT_EQ(1, Count(error, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
  EXPECT_EQ(1, Count(error, "<Error>"));
  EXPECT_THAT(error, HasSubstr("Error in alert listener during alert notification"));
  EXPECT_THAT(error, HasSubstr("bad &amp; worse"));
}

TEST(NotificationFailures, SeveralListenersThatFailAtEveryWarningEndThereEach) {
  BadWarningListener one([] { throw LogicError("one is bad"); });
  BadWarningListener other([] { throw LogicError("the other, too"); });
  WarningKeeper warnings;
  testing::internal::CaptureStderr();
  ThreeListeners([] { throw LogicError("first failure"); }).Broadcast();
  const std::string error = testing::internal::GetCapturedStderr();
  EXPECT_EQ(1, one.m_iHeard);
  EXPECT_EQ(1, other.m_iHeard);
  EXPECT_THAT(warnings.m_messages, ElementsAre("Listener threw error during notification: first failure"));
  EXPECT_EQ(2, Count(error, "<Error>"));
  EXPECT_EQ(1, Count(error, "one is bad"));
  EXPECT_EQ(1, Count(error, "the other, too"));
}

TEST(NotificationFailures, FailureWithoutAnErrorEndsOnStandardErrorAsAWarning) {
  BadWarningListener bad([] { throw 1; });
  testing::internal::CaptureStderr();
  ThreeListeners three([] { throw 2; });
  three.Broadcast();
  const std::string error = testing::internal::GetCapturedStderr();
  three.ExpectOnlyTheOthersHeard();
  EXPECT_EQ(1, bad.m_iHeard);
  EXPECT_EQ(1, Count(error, "<Warning>"));
  EXPECT_THAT(error, HasSubstr("Listener threw error during notification: Unknown Error"));
}

TEST(NotificationFailures, GuardEndsWithTheTelling) {
  BadWarningListener bad([] { throw LogicError("always"); });
  ThreeListeners three([] { throw LogicError("failure"); });
  testing::internal::CaptureStderr();
  three.Broadcast();
  three.Broadcast();
  EXPECT_EQ(2, Count(testing::internal::GetCapturedStderr(), "<?xml"));
  EXPECT_EQ(2, bad.m_iHeard) << "the second failure is told as a warning again";
}

TEST(NotificationFailures, GuardIsEachThreadsOwn) {
  BadWarningListener bad([thisThread = std::this_thread::get_id()] {
    if (std::this_thread::get_id() != thisThread) return;
    // This thread is telling a failure now; another thread's failure is a warning all the same.
    std::thread([] {
      ThreeListeners three([] { throw LogicError("elsewhere"); });
      three.Broadcast();
    }).join();
  });
  WarningKeeper warnings;
  ThreeListeners three([] { throw LogicError("here"); });
  three.Broadcast();
  EXPECT_EQ(2, bad.m_iHeard);
  EXPECT_THAT(warnings.m_messages,
              testing::UnorderedElementsAre("Listener threw error during notification: here",
                                            "Listener threw error during notification: elsewhere"));
}

TEST(NotificationFailures, RefusedAdditionLeavesTheListAsItWas) {
  NotificationSupport support(eFIRST);
  Listener listener;
  support.AddListener(listener);
  Refusing refusing;
  EXPECT_THROW(support.AddListener(refusing), std::runtime_error);
  EXPECT_EQ(1, support.GetNumListeners());
  Listener next;
  support.AddListener(next);
  EXPECT_EQ(2, support.GetNumListeners());
}

TEST(NotificationFailures, ListenerThatFailsAtItsRemovalIsRemoved) {
  NotificationSupport support(eFIRST);
  Listener listener;
  listener.m_onSourceRemoved = &Cling;
  support.AddListener(listener);
  EXPECT_THROW(support.RemoveListener(listener), std::runtime_error);
  EXPECT_FALSE(support.HasListeners());
}

TEST(NotificationFailures, RemoveAllReachesThoseBehindAFailure) {
  NotificationSupport support(eFIRST);
  Listener clinging;
  Listener other;
  clinging.m_onSourceRemoved = &Cling;
  support.AddListener(clinging);
  support.AddListener(other);
  EXPECT_THROW(support.RemoveAllListeners(), std::runtime_error);
  EXPECT_FALSE(support.HasListeners());
  EXPECT_EQ(1, other.m_iSourcesRemoved);
}

TEST(NotificationFailures, DyingSourceReachesThoseBehindAFailure) {
  Listener clinging;
  Listener other;
  clinging.m_onSourceRemoved = &Cling;
  {
    NotificationSupport support(eFIRST);
    support.AddListener(clinging);
    support.AddListener(other);
  }
  EXPECT_EQ(1, clinging.m_iSourcesRemoved);
  EXPECT_EQ(1, other.m_iSourcesRemoved);
}

TEST(NotificationFailures, BroadcastThatFindsNoMemoryForItsCopyThrowsAndTellsNobody) {
  NotificationSupport support(eFIRST);
  Listener listeners[40];
  for (Listener& listener : listeners) support.AddListener(listener);
  Event event;
  {
    const TestSupport::FailAllocation failing(1);
    EXPECT_THROW(support.Broadcast(event), std::bad_alloc);
    EXPECT_TRUE(failing.Happened());
  }
  EXPECT_EQ(0, event.m_iCalls);
  support.Broadcast(event);
  EXPECT_EQ(40, event.m_iCalls);
}

TEST(NotificationFailures, EveryFailingAllocationOfATellingServesTheOthers) {
  ThreeListeners three([] { throw 3; });
  bool happened = true;
  int broadcasts = 0;
  int thrown = 0;
  testing::internal::CaptureStderr();
  for (unsigned long number = 1; happened; ++number) {
    const TestSupport::FailAllocation failing(number);
    try {
      three.Broadcast();
    } catch (std::bad_alloc&) {
      ++thrown;  // only after everybody has been served, as the counts below show
    }
    ++broadcasts;
    happened = failing.Happened();
  }
  testing::internal::GetCapturedStderr();
  EXPECT_GT(broadcasts, 5);
  EXPECT_GT(thrown, 0);
  EXPECT_EQ(broadcasts, three.m_listeners[0].m_iHeard);
  EXPECT_EQ(broadcasts, three.m_listeners[2].m_iHeard);
}

TEST(NotificationFailures, CancellationOfTheThreadPasses) {
  ThreeListeners three([] { pthread_exit(nullptr); });
  bool cameBack = false;
  std::thread([&] {
    three.Broadcast();
    cameBack = true;
  }).join();
  EXPECT_FALSE(cameBack);
  EXPECT_EQ(1, three.m_listeners[0].m_iHeard);
  EXPECT_EQ(0, three.m_listeners[2].m_iHeard);
  three.m_listeners[1].m_onEvent = nullptr;
  three.Broadcast();
  EXPECT_EQ(1, three.m_listeners[2].m_iHeard);
}

// A listener's failure is being handled while it is told of.
TEST(NotificationFailures, CancellationOfTheThreadWaitsUntilAFailureIsTold) {
  BadWarningListener cancellable(&pthread_testcancel);
  ThreeListeners three([] {
    pthread_cancel(pthread_self());
    throw std::runtime_error("refused");
  });
  EXPECT_TRUE(TestSupport::IsCancelledBehind([&] { three.Broadcast(); }));
  EXPECT_EQ(1, cancellable.m_iHeard);
  three.ExpectOnlyTheOthersHeard();
}

// A cancellation may come at any call of the system that a listener makes when it hears of its removal.
TEST(NotificationFailures, CancellationOfTheThreadWaitsUntilAllAreRemoved) {
  ThreeListeners three(nullptr);
  for (Listener& listener : three.m_listeners)
    listener.m_onSourceRemoved = [](const NotificationSupport&) { pthread_testcancel(); };
  EXPECT_TRUE(TestSupport::IsCancelledBehind([&] {
    pthread_cancel(pthread_self());
    three.m_support.RemoveAllListeners();
  }));
  EXPECT_FALSE(three.m_support.HasListeners());
  for (const Listener& listener : three.m_listeners) EXPECT_EQ(1, listener.m_iSourcesRemoved);
}

}  // namespace
