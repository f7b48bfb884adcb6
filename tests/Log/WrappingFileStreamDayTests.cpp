// Midnights, missed ones, days of 23 and 25 hours, and which files grow too old.
#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Log/DailyFolder.h"

namespace {

using namespace Oxa::Core;
using LogTests::At;
using LogTests::iNO_LIMIT;

class WrappingFileStreamMidnight : public LogTests::DailyFolder {};

TEST_F(WrappingFileStreamMidnight, FirstWriteBehindItBeginsTheNewDay) {
  WrappingFileStream stream;
  Begin(stream, 3, 0);
  stream.Write("a");
  stream.Write("b");
  m_clock.Set(At(3, 3, 23, 59) + Elapse(50));
  stream.MidnightCheck();
  EXPECT_EQ(3U, All().size());
  m_clock.Set(At(3, 4, 0) + Elapse(1));
  stream.Write("c");
  EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03-1.log", "Run2011_03_03.seq", "Run2011_03_04-0.log",
                   "Run2011_03_04.seq"}),
            All());
  EXPECT_EQ("b", Read("Run2011_03_03-1.log"));
  EXPECT_EQ("1\n", Read("Run2011_03_03.seq"));
  EXPECT_EQ("c", Read("Run2011_03_04-0.log"));
  EXPECT_EQ("0\n", Read("Run2011_03_04.seq"));
  stream.Write("d");
  EXPECT_EQ("d", Read("Run2011_03_04-1.log"));
}

TEST_F(WrappingFileStreamMidnight, CheckByATimerBeginsTheDayWithoutAText) {
  WrappingFileStream stream;
  Begin(stream);
  for (int day = 4; day < 8; ++day) {
    m_clock.Set(At(3, day, 0) + Elapse(1));
    stream.MidnightCheck();
    stream.MidnightCheck();
    EXPECT_EQ(2U * static_cast<unsigned>(day - 2), All().size());
  }
  EXPECT_EQ("", Read("Run2011_03_07-0.log"));
}

TEST_F(WrappingFileStreamMidnight, NewDayEmptiesItsNumberZeroWhateverWasThere) {
  Put("Run2011_03_04-0.log", "of an earlier run");
  Put("Run2011_03_04-1.log", "another");
  Put("Run2011_03_04.seq", "1\n");
  WrappingFileStream stream;
  Begin(stream);
  m_clock.Set(At(3, 4, 8));
  stream.Write("new");
  EXPECT_EQ("new", Read("Run2011_03_04-0.log"));
  EXPECT_EQ("another", Read("Run2011_03_04-1.log"));
  EXPECT_EQ("0\n", Read("Run2011_03_04.seq"));
}

// There is one step for both, to the day that it is now; the second one follows with the next check.
TEST_F(WrappingFileStreamMidnight, TwoMissedOnesAreCaughtUpOneByOne) {
  WrappingFileStream stream;
  Begin(stream);
  stream.Write("third");
  m_clock.Set(At(3, 5, 12));
  stream.Write("first of the fifth");
  EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03.seq", "Run2011_03_05-0.log", "Run2011_03_05.seq"}),
            All());
  EXPECT_EQ("first of the fifth", Read("Run2011_03_05-0.log"));
  stream.Write("second");
  EXPECT_EQ("second", Read("Run2011_03_05-0.log"));
  stream.Write(" third");
  EXPECT_EQ("second third", Read("Run2011_03_05-0.log"));
  m_clock.Set(At(3, 5, 23, 59));
  stream.Write(" fourth");
  EXPECT_EQ("second third fourth", Read("Run2011_03_05-0.log"));
  m_clock.Set(At(3, 6, 0, 1));
  stream.Write("sixth");
  EXPECT_EQ("sixth", Read("Run2011_03_06-0.log"));
}

TEST_F(WrappingFileStreamMidnight, ClockThatIsSetBackChangesNothing) {
  WrappingFileStream stream;
  Begin(stream);
  m_clock.Set(At(3, 1, 12));
  stream.Write("text");
  EXPECT_EQ("text", Read("Run2011_03_03-0.log"));
  EXPECT_EQ(2U, All().size());
}

TEST_F(WrappingFileStreamMidnight, IsTheLocalOne) {
  const TestSupport::Zones zones("<+09>-9");
  m_clock.Set(At(3, 3, 23, 50));
  WrappingFileStream stream;
  Begin(stream);
  m_clock.Set(At(3, 4, 0, 1));
  stream.Write("text");
  EXPECT_EQ("text", Read("Run2011_03_04-0.log"));
}

const char* const g_pNEW_YORK = "EST5EDT,M3.2.0,M11.1.0";

TEST_F(WrappingFileStreamMidnight, ComesAnHourLateBehindADayOf23Hours) {
  const TestSupport::Zones zones(g_pNEW_YORK);
  m_clock.Set(At(3, 13, 0, 30));
  WrappingFileStream stream;
  Begin(stream);
  m_clock.Set(At(3, 14, 0, 58));
  stream.Write("still the thirteenth");
  EXPECT_EQ("still the thirteenth", Read("Run2011_03_13-0.log"));
  m_clock.Set(At(3, 14, 1, 1));
  stream.Write("fourteenth");
  EXPECT_EQ("fourteenth", Read("Run2011_03_14-0.log"));
}

TEST_F(WrappingFileStreamMidnight, ComesAnHourEarlyOnADayOf25HoursAndEmptiesItsFirstFile) {
  const TestSupport::Zones zones(g_pNEW_YORK);
  m_clock.Set(At(11, 6, 0, 30));
  WrappingFileStream stream;
  Begin(stream);
  stream.Write("early");
  m_clock.Set(At(11, 6, 23, 58));
  stream.Write(" before the step");
  EXPECT_EQ("early before the step", Read("Run2011_11_06-0.log"));
  m_clock.Set(At(11, 6, 24, 1));
  ASSERT_EQ(23, Time().Hour());
  stream.Write("behind the step");
  EXPECT_EQ("behind the step", Read("Run2011_11_06-0.log"));
}

TEST_F(WrappingFileStreamMidnight, InitializeOnALaterDaySetsItRight) {
  const TestSupport::Zones zones(g_pNEW_YORK);
  m_clock.Set(At(11, 6, 0, 30));
  WrappingFileStream stream;
  Begin(stream);
  m_clock.Set(At(11, 6, 24, 30));
  stream.Write("sixth, ");
  m_clock.Set(At(11, 7, 12));
  stream.Write("by name");
  EXPECT_EQ("sixth, by name", Read("Run2011_11_06-0.log"));
  Begin(stream);
  m_clock.Set(At(11, 7, 23, 58));
  stream.Write("seventh");
  EXPECT_EQ("seventh", Read("Run2011_11_07-0.log"));
  m_clock.Set(At(11, 8, 0, 1));
  stream.Write("eighth");
  EXPECT_EQ("eighth", Read("Run2011_11_08-0.log"));
}

class WrappingFileStreamAge : public LogTests::DailyFolder {
 protected:
  // The first call never deletes.
  void BeginTwice(int maxAgeDays, int maxFilesPerDay = iNO_LIMIT) {
    BeginPruning(m_stream, maxAgeDays, maxFilesPerDay);
    BeginPruning(m_stream, maxAgeDays, maxFilesPerDay);
  }

  // What there is besides the two files of today.
  Names Others() const {
    Names names = All();
    EXPECT_EQ(1U, names.erase("2011_03_03-0.log"));
    EXPECT_EQ(1U, names.erase("2011_03_03.seq"));
    return names;
  }

  WrappingFileStream m_stream;
};

TEST_F(WrappingFileStreamAge, FilesOfTheAgeAreDeletedAndYoungerOnesKept) {
  const Names kept = {"2011_02_25-0.log", "2011_02_25-7.log", "2011_02_25.seq", "2011_03_02-0.log",
                      "2011_03_02.seq"};
  for (const std::string& name : kept) Put(name);
  for (const char* const name : {"2011_02_24-0.log", "2011_02_24-7.log", "2011_02_24.seq", "2010_03_03-0.log",
                                 "2010_01_01.seq", "2011_1_1-0.log"})
    Put(name);
  BeginPruning(m_stream, 7);
  EXPECT_EQ(11U, Others().size());
  BeginPruning(m_stream, 7);
  EXPECT_EQ(kept, Others());
}

TEST_F(WrappingFileStreamAge, MidnightDeletesToo) {
  Put("2011_02_25-0.log");
  Put("2011_02_26-0.log");
  BeginPruning(m_stream, 7);
  EXPECT_EQ((Names{"2011_02_25-0.log", "2011_02_26-0.log"}), Others());
  m_clock.Set(At(3, 4, 0) + Elapse(1));
  m_stream.MidnightCheck();
  EXPECT_EQ((Names{"2011_02_26-0.log", "2011_03_04-0.log", "2011_03_04.seq"}), Others());
}

TEST_F(WrappingFileStreamAge, YesterdayGoesIfOneDayIsTheAge) {
  BeginPruning(m_stream, 1);
  m_clock.Set(At(3, 4, 0) + Elapse(1));
  m_stream.Write("text");
  EXPECT_EQ((Names{"2011_03_04-0.log", "2011_03_04.seq"}), All());
  EXPECT_EQ("text", Read("2011_03_04-0.log"));
}

TEST_F(WrappingFileStreamAge, FilesFromBeforeTheStartOfLastYearAreNeverLookedAt) {
  Put("2009_12_31-0.log");
  Put("2009_12_31.seq");
  Put("2010_12_31-0.log");
  BeginTwice(7);
  EXPECT_EQ((Names{"2009_12_31-0.log", "2009_12_31.seq"}), Others());
}

TEST_F(WrappingFileStreamAge, WithoutAnAgeAllIsKept) {
  Put("2010_02_01-0.log");
  Put("2011_02_01-9.log");
  BeginTwice(iNO_LIMIT, 3);
  EXPECT_EQ((Names{"2010_02_01-0.log", "2011_02_01-9.log"}), Others());
}

TEST_F(WrappingFileStreamAge, NumbersBeyondTheLastAreDeletedWhateverTheirAge) {
  for (const char* const name :
       {"2011_03_02-2.log", "2011_03_02-3.log", "2011_03_03-2.log", "2011_03_03-3.log", "2011_03_02.seq"})
    Put(name);
  BeginTwice(7, 3);
  EXPECT_EQ((Names{"2011_03_02-2.log", "2011_03_02.seq", "2011_03_03-2.log"}), Others());
}

TEST_F(WrappingFileStreamAge, OnlyNamesOfDailyFilesCount) {
  const Names kept = {"2010_report.log",
                      "2010_13_01-1.log",
                      "2010_02_30.seq",
                      "2010_02_01-0.txt",
                      "x2010_02_01-0.log",
                      "2010_12.seq",
                      "2010_99999999999999999999_1-1.log"};
  for (const std::string& name : kept) Put(name);
  Put("2010_02_01.log");      // no number: read as a sequence file
  Put("2010_02_01-old.log");  // the same
  BeginTwice(7);
  EXPECT_EQ(kept, Others());
}

TEST_F(WrappingFileStreamAge, FilesOfTheFutureAreKept) {
  Put("2011_12_31-0.log");
  BeginTwice(7);
  EXPECT_EQ(Names{"2011_12_31-0.log"}, Others());
}

TEST_F(WrappingFileStreamAge, PrefixStopsAllDeleting) {
  Put("Run2010_02_01-0.log");
  Put("Run2010_02_01.seq");
  for (int i = 0; i < 2; ++i) m_stream.Initialize(Path(), 7, 3, iNO_LIMIT, "Run");
  EXPECT_EQ(4U, All().size());
}

TEST_F(WrappingFileStreamAge, PrefixThatIsAPatternDeletesNothingOfOthers) {
  const Names others = {"2010_02_01-0.log", "2010_02_01.seq", "2011_03_02-9.log", "02010_02_01-0.log"};
  for (const std::string& name : others) Put(name);
  for (const char* const prefix : {"*", "?"}) {
    WrappingFileStream stream;
    for (int i = 0; i < 2; ++i) stream.Initialize(Path(), 7, 3, iNO_LIMIT, prefix);
  }
  for (const std::string& name : others) EXPECT_TRUE(m_folder.Has(name)) << name;
}

TEST_F(WrappingFileStreamAge, FirstInitializeBehindAFailureDeletesNothing) {
  Put("2011_02_01-0.log");
  BeginPruning(m_stream, iNO_LIMIT);
  EXPECT_THROW(m_stream.Initialize(m_folder.File("none"), 7, 3, iNO_LIMIT, ""),
               WrappingFileStream::Error_FolderDoesNotExist);
  BeginPruning(m_stream, 7);
  EXPECT_EQ(Names{"2011_02_01-0.log"}, Others());
  BeginPruning(m_stream, 7);
  EXPECT_EQ(Names{}, Others());
}

// Numbers are read as scanf reads them.
TEST_F(WrappingFileStreamAge, PrefixOfBlanksStopsNothing) {
  Put(" 2010_02_01-0.log");
  for (int i = 0; i < 2; ++i) m_stream.Initialize(Path(), 7, 3, iNO_LIMIT, " ");
  EXPECT_EQ((Names{" 2011_03_03-0.log", " 2011_03_03.seq"}), All());
}

TEST_F(WrappingFileStreamAge, AgeOfZeroLeavesTheFilesInUse) {
  Put("2011_03_03-1.log");
  BeginTwice(0);
  EXPECT_EQ(Names{}, Others());
  m_stream.Write("text");
  EXPECT_EQ("text", Read("2011_03_03-0.log"));
}

TEST_F(WrappingFileStreamAge, WhatCannotBeDeletedIsLoggedAndPassedOver) {
  std::filesystem::create_directory(m_folder.File("2011_02_01-0.log"));
  Put("2011_02_02-0.log");
  BeginTwice(7);
  EXPECT_EQ(Names{"2011_02_01-0.log"}, Others());
  EXPECT_EQ(std::vector<std::string>{"Error deleting file <2011_02_01-0.log>"}, Alarms());
  m_stream.Write("text");
  EXPECT_EQ("text", Read("2011_03_03-0.log"));
}

// The day of 23 hours makes the file of a week ago an hour too young.
TEST_F(WrappingFileStreamAge, IsMeasuredInHours) {
  const TestSupport::Zones zones(g_pNEW_YORK);
  m_clock.Set(At(3, 15, 12));
  Put("2011_03_08-0.log");
  Put("2011_03_07-0.log");
  BeginTwice(7);
  EXPECT_TRUE(m_folder.Has("2011_03_08-0.log"));
  EXPECT_FALSE(m_folder.Has("2011_03_07-0.log"));
}

}  // namespace
