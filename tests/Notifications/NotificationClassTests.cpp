// Which class a listener is of when the event comes: while it is made or destroyed, and by way of virtual bases.
#include <Infrastructure/OxaCore/Notifications.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "Notifications/TestListeners.h"

namespace {

using namespace NotificationTests;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto eFIRST = NotificationSupport::eFIRST_ADDED_FIRST;

/// Tells listeners of one type, which all have Hear.
template <class Hearer>
class EventTo : public NotificationTo<Hearer> {
 public:
  explicit EventTo(int value) : m_iValue(value) {}

 private:
  void Tell(Hearer& hearer) override { hearer.Hear(m_iValue); }
  int m_iValue;
};

// Its class tells by a cast of its own whom it is for.
template <class Hearer>
class CastingEventTo : public Notification {
 public:
  explicit CastingEventTo(int value) : m_iValue(value) {}
  void Notify(NotificationListener& listener) override {
    if (auto* const hearer = dynamic_cast<Hearer*>(&listener)) hearer->Hear(m_iValue);
  }

 private:
  int m_iValue;
};

enum : int { eFOR_SEEDS = 1, eFOR_PLANTS = 2 };

template <class Event>
void BroadcastTo(NotificationSupport& support, int value) {
  Event event(value);
  support.Broadcast(event);
}

// Has events broadcast while it is all that there is of its object: before and after the time of a Plant.
template <template <class> class Event>
class Seed : public NotificationListener {
 public:
  Seed(NotificationSupport& support, std::vector<int>& heard) : m_heard(heard), m_support(support) {
    m_support.AddListener(*this);
    BroadcastBoth();
  }
  ~Seed() override { BroadcastBoth(); }
  void Hear(int value) { m_heard.push_back(value); }
  void BroadcastBoth();

 private:
  std::vector<int>& m_heard;
  NotificationSupport& m_support;
};

template <template <class> class Event>
class Plant : public Seed<Event> {
 public:
  using Seed<Event>::Seed;
};

template <template <class> class Event>
void Seed<Event>::BroadcastBoth() {
  BroadcastTo<Event<Seed>>(m_support, eFOR_SEEDS);
  BroadcastTo<Event<Plant<Event>>>(m_support, eFOR_PLANTS);
}

template <template <class> class Event>
std::vector<int> HeardInALife(NotificationSupport& support) {
  std::vector<int> heard;
  {
    Plant<Event> plant(support, heard);
    plant.BroadcastBoth();
  }
  return heard;
}

template <template <class> class Event>
void ExpectEachIsToldAsWhatItIs() {
  NotificationSupport support(eFIRST);
  EXPECT_THAT(HeardInALife<Event>(support), ElementsAre(eFOR_SEEDS, eFOR_SEEDS, eFOR_PLANTS, eFOR_SEEDS));
  std::vector<int> heardByGrown;
  Plant<Event> grown(support, heardByGrown);
  heardByGrown.clear();
  EXPECT_THAT(HeardInALife<Event>(support), ElementsAre(eFOR_SEEDS, eFOR_SEEDS, eFOR_PLANTS, eFOR_SEEDS))
      << "behind a Plant that is whole";
  EXPECT_THAT(heardByGrown,
              ElementsAre(eFOR_SEEDS, eFOR_PLANTS, eFOR_SEEDS, eFOR_PLANTS, eFOR_SEEDS, eFOR_PLANTS));
}

TEST(NotificationClasses, WhoIsMadeOrDestroyedIsToldAsTheBaseThatItIs) {
  ExpectEachIsToldAsWhatItIs<EventTo>();
}

TEST(NotificationClasses, AlsoByAnEventThatCasts) { ExpectEachIsToldAsWhatItIs<CastingEventTo>(); }

class Shared : public virtual NotificationListener {
 public:
  void Hear(int value) { m_heard.push_back(value); }
  std::vector<int> m_heard;
};
class Sharing : public virtual NotificationListener {
 public:
  long m_lPadding = 0;
};
class Whole : public Sharing, public Shared {};
class Longer : public Whole {
 public:
  long m_lMore = 0;
};

TEST(NotificationClasses, AVirtualBaseIsFoundAloneAndAmongOthers) {
  Shared shared;
  Whole whole;
  Longer longer;
  Sharing foreign;
  for (Shared* const hearer : {&shared, static_cast<Shared*>(&whole), static_cast<Shared*>(&longer)}) {
    NotificationSupport alone(eFIRST);
    alone.AddListener(*hearer);
    BroadcastTo<EventTo<Shared>>(alone, 1);
    NotificationSupport together(eFIRST);
    for (NotificationListener* listener : std::initializer_list<NotificationListener*>{
             &foreign, static_cast<Sharing*>(&whole), &longer, &shared}) {
      together.AddListener(*listener);
    }
    BroadcastTo<EventTo<Shared>>(together, 2);
  }
  for (const Shared* const hearer : {&shared, static_cast<Shared*>(&whole), static_cast<Shared*>(&longer)})
    EXPECT_EQ(4u, hearer->m_heard.size());
}

TEST(NotificationClasses, AnEventForSharersPassesOverTheOther) {
  WarningKeeper warnings;  // hears of it if the other is told all the same, and faults
  NotificationSupport support(eFIRST);
  Sharing foreign;
  Shared shared;
  support.AddListener(foreign);
  BroadcastTo<EventTo<Shared>>(support, 1);
  support.AddListener(shared);
  BroadcastTo<EventTo<Shared>>(support, 2);
  EXPECT_THAT(shared.m_heard, ElementsAre(2));
  EXPECT_THAT(warnings.m_messages, IsEmpty());
}

}  // namespace
