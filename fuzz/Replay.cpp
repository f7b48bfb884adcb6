// The replay of a recording: whatever the bytes, what is read is what a plain reference reads, up to the same place,
// and can be shown.
//
// The first byte tells what pieces the source gives; all others are the recording.
#include <algorithm>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzTarget.h"
#include "MemorySource.h"
#include "RecordingReader.h"
#include "Report.h"
#include "ReportFile.h"
#include "StationAlerts.h"
#include "Statistics.h"

namespace {

using namespace OxaFuzz;
using Station::Measurement;
using Station::Recorded;

// Reads the values of a recording one by one, as long as they are there.
class Reference {
 public:
  explicit Reference(const std::string& bytes) : m_sBytes(bytes) {}

  unsigned long long Number(std::size_t size) {
    unsigned long long number = 0;
    for (std::size_t i = 0; i < size && Has(size); ++i)
      number |= static_cast<unsigned long long>(static_cast<unsigned char>(m_sBytes[m_uAt + i])) << 8 * i;
    m_uAt += size;
    return number;
  }

  std::string Text() {
    const std::size_t size = Number(4);
    if (!Has(size)) m_bShort = true;
    std::string text = m_bShort ? std::string() : m_sBytes.substr(m_uAt, size);
    m_uAt += size;
    return text;
  }

  bool IsShort() const { return m_bShort; }
  std::size_t Left() const { return m_sBytes.size() - m_uAt; }

 private:
  bool Has(std::size_t size) {
    m_bShort = m_bShort || m_uAt > m_sBytes.size() || size > m_sBytes.size() - m_uAt;
    return !m_bShort;
  }

  const std::string& m_sBytes;
  std::size_t m_uAt = 0;
  bool m_bShort = false;
};

bool IsName(const std::string& text) {
  return text.size() <= 20 &&
         text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.") ==
             std::string::npos;
}

bool IsUnit(const std::string& text) {
  const char* const units[] = {"Week",        "Week (2)",    "Day",        "Day (2)", "Hour",
                               "Hour (2)",    "Minute",      "Minute (2)", "Second",  "Second (2)",
                               "Millisecond", "Microsecond", "Nanosecond"};
  return std::find(std::begin(units), std::end(units), text) != std::end(units);
}

// What a count of nanoseconds holds, and so can be shown.
bool CanBeShown(long long ticks) { return ticks <= 90000000000000000 && ticks >= -90000000000000000; }

struct ReferenceSeries {
  std::string m_sName;
  std::string m_sUnit = "Microsecond";
  unsigned long long m_ullCount = 0;
  long long m_llTolerance = 0;
  unsigned long long m_ullLast = 0;
  unsigned long m_ulLate = 0;
  std::vector<long long> m_latenesses;
};

// Nothing: the head is none.
std::optional<std::vector<ReferenceSeries>> ReadHead(Reference& in) {
  if (in.Text() != "OxaStation") return std::nullopt;
  const unsigned long long version = in.Number(4);
  if (version != 1 && version != 2) return std::nullopt;
  const unsigned long long count = in.Number(4);
  if (count < 1 || count > 16) return std::nullopt;
  std::vector<ReferenceSeries> all(count);
  for (ReferenceSeries& series : all) {
    series.m_sName = in.Text();
    const auto interval = static_cast<long long>(in.Number(8));
    series.m_llTolerance = static_cast<long long>(in.Number(8));
    series.m_ullCount = in.Number(4);
    if (version == 2) series.m_sUnit = in.Text();
    if (in.IsShort() || !IsName(series.m_sName) || interval < 1 || interval > 100000000 ||
        series.m_llTolerance < 0 || !CanBeShown(series.m_llTolerance) || series.m_ullCount < 1 ||
        series.m_ullCount > 1000000 || !IsUnit(series.m_sUnit)) {
      return std::nullopt;
    }
    for (const ReferenceSeries& other : all)
      if (&other != &series && other.m_sName == series.m_sName && &other < &series) return std::nullopt;
  }
  return all;
}

// Gives whether the samples are all there, up to the end mark.
bool ReadSamples(Reference& in, std::vector<ReferenceSeries>& all) {
  for (unsigned long long read = 0; in.Left() >= 16; ++read) {
    const unsigned long long series = in.Number(4);
    const unsigned long long number = in.Number(4);
    const unsigned long long lateness = in.Number(8);
    if (series == 0xFFFFFFFF) return number == 0 && lateness == read && in.Left() == 0;
    if (series >= all.size() || number <= all[series].m_ullLast || number > all[series].m_ullCount ||
        !CanBeShown(static_cast<long long>(lateness))) {
      return false;
    }
    all[series].m_ullLast = number;
    all[series].m_latenesses.push_back(static_cast<long long>(lateness));
    all[series].m_ulLate += static_cast<long long>(lateness) > all[series].m_llTolerance;
  }
  return false;
}

std::optional<Recorded> Read(const std::string& bytes, std::size_t piece) {
  MemorySource source(bytes, piece);
  try {
    return Station::ReadRecording("x", source);
  } catch (const Station::RecordingUnreadable&) {
    return std::nullopt;
  }
}

void Compare(const ReferenceSeries& expected, const Measurement& found) {
  CheckSame(expected.m_sName, found.m_series.m_sName, "a series has the name that the recording tells");
  CheckSame(expected.m_sUnit, found.m_series.m_sUnit, "a series has the unit that the recording tells");
  Check(expected.m_ullCount == found.m_series.m_ulCount, "a series has the count that the recording tells");
  Check(expected.m_ulLate == found.m_ulLate, "as many samples are late as are beyond the tolerance");
  Check(expected.m_latenesses.size() == found.m_latenesses.size(), "all whole samples are read");
  for (std::size_t i = 0; i < found.m_latenesses.size(); ++i)
    Check(expected.m_latenesses[i] == found.m_latenesses[i].GetRawTimerTicks(),
          "a sample is what was recorded");
}

void Show(std::vector<Measurement>& measurements) {
  for (Measurement& measurement : measurements)
    measurement.m_statistics = Station::Summarize(measurement.m_latenesses);
  std::ostringstream table;
  Station::WriteTable(table, measurements);
  Station::ReportFile("/dev/null").Write(table, measurements, {}, {});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  if (size == 0) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::optional<Recorded> found = Read(bytes, 1 + data[0] % 32);
  Reference in(bytes);
  std::optional<std::vector<ReferenceSeries>> expected = ReadHead(in);
  Check(expected.has_value() == found.has_value(), "what has a proper head, and nothing else, can be read");
  if (!found) return 0;
  const bool whole = ReadSamples(in, *expected);
  Check(whole == found->m_sDamage.empty(), "damage is told where there is some", found->m_sDamage);
  Check(expected->size() == found->m_measurements.size(), "all series are there");
  for (std::size_t i = 0; i < expected->size(); ++i) Compare((*expected)[i], found->m_measurements[i]);
  Show(found->m_measurements);
  return 0;
}
