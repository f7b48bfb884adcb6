#include "RecordingReader.h"

#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "FakeClock.h"
#include "RecordingBytes.h"
#include "StationAlerts.h"
#include "TemporaryFolder.h"
#include "Witness.h"

namespace {

using namespace StationTests;
using Oxa::Core::BinaryInputStream;
using Oxa::Core::XIOSystemCallFailure;
using Station::ReadRecording;
using Station::Recorded;
using Station::RecordingUnreadable;
using testing::ElementsAre;

Elapse Ticks(long long ticks) { return Elapse(ticks, Elapse::TimerTicks); }

// Bytes in memory, in pieces; reading beyond `failAt` fails.
class Bytes : public BinaryInputStream {
 public:
  explicit Bytes(std::string bytes, std::size_t piece = 1000, std::size_t failAt = std::string::npos)
      : m_sBytes(std::move(bytes)), m_uPiece(piece), m_uFailAt(failAt) {}

  int Read() override {
    unsigned char byte = 0;
    return Read(&byte, 1) == 1 ? byte : -1;
  }
  long long Read(void* buffer, long long count) override {
    const auto got = std::min({static_cast<std::size_t>(count), m_uPiece, m_sBytes.size() - m_uAt});
    if (m_uAt + got > m_uFailAt) OXA_RAISE_ERROR("Test", XIOSystemCallFailure("::ReadFile()", "Bytes::Read"));
    std::memcpy(buffer, m_sBytes.data() + m_uAt, got);
    m_uAt += got;
    return got > 0 ? static_cast<long long>(got) : -1;
  }
  unsigned long long AvailableBytes() override { return m_uTold > 0 ? m_uTold : m_sBytes.size() - m_uAt; }

  /// Tells of more than there is.
  void Tell(unsigned long long available) { m_uTold = available; }

 private:
  const std::string m_sBytes;
  const std::size_t m_uPiece;
  const std::size_t m_uFailAt;
  std::size_t m_uAt = 0;
  unsigned long long m_uTold = 0;
};

Recorded Read(const std::string& bytes) {
  Bytes source(bytes);
  return ReadRecording("x", source);
}

// How many samples were read, of all series.
std::size_t Count(const Recorded& recorded) {
  std::size_t count = 0;
  for (const auto& measurement : recorded.m_measurements) count += measurement.m_latenesses.size();
  return count;
}

std::string WhyUnreadable(const std::string& bytes) {
  try {
    Read(bytes);
    return "it can";
  } catch (const RecordingUnreadable& error) {
    return error.what();
  }
}

const std::string sSHORT = "The recording \"x\" can't be read: it ends before its first sample";
const std::string sFOREIGN = "The recording \"x\" can't be read: it isn't a recording of a station";
const std::string sBAD_SERIES = "The recording \"x\" can't be read: it tells of a series that can't be";

std::string Damage(int samples, const std::string& reason) {
  return "The recording \"x\" can't be read beyond its " + std::to_string(samples) + " samples: " + reason;
}
const std::string sIN_SAMPLE = "it ends in the middle of a sample";
const std::string sNO_END_MARK =
    "it ends without its end mark, so what recorded it was ended early, or is still at work";

TEST(RecordingReader, ReadsAllThatIsThere) {
  Witness witness;
  const Recorded recorded = Read(WholeBytes());
  EXPECT_EQ("", recorded.m_sDamage);
  ASSERT_EQ(2U, recorded.m_measurements.size());
  const auto& a = recorded.m_measurements[0];
  EXPECT_EQ("a", a.m_series.m_sName);
  EXPECT_EQ(Ticks(10000), a.m_series.m_interval);
  EXPECT_EQ(Ticks(50), a.m_series.m_tolerance);
  EXPECT_EQ("Millisecond", a.m_series.m_sUnit);
  EXPECT_EQ(3U, a.m_series.m_ulCount);
  EXPECT_THAT(a.m_latenesses, ElementsAre(Ticks(50), Ticks(51), Ticks(1)));
  EXPECT_EQ(1U, a.m_ulLate);
  EXPECT_TRUE(a.IsComplete());
  const auto& b = recorded.m_measurements[1];
  EXPECT_EQ("b.c", b.m_series.m_sName);
  EXPECT_EQ("Second", b.m_series.m_sUnit);
  EXPECT_THAT(b.m_latenesses, ElementsAre(Ticks(7)));
  EXPECT_EQ(1U, b.m_ulLate);
  EXPECT_FALSE(b.IsComplete());
  EXPECT_THAT(witness.m_raised, ElementsAre());
}

TEST(RecordingReader, ReadsPiecesOfAnySize) {
  for (std::size_t piece = 1; piece < 40; ++piece) {
    Bytes source(WholeBytes(), piece);
    const Recorded recorded = ReadRecording("x", source);
    EXPECT_EQ("", recorded.m_sDamage);
    EXPECT_EQ(4U, Count(recorded));
  }
}

TEST(RecordingReader, KeepsWhatAnyPrefixHolds) {
  const std::string whole = WholeBytes();
  const std::size_t head = HeadBytes().size();
  for (std::size_t size = 0; size < head; ++size) EXPECT_EQ(sSHORT, WhyUnreadable(whole.substr(0, size)));
  for (std::size_t size = head; size < whole.size(); ++size) {
    const Recorded recorded = Read(whole.substr(0, size));
    const std::size_t samples = std::min<std::size_t>((size - head) / 16, 4);
    EXPECT_EQ(samples, Count(recorded)) << size;
    EXPECT_EQ(Damage(static_cast<int>(samples), (size - head) % 16 != 0 ? sIN_SAMPLE : sNO_END_MARK),
              recorded.m_sDamage);
  }
}

TEST(RecordingReader, RefusesWhatIsForeign) {
  EXPECT_EQ(sFOREIGN, WhyUnreadable("fast 1ms 500 250us\n"));
  EXPECT_EQ(sFOREIGN, WhyUnreadable(std::string(1000, '\xFF')));
  EXPECT_EQ(sFOREIGN, WhyUnreadable(std::string(1000, '\0')));
  EXPECT_EQ(sFOREIGN, WhyUnreadable(Text("OxaStatioN") + WholeBytes().substr(14)));
  EXPECT_EQ(sSHORT, WhyUnreadable(""));
}

TEST(RecordingReader, RefusesAnotherVersion) {
  for (const unsigned version : {0U, 3U, 0xFFFFFFFFU}) {
    EXPECT_EQ("The recording \"x\" can't be read: it was made by another version of the station",
              WhyUnreadable(Text("OxaStation") + Little(version, 4) + WholeBytes().substr(18)));
  }
}

TEST(RecordingReader, ReadsTheFormerVersionAsMicroseconds) {
  const std::string former = Text("OxaStation") + Little(1, 4) + Little(2, 4) +
                             FormerSeriesBytes("a", 10000, 50, 3) + FormerSeriesBytes("b.c", 100000000, 0, 2);
  const Recorded recorded = Read(former + SamplesBytes() + EndBytes(4));
  EXPECT_EQ("", recorded.m_sDamage);
  EXPECT_EQ(4U, Count(recorded));
  EXPECT_EQ("Microsecond", recorded.m_measurements.at(0).m_series.m_sUnit);
  EXPECT_EQ("Microsecond", recorded.m_measurements.at(1).m_series.m_sUnit);
  EXPECT_EQ(Ticks(50), recorded.m_measurements.at(0).m_series.m_tolerance);
  for (std::size_t size = 0; size < former.size(); ++size)
    EXPECT_EQ(sSHORT, WhyUnreadable(former.substr(0, size)));
}

TEST(RecordingReader, TakesTheMainNamesOfUnitsOfTimes) {
  const auto one = [](const std::string& unit) {
    return WhyUnreadable(Text("OxaStation") + Little(2, 4) + Little(1, 4) + SeriesBytes("a", 1, 0, 1, unit));
  };
  for (const char* const unit :
       {"Nanosecond", "Microsecond", "Millisecond", "Second", "Second (2)", "Minute", "Week"})
    EXPECT_EQ("it can", one(unit)) << unit;
  for (const char* const unit : {"", "us", "m", "second", "Meter", "Hertz", "Celsius", "Furlong", "Second\n"})
    EXPECT_EQ(sBAD_SERIES, one(unit)) << unit;
  EXPECT_EQ(sBAD_SERIES, one(std::string(1000000, 's')));
}

TEST(RecordingReader, RefusesSeriesThatNoPlanCanHave) {
  const std::string begin = Text("OxaStation") + Little(2, 4);
  const auto one = [&](const std::string& series) { return WhyUnreadable(begin + Little(1, 4) + series); };
  EXPECT_EQ(sBAD_SERIES, WhyUnreadable(begin + Little(0, 4) + EndBytes(0)));
  EXPECT_EQ(sBAD_SERIES, WhyUnreadable(begin + Little(17, 4) + EndBytes(0)));
  EXPECT_EQ(sBAD_SERIES, WhyUnreadable(begin + Little(0xFFFFFFFF, 4) + EndBytes(0)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a b", 1, 0, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("\x1B[2J", 1, 0, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes(std::string(21, 'a'), 1, 0, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a", 0, 0, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a", -1, 0, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a", 100000001, 0, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a", 1, -1, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a", 1, 0, 0)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a", 1, 0, 1000001)));
  EXPECT_EQ(sBAD_SERIES,
            WhyUnreadable(begin + Little(2, 4) + SeriesBytes("a", 1, 0, 1) + SeriesBytes("a", 1, 0, 1)));
  EXPECT_EQ(sBAD_SERIES, one(SeriesBytes("a", 1, 90000000000000001, 1)));
  EXPECT_EQ("it can", one(SeriesBytes(std::string(20, 'a'), 100000000, 90000000000000000, 1000000)));
}

TEST(RecordingReader, TellsOfEveryKindOfDamage) {
  const auto damage = [](const std::string& behindHead) { return Read(HeadBytes() + behindHead).m_sDamage; };
  const std::string unknown = "a sample is of a series that the recording doesn't have";
  const std::string order = "a sample has a number that can't come here";
  const std::string first = SampleBytes(0, 1, 0);
  EXPECT_EQ(Damage(0, sNO_END_MARK), damage(""));
  EXPECT_EQ(Damage(1, unknown), damage(first + SampleBytes(2, 1, 0) + EndBytes(2)));
  EXPECT_EQ(Damage(1, order), damage(first + SampleBytes(0, 1, 0) + EndBytes(2)));
  EXPECT_EQ(Damage(1, order), damage(first + SampleBytes(0, 0, 0) + EndBytes(2)));
  EXPECT_EQ(Damage(1, order), damage(first + SampleBytes(0, 4, 0) + EndBytes(2)));
  EXPECT_EQ("", damage(first + SampleBytes(0, 3, 0) + EndBytes(2)));
  const std::string number = "its end mark tells another number of samples";
  EXPECT_EQ(Damage(1, number), damage(first + EndBytes(2)));
  EXPECT_EQ(Damage(1, number), damage(first + EndBytes(0xFFFFFFFFFFFFFFFF)));
  EXPECT_EQ(Damage(1, number), damage(first + Little(0xFFFFFFFF, 4) + Little(1, 4) + Little(1, 8)));
  const std::string behind = "something follows its end mark";
  EXPECT_EQ(Damage(1, behind), damage(first + EndBytes(1) + "x"));
  EXPECT_EQ(Damage(1, behind), damage(first + EndBytes(1) + EndBytes(1)));
}

// A longer one couldn't be shown. Some 285 years will do.
TEST(RecordingReader, TakesAnyLatenessThatCanBeShown) {
  const long long most = 90000000000000000;
  const Recorded recorded =
      Read(HeadBytes() + SampleBytes(0, 1, -most) + SampleBytes(0, 2, most) + EndBytes(2));
  EXPECT_EQ("", recorded.m_sDamage);
  EXPECT_THAT(recorded.m_measurements[0].m_latenesses, ElementsAre(Ticks(-most), Ticks(most)));
  EXPECT_EQ(1U, recorded.m_measurements[0].m_ulLate);
  for (const long long lateness :
       {-most - 1, most + 1, std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()}) {
    const Recorded damaged = Read(HeadBytes() + SampleBytes(0, 1, 0) + SampleBytes(0, 2, lateness));
    EXPECT_EQ(Damage(1, "a sample can't be as late as it is"), damaged.m_sDamage) << lateness;
  }
}

TEST(RecordingReader, KeepsWhatCameBeforeAFailure) {
  Bytes source(WholeBytes(), 1000, HeadBytes().size() + 40);
  const Recorded recorded = ReadRecording("x", source);
  EXPECT_EQ(2U, Count(recorded));
  EXPECT_EQ(Damage(2, "System call to ::ReadFile() failed, unable to complete Bytes::Read"),
            recorded.m_sDamage);
}

TEST(RecordingReader, SurvivesAFileThatShrinksMeanwhile) {
  Bytes source(HeadBytes() + SampleBytes(0, 1, 5));
  source.Tell(HeadBytes().size() + 160);
  const Recorded recorded = ReadRecording("x", source);
  EXPECT_EQ(1U, Count(recorded));
  EXPECT_EQ(Damage(1, "a sample has a number that can't come here"), recorded.m_sDamage);
}

TEST(RecordingReader, ReadsFiles) {
  const TemporaryFolder folder;
  EXPECT_EQ(4U, Count(ReadRecording(folder.Write("whole", WholeBytes()))));
  const Recorded cut = ReadRecording(folder.Write("cut", WholeBytes().substr(0, HeadBytes().size() + 33)));
  EXPECT_EQ(2U, Count(cut));
  EXPECT_EQ("The recording \"" + folder.File("cut") + "\" can't be read beyond its 2 samples: " + sIN_SAMPLE,
            cut.m_sDamage);
}

TEST(RecordingReader, RefusesWhatCannotBeOpened) {
  const TemporaryFolder folder;
  Witness witness;
  EXPECT_THROW(ReadRecording(folder.File("missing")), RecordingUnreadable);
  EXPECT_THROW(ReadRecording(folder.Path()), RecordingUnreadable);
  EXPECT_THAT(
      witness.m_raised,
      ElementsAre("The recording \"" + folder.File("missing") + "\" can't be read: it can't be opened",
                  "The recording \"" + folder.Path() + "\" can't be read: it can't be opened"));
  EXPECT_THAT(witness.m_logNames, ElementsAre("Station.Recorder", "Station.Recorder"));
}

}  // namespace
