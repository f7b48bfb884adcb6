// Local time as text and back, as every alert and log entry needs it: a moment that moves on by a bit more than
// a second, in a zone with daylight time, to the millisecond.
//
// The peers keep their zone at hand; ours looks up the zone in force at each call.

#include <Infrastructure/OxaCore/Time.h>

#include "BenchSupport.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#ifdef OXA_PEER_ABSL
#include <absl/time/time.h>
#endif
#ifdef OXA_PEER_FMT
#include <fmt/chrono.h>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/DateTimeFormatter.h>
#include <Poco/DateTimeParser.h>
#include <Poco/LocalDateTime.h>
#endif

namespace {

using Oxa::Core::Time;

constexpr long long g_i1970 = 116444736000000000;
constexpr long long g_iSTEP = 12345678;  // ticks

void UseZone() {
  ::setenv("TZ", "America/New_York", 1);
  ::tzset();
}

// The moments that all format, in ticks since 1601.
class Moments {
 public:
  long long Next() { return m_iTicks += g_iSTEP; }
  long long NextSince1970() { return Next() - g_i1970; }

 private:
  long long m_iTicks = 134081370012340000;  // a day of November 2025
};

// Texts that all parse.
const std::string& NextText(std::size_t& index) {
  static const std::string texts[] = {"2025/11/21 10:43:01.234", "1998/08/23 02:33:17.123",
                                      "2024/02/29 23:59:59.999", "2026/07/04 12:00:00.000"};
  return texts[index++ % 4];
}

void OursAsText(benchmark::State& state) {
  UseZone();
  Moments moments;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Time(moments.Next(), Time::ePlatformTimeCurrent).ToString());
  }
}

OXA_BENCH("Local time as text", "Ours", OursAsText);

void OursParsed(benchmark::State& state) {
  UseZone();
  Time time;
  std::size_t index = 0;
  for (auto _ : state) {
    time.ParseString(NextText(index));
    benchmark::DoNotOptimize(time);
  }
}

OXA_BENCH("Local time parsed", "Ours", OursParsed);

#ifdef OXA_PEER_ABSL
void AbslAsText(benchmark::State& state) {
  UseZone();
  const absl::TimeZone zone = absl::LocalTimeZone();
  Moments moments;
  for (auto _ : state) {
    const absl::Time time = absl::FromUnixMicros(moments.NextSince1970() / 10);
    benchmark::DoNotOptimize(absl::FormatTime("%Y/%m/%d %H:%M:%E3S", time, zone));
  }
}

OXA_BENCH("Local time as text", "absl", AbslAsText);

void AbslParsed(benchmark::State& state) {
  UseZone();
  const absl::TimeZone zone = absl::LocalTimeZone();
  absl::Time time;
  std::string error;
  std::size_t index = 0;
  for (auto _ : state) {
    absl::ParseTime("%Y/%m/%d %H:%M:%E*S", NextText(index), zone, &time, &error);
    benchmark::DoNotOptimize(time);
  }
}

OXA_BENCH("Local time parsed", "absl", AbslParsed);
#endif

#ifdef OXA_PEER_FMT
void FmtAsText(benchmark::State& state) {
  UseZone();
  Moments moments;
  for (auto _ : state) {
    const long long ticks = moments.NextSince1970();
    const std::tm local = fmt::localtime(static_cast<std::time_t>(ticks / 10000000));
    benchmark::DoNotOptimize(fmt::format("{:%Y/%m/%d %H:%M:%S}.{:03}", local, ticks / 10000 % 1000));
  }
}

OXA_BENCH("Local time as text", "fmt", FmtAsText);
#endif

#ifdef OXA_PEER_POCO
void PocoAsText(benchmark::State& state) {
  UseZone();
  Moments moments;
  for (auto _ : state) {
    const Poco::LocalDateTime local(Poco::DateTime(Poco::Timestamp(moments.NextSince1970() / 10)));
    benchmark::DoNotOptimize(Poco::DateTimeFormatter::format(local, "%Y/%m/%d %H:%M:%S.%i"));
  }
}

OXA_BENCH("Local time as text", "Poco", PocoAsText);

void PocoParsed(benchmark::State& state) {
  UseZone();
  std::size_t index = 0;
  for (auto _ : state) {
    int offset = 0;
    const Poco::DateTime fields =
        Poco::DateTimeParser::parse("%Y/%m/%d %H:%M:%S.%i", NextText(index), offset);
    const Poco::LocalDateTime local(fields.year(), fields.month(), fields.day(), fields.hour(),
                                    fields.minute(), fields.second(), fields.millisecond(), 0);
    benchmark::DoNotOptimize(local.timestamp());
  }
}

OXA_BENCH("Local time parsed", "Poco", PocoParsed);
#endif

void LibcAsText(benchmark::State& state) {
  UseZone();
  Moments moments;
  for (auto _ : state) {
    const long long ticks = moments.NextSince1970();
    const auto seconds = static_cast<std::time_t>(ticks / 10000000);
    std::tm local;
    ::localtime_r(&seconds, &local);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S.", &local);
    std::snprintf(text + length, sizeof text - length, "%03d", static_cast<int>(ticks / 10000 % 1000));
    benchmark::DoNotOptimize(std::string(text));
  }
}

OXA_BENCH("Local time as text", "libc", LibcAsText);

void LibcParsed(benchmark::State& state) {
  UseZone();
  std::size_t index = 0;
  for (auto _ : state) {
    std::tm local = {};
    const char* const rest = ::strptime(NextText(index).c_str(), "%Y/%m/%d %H:%M:%S", &local);
    local.tm_isdst = -1;
    benchmark::DoNotOptimize(std::mktime(&local) * 1000LL + std::atoi(rest + 1));
  }
}

OXA_BENCH("Local time parsed", "libc", LibcParsed);

}  // namespace
