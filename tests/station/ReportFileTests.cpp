#include "ReportFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "FakeClock.h"
#include "PageReader.h"
#include "StationAlerts.h"
#include "TemporaryFolder.h"

namespace {

using Result = Oxa::Core::Test::Result;
using Station::Measurement;
using Station::ReportFile;
using Station::Verdicts;
using StationTests::Micro;
using StationTests::ReadFile;
using StationTests::ReadPage;
using StationTests::TemporaryFolder;
using testing::AllOf;
using testing::HasSubstr;

Measurement Measured() {
  Measurement measurement;
  measurement.m_series = {"fast", Micro(1000), 2, Micro(250), 1};
  measurement.m_latenesses = {Micro(12), Micro(340)};
  measurement.m_statistics = {Micro(1), Micro(2), Micro(3), Micro(4)};
  return measurement;
}

const Verdicts aVERDICTS{Result("fast", Result::eFAILED, "7 \xB5sec")};

TEST(ReportFile, HoldsThePageOfARun) {
  const TemporaryFolder folder;
  std::ostringstream out;
  EXPECT_TRUE(ReportFile(folder.File("page")).Write(out, {Measured()}, aVERDICTS, {"p:1: a \"line\""}));
  EXPECT_EQ("Report:             " + folder.File("page") + "\n", out.str());
  const ReadPage page(ReadFile(folder.File("page")));
  EXPECT_TRUE(page.m_bWellFormed);
  EXPECT_EQ("How late the system wakes a sleeper|", page.Texts("h1"));
  EXPECT_EQ("fast|", page.Texts("h2").substr(0, 5));
  EXPECT_EQ("2|1 \xC2\xB5sec|2 \xC2\xB5sec|3 \xC2\xB5sec|4 \xC2\xB5sec|250 \xC2\xB5sec||", page.Texts("td"));
  EXPECT_EQ("1 of 2 samples above 250 \xC2\xB5sec|", page.Texts("p", "samples"));
  EXPECT_THAT(page.Texts("p"), HasSubstr("|7 \xC2\xB5sec|"));
  EXPECT_EQ("1 failed|p:1: a &quot;line&quot;|", page.Texts("li"));
}

TEST(ReportFile, TellsOfEachSeriesItsOwnVerdict) {
  const TemporaryFolder folder;
  std::ostringstream out;
  const Verdicts verdicts{Result("fast", Result::ePASSED, "good"), Result("fast", Result::eFAILED, "bad")};
  EXPECT_TRUE(ReportFile(folder.File("page")).Write(out, {Measured(), Measured()}, verdicts, {}));
  const ReadPage page(ReadFile(folder.File("page")));
  EXPECT_EQ("passed|failed|passed|failed|", page.Texts("span"));
  EXPECT_THAT(page.Texts("p"), AllOf(HasSubstr("|good|"), HasSubstr("|bad|")));
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
    const ReportFile file("/nowhere/\xB5");
    FAIL() << "it is";
  } catch (const Station::ReportImpossible& error) {
    EXPECT_STREQ("The report \"/nowhere/\\xB5\" can't be written: No such file or directory", error.what());
  }
}

TEST(ReportFile, CannotBeAFolder) {
  EXPECT_THROW(ReportFile(TemporaryFolder().Path()), Station::ReportImpossible);
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
