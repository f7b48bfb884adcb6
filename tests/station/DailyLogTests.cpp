#include "DailyLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "Days.h"
#include "FakeClock.h"
#include "Station.h"
#include "TemporaryFolder.h"
#include "Witness.h"

namespace {

using Oxa::Core::Time;
using Oxa::Core::WrappingFileStream;
using Station::DailyLog;
using Station::iALL_MEASURED;
using Station::iCANNOT_START;
using Station::iINCOMPLETE;
using Station::Measurement;
using Station::ShowDays;
using StationTests::Elapse;
using StationTests::Micro;
using StationTests::ReadFile;
using StationTests::TemporaryFolder;
using StationTests::Witness;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

#define MOMENT "[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}"

std::string Today() {
  const std::string moment = Time().ToString();
  std::string day = moment.substr(0, 10);
  std::replace(day.begin(), day.end(), '/', '_');
  return "Station" + day;
}

std::string AllFiles(const std::string& folder) {
  std::string text;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    if (file.path().extension() == ".log") text += ReadFile(file.path().string());
  }
  return text;
}

TEST(DailyLog, HasALinePerEvent) {
  const TemporaryFolder folder;
  Measurement measurement;
  measurement.m_series = {"a", Micro(1000), 3, Micro(5), 1};
  DailyLog daily(folder.File("new/days"));
  daily.TellResult(measurement);
  daily.TellLate({0, 2, Elapse(51, Elapse::TimerTicks)}, measurement.m_series);
  measurement.m_latenesses = {Micro(1), Micro(2)};
  measurement.m_ulLate = 1;
  measurement.m_statistics = {Micro(1), Micro(2), Micro(3), Micro(4)};
  daily.TellResult(measurement);
  daily.Tell("two\nlines\t\xE9");
  daily.CheckMidnight();
  EXPECT_EQ("", daily.GetFailure());
  EXPECT_THAT(
      AllFiles(folder.File("new/days")),
      MatchesRegex(MOMENT "\ta: 0 of 3 samples taken, 0 of them too late\n" MOMENT
                          "\ta: sample 2 came 5.1 microseconds late\n" MOMENT
                          "\ta: 2 of 3 samples taken, 1 of them too late, 2.0 microseconds at the median "
                          "and 4.0 at most\n" MOMENT "\ttwo\\\\x0Alines\\\\x09\\\\xE9\n"));
}

TEST(DailyLog, GoesOnInTheFileOfTheDay) {
  const TemporaryFolder folder;
  DailyLog(folder.Path()).Tell("one");
  DailyLog(folder.Path()).Tell("two");
  const std::string text = AllFiles(folder.Path());
  EXPECT_THAT(text, HasSubstr("\tone\n"));
  EXPECT_THAT(text, HasSubstr("\ttwo\n"));
}

TEST(DailyLog, RaisesWhatIsWrongWithAFolder) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "");
  EXPECT_THROW(DailyLog{file}, WrappingFileStream::Error_FolderDoesNotExist);
  EXPECT_THROW(DailyLog{file + "/below"}, WrappingFileStream::Error_FolderDoesNotExist);
}

TEST(DailyLog, GoesOnWithoutItsFilesAndSaysSo) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const TemporaryFolder folder;
  std::filesystem::create_symlink("/dev/full", folder.File(Today() + "-0.log"));
  Witness witness;
  DailyLog daily(folder.Path());
  daily.Tell("one");
  EXPECT_THAT(daily.GetFailure(), testing::StartsWith("Failed writing wrapping stream file <"));
  daily.Tell("two");
  daily.CheckMidnight();
  EXPECT_THAT(witness.m_raised, ElementsAre(daily.GetFailure()));
  EXPECT_THAT(witness.m_logNames, ElementsAre("OxaCore.WrappingFileStream"));
}

// A file and its day, as DailyLog would have made them.
void WriteDay(const TemporaryFolder& folder, const std::string& day, int file, const std::string& text) {
  folder.Write("Station" + day + "-" + std::to_string(file) + ".log", text);
  folder.Write("Station" + day + ".seq", std::to_string(file));
}

TEST(Days, ShowsTheFilesFromTheOldestToTheNewest) {
  const TemporaryFolder folder;
  WriteDay(folder, "2026_01_02", 0, "2026/01/02 00:00:01.000\tx\n");
  WriteDay(folder, "2025_12_31", 1, "2025/12/31 10:00:00.000\tx\n2025/12/31 23:59:59.999\ty\n");
  WriteDay(folder, "2025_12_31", 0, "2025/12/31 23:59:59.999\tturned\n");
  folder.Write("Other2025_12_31.seq", "0");
  folder.Write("Other2025_12_31-0.log", "x\n");
  std::ostringstream out;
  EXPECT_EQ(iALL_MEASURED, ShowDays(out, folder.Path()));
  EXPECT_EQ(
      "\n"
      "daily log                  entries  from, to\n"
      "Station2025_12_31-1.log          2  2025/12/31 10:00:00.000  2025/12/31 23:59:59.999\n"
      "Station2025_12_31-0.log          1  2025/12/31 23:59:59.999  2025/12/31 23:59:59.999\n"
      "Station2026_01_02-0.log          1  2026/01/02 00:00:01.000  2026/01/02 00:00:01.000\n\n",
      out.str());
}

TEST(Days, ShowsEmptyAndForeignFiles) {
  const TemporaryFolder folder;
  WriteDay(folder, "2026_01_02", 0, "");
  WriteDay(folder, "2026_01_03", 0, std::string(100, '\x1B'));
  std::ostringstream out;
  EXPECT_EQ(iALL_MEASURED, ShowDays(out, folder.Path() + '/'));
  std::string escapes;
  for (int i = 0; i < 23; ++i) escapes += "\\x1B";
  EXPECT_EQ(
      "\ndaily log                  entries  from, to\n"
      "Station2026_01_02-0.log          0    \n"
      "Station2026_01_03-0.log          1  " +
          escapes + "  " + escapes + "\n\n",
      out.str());
}

TEST(Days, ShowsWhatADailyLogWrote) {
  const TemporaryFolder folder;
  DailyLog(folder.Path()).Tell("one");
  std::ostringstream out;
  EXPECT_EQ(iALL_MEASURED, ShowDays(out, folder.Path()));
  EXPECT_THAT(out.str(), testing::ContainsRegex("\nStation[0-9_]+-0\\.log +1  " MOMENT "  " MOMENT "\n"));
}

TEST(Days, SaysWhenThereIsNothingToShow) {
  const TemporaryFolder folder;
  std::ostringstream out;
  testing::internal::CaptureStderr();
  EXPECT_EQ(iINCOMPLETE, ShowDays(out, folder.Path()));
  EXPECT_EQ(iCANNOT_START, ShowDays(out, folder.File("missing")));
  EXPECT_EQ(iCANNOT_START, ShowDays(out, folder.Write("file", "")));
  EXPECT_EQ("station: The folder \"" + folder.Path() + "\" holds no daily log\n" + "station: The folder \"" +
                folder.File("missing") + "\" isn't there\n" + "station: The folder \"" + folder.File("file") +
                "\" isn't there\n",
            testing::internal::GetCapturedStderr());
  EXPECT_EQ("", out.str());
}

}  // namespace
