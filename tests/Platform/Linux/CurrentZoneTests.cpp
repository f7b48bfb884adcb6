// The zone of the moment, as it is looked up and kept.
#include "Platform/Linux/CurrentZone.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Clock.h"
#include "Platform/Linux/ZoneTable.h"
#include "ZoneSupport.h"

namespace {

using namespace Oxa::Core::Platform;
using namespace ZoneTests;

// The following need a process in which no zone was looked up before: it ends with 0 if all is well there.
void ExpectInANewProcess(void (*operation)()) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(operation(); _exit(testing::Test::HasFailure() ? 1 : 0), testing::ExitedWithCode(0), "");
}

// No file can be opened for as long as this lives.
class NoFiles {
 public:
  NoFiles() {
    getrlimit(RLIMIT_NOFILE, &m_before);
    const rlimit none = {0, m_before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
  }
  NoFiles(const NoFiles&) = delete;
  NoFiles& operator=(const NoFiles&) = delete;
  ~NoFiles() { setrlimit(RLIMIT_NOFILE, &m_before); }

 private:
  rlimit m_before;
};

int OffsetWithoutFiles(long long seconds) {
  const NoFiles noFiles;
  return CurrentOffset(seconds);
}

void LookUpWithoutFiles() {
  setenv("TZ", "Asia/Tokyo", 1);
  EXPECT_EQ(0, OffsetWithoutFiles(0)) << "nothing is known";
  EXPECT_EQ(9 * 3600, CurrentOffset(0));
  EXPECT_EQ(9 * 3600, OffsetWithoutFiles(0)) << "it is known by now";
  setenv("TZ", "Zzz-3", 1);
  EXPECT_EQ(3 * 3600, OffsetWithoutFiles(0)) << "a rule needs no file";
  EXPECT_EQ(3 * 3600, CurrentOffset(0));
}

void ReadWithoutFiles() {
  ZoneTable table;
  const NoFiles noFiles;
  EXPECT_EQ(EMFILE, ReadZone("Asia/Tokyo", table));
  EXPECT_EQ(0, ReadZone("UTC", table));
}

TEST(CurrentZone, AReadingThatFailsForTheMomentTellsWhy) { ExpectInANewProcess(&ReadWithoutFiles); }

TEST(CurrentZone, AFailureOfTheMomentIsNotKept) { ExpectInANewProcess(&LookUpWithoutFiles); }

// Both a file and a rule have this name, and tell different things about the winter of 1974.
void LookUpWhatIsARuleAsWell() {
  setenv("TZ", "EST5EDT", 1);
  const long long winter = Seconds(1974, 2, 1);
  EXPECT_EQ(-5 * 3600, OffsetWithoutFiles(winter)) << "the rule needs no file";
  EXPECT_EQ(-4 * 3600, CurrentOffset(winter)) << "the file comes first";
}

TEST(CurrentZone, ARuleThatStandsInForAFileIsNotKept) { ExpectInANewProcess(&LookUpWhatIsARuleAsWell); }

void LookUpWithoutFilesOftenerThanThereArePlaces() {
  setenv("TZ", "Asia/Tokyo", 1);
  for (int i = 0; i < 40; ++i) EXPECT_EQ(0, OffsetWithoutFiles(0));
  EXPECT_EQ(9 * 3600, CurrentOffset(0));
  EXPECT_EQ(9 * 3600, OffsetWithoutFiles(0)) << "it has found a place";
}

TEST(CurrentZone, FailuresOfTheMomentTakeNoPlace) {
  ExpectInANewProcess(&LookUpWithoutFilesOftenerThanThereArePlaces);
}

void LookUpWithoutFilesOnTheMachinesZone() {
  unsetenv("TZ");
  const long long now = time(nullptr);
  OffsetWithoutFiles(now);
  EXPECT_EQ(SystemOffset(now), CurrentOffset(now));
}

TEST(CurrentZone, NorIsItForTheMachinesZone) { ExpectInANewProcess(&LookUpWithoutFilesOnTheMachinesZone); }

void LookUpOnManyThreads(const char* tz, int expected) {
  constexpr int iTHREADS = 24;
  setenv("TZ", tz, 1);
  std::atomic<int> waiting{0}, wrong{0};
  std::vector<std::thread> threads;
  threads.reserve(iTHREADS);
  for (int i = 0; i < iTHREADS; ++i) {
    threads.emplace_back([&] {
      ++waiting;
      while (waiting < iTHREADS) std::this_thread::yield();
      if (CurrentOffset(0) != expected) ++wrong;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(expected, CurrentOffset(0)) << "at the latest now it is kept";
}

// Of the places that threads leave free each takes a zone, whose file isn't needed any more then.
void LookUpTogether() {
  char folder[] = "/tmp/oxazoneXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  LookUpOnManyThreads("Asia/Tokyo", 9 * 3600);
  LookUpOnManyThreads("Asia/Kolkata", 19800);
  const std::vector<unsigned char> zone = Contents("/usr/share/zoneinfo/Asia/Tokyo");
  constexpr int iOTHERS = 14;
  const auto path = [&](int i) { return std::string(folder) + "/" + std::to_string(i); };
  for (int i = 0; i < iOTHERS; ++i) {
    Write(path(i), zone);
    setenv("TZ", path(i).c_str(), 1);
    EXPECT_EQ(9 * 3600, CurrentOffset(0));
    unlink(path(i).c_str());
  }
  rmdir(folder);
  for (int i = 0; i < iOTHERS; ++i) {
    setenv("TZ", path(i).c_str(), 1);
    EXPECT_EQ(9 * 3600, CurrentOffset(0)) << i;
  }
}

TEST(CurrentZone, ThreadsThatMeetAZoneTogetherTakeOnePlace) {
  for (int round = 0; round < 4; ++round) ExpectInANewProcess(&LookUpTogether);
}

TEST(CurrentZone, WithoutANameItIsTheMachinesAtOnce) {
  const long long now = time(nullptr);
  const Tz named("Zzz-3:17:05");
  EXPECT_EQ(3 * 3600 + 17 * 60 + 5, CurrentOffset(now));
  const Tz none(nullptr);
  EXPECT_EQ(SystemOffset(now), CurrentOffset(now));
}

TEST(CurrentZone, LeavesErrnoAlone) {
  for (const char* value : {"No/Such", "Asia/Seoul", "Qqq-2", ""}) {
    const Tz tz(value);
    errno = EDOM;
    CurrentOffset(0);
    EXPECT_EQ(EDOM, errno) << value;
    LocalTimeText(i1970 * iSECOND);
    EXPECT_EQ(EDOM, errno) << value;
  }
}

}  // namespace
