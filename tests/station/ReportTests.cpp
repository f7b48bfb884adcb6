#include "Report.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/RaiseSite.h>
#include <gtest/gtest.h>

#include <sstream>

#include "FakeClock.h"
#include "Station.h"
#include "StationAlerts.h"

namespace {

using Oxa::Core::AlertManager;
using Oxa::Core::InvalidParameter;
using Station::Measurement;
using Station::Plan;
using Station::SampleLate;
using StationTests::Elapse;
using StationTests::Micro;

Measurement Measured(const std::string& name, const std::vector<Elapse>& latenesses, unsigned long late,
                     unsigned long retries) {
  Measurement measurement;
  measurement.m_series.m_sName = name;
  measurement.m_latenesses = latenesses;
  measurement.m_ulLate = late;
  measurement.m_ulRetries = retries;
  measurement.m_statistics = Station::Summarize(latenesses);
  return measurement;
}

TEST(Report, HasARowPerSeriesInItsUnit) {
  const std::vector<Elapse> latenesses{Micro(3), Elapse(12, Elapse::TimerTicks), Micro(2), Micro(123456)};
  Measurement fast = Measured("fast", latenesses, 1, 0);
  Measurement slow = Measured("slow", latenesses, 4, 0);
  slow.m_series.m_sUnit = "Millisecond";
  std::ostringstream out;
  Station::WriteTable(out, {fast, slow, Measured("none", {}, 0, 0)});
  EXPECT_EQ(
      "\n"
      "How late the system wakes a sleeper:\n"
      "\n"
      "series      count        least       median         99 %     greatest too late\n"
      "fast            4     1.2 \xC2\xB5sec       2 \xC2\xB5sec  123456 \xC2\xB5sec  123456 \xC2\xB5sec     "
      "   1\n"
      "slow            4  0.0012 msec   0.002 msec 123.456 msec 123.456 msec        4\n"
      "none            0            -            -            -            -        0\n",
      out.str());
}

TEST(Report, MakesRoomForTheLongestName) {
  std::ostringstream out;
  Station::WriteTable(out, {Measured("abcdefghijklmnopqrst", {}, 0, 0)});
  EXPECT_EQ(
      "\nHow late the system wakes a sleeper:\n\n"
      "series                  count        least       median         99 %     greatest too late\n"
      "abcdefghijklmnopqrst        0            -            -            -            -        0\n",
      out.str());
}

TEST(Report, MakesRoomForTheLongestFigure) {
  Measurement weeks = Measured("weeks", {Micro(1234)}, 0, 0);
  weeks.m_series.m_sUnit = "Week (2)";
  std::ostringstream out;
  Station::WriteTable(out, {weeks, Measured("micro", {Micro(1)}, 0, 0)});
  const std::string title = "\nHow late the system wakes a sleeper:\n\n";
  EXPECT_EQ(title +
                "series      count             least            median              99 %          greatest "
                "too late\n"
                "weeks           1 2.04034e-09 weeks 2.04034e-09 weeks 2.04034e-09 weeks 2.04034e-09 weeks   "
                "     0\n"
                "micro           1            1 \xC2\xB5sec            1 \xC2\xB5sec            1 "
                "\xC2\xB5sec            1 \xC2\xB5sec        0\n",
            out.str());
}

TEST(Report, CountsAlerts) {
  AlertManager::Instance()->SetMaxWarnings(typeid(SampleLate).name(), 2, true);
  for (int i = 0; i < 5; ++i) OXA_RAISE_WARNING("Test", SampleLate(1, "a", Micro(2), Micro(1)));
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(OXA_RAISE_ERROR("Test", InvalidParameter("x", i)), InvalidParameter);
  }
  Plan plan;
  plan.m_refusals = {"one", "two"};
  std::ostringstream out;
  Station::WriteAlertCounts(out, plan, {Measured("a", {}, 0, 4), Measured("b", {}, 0, 3)});
  EXPECT_EQ(
      "\n"
      "Lines refused:      2\n"
      "Samples retried:    7\n"
      "Errors survived:    3\n"
      "Warnings raised:    2\n"
      "Warnings silenced:  3\n",
      out.str());
}

TEST(Report, ComplainsInUtf8) {
  testing::internal::CaptureStderr();
  Station::Complain("7 \xB5sec");
  EXPECT_EQ("station: 7 \xC2\xB5sec\n", testing::internal::GetCapturedStderr());
}

TEST(Report, TellsWhereTheLogLies) {
  std::ostringstream out;
  Station::WriteLogPlace(out, "out\x1B/DefaultLog.xml");
  EXPECT_EQ("Log:                out\\x1B/DefaultLog.xml\n", out.str());
}

TEST(Report, TellsWhereThePageLies) {
  std::ostringstream out;
  Station::WriteReportPlace(out, "out\x1B/report.html");
  EXPECT_EQ("Report:             out\\x1B/report.html\n", out.str());
}

}  // namespace
