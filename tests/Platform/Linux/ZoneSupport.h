// What the tests of the zones share.
#ifndef OXACORE_TESTS_PLATFORM_LINUX_ZONESUPPORT_H
#define OXACORE_TESTS_PLATFORM_LINUX_ZONESUPPORT_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <climits>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Platform/Clock.h"

namespace ZoneTests {

constexpr long long i1970 = 11644473600;  // seconds since 1601
constexpr long long iSECOND = 10000000;

/// The value of TZ for as long as this lives; null takes it away.
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

/// What the system's own library says, by the zone in force.
inline int SystemOffset(long long seconds) {
  tzset();
  const time_t moment = static_cast<time_t>(seconds);
  struct tm local;
  localtime_r(&moment, &local);
  return static_cast<int>(local.tm_gmtoff);
}

/// Seconds since 1970 of a date in UTC.
inline long long Seconds(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  long long ticks = LLONG_MIN;
  EXPECT_EQ(0, Oxa::Core::Platform::UtcToTicks({year, month, day, hour, minute, second, 0}, ticks));
  return ticks / iSECOND - i1970;
}

inline std::vector<unsigned char> Contents(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void Write(const std::string& path, const std::vector<unsigned char>& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
}

}  // namespace ZoneTests

#endif
