#include "Platform/Linux/ZoneTable.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "ZoneSupport.h"

namespace {

using namespace Oxa::Core::Platform;
using namespace ZoneTests;

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

TEST(ZoneFile, OffsetsStayBelowTheirBound) {
  std::vector<unsigned char> bytes = MakeFile(0, 0);
  ZoneTable table;
  const auto parse = [&](int offset) {
    std::vector<unsigned char> number;
    AppendNumber(number, offset, 4);
    std::copy(number.begin(), number.end(), bytes.begin() + 44);
    return Parse(bytes, table);
  };
  for (const int sign : {-1, 1}) {
    EXPECT_EQ(EINVAL, parse(sign * iOFFSET_BOUND));
    EXPECT_EQ(0, parse(sign * (iOFFSET_BOUND - 1)));
    EXPECT_EQ(sign * (iOFFSET_BOUND - 1), SegmentAt(table, 0).m_iOffset);
  }
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

TEST(ZoneFile, APipeIsRefusedThoughAZoneCouldBeReadFromIt) {
  char folder[] = "/tmp/oxazoneXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string pipe = std::string(folder) + "/pipe";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_LE(0, reader);
  const std::vector<unsigned char> zone = MakeFile(0, 1);
  Write(pipe, zone);
  ZoneTable table;
  EXPECT_EQ(EINVAL, ReadZone(pipe.c_str(), table));
  std::vector<unsigned char> left(zone.size() + 1);
  EXPECT_EQ(static_cast<ssize_t>(zone.size()), read(reader, left.data(), left.size()))
      << "it is somebody else's";
  close(reader);
  unlink(pipe.c_str());
  rmdir(folder);
}

TEST(ZoneFile, AFileMayFillAllTheRoomThereIs) {
  char folder[] = "/tmp/oxazoneXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string path = std::string(folder) + "/full";
  std::vector<unsigned char> bytes = MakeFile(0, 1);
  ZoneTable table;
  bytes.resize(16384);
  Write(path, bytes);
  EXPECT_EQ(0, ReadZone(path.c_str(), table));
  EXPECT_EQ(3600, SegmentAt(table, 0).m_iOffset);
  bytes.resize(16385);
  Write(path, bytes);
  EXPECT_EQ(EFBIG, ReadZone(path.c_str(), table));
  unlink(path.c_str());
  rmdir(folder);
}

TEST(ZoneFile, UtcNeedsNone) {
  setenv("TZDIR", "/nonexistent", 1);
  for (const char* name : {"UTC", "GMT", ":UTC", ":GMT", "Etc/UTC", "Etc/GMT", "UTC0"}) {
    ZoneTable table;
    EXPECT_EQ(0, ReadZone(name, table)) << name;
    EXPECT_EQ(0, SegmentAt(table, 0).m_iOffset);
  }
  ZoneTable table;
  EXPECT_EQ(ENOENT, ReadZone("UTC/No", table));
  unsetenv("TZDIR");
}

TEST(ZoneFile, TheFolderOfTheZonesCanBeChosen) {
  char folder[] = "/tmp/oxazoneXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string path = std::string(folder) + "/Mine";
  Write(path, MakeFile(0, 1));
  setenv("TZDIR", folder, 1);
  ZoneTable table;
  EXPECT_EQ(0, ReadZone("Mine", table));
  EXPECT_EQ(3600, SegmentAt(table, 0).m_iOffset);
  unsetenv("TZDIR");
  unlink(path.c_str());
  rmdir(folder);
}

TEST(ZoneFile, ANameIsNeverCutToThatOfAnother) {
  char folder[] = "/tmp/oxazoneXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string path = std::string(folder) + "/Mine";
  Write(path, MakeFile(0, 1));
  setenv("TZDIR", folder, 1);
  std::string name;
  while (path.size() + name.size() + 2 < PATH_MAX) name += "./";
  name.resize(PATH_MAX - 1 - path.size(), '/');
  name += "Mine";
  ZoneTable table;
  EXPECT_EQ(0, ReadZone(name.c_str(), table)) << "the longest that the system takes";
  EXPECT_EQ(3600, SegmentAt(table, 0).m_iOffset);
  name += "s";
  EXPECT_EQ(ENAMETOOLONG, ReadZone(name.c_str(), table));
  EXPECT_EQ(0, SegmentAt(table, 0).m_iOffset);
  unsetenv("TZDIR");
  unlink(path.c_str());
  rmdir(folder);
}

// As the system's own library has it.
TEST(ZoneFile, BehindAColonStandsAFileAndNoRule) {
  ZoneTable table;
  EXPECT_EQ(0, ReadZone("Zzz-3", table));
  EXPECT_EQ(3 * 3600, SegmentAt(table, 0).m_iOffset);
  EXPECT_EQ(ENOENT, ReadZone(":Zzz-3", table));
  EXPECT_EQ(0, SegmentAt(table, 0).m_iOffset);
}

TEST(ZoneFile, FailuresOfTheMomentAreThoseThatMayPass) {
  for (const int failure : {EMFILE, ENFILE, ENOMEM, EINTR, EIO}) EXPECT_TRUE(FailedForTheMoment(failure));
  for (const int failure : {0, ENOENT, EACCES, EINVAL, EFBIG, ENAMETOOLONG})
    EXPECT_FALSE(FailedForTheMoment(failure)) << failure;
}

}  // namespace
