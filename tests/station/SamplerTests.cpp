#include "Sampler.h"

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <typeinfo>

#include "FakeClock.h"
#include "StationAlerts.h"

namespace {

using Oxa::Core::AlertInfo;
using Oxa::Core::AlertListener;
using Oxa::Core::AlertManager;
using Oxa::Core::Error;
using Station::RetryMissedSample;
using Station::SampleMissed;
using Station::Sampler;
using Station::Series;
using StationTests::Elapse;
using StationTests::FakeClock;
using StationTests::Micro;
using testing::ElementsAre;

const Series MILLISECONDS{"ms", Micro(1000), 10, Micro(0), 1};
const Elapse START(1000);

boost::shared_ptr<RetryMissedSample> AddHandler(Sampler& sampler, unsigned long limit) {
  const auto handler = boost::make_shared<RetryMissedSample>(sampler, limit);
  AlertManager::Instance()->AddErrorHandler(typeid(SampleMissed).name(), handler);
  return handler;
}

class Witness : public AlertListener {
 public:
  Witness() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Witness() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Error& error) override { m_raised.push_back(error.what()); }
  void ErrorHandled(Error& error) override { m_handled.push_back(error.what()); }

  std::vector<std::string> m_raised;
  std::vector<std::string> m_handled;
};

TEST(Sampler, TellsHowLateTheWakeUpWas) {
  FakeClock clock({Micro(50), Micro(0), Micro(999)});
  Sampler sampler(clock, MILLISECONDS);
  EXPECT_EQ(Micro(50), sampler.TakeSample());
  EXPECT_EQ(Micro(0), sampler.TakeSample());
  EXPECT_EQ(Micro(999), sampler.TakeSample());
}

TEST(Sampler, KeepsTheRhythmHoweverLateTheWakeUps) {
  FakeClock clock({Micro(50), Micro(900), Micro(0)});
  Sampler sampler(clock, MILLISECONDS);
  for (int i = 0; i < 3; ++i) sampler.TakeSample();
  EXPECT_THAT(clock.Dues(), ElementsAre(START + Micro(1000), START + Micro(2000), START + Micro(3000)));
}

TEST(Sampler, RaisesAMissedSample) {
  FakeClock clock({Micro(1200)});
  Sampler sampler(clock, MILLISECONDS);
  EXPECT_EQ(Micro(1200), sampler.TakeSample());
  try {
    sampler.TakeSample();
    FAIL() << "nothing was raised";
  } catch (const SampleMissed& error) {
    EXPECT_STREQ("Sample 2 of series \"ms\" was missed: it was due 200 microseconds ago", error.what());
    EXPECT_EQ("Hardware", error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ("Station.Sampler", error.GetData(AlertInfo::sLOG_NAME));
  }
  EXPECT_EQ(1U, clock.Dues().size());
}

TEST(Sampler, MissesASampleAtTheMomentThatItIsDue) {
  FakeClock clock({Micro(1000)});
  Sampler sampler(clock, MILLISECONDS);
  sampler.TakeSample();
  EXPECT_THROW(sampler.TakeSample(), SampleMissed);
}

TEST(Sampler, MissesASampleThatWasNotAskedForInTime) {
  FakeClock clock({Micro(0)});
  Sampler sampler(clock, MILLISECONDS);
  sampler.TakeSample();
  clock.Advance(Micro(1001));
  EXPECT_THROW(sampler.TakeSample(), SampleMissed);
}

TEST(Sampler, RetriesAMissedSampleInPlace) {
  FakeClock clock({Micro(1500), Micro(20)});
  Sampler sampler(clock, MILLISECONDS);
  const auto handler = AddHandler(sampler, 5);
  Witness witness;
  EXPECT_EQ(Micro(1500), sampler.TakeSample());
  EXPECT_EQ(Micro(20), sampler.TakeSample());
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
  const auto handler = AddHandler(sampler, 2);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Micro(1500), sampler.TakeSample());
  EXPECT_THROW(sampler.TakeSample(), SampleMissed);
  EXPECT_EQ(2U, handler->GetRetries());
}

TEST(Sampler, GivesNothingWhenTheUserWantsToEnd) {
  FakeClock clock({Micro(0)});
  clock.EndAfter(1);
  Sampler sampler(clock, MILLISECONDS);
  EXPECT_TRUE(sampler.TakeSample().has_value());
  EXPECT_FALSE(sampler.TakeSample().has_value());
}

// Settles nothing, but says so: what a raise that returns while the process ends looks like.
class EmptyPromise : public Oxa::Core::ErrorHandler {
 public:
  bool Handle(Error&) override { return true; }
};

TEST(Sampler, GivesNothingWhenARaiseReturnsUnsettled) {
  FakeClock clock({Micro(1500)});
  Sampler sampler(clock, MILLISECONDS);
  AlertManager::Instance()->AddErrorHandler(typeid(SampleMissed).name(), boost::make_shared<EmptyPromise>());
  EXPECT_TRUE(sampler.TakeSample().has_value());
  EXPECT_FALSE(sampler.TakeSample().has_value());
}

TEST(SystemClock, SleepsUntilAMomentAndNotLess) {
  Station::SystemClock clock;
  const Elapse start = clock.Now();
  EXPECT_TRUE(clock.SleepUntil(start + Elapse(5, Elapse::MilliSeconds)));
  EXPECT_LE(start + Elapse(5, Elapse::MilliSeconds), clock.Now());
  EXPECT_TRUE(clock.SleepUntil(start));
  EXPECT_TRUE(clock.SleepUntil(start + Elapse(250, Elapse::MilliSeconds)));
  EXPECT_LE(start + Elapse(250, Elapse::MilliSeconds), clock.Now());
}

}  // namespace
