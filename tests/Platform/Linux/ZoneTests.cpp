#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "Platform/Clock.h"
#include "Platform/Linux/CurrentZone.h"
#include "Platform/Linux/ZoneTable.h"

namespace {

using namespace Oxa::Core::Platform;

constexpr long long i1970 = 11644473600;  // seconds since 1601
constexpr long long iSECOND = 10000000;

// The value of TZ for as long as this lives; null takes it away.
class Tz {
 public:
  explicit Tz(const char* value) {
    const char* const before = getenv("TZ");
    m_bWasSet = before != nullptr;
    if (m_bWasSet) m_sBefore = before;
    Set(value);
  }
  ~Tz() { Set(m_bWasSet ? m_sBefore.c_str() : nullptr); }

 private:
  static void Set(const char* value) { value != nullptr ? setenv("TZ", value, 1) : unsetenv("TZ"); }
  bool m_bWasSet;
  std::string m_sBefore;
};

int SystemOffset(long long seconds) {
  tzset();
  const time_t moment = static_cast<time_t>(seconds);
  struct tm local;
  localtime_r(&moment, &local);
  return static_cast<int>(local.tm_gmtoff);
}

long long Seconds(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  long long ticks = LLONG_MIN;
  EXPECT_EQ(0, UtcToTicks({year, month, day, hour, minute, second, 0}, ticks));
  return ticks / iSECOND - i1970;
}

ZoneRule Rule(const std::string& text) {
  ZoneRule rule = ZoneRule();
  EXPECT_TRUE(ParseZoneRule(text.data(), text.size(), rule)) << text;
  return rule;
}

int OffsetAt(const ZoneRule& rule, long long seconds) { return SegmentAt(rule, seconds).m_iOffset; }

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

TEST(ZoneRule, TheEdgesOfDaylightTime) {
  const ZoneRule rule = Rule("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(-18000, OffsetAt(rule, Seconds(2024, 3, 10, 6, 59, 59)));
  EXPECT_EQ(-14400, OffsetAt(rule, Seconds(2024, 3, 10, 7, 0, 0)));
  EXPECT_EQ(-14400, OffsetAt(rule, Seconds(2024, 11, 3, 5, 59, 59)));
  EXPECT_EQ(-18000, OffsetAt(rule, Seconds(2024, 11, 3, 6, 0, 0)));
}

TEST(ZoneRule, WithoutDatesItIsTheSecondSundayOfMarchToTheFirstOfNovember) {
  const ZoneRule rule = Rule("EST5EDT");
  EXPECT_EQ(-18000, OffsetAt(rule, Seconds(2024, 3, 10, 6, 59, 59)));
  EXPECT_EQ(-14400, OffsetAt(rule, Seconds(2024, 3, 10, 7, 0, 0)));
  EXPECT_EQ(-14400, OffsetAt(rule, Seconds(2024, 11, 3, 5, 59, 59)));
  EXPECT_EQ(-18000, OffsetAt(rule, Seconds(2024, 11, 3, 6, 0, 0)));
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

std::vector<unsigned char> Contents(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The exact bytes on the heap, so that the address sanitizer sees every step beyond them.
int Parse(const std::vector<unsigned char>& bytes, ZoneTable& table) {
  const std::vector<unsigned char> exact(bytes.begin(), bytes.end());
  return ParseZoneFile(exact.data(), exact.size(), table);
}

TEST(ZoneFile, EveryTruncationIsRefused) {
  std::vector<unsigned char> bytes = Contents("/usr/share/zoneinfo/America/New_York");
  ASSERT_GT(bytes.size(), 100u);
  ZoneTable table;
  ASSERT_EQ(0, Parse(bytes, table));
  while (!bytes.empty()) {
    bytes.pop_back();
    ASSERT_EQ(EINVAL, Parse(bytes, table)) << bytes.size();
  }
}

TEST(ZoneFile, NoDamageLeadsAstray) {
  const std::vector<unsigned char> bytes = Contents("/usr/share/zoneinfo/Europe/Dublin");
  ASSERT_GT(bytes.size(), 100u);
  std::mt19937 random(5);
  ZoneTable table;
  for (int round = 0; round < 20000; ++round) {
    std::vector<unsigned char> damaged = bytes;
    for (int i = 0; i < 3; ++i) {
      const auto where = random() % (i == 0 ? 44 : damaged.size());
      damaged[where] = static_cast<unsigned char>(random());
    }
    if (Parse(damaged, table) != 0) continue;
    for (const long long seconds : {-100000000000LL, 0LL, 1700000000LL, 100000000000LL}) {
      ASSERT_LT(SegmentAt(table, seconds).m_iOffset, iOFFSET_BOUND);
      ASSERT_GT(SegmentAt(table, seconds).m_iOffset, -iOFFSET_BOUND);
    }
  }
}

void AppendNumber(std::vector<unsigned char>& bytes, long long number, int width) {
  for (int i = width - 1; i >= 0; --i) bytes.push_back(static_cast<unsigned char>(number >> (8 * i)));
}

void AppendHeader(std::vector<unsigned char>& bytes, char version, int times, int types) {
  for (const char c : std::string("TZif")) bytes.push_back(static_cast<unsigned char>(c));
  bytes.push_back(static_cast<unsigned char>(version));
  bytes.resize(bytes.size() + 15);
  for (const int count : {0, 0, 0, times, types, 4}) AppendNumber(bytes, count, 4);
}

// A zone that changes every hour between the offsets 0 and 3600.
std::vector<unsigned char> MakeFile(char version, int times) {
  std::vector<unsigned char> bytes;
  if (version != 0) {
    AppendHeader(bytes, version, 0, 1);
    bytes.resize(bytes.size() + 6 + 4);
  }
  AppendHeader(bytes, version, times, 2);
  for (int i = 0; i < times; ++i) AppendNumber(bytes, i * 3600, version == 0 ? 4 : 8);
  for (int i = 0; i < times; ++i) bytes.push_back(i % 2 == 0 ? 1 : 0);
  for (const int offset : {0, 3600}) {
    AppendNumber(bytes, offset, 4);
    AppendNumber(bytes, 0, 2);
  }
  bytes.resize(bytes.size() + 4);
  return bytes;
}

TEST(ZoneFile, TheFirstVersionHasNoRule) {
  ZoneTable table;
  ASSERT_EQ(0, Parse(MakeFile(0, 3), table));
  EXPECT_EQ(0, SegmentAt(table, -1).m_iOffset);
  EXPECT_EQ(3600, SegmentAt(table, 0).m_iOffset);
  EXPECT_EQ(0, SegmentAt(table, 3600).m_iOffset);
  EXPECT_EQ(3600, SegmentAt(table, 7200).m_iOffset);
  EXPECT_EQ(LLONG_MIN, SegmentAt(table, -1).m_iFrom);
  EXPECT_EQ(LLONG_MAX, SegmentAt(table, 7200).m_iUntil);
}

TEST(ZoneFile, AnEmptyRuleKeepsTheLastOffset) {
  std::vector<unsigned char> bytes = MakeFile('2', 3);
  ZoneTable table;
  EXPECT_EQ(EINVAL, Parse(bytes, table)) << "the last line is missing";
  bytes.push_back('\n');
  bytes.push_back('\n');
  ASSERT_EQ(0, Parse(bytes, table));
  EXPECT_EQ(3600, SegmentAt(table, 1LL << 40).m_iOffset);
}

TEST(ZoneFile, ManyChangesKeepTheLatest) {
  constexpr int iTIMES = ZoneTable::iMAX_CHANGES + 101;
  ZoneTable table;
  ASSERT_EQ(0, Parse(MakeFile(0, iTIMES), table));
  EXPECT_EQ(3600, SegmentAt(table, -1).m_iOffset) << "what held before the earliest that is kept";
  EXPECT_EQ(0, SegmentAt(table, 101 * 3600).m_iOffset);
  EXPECT_EQ(3600, SegmentAt(table, 102 * 3600).m_iOffset);
  EXPECT_EQ(3600, SegmentAt(table, (iTIMES - 1) * 3600LL).m_iOffset);
}

TEST(ZoneFile, RefusesNonsense) {
  ZoneTable table;
  EXPECT_EQ(EINVAL, ParseZoneFile(nullptr, 0, table));
  std::vector<unsigned char> bytes = MakeFile(0, 3);
  const std::size_t types = 44 + 3 * 4;
  bytes[types] = 2;  // there are two
  EXPECT_EQ(EINVAL, Parse(bytes, table));
  bytes[types] = 1;
  bytes[44] = 0x10;  // the first change comes last
  EXPECT_EQ(EINVAL, Parse(bytes, table));
  bytes[44] = 0;
  EXPECT_EQ(0, Parse(bytes, table));
  bytes[types + 3] = 0x10;  // an offset of many years
  EXPECT_EQ(EINVAL, Parse(bytes, table));
}

TEST(ZoneFile, NoRegularFileIsRefused) {
  char folder[] = "/tmp/oxazoneXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string pipe = std::string(folder) + "/pipe";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  const std::string big = std::string(folder) + "/big";
  std::ofstream(big) << std::string(20000, 'x');
  ZoneTable table;
  EXPECT_EQ(EINVAL, ReadZone(pipe.c_str(), table));
  EXPECT_EQ(EFBIG, ReadZone(big.c_str(), table));
  unlink(pipe.c_str());
  unlink(big.c_str());
  rmdir(folder);
}

TEST(ZoneFile, TheFolderOfTheZonesCanBeChosen) {
  char folder[] = "/tmp/oxazoneXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string path = std::string(folder) + "/Mine";
  const std::vector<unsigned char> bytes = MakeFile(0, 1);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
  setenv("TZDIR", folder, 1);
  ZoneTable table;
  EXPECT_EQ(0, ReadZone("Mine", table));
  EXPECT_EQ(3600, SegmentAt(table, 0).m_iOffset);
  unsetenv("TZDIR");
  unlink(path.c_str());
  rmdir(folder);
}

}  // namespace
