#include <Infrastructure/OxaCore/WrappingFileStreamIterator.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "Log/DailyFiles.h"
#include "Log/DailyFolder.h"

namespace {

using namespace Oxa::Core;
using LogTests::At;

// Keeps the names that it is given.
class Walker : public WrappingFileStreamIterator {
 public:
  // Walks, and gives the names, each without `folder` and the separator.
  std::vector<std::string> Walk(const std::string& folder) {
    m_names.clear();
    IterateFiles();
    for (std::string& name : m_names) {
      EXPECT_EQ(folder + '/', name.substr(0, folder.size() + 1));
      name.erase(0, folder.size() + 1);
    }
    return m_names;
  }

 protected:
  void NextFile(std::string fileName) override { m_names.push_back(fileName); }

 private:
  std::vector<std::string> m_names;
};

class WrappingFileStreamWalk : public LogTests::DailyFolder {
 protected:
  using List = std::vector<std::string>;

  // The files of a day: numbers 0 to `count` - 1, and the content of the sequence file.
  void PutDay(const std::string& day, int count, const std::string& sequence) const {
    for (int i = 0; i < count; ++i) Put(day + '-' + std::to_string(i) + ".log");
    Put(day + ".seq", sequence);
  }

  List WalkAll(const std::string& prefix = "Run") const {
    Walker walker;
    walker.Initialize(Path(), prefix);
    return walker.Walk(Path());
  }
  List WalkSpan(const Time& start, const Time& end) const {
    Walker walker;
    walker.Initialize(Path(), start, end, "Run");
    return walker.Walk(Path());
  }
};

TEST_F(WrappingFileStreamWalk, NewOneHasNoDaysAndIsOfNow) {
  const WrappingFileStreamIterator walker;
  EXPECT_FALSE(walker.FilesExist());
  EXPECT_EQ(2011, walker.GetRequestedStartTime().Year());
  EXPECT_EQ(walker.GetRequestedStartTime(), walker.GetRequestedEndTime());
  EXPECT_LT(Time() - walker.GetRequestedStartTime(), Elapse(1, Elapse::Hours));
  EXPECT_EQ(Time(1, 1, 1970, Elapse()), walker.GetActualStartTime());
  EXPECT_EQ(Time(1, 1, 1970, Elapse()), walker.GetActualEndTime());
}

TEST_F(WrappingFileStreamWalk, EmptyFolder) {
  Walker walker;
  walker.Initialize(Path(), "Run");
  EXPECT_FALSE(walker.FilesExist());
  EXPECT_EQ(List(), walker.Walk(Path()));
  walker.Initialize(Path(), At(3, 1, 0), At(3, 3, 0), "Run");
  EXPECT_FALSE(walker.FilesExist());
  EXPECT_EQ(List(), walker.Walk(Path()));
}

TEST_F(WrappingFileStreamWalk, FolderThatDoesNotExist) {
  Walker walker;
  walker.Initialize(m_folder.File("none"), "Run");
  EXPECT_FALSE(walker.FilesExist());
  walker.Initialize(m_folder.File("none"), At(3, 1, 0), At(3, 3, 0), "Run");
  EXPECT_FALSE(walker.FilesExist());
}

TEST_F(WrappingFileStreamWalk, AllDaysAreRequestedFrom1970To2037) {
  PutDay("Run2011_02_28", 1, "0");
  PutDay("Run2011_03_02", 1, "0");
  WrappingFileStreamIterator walker;
  walker.Initialize(Path(), "Run");
  EXPECT_TRUE(walker.FilesExist());
  EXPECT_EQ(Time(1, 1, 1970, Elapse()), walker.GetRequestedStartTime());
  EXPECT_EQ(Time(12, 31, 2037, Elapse()), walker.GetRequestedEndTime());
  EXPECT_EQ(At(2, 28, 0), walker.GetActualStartTime());
  EXPECT_EQ(At(3, 2, 0), walker.GetActualEndTime());
  walker.IterateFiles();  // by itself it does nothing with the names
}

TEST_F(WrappingFileStreamWalk, SpanHasTheDaysThatHaveASequenceFile) {
  PutDay("Run2011_02_28", 1, "0");
  PutDay("Run2011_03_01", 1, "0");
  PutDay("Run2011_03_03", 1, "0");
  PutDay("Run2011_03_04", 1, "0");
  Put("Run2011_03_02-0.log");
  Walker walker;
  walker.Initialize(Path(), At(3, 1, 0), At(3, 3, 0), "Run");
  EXPECT_TRUE(walker.FilesExist());
  EXPECT_EQ(At(3, 1, 0), walker.GetRequestedStartTime());
  EXPECT_EQ(At(3, 3, 0), walker.GetRequestedEndTime());
  EXPECT_EQ(At(3, 1, 0), walker.GetActualStartTime());
  EXPECT_EQ(At(3, 3, 0), walker.GetActualEndTime());
  EXPECT_EQ((List{"Run2011_03_01-0.log", "Run2011_03_03-0.log"}), walker.Walk(Path()));
}

TEST_F(WrappingFileStreamWalk, SpanGoesByTheTimeOfDayOfItsStart) {
  for (const char* const day : {"Run2011_03_01", "Run2011_03_02", "Run2011_03_03"}) PutDay(day, 1, "0");
  const List two = {"Run2011_03_01-0.log", "Run2011_03_02-0.log"};
  const List three = {"Run2011_03_01-0.log", "Run2011_03_02-0.log", "Run2011_03_03-0.log"};
  EXPECT_EQ(two, WalkSpan(At(3, 1, 10), At(3, 3, 9, 59)));
  EXPECT_EQ(three, WalkSpan(At(3, 1, 10), At(3, 3, 10)));
  EXPECT_EQ(List(), WalkSpan(At(3, 2, 10), At(3, 2, 9)));
  WrappingFileStreamIterator walker;
  walker.Initialize(Path(), At(3, 1, 10), At(3, 3, 10), "Run");
  EXPECT_EQ(At(3, 1, 10), walker.GetActualStartTime());
  EXPECT_EQ(At(3, 3, 10), walker.GetActualEndTime());
}

TEST_F(WrappingFileStreamWalk, SpanMissesNoDayWhereClocksAreChanged) {
  const TestSupport::Zones zones("EST5EDT,M3.2.0,M11.1.0");
  const List march = {"Run2011_03_12-0.log", "Run2011_03_13-0.log", "Run2011_03_14-0.log"};
  const List november = {"Run2011_11_05-0.log", "Run2011_11_06-0.log", "Run2011_11_07-0.log"};
  for (const char* const day :
       {"Run2011_03_12", "Run2011_03_13", "Run2011_03_14", "Run2011_11_05", "Run2011_11_06", "Run2011_11_07"})
    PutDay(day, 1, "0");
  EXPECT_EQ(march, WalkSpan(At(3, 12, 0), At(3, 14, 0)));
  EXPECT_EQ(march, WalkSpan(At(3, 12, 23, 30), At(3, 14, 23, 30)));
  EXPECT_EQ(november, WalkSpan(At(11, 5, 0), At(11, 7, 0)));
  EXPECT_EQ(november, WalkSpan(At(11, 5, 23, 30), At(11, 7, 23, 30)));
  EXPECT_EQ(List(november.begin() + 1, november.end()), WalkSpan(At(11, 6, 24, 30), At(11, 7, 23, 30)));
}

TEST_F(WrappingFileStreamWalk, SpanGoesOnAtMidnightBehindADayThatHasNone) {
  const TestSupport::Zones zones("<-04>4<-03>,M3.2.0/0,M11.1.0/0");
  const List march = {"Run2011_03_12-0.log", "Run2011_03_13-0.log", "Run2011_03_14-0.log"};
  for (const char* const day : {"Run2011_03_12", "Run2011_03_13", "Run2011_03_14"}) PutDay(day, 1, "0");
  ASSERT_EQ(1, At(3, 13, 0).Hour());
  EXPECT_EQ(march, WalkSpan(At(3, 12, 0), At(3, 14, 0)));
  EXPECT_EQ(march, WalkAll());
}

TEST_F(WrappingFileStreamWalk, SpanEndsWithTheCalendar) {
  EXPECT_EQ(List(), WalkSpan(Time(12, 30, 30827, Elapse()), Time(LLONG_MAX, Time::ePlatformTimeCurrent)));
}

TEST_F(WrappingFileStreamWalk, DayThatNeverWrappedBeginsAtZero) {
  PutDay("Run2011_03_01", 3, "2\n");
  EXPECT_EQ((List{"Run2011_03_01-0.log", "Run2011_03_01-1.log", "Run2011_03_01-2.log"}), WalkAll());
}

TEST_F(WrappingFileStreamWalk, DayThatWrappedBeginsBehindTheLastWritten) {
  PutDay("Run2011_03_01", 3, "0\n\n");
  EXPECT_EQ((List{"Run2011_03_01-1.log", "Run2011_03_01-2.log", "Run2011_03_01-0.log"}), WalkAll());
}

TEST_F(WrappingFileStreamWalk, NumbersAreCountedAndNotLookedFor) {
  Put("Run2011_03_01-7.log");
  Put("Run2011_03_01-9.log");
  Put("Run2011_03_01.seq", "9");
  EXPECT_EQ((List{"Run2011_03_01-0.log", "Run2011_03_01-1.log"}), WalkAll());
}

TEST_F(WrappingFileStreamWalk, LargeAndNegativeNumbers) {
  PutDay("Run2011_03_01", 3, "2147483647");
  EXPECT_EQ((List{"Run2011_03_01-2.log", "Run2011_03_01-0.log", "Run2011_03_01-1.log"}), WalkAll());
  Put("Run2011_03_01.seq", "-1");
  EXPECT_EQ((List{"Run2011_03_01-0.log", "Run2011_03_01-1.log", "Run2011_03_01-2.log"}), WalkAll());
  Put("Run2011_03_01.seq", "-3");
  EXPECT_EQ((List{"Run2011_03_01--2.log", "Run2011_03_01--1.log", "Run2011_03_01-0.log"}), WalkAll());
}

TEST_F(WrappingFileStreamWalk, SequenceFileThatHoldsNoNumberLeavesTheOneBefore) {
  const char* const unreadable[] = {"", "garbage", "99999999999999999999"};
  for (const char* const content : unreadable) {
    PutDay("Run2011_03_01", 2, content);
    PutDay("Run2011_03_02", 3, "1");
    PutDay("Run2011_03_03", 3, content);
    EXPECT_EQ(
        (List{"Run2011_03_01-1.log", "Run2011_03_01-0.log", "Run2011_03_02-2.log", "Run2011_03_02-0.log",
              "Run2011_03_02-1.log", "Run2011_03_03-2.log", "Run2011_03_03-0.log", "Run2011_03_03-1.log"}),
        WalkAll())
        << content;
  }
}

TEST_F(WrappingFileStreamWalk, DayWithoutLogFilesGivesNothing) {
  PutDay("Run2011_03_01", 0, "2");
  EXPECT_EQ(List(), WalkAll());
}

TEST_F(WrappingFileStreamWalk, DaysComeInOrderOfTime) {
  for (const char* const day :
       {"Run2010_12_31", "Run2011_2_9", "Run2011_10_01", "Run2009_03_03", "Run10000_01_01", "Run2011_02_10"})
    PutDay(day, 1, "0");
  Put("Run2011_02_09-0.log");
  EXPECT_EQ((List{"Run2009_03_03-0.log", "Run2010_12_31-0.log", "Run2011_02_09-0.log", "Run2011_02_10-0.log",
                  "Run2011_10_01-0.log", "Run10000_01_01-0.log"}),
            WalkAll());
}

TEST_F(WrappingFileStreamWalk, OnlySequenceFilesOfThePrefixCount) {
  for (const char* const day :
       {"Run2011_03_01", "2011_03_02", "Run_2011_03_03", "Rum2011_03_04", "xRun2011_03_05"})
    PutDay(day, 1, "0");
  for (const char* const name : {"Runa_b_c.seq", "Run2011_13_01.seq", "Run2011_02_29.seq", "Run2011_3.seq",
                                 "Run2011_03_06.seq.old", "Run_2011_03.seq"})
    Put(name);
  EXPECT_EQ(List{"Run2011_03_01-0.log"}, WalkAll());
  EXPECT_EQ(List{"2011_03_02-0.log"}, WalkAll(""));
  EXPECT_EQ(List{"Run_2011_03_03-0.log"}, WalkAll("Run_"));
}

TEST_F(WrappingFileStreamWalk, PatternsInThePrefixStandForThemselves) {
  PutDay("Run2011_03_01", 1, "0");
  EXPECT_EQ(List(), WalkAll("*"));
  EXPECT_EQ(List(), WalkAll("R?n"));
  EXPECT_EQ(List(), WalkAll("%*3c"));
  PutDay("R?n2011_03_02", 1, "0");
  EXPECT_EQ(List{"R?n2011_03_02-0.log"}, WalkAll("R?n"));
  PutDay("%d2011_03_03", 1, "0");
  EXPECT_EQ(List{"%d2011_03_03-0.log"}, WalkAll("%d"));
  PutDay("Run2011_03_02", 3, "2");
  EXPECT_EQ(List{"R?n2011_03_02-0.log"}, WalkAll("R?n"));
}

TEST_F(WrappingFileStreamWalk, FolderMayEndInASeparator) {
  PutDay("Run2011_03_01", 2, "0");
  const std::string folder = Path() + '/';
  Walker walker;
  walker.Initialize(folder, "Run");
  EXPECT_EQ((List{"Run2011_03_01-1.log", "Run2011_03_01-0.log"}), walker.Walk(folder));
  walker.Initialize(folder, At(3, 1, 0), At(3, 1, 0), "Run");
  EXPECT_EQ((List{"Run2011_03_01-1.log", "Run2011_03_01-0.log"}), walker.Walk(folder));
}

TEST_F(WrappingFileStreamWalk, InitializeBeginsAnew) {
  PutDay("Run2011_03_01", 1, "0");
  PutDay("Else2011_03_02", 1, "0");
  Walker walker;
  walker.Initialize(Path(), "Run");
  walker.Initialize(Path(), "Else");
  EXPECT_EQ(List{"Else2011_03_02-0.log"}, walker.Walk(Path()));
  walker.Initialize(Path(), At(3, 1, 0), At(3, 2, 0), "Run");
  EXPECT_EQ(List{"Run2011_03_01-0.log"}, walker.Walk(Path()));
  walker.Initialize(Path(), At(3, 1, 0), At(3, 2, 0), "None");
  EXPECT_FALSE(walker.FilesExist());
}

TEST_F(WrappingFileStreamWalk, CopiesHaveAll) {
  PutDay("Run2011_03_01", 1, "0");
  Walker walker;
  walker.Initialize(Path(), At(3, 1, 5), At(3, 2, 0), "Run");
  Walker copy(walker);
  Walker assigned;
  assigned = walker;
  walker.Initialize(Path(), "None");
  for (Walker* const each : {&copy, &assigned}) {
    EXPECT_EQ(At(3, 1, 5), each->GetRequestedStartTime());
    EXPECT_EQ(At(3, 2, 0), each->GetRequestedEndTime());
    EXPECT_EQ(List{"Run2011_03_01-0.log"}, each->Walk(Path()));
  }
}

TEST_F(WrappingFileStreamWalk, BackslashesSeparateFolders) {
  PutDay("Run2011_03_01", 2, "0");
  const TestSupport::CurrentFolder current(Path() + "/..");
  const std::string folder = ".\\" + Path().substr(Path().rfind('/') + 1);
  Walker walker;
  walker.Initialize(folder, "Run");
  EXPECT_EQ((List{"Run2011_03_01-1.log", "Run2011_03_01-0.log"}), walker.Walk(folder));
  walker.Initialize(folder, At(3, 1, 0), At(3, 1, 0), "Run");
  EXPECT_EQ((List{"Run2011_03_01-1.log", "Run2011_03_01-0.log"}), walker.Walk(folder));
}

TEST_F(WrappingFileStreamWalk, WhatAStreamWroteIsReadInOrder) {
  WrappingFileStream stream;
  Begin(stream, 3, 0);
  for (const char* const text : {"a", "b", "c", "d", "e"}) stream.Write(text);
  m_clock.Set(At(3, 4, 1));
  for (const char* const text : {"f", "g"}) stream.Write(text);
  std::string read;
  for (const std::string& name : WalkAll()) read += Read(name);
  EXPECT_EQ("cdefg", read);
}

TEST(DailyFiles, ADayLaterIsSoToTheTick) {
  constexpr long long iDAY = 864000000000;
  const long long noon = Time(6, 15, 2020, Elapse(12, Elapse::Hours)).GetRawTimerTicks();
  Time later;
  ASSERT_TRUE(DaysLater(Time(noon + 1234567, Time::ePlatformTimeCurrent), 3, later));
  EXPECT_EQ(noon + 1234567 + 3 * iDAY, later.GetRawTimerTicks());
}

}  // namespace
