#include "Platform/Linux/ZoneRule.h"

#include <gtest/gtest.h>

#include <string>

#include "ZoneSupport.h"

namespace {

using namespace Oxa::Core::Platform;
using namespace ZoneTests;

ZoneRule Rule(const std::string& text) {
  ZoneRule rule = ZoneRule();
  EXPECT_TRUE(ParseZoneRule(text.data(), text.size(), rule)) << text;
  return rule;
}

int OffsetAt(const ZoneRule& rule, long long seconds) { return SegmentAt(rule, seconds).m_iOffset; }

TEST(ZoneRule, WhatIsNoRule) {
  for (const char* text : {"",
                           "E",
                           "ES5",
                           "EST",
                           "5",
                           "EST25",
                           "EST5:60",
                           "EST5:00:60",
                           "EST5 ",
                           "EST5E",
                           "EST5EDT,",
                           "EST5EDT,M3.2.0",
                           "EST5EDT,M3.2.0,",
                           "EST5EDT,M13.2.0,M11.1.0",
                           "EST5EDT,M0.2.0,M11.1.0",
                           "EST5EDT,M3.0.0,M11.1.0",
                           "EST5EDT,M3.6.0,M11.1.0",
                           "EST5EDT,M3.2.7,M11.1.0",
                           "EST5EDT,J0,J1",
                           "EST5EDT,J1,J366",
                           "EST5EDT,0,366",
                           "EST5EDT,M3.2.0/168,M11.1.0",
                           "EST5EDT,M3.2.0,M11.1.0x",
                           "<EST5",
                           "<E>5",
                           "E-T5",
                           "EST--5",
                           "EST99999999999999999999"}) {
    ZoneRule rule = ZoneRule();
    rule.m_iStandardOffset = 42;
    EXPECT_FALSE(ParseZoneRule(text, std::string(text).size(), rule)) << text;
    EXPECT_EQ(42, rule.m_iStandardOffset);
  }
}

TEST(ZoneRule, Offsets) {
  EXPECT_EQ(-18000, Rule("EST5").m_iStandardOffset);
  EXPECT_EQ(-18000, Rule("EST+5").m_iStandardOffset);
  EXPECT_EQ(19800, Rule("<+0530>-5:30").m_iStandardOffset);
  EXPECT_EQ(-(24 * 3600 + 59 * 60 + 59), Rule("ABC24:59:59").m_iStandardOffset);
  EXPECT_FALSE(Rule("EST5").m_bDaylight);
  EXPECT_EQ(-14400, Rule("EST5EDT").m_iDaylightOffset);
  EXPECT_EQ(-12600, Rule("EST5EDT3:30,M3.2.0,M11.1.0").m_iDaylightOffset);
}

TEST(ZoneRule, WithoutDatesItIsTheSecondSundayOfMarchToTheFirstOfNovember) {
  for (const char* const text : {"EST5EDT,M3.2.0,M11.1.0", "EST5EDT"}) {
    SCOPED_TRACE(text);
    const ZoneRule rule = Rule(text);
    EXPECT_EQ(-18000, OffsetAt(rule, Seconds(2024, 3, 10, 6, 59, 59)));
    EXPECT_EQ(-14400, OffsetAt(rule, Seconds(2024, 3, 10, 7, 0, 0)));
    EXPECT_EQ(-14400, OffsetAt(rule, Seconds(2024, 11, 3, 5, 59, 59)));
    EXPECT_EQ(-18000, OffsetAt(rule, Seconds(2024, 11, 3, 6, 0, 0)));
  }
}

TEST(ZoneRule, DaysOfTheYear) {
  const ZoneRule julian = Rule("AAA0BBB,J60/0,J61/1");  // 1 March and 2 March of every year
  for (const int year : {2023, 2024}) {
    EXPECT_EQ(0, OffsetAt(julian, Seconds(year, 2, 28, 23, 59, 59)));
    EXPECT_EQ(0, OffsetAt(julian, Seconds(year, 3, 1, 0, 0, 0) - 1));
    EXPECT_EQ(3600, OffsetAt(julian, Seconds(year, 3, 1, 0, 0, 0)));
    EXPECT_EQ(0, OffsetAt(julian, Seconds(year, 3, 2, 0, 0, 0)));
  }
  const ZoneRule counted = Rule("AAA0BBB,59/0,60/1");
  EXPECT_EQ(3600, OffsetAt(counted, Seconds(2024, 2, 29, 0, 0, 0)));
  EXPECT_EQ(0, OffsetAt(counted, Seconds(2024, 3, 1, 0, 0, 0)));
  EXPECT_EQ(3600, OffsetAt(counted, Seconds(2023, 3, 1, 0, 0, 0)));
}

TEST(ZoneRule, SouthernSummerSpansTheNewYear) {
  const ZoneRule rule = Rule("NZST-12NZDT,M9.5.0,M4.1.0/3");
  EXPECT_EQ(13 * 3600, OffsetAt(rule, Seconds(2023, 12, 31, 23, 59, 59)));
  EXPECT_EQ(13 * 3600, OffsetAt(rule, Seconds(2024, 1, 1)));
  EXPECT_EQ(12 * 3600, OffsetAt(rule, Seconds(2024, 7, 1)));
}

TEST(ZoneRule, DaylightTimeAllYear) {
  const ZoneRule rule = Rule("XXX3EDT4,0/0,J365/23");
  for (int month = 1; month <= 12; ++month) EXPECT_EQ(-4 * 3600, OffsetAt(rule, Seconds(2024, month, 1)));
  EXPECT_EQ(-4 * 3600, OffsetAt(rule, Seconds(2025, 1, 1, 4, 0, 0)));
  EXPECT_EQ(-4 * 3600, OffsetAt(rule, Seconds(2025, 1, 1, 3, 59, 59)));
  EXPECT_EQ(-4 * 3600, OffsetAt(rule, Seconds(2025, 1, 1, 2, 59, 59)));
  EXPECT_EQ(-4 * 3600, OffsetAt(rule, Seconds(2025, 1, 1, 3, 0, 0)))
      << "where one year's end meets the start";
}

TEST(ZoneRule, DaylightTimeThatEndsAsItStartsIsNone) {
  const ZoneRule rule = Rule("AAA0BBB,J100/2,J100/3");
  for (int year = 2023; year <= 2025; ++year) {
    for (int month = 1; month <= 12; ++month) EXPECT_EQ(0, OffsetAt(rule, Seconds(year, month, 1)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 4, 10, 1, 59, 59)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 4, 10, 2, 0, 0)));
  }
}

TEST(ZoneRule, AWholeYearMayStartInTheYearBefore) {
  const ZoneRule rule = Rule("AAA0BBB,J1/-167,J2/-167");
  for (int year = 2020; year <= 2029; ++year) {
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 12, 25, 0, 59, 59)));
    EXPECT_EQ(3600, OffsetAt(rule, Seconds(year, 12, 25, 1, 0, 0)));
    EXPECT_EQ(3600, OffsetAt(rule, Seconds(year, 12, 25, 23, 59, 59)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 12, 26, 0, 0, 0)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 1, 1)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 12, 31)));
  }
}

TEST(ZoneRule, AWholeYearMayStartInTheYearBehind) {
  const ZoneRule rule = Rule("AAA0BBB,J364/167,J365/167");
  for (int year = 2020; year <= 2029; ++year) {
    for (int day = 1; day <= 5; ++day) EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 1, day)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 1, 5, 22, 59, 59)));
    EXPECT_EQ(3600, OffsetAt(rule, Seconds(year, 1, 5, 23, 0, 0)));
    EXPECT_EQ(3600, OffsetAt(rule, Seconds(year, 1, 6, 21, 59, 59)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 1, 6, 22, 0, 0)));
    EXPECT_EQ(0, OffsetAt(rule, Seconds(year, 12, 31)));
  }
}

TEST(ZoneRule, AStretchHoldsTheMomentThatItWasAskedFor) {
  for (const char* text : {"EST5EDT,M3.2.0,M11.1.0", "NZST-12NZDT,M9.5.0,M4.1.0/3", "XXX3EDT4,0/0,J365/23",
                           "AAA0BBB,J1/-167,J2/-167", "AAA0BBB,J364/167,J365/167", "AAA0BBB,J100/2,J100/3",
                           "AAA0BBB,J1/-167,J365/167", "AAA0BBB,J365/167,J1/-167",
                           "AAA24BBB,J1/-167,J365/167", "AAA-24BBB-24:59:59,365/167,0/-167"}) {
    const ZoneRule rule = Rule(text);
    long long end = 0;
    for (long long seconds = Seconds(2019, 12, 1); seconds < Seconds(2030, 2, 1); seconds += 3600) {
      const ZoneSegment segment = SegmentAt(rule, seconds);
      ASSERT_LE(segment.m_iFrom, seconds) << text;
      ASSERT_GT(segment.m_iUntil, seconds) << text;
      ASSERT_GE(segment.m_iUntil, end) << text << ": it goes on";
      end = segment.m_iUntil;
      ASSERT_EQ(segment.m_iOffset, OffsetAt(rule, segment.m_iUntil - 1)) << text;
    }
  }
}

}  // namespace
