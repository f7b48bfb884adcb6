// The bytes of recordings, written down without the help of the library's streams.
#ifndef STATION_TESTS_RECORDINGBYTES_H
#define STATION_TESTS_RECORDINGBYTES_H

#include <string>

namespace StationTests {

inline std::string Little(unsigned long long value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i & 0xFF);
  return text;
}

inline std::string Text(const std::string& text) { return Little(text.size(), 4) + text; }

/// As the first version had them: without a unit.
inline std::string FormerSeriesBytes(const std::string& name, long long interval, long long tolerance,
                                     unsigned count) {
  return Text(name) + Little(interval, 8) + Little(tolerance, 8) + Little(count, 4);
}

inline std::string SeriesBytes(const std::string& name, long long interval, long long tolerance,
                               unsigned count, const std::string& unit = "Second") {
  return FormerSeriesBytes(name, interval, tolerance, count) + Text(unit);
}

inline std::string SampleBytes(unsigned series, unsigned number, long long lateness) {
  return Little(series, 4) + Little(number, 4) + Little(static_cast<unsigned long long>(lateness), 8);
}

inline std::string EndBytes(unsigned long long samples) {
  return Little(0xFFFFFFFF, 4) + Little(0, 4) + Little(samples, 8);
}

/// The head of two series: "a", a sample a millisecond, 3 of them, up to 0.005 milliseconds late; "b.c", every 10 s, 2,
/// of which none may be late.
inline std::string HeadBytes() {
  return Text("OxaStation") + Little(2, 4) + Little(2, 4) + SeriesBytes("a", 10000, 50, 3, "Millisecond") +
         SeriesBytes("b.c", 100000000, 0, 2);
}

/// With the samples 1 and 2 of "a", 1 of "b.c", and 3 of "a".
inline std::string SamplesBytes() {
  return SampleBytes(0, 1, 50) + SampleBytes(0, 2, 51) + SampleBytes(1, 1, 7) + SampleBytes(0, 3, 1);
}

inline std::string WholeBytes() { return HeadBytes() + SamplesBytes() + EndBytes(4); }

}  // namespace StationTests

#endif
