// Zones as they are read from files and rules, and local times by them.
#include "Platform/Linux/ZoneTable.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <random>
#include <string>

#include "Platform/Clock.h"
#include "Platform/Linux/CurrentZone.h"
#include "ZoneSupport.h"

namespace {

using namespace Oxa::Core::Platform;
using namespace ZoneTests;

// Ends with the zone of the load as it was: declared before the Tz that changes it.
class KeptLoadedZone {
 public:
  KeptLoadedZone() = default;
  KeptLoadedZone(const KeptLoadedZone&) = delete;
  KeptLoadedZone& operator=(const KeptLoadedZone&) = delete;
  ~KeptLoadedZone() { LoadZone(); }
};

// What changes, when and how much, is told alike by the system's own library.
void CompareWithSystem(const char* zone, int firstYear) {
  SCOPED_TRACE(zone);
  const Tz tz(zone);
  const long long from = Seconds(firstYear, 1, 1);
  const long long until = Seconds(2200, 1, 1);
  std::mt19937_64 random(4);
  for (int round = 0; round < 3000; ++round) {
    const auto seconds =
        from + static_cast<long long>(random() % static_cast<unsigned long long>(until - from));
    ASSERT_EQ(SystemOffset(seconds), CurrentOffset(seconds)) << seconds;
  }
  ZoneTable table;
  ASSERT_EQ(0, ReadZone(zone, table));
  for (ZoneSegment segment = SegmentAt(table, from); segment.m_iUntil < until;) {
    const ZoneSegment next = SegmentAt(table, segment.m_iUntil);
    ASSERT_EQ(segment.m_iUntil, next.m_iFrom);
    ASSERT_GT(next.m_iUntil, next.m_iFrom);
    for (const long long seconds : {next.m_iFrom - 1, next.m_iFrom, next.m_iFrom + 1}) {
      ASSERT_EQ(SystemOffset(seconds), CurrentOffset(seconds)) << seconds;
    }
    segment = next;
  }
}

TEST(Zone, OffsetsAreThoseOfTheSystem) {
  for (const char* zone :
       {"UTC", "America/New_York", "Asia/Kolkata", "Australia/Lord_Howe", "America/Santiago", "Europe/Dublin",
        "Africa/Casablanca", "Pacific/Apia", "Asia/Kathmandu", "America/St_Johns", "Antarctica/Troll",
        "Asia/Gaza", "Europe/London", "Pacific/Kiritimati", ":Europe/Berlin",
        "/usr/share/zoneinfo/Asia/Tokyo"}) {
    CompareWithSystem(zone, 1850);
  }
}

// The system's library doesn't go by rules before 1970.
TEST(Zone, OffsetsOfRulesAreThoseOfTheSystem) {
  for (const char* rule : {"EST5EDT,M3.2.0,M11.1.0", "CET-1CEST,M3.5.0,M10.5.0/3", "XYZ-5:30", "<+0845>-8:45",
                           "AAA3BBB,J60/0,J300/1:30", "AAA3BBB,59/0,300/1:30:15",
                           "NZST-12NZDT,M9.5.0,M4.1.0/3", "<-03>3<-02>,M3.5.0/-2,M10.5.0/-1", "UTC0"}) {
    CompareWithSystem(rule, 1971);
  }
}

TEST(Zone, EmptyMeansUtc) {
  for (const char* value : {"", ":"}) {
    const Tz tz(value);
    EXPECT_EQ(0, CurrentOffset(0));
    ZoneTable table;
    EXPECT_EQ(0, ReadZone(value, table));
  }
}

TEST(Zone, UnsetMeansTheMachinesZone) {
  const Tz tz(nullptr);
  const long long now = time(nullptr);
  EXPECT_EQ(SystemOffset(now), CurrentOffset(now));
}

TEST(Zone, WhatCantBeUnderstoodIsRefusedAndCountsAsUtc) {
  for (const char* value :
       {"No/Such", "America", "/dev/null", "/etc/passwd", "EST5EDT,M3", "../../etc/passwd", ":EST5X"}) {
    const Tz tz(value);
    ZoneTable table;
    EXPECT_NE(0, ReadZone(value, table)) << value;
    EXPECT_EQ(0, SegmentAt(table, 0).m_iOffset);
    EXPECT_EQ(0, CurrentOffset(0)) << value;
  }
  EXPECT_EQ(ENAMETOOLONG, [] {
    ZoneTable table;
    return ReadZone(std::string(5000, 'x').c_str(), table);
  }());
}

TEST(Zone, AChangeIsSeenAtOnce) {
  const long long summer = Seconds(2024, 7, 1);
  const Tz kept("UTC");
  for (int round = 0; round < 3; ++round) {
    setenv("TZ", "America/New_York", 1);
    EXPECT_EQ(-4 * 3600, CurrentOffset(summer));
    setenv("TZ", "Asia/Kolkata", 1);
    EXPECT_EQ(19800, CurrentOffset(summer));
    setenv("TZ", "UTC", 1);
    EXPECT_EQ(0, CurrentOffset(summer));
    unsetenv("TZ");
    EXPECT_EQ(SystemOffset(summer), CurrentOffset(summer));
  }
}

// More zones than are kept, and one whose name is too long to be kept.
TEST(Zone, AnyNumberOfZonesIsRight) {
  const Tz kept("UTC");
  for (int round = 0; round < 2; ++round) {
    for (int hours = -12; hours <= 12; ++hours) {
      const std::string rule = "ABC" + std::to_string(hours) + "DEF,M3.2.0,M11.1.0";
      setenv("TZ", rule.c_str(), 1);
      EXPECT_EQ(-hours * 3600, CurrentOffset(Seconds(2024, 1, 1)));
      EXPECT_EQ((1 - hours) * 3600, CurrentOffset(Seconds(2024, 7, 1)));
    }
    setenv("TZ", (std::string(200, 'A') + "-7").c_str(), 1);
    EXPECT_EQ(7 * 3600, CurrentOffset(0));
  }
}

// Every way to read a local time back that the zone's stretches allow: of two the later; of none, by the offset
// before the gap.
void CheckLocal(const ZoneTable& table, long long local) {
  const long long moment = MomentOfLocal(table, local);
  long long expected = LLONG_MIN;
  ZoneSegment segment = SegmentAt(table, local - 2 * iOFFSET_BOUND);
  ZoneSegment before = segment;
  while (segment.m_iFrom < local + iOFFSET_BOUND) {
    const long long candidate = local - segment.m_iOffset;
    if (candidate >= segment.m_iFrom && candidate < segment.m_iUntil) expected = candidate;
    if (candidate >= segment.m_iUntil) before = segment;
    if (segment.m_iUntil == LLONG_MAX) break;
    segment = SegmentAt(table, segment.m_iUntil);
  }
  if (expected == LLONG_MIN) expected = local - before.m_iOffset;
  ASSERT_EQ(expected, moment) << local;
}

TEST(LocalTime, IsReadByTheStretchesOfTheZone) {
  for (const char* zone :
       {"America/New_York", "Asia/Kolkata", "Australia/Lord_Howe", "Europe/Dublin", "Pacific/Apia",
        "Africa/Casablanca", "EST5EDT,M3.2.0,M11.1.0", "<-03>3<-02>,M3.5.0/-2,M10.5.0/-1", "UTC"}) {
    SCOPED_TRACE(zone);
    ZoneTable table;
    ASSERT_EQ(0, ReadZone(zone, table));
    const long long until = Seconds(2100, 1, 1);
    for (ZoneSegment segment = SegmentAt(table, Seconds(1800, 1, 1)); segment.m_iUntil < until;
         segment = SegmentAt(table, segment.m_iUntil)) {
      for (long long off = -30 * 3600; off <= 30 * 3600; off += 900)
        CheckLocal(table, segment.m_iUntil + off);
    }
    for (int year = 1602; year < 3000; year += 7) CheckLocal(table, Seconds(year, 5, 5));
  }
}

TEST(LocalTime, TwiceAndNever) {
  const KeptLoadedZone kept;
  const Tz tz("America/New_York");
  ASSERT_EQ(0, LoadZone());
  const auto utc = [](const DateTime& local) {
    DateTime fields;
    std::string text;
    EXPECT_EQ(0, LocalToUtc(local, fields));
    EXPECT_EQ(0, DateTimeText(fields, text));
    return text;
  };
  EXPECT_EQ("2024/11/03 04:59:59.999", utc({2024, 11, 3, 0, 59, 59, 999}));
  EXPECT_EQ("2024/11/03 06:00:00.000", utc({2024, 11, 3, 1, 0, 0, 0})) << "the later of two";
  EXPECT_EQ("2024/11/03 06:59:59.000", utc({2024, 11, 3, 1, 59, 59, 0}));
  EXPECT_EQ("2024/11/03 07:00:00.000", utc({2024, 11, 3, 2, 0, 0, 0}));
  EXPECT_EQ("2024/03/10 06:59:59.000", utc({2024, 3, 10, 1, 59, 59, 0}));
  EXPECT_EQ("2024/03/10 07:30:00.000", utc({2024, 3, 10, 2, 30, 0, 0})) << "skipped: by the offset before";
  EXPECT_EQ("2024/03/10 07:00:00.000", utc({2024, 3, 10, 3, 0, 0, 0}));
  setenv("TZ", "UTC", 1);
  LoadZone();
}

TEST(LocalTime, GoesByTheZoneOfTheLoad) {
  const KeptLoadedZone kept;
  const Tz tz("Asia/Tokyo");
  ASSERT_EQ(0, LoadZone());
  setenv("TZ", "America/New_York", 1);
  DateTime utc;
  ASSERT_EQ(0, LocalToUtc({2024, 1, 1, 9, 0, 0, 0}, utc));
  EXPECT_EQ(0, utc.m_iHour);
  setenv("TZ", "No/Such", 1);
  EXPECT_NE(0, LoadZone());
  ASSERT_EQ(0, LocalToUtc({2024, 1, 1, 9, 0, 0, 0}, utc));
  EXPECT_EQ(9, utc.m_iHour) << "a zone that can't be read counts as UTC";
  setenv("TZ", "UTC", 1);
  LoadZone();
}

}  // namespace
