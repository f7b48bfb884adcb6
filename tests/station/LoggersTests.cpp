#include "Loggers.h"

#include <Infrastructure/OxaCore/LogManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeClock.h"

namespace {

using Oxa::Core::LogManager;
using Station::LoggerPaths;
using Station::MicroSeconds;
using Station::SeriesLogger;
using StationTests::Elapse;
using StationTests::Micro;
using testing::ElementsAre;

TEST(Loggers, OfASeriesBearItsName) { EXPECT_EQ("Station.Series.fast-1", SeriesLogger("fast-1")); }

TEST(Loggers, HaveNoDotsFromTheNamesOfSeries) {
  EXPECT_EQ("Station.Series.a_b", SeriesLogger("a.b"));
  EXPECT_EQ("Station.Series.__x_", SeriesLogger("..x."));
  EXPECT_NE(nullptr, LogManager::Instance()->GetLogger(SeriesLogger("...")));
}

TEST(Loggers, AreKnownFromThePlan) {
  EXPECT_THAT(LoggerPaths(Station::ReadPlan("p", "a 1s 1 0s\nb.c 1s 1 0s")),
              ElementsAre("Station", "Station.Clock", "Station.Plan", "Station.Recorder", "Station.Series.a",
                          "Station.Series.b_c"));
}

TEST(Loggers, TellTimesInMicroseconds) {
  EXPECT_EQ(1000, MicroSeconds(Micro(1000)));
  EXPECT_EQ(0.1, MicroSeconds(Elapse(1, Elapse::TimerTicks)));
  EXPECT_EQ(0, MicroSeconds(Elapse(0)));
}

}  // namespace
