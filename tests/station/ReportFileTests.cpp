#include "ReportFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "FakeClock.h"
#include "StationAlerts.h"
#include "TemporaryFolder.h"

namespace {

using Result = Oxa::Core::Test::Result;
using Station::Measurement;
using Station::ReportFile;
using Station::Verdicts;
using StationTests::Micro;
using StationTests::ReadFile;
using StationTests::TemporaryFolder;
using testing::HasSubstr;

Measurement Measured() {
  Measurement measurement;
  measurement.m_series = {"fast", Micro(1000), 2, Micro(250), 1};
  measurement.m_latenesses = {Micro(12), Micro(34)};
  measurement.m_statistics = Station::Summarize(measurement.m_latenesses);
  return measurement;
}

const Verdicts aVERDICTS{Result("fast", Result::eFAILED, "7 \xB5sec")};

TEST(ReportFile, HoldsThePageOfARun) {
  const TemporaryFolder folder;
  std::ostringstream out;
  EXPECT_TRUE(ReportFile(folder.File("page")).Write(out, {Measured()}, aVERDICTS, {"p:1: a \"line\""}));
  EXPECT_EQ("Report:             " + folder.File("page") + "\n", out.str());
  const std::string page = ReadFile(folder.File("page"));
  for (const char* const part :
       {"<title>How late the system wakes a sleeper", ">fast<", "34 \xC2\xB5sec", "7 \xC2\xB5sec", "p:1: a"})
    EXPECT_THAT(page, HasSubstr(part));
}

TEST(ReportFile, TakesThePlaceOfAnOldOneAtOnce) {
  const TemporaryFolder folder;
  const ReportFile report(folder.Write("page", "old"));
  EXPECT_EQ("", ReadFile(folder.File("page")));
}

TEST(ReportFile, IsNoneWithoutAName) {
  std::ostringstream out;
  EXPECT_TRUE(ReportFile("").Write(out, {Measured()}, aVERDICTS, {}));
  EXPECT_EQ("", out.str());
}

TEST(ReportFile, MustBePossible) {
  try {
    ReportFile("/nowhere/\xB5");
    FAIL() << "it is";
  } catch (const Station::ReportImpossible& error) {
    EXPECT_STREQ("The report \"/nowhere/\\xB5\" can't be written: No such file or directory", error.what());
  }
}

TEST(ReportFile, SaysWhenItIsNotWhole) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  std::ostringstream out;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(ReportFile("/dev/full").Write(out, {Measured()}, aVERDICTS, {}));
  EXPECT_EQ("station: the report isn't whole: \"/dev/full\"\n", testing::internal::GetCapturedStderr());
  EXPECT_EQ("", out.str());
}

}  // namespace
