#include <Infrastructure/OxaCore/Notifications.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "Notifications/TestListeners.h"
#include "Support/Allocations.h"

namespace {

using namespace NotificationTests;
using testing::ElementsAre;

constexpr auto eFIRST = NotificationSupport::eFIRST_ADDED_FIRST;
constexpr auto eLAST = NotificationSupport::eLAST_ADDED_FIRST;

void Broadcast(NotificationSupport& support, int value = 1) {
  Event event(value);
  support.Broadcast(event);
}

std::vector<int> OrderOfDelivery(NotificationSupport::ENotificationOrder order) {
  NotificationSupport support(order);
  std::vector<int> heard;
  Listener listeners[3];
  for (int i = 0; i < 3; ++i) {
    listeners[i].m_onEvent = [&heard, i] { heard.push_back(i); };
    support.AddListener(listeners[i]);
  }
  Broadcast(support);
  return heard;
}

class SupportWithOpenDelivery : public NotificationSupport {
 public:
  SupportWithOpenDelivery() : NotificationSupport(eFIRST) {}
  using NotificationSupport::NotifyListener;
};

class ForeignListener : public NotificationListener {};

TEST(Notifications, OrdersHaveTheirValues) {
  EXPECT_EQ(0, NotificationSupport::eFIRST_ADDED_FIRST);
  EXPECT_EQ(1, NotificationSupport::eLAST_ADDED_FIRST);
  EXPECT_TRUE(std::has_virtual_destructor<NotificationSupport>::value);
  EXPECT_TRUE((std::is_base_of<IOxaNotificationListener, NotificationListener>::value));
}

TEST(Notifications, FirstAddedHearsFirst) { EXPECT_THAT(OrderOfDelivery(eFIRST), ElementsAre(0, 1, 2)); }

TEST(Notifications, LastAddedHearsFirst) { EXPECT_THAT(OrderOfDelivery(eLAST), ElementsAre(2, 1, 0)); }

TEST(Notifications, ListenerAddedTwiceHearsOnceAndCountsOnce) {
  NotificationSupport support(eFIRST);
  Listener listener;
  support.AddListener(listener);
  support.AddListener(listener);
  EXPECT_EQ(1, support.GetNumListeners());
  Broadcast(support, 7);
  EXPECT_EQ(1, listener.m_iHeard);
  EXPECT_EQ(7, listener.m_iLastValue);
}

TEST(Notifications, ListenerOnTwoSourcesHearsBoth) {
  auto source1 = std::make_unique<NotificationSupport>(eFIRST);
  auto pSource2 = std::make_unique<NotificationSupport>(eLAST);
  Listener listener;
  source1->AddListener(listener);
  pSource2->AddListener(listener);
  Broadcast(*source1);
  Broadcast(*pSource2);
  EXPECT_EQ(2, listener.m_iHeard);
  source1.reset();
  EXPECT_EQ(1, listener.m_iSourcesRemoved);
  EXPECT_EQ(1, pSource2->GetNumListeners());
  Broadcast(*pSource2);
  EXPECT_EQ(3, listener.m_iHeard);
  pSource2->RemoveListener(listener);
  EXPECT_TRUE(!pSource2->HasListeners());
  EXPECT_TRUE(pSource2->GetNumListeners() == 0);
  EXPECT_EQ(2, listener.m_iSourcesRemoved);
}

TEST(Notifications, ThreeSourcesDestroyedInTurnAreThreeRemovals) {
  std::unique_ptr<NotificationSupport> sources[3];
  Listener listener;
  for (auto& source : sources) {
    source = std::make_unique<NotificationSupport>(eFIRST);
    source->AddListener(listener);
  }
  for (int i = 0; i < 3; ++i) {
    sources[i].reset();
    EXPECT_EQ(i + 1, listener.m_iSourcesRemoved);
  }
}

TEST(Notifications, ListenerLearnsWhichSourceIsGone) {
  NotificationSupport kept(eFIRST);
  NotificationSupport left(eFIRST);
  const NotificationSupport* removed = nullptr;
  Listener listener;
  listener.m_onSourceRemoved = [&removed](const NotificationSupport& source) { removed = &source; };
  kept.AddListener(listener);
  left.AddListener(listener);
  left.RemoveListener(listener);
  EXPECT_EQ(&left, removed);
  listener.m_onSourceRemoved = nullptr;
}

TEST(Notifications, DestroyedListenerIsRemovedFromEverySource) {
  NotificationSupport source1(eFIRST);
  NotificationSupport source2(eLAST);
  Listener other;
  source2.AddListener(other);
  int removals = 0;
  {
    Listener listener;
    listener.m_onSourceRemoved = [&removals](const NotificationSupport&) { ++removals; };
    source1.AddListener(listener);
    source2.AddListener(listener);
    EXPECT_EQ(2, source2.GetNumListeners());
  }
  EXPECT_FALSE(source1.HasListeners());
  EXPECT_EQ(1, source2.GetNumListeners());
  EXPECT_EQ(0, removals) << "the subclass is gone when its base class leaves";
  Broadcast(source2);
  EXPECT_EQ(1, other.m_iHeard);
}

TEST(Notifications, UnknownListenerIsRemovedWithoutAFault) {
  NotificationSupport support(eFIRST);
  Listener known;
  Listener unknown;
  support.AddListener(known);
  support.RemoveListener(unknown);
  EXPECT_EQ(1, support.GetNumListeners());
  EXPECT_EQ(0, unknown.m_iSourcesRemoved);
}

TEST(Notifications, RemovalTellsTheListenerBeforeItLeavesTheList) {
  NotificationSupport support(eFIRST);
  Listener listener;
  int during = -1;
  listener.m_onSourceRemoved = [&during](const NotificationSupport& source) {
    during = source.GetNumListeners();
  };
  support.AddListener(listener);
  support.RemoveListener(listener);
  EXPECT_EQ(1, during);
  EXPECT_EQ(0, support.GetNumListeners());
}

TEST(Notifications, RemoveAllTellsInOrderOfAdditionAndEmpties) {
  NotificationSupport support(eLAST);
  std::vector<int> told;
  Listener listeners[3];
  for (int i = 0; i < 3; ++i) {
    listeners[i].m_onSourceRemoved = [&told, i](const NotificationSupport& source) {
      told.push_back(i);
      EXPECT_EQ(3, source.GetNumListeners());
    };
    support.AddListener(listeners[i]);
  }
  support.RemoveAllListeners();
  EXPECT_THAT(told, ElementsAre(0, 1, 2));
  EXPECT_FALSE(support.HasListeners());
  for (Listener& listener : listeners) listener.m_onSourceRemoved = nullptr;
  support.AddListener(listeners[1]);
  Broadcast(support);
  EXPECT_EQ(1, listeners[1].m_iHeard);
  EXPECT_EQ(0, listeners[0].m_iHeard);
}

TEST(Notifications, RemovalIsToldEvenOfASourceThatWasNotKnown) {
  NotificationSupport support(eFIRST);
  Listener listener;
  listener.RemoveNotificationSource(support);
  EXPECT_EQ(1, listener.m_iSourcesRemoved);
}

TEST(Notifications, ListenerThatRemovesItselfDisturbsNobody) {
  NotificationSupport support(eFIRST);
  Listener before;
  Listener leaving;
  Listener behind;
  leaving.m_onEvent = [&] { support.RemoveListener(leaving); };
  for (Listener* listener : {&before, &leaving, &behind}) support.AddListener(*listener);
  Broadcast(support);
  EXPECT_EQ(1, before.m_iHeard);
  EXPECT_EQ(1, leaving.m_iHeard);
  EXPECT_EQ(1, behind.m_iHeard);
  Broadcast(support);
  EXPECT_EQ(2, before.m_iHeard);
  EXPECT_EQ(1, leaving.m_iHeard);
  EXPECT_EQ(2, behind.m_iHeard);
  support.AddListener(leaving);
  Broadcast(support);
  EXPECT_EQ(2, leaving.m_iHeard);
}

TEST(Notifications, ListenerRemovedDuringABroadcastStillHearsThatOne) {
  NotificationSupport support(eFIRST);
  Listener remover;
  Listener removed;
  remover.m_onEvent = [&] { support.RemoveListener(removed); };
  support.AddListener(remover);
  support.AddListener(removed);
  Broadcast(support);
  EXPECT_EQ(1, removed.m_iHeard);
  Broadcast(support);
  EXPECT_EQ(1, removed.m_iHeard);
}

TEST(Notifications, ListenerAddedDuringABroadcastHearsTheNext) {
  NotificationSupport support(eFIRST);
  Listener adder;
  Listener added;
  adder.m_onEvent = [&] { support.AddListener(added); };
  support.AddListener(adder);
  Broadcast(support);
  EXPECT_EQ(0, added.m_iHeard);
  Broadcast(support);
  EXPECT_EQ(1, added.m_iHeard);
}

TEST(Notifications, ListenerMayBroadcastOnTheSameSource) {
  NotificationSupport support(eFIRST);
  Listener echo;
  Listener other;
  int depth = 0;
  echo.m_onEvent = [&] {
    if (++depth == 1) Broadcast(support, 2);
  };
  support.AddListener(echo);
  support.AddListener(other);
  Broadcast(support, 1);
  EXPECT_EQ(2, echo.m_iHeard);
  EXPECT_EQ(2, other.m_iHeard);
  EXPECT_EQ(1, other.m_iLastValue) << "the inner broadcast ends before the outer one goes on";
}

TEST(Notifications, ForeignListenerIsPassedOver) {
  NotificationSupport support(eFIRST);
  WarningKeeper warnings;
  ForeignListener foreign;
  Listener listener;
  support.AddListener(foreign);
  support.AddListener(listener);
  Event event;
  support.Broadcast(event);
  EXPECT_EQ(2, event.m_iCalls);
  EXPECT_EQ(1, listener.m_iHeard);
  EXPECT_THAT(warnings.m_messages, ElementsAre());
}

TEST(Notifications, NullListenerIsPassedOver) {
  SupportWithOpenDelivery support;
  Event event;
  support.NotifyListener(event, nullptr);
  EXPECT_EQ(0, event.m_iCalls);
  Listener listener;
  support.NotifyListener(event, &listener);
  EXPECT_EQ(1, listener.m_iHeard);
}

TEST(Notifications, BroadcastToNobodyCallsNothingAndAllocatesNothing) {
  NotificationSupport support(eFIRST);
  Event event;
  const unsigned long before = TestSupport::ThreadAllocations().m_ulCount;
  support.Broadcast(event);
  EXPECT_EQ(before, TestSupport::ThreadAllocations().m_ulCount);
  EXPECT_EQ(0, event.m_iCalls);
}

TEST(Notifications, BroadcastReachesEachOnceHoweverMany) {
  for (int number : {1, 31, 32, 33, 200}) {
    NotificationSupport support(eLAST);
    std::vector<std::unique_ptr<Listener>> listeners;
    std::vector<int> heard;
    for (int i = 0; i < number; ++i) {
      listeners.push_back(std::make_unique<Listener>());
      listeners.back()->m_onEvent = [&heard, i] { heard.push_back(i); };
      support.AddListener(*listeners.back());
    }
    EXPECT_EQ(number, support.GetNumListeners());
    Broadcast(support);
    ASSERT_EQ(static_cast<std::size_t>(number), heard.size());
    for (int i = 0; i < number; ++i) EXPECT_EQ(number - 1 - i, heard[static_cast<std::size_t>(i)]);
  }
}

// Two listeners in one object, of which only the second is for TypedEvent by itself; the first by a side step.
struct Left : NotificationListener {
  long m_lPadding = 0;
};
struct Right : NotificationListener {
  std::vector<int> m_heard;
};
struct Both : Left, Right {};
struct Deeper : Both {
  long m_lMore = 0;
};

class TypedEvent : public NotificationTo<Right> {
 public:
  explicit TypedEvent(int value) : m_iValue(value) {}

 private:
  void Tell(Right& listener) override { listener.m_heard.push_back(m_iValue); }
  int m_iValue;
};

TEST(Notifications, TypedEventFindsItsListenersWhereverTheyLie) {
  NotificationSupport support(eFIRST);
  Right right1;
  Both both;
  Both bothAgain;
  Deeper deeper;
  Right right2;
  Left left;
  ForeignListener foreign;
  for (NotificationListener* listener : std::initializer_list<NotificationListener*>{
           &right1, static_cast<Left*>(&both), static_cast<Right*>(&both), static_cast<Right*>(&bothAgain),
           static_cast<Left*>(&deeper), &foreign, &left, &right2}) {
    support.AddListener(*listener);
  }
  TypedEvent event(3);
  support.Broadcast(event);
  EXPECT_THAT(right1.m_heard, ElementsAre(3));
  EXPECT_THAT(both.m_heard, ElementsAre(3, 3)) << "once as each of its two listeners";
  EXPECT_THAT(bothAgain.m_heard, ElementsAre(3));
  EXPECT_THAT(deeper.m_heard, ElementsAre(3));
  EXPECT_THAT(right2.m_heard, ElementsAre(3));
  TypedEvent copy(event);
  support.Broadcast(copy);
  EXPECT_THAT(right2.m_heard, ElementsAre(3, 3));
}

TEST(Notifications, EventsAreCopyable) {
  const Event event(5);
  Event copy(event);
  Listener listener;
  copy.Notify(listener);
  EXPECT_EQ(5, listener.m_iLastValue);
}

}  // namespace
