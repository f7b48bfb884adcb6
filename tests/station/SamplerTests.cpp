#include "Sampler.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <typeinfo>

#include "FakeClock.h"
#include "StationAlerts.h"
#include "Witness.h"

namespace {

using Oxa::Core::AlertInfo;
using Oxa::Core::AlertManager;
using Oxa::Core::Error;
using Station::RetryMissedSample;
using Station::SampleMissed;
using Station::Sampler;
using Station::Series;
using StationTests::Elapse;
using StationTests::FakeClock;
using StationTests::FakeDirective;
using StationTests::Micro;
using StationTests::Witness;
using testing::ElementsAre;

const Series MILLISECONDS{"ms", Micro(1000), 10, Micro(0), 1};
const Elapse START(1000);

boost::shared_ptr<RetryMissedSample> AddHandler(Sampler& sampler, unsigned long limit) {
  auto handler = boost::make_shared<RetryMissedSample>(sampler, limit);
  AlertManager::Instance()->AddErrorHandler(typeid(SampleMissed).name(), handler);
  return handler;
}

TEST(Sampler, TellsHowLateTheWakeUpWas) {
  FakeClock clock({Micro(50), Micro(0), Micro(999)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  EXPECT_EQ(Micro(50), sampler.TakeSample(directive));
  EXPECT_EQ(Micro(0), sampler.TakeSample(directive));
  EXPECT_EQ(Micro(999), sampler.TakeSample(directive));
}

TEST(Sampler, KeepsTheRhythmHoweverLateTheWakeUps) {
  FakeClock clock({Micro(50), Micro(900), Micro(0)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  for (int i = 0; i < 3; ++i) sampler.TakeSample(directive);
  EXPECT_THAT(clock.Dues(), ElementsAre(START + Micro(1000), START + Micro(2000), START + Micro(3000)));
}

TEST(Sampler, RaisesAMissedSample) {
  FakeClock clock({Micro(1200)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  EXPECT_EQ(Micro(1200), sampler.TakeSample(directive));
  try {
    sampler.TakeSample(directive);
    FAIL() << "nothing was raised";
  } catch (const SampleMissed& error) {
    EXPECT_STREQ("Sample 2 of series \"ms\" was missed: it was due 200 microseconds ago", error.what());
    EXPECT_EQ("Hardware", error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ("Station.Series.ms", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ("ms", error.GetData(SampleMissed::sSERIES));
  }
  EXPECT_EQ(1U, clock.Dues().size());
}

TEST(Sampler, MissesASampleAtTheMomentThatItIsDue) {
  FakeClock clock({Micro(1000)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  sampler.TakeSample(directive);
  EXPECT_THROW(sampler.TakeSample(directive), SampleMissed);
}

TEST(Sampler, MissesASampleThatWasNotAskedForInTime) {
  FakeClock clock({Micro(0)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  sampler.TakeSample(directive);
  clock.Advance(Micro(1001));
  EXPECT_THROW(sampler.TakeSample(directive), SampleMissed);
}

TEST(Sampler, RetriesAMissedSampleInPlace) {
  FakeClock clock({Micro(1500), Micro(20)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  const auto handler = AddHandler(sampler, 5);
  Witness witness;
  EXPECT_EQ(Micro(1500), sampler.TakeSample(directive));
  EXPECT_EQ(Micro(20), sampler.TakeSample(directive));
  EXPECT_EQ(1U, handler->GetRetries());
  // The new appointment counts from the moment of the retry: 1 ms + 1.5 ms + 1 ms.
  EXPECT_THAT(clock.Dues(), ElementsAre(START + Micro(1000), START + Micro(3500)));
  EXPECT_THAT(witness.m_raised,
              ElementsAre("Sample 2 of series \"ms\" was missed: it was due 500 microseconds ago"));
  EXPECT_EQ(witness.m_raised, witness.m_handled);
}

TEST(Sampler, DeclinesRetriesBeyondTheLimit) {
  FakeClock clock({Micro(1500)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  const auto handler = AddHandler(sampler, 2);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Micro(1500), sampler.TakeSample(directive));
  EXPECT_THROW(sampler.TakeSample(directive), SampleMissed);
  EXPECT_EQ(2U, handler->GetRetries());
}

TEST(Sampler, LeavesTheSamplesOfOthersToTheirHandlers) {
  FakeClock clock({Micro(1500), Micro(20)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  const Series others{"others", Micro(1000), 10, Micro(0), 2};
  FakeClock otherClock({Micro(0)});
  Sampler otherSampler(otherClock, others);
  const auto otherHandler = AddHandler(otherSampler, 5);  // asked first
  EXPECT_TRUE(otherSampler.TakeSample(directive).has_value());
  EXPECT_TRUE(sampler.TakeSample(directive).has_value());
  EXPECT_THROW(sampler.TakeSample(directive), SampleMissed);

  const auto handler = AddHandler(sampler, 5);
  EXPECT_EQ(Micro(20), sampler.TakeSample(directive));
  EXPECT_EQ(1U, handler->GetRetries());
  EXPECT_EQ(0U, otherHandler->GetRetries());
  EXPECT_TRUE(otherSampler.TakeSample(directive).has_value());
  // The rhythm of the other one goes on.
  EXPECT_THAT(otherClock.Dues(), ElementsAre(START + Micro(1000), START + Micro(2000)));
}

TEST(Sampler, GivesNothingWhenItsThreadIsToStop) {
  FakeClock clock({Micro(0)});
  clock.EndAfter(1);
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  EXPECT_TRUE(sampler.TakeSample(directive).has_value());
  EXPECT_FALSE(sampler.TakeSample(directive).has_value());
}

// Settles nothing, but says so: what a raise that returns while the process ends looks like.
class EmptyPromise : public Oxa::Core::ErrorHandler {
 public:
  bool Handle(Error&) override { return true; }
};

TEST(Sampler, GivesNothingWhenARaiseReturnsUnsettled) {
  FakeClock clock({Micro(1500)});
  Sampler sampler(clock, MILLISECONDS);
  FakeDirective directive;
  AlertManager::Instance()->AddErrorHandler(typeid(SampleMissed).name(), boost::make_shared<EmptyPromise>());
  EXPECT_TRUE(sampler.TakeSample(directive).has_value());
  EXPECT_FALSE(sampler.TakeSample(directive).has_value());
}

}  // namespace
