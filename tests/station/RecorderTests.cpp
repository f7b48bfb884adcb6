#include "Recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>
#include <sstream>

#include "FakeClock.h"
#include "MeasureAll.h"
#include "RecordingBytes.h"
#include "RecordingReader.h"
#include "StationAlerts.h"
#include "Support/BackgroundChild.h"
#include "Support/Eventually.h"
#include "Support/Sanitized.h"
#include "TemporaryFolder.h"
#include "TestLog.h"
#include "Witness.h"

namespace {

using namespace StationTests;
using Oxa::Core::BinaryFileStream;
using Oxa::Core::BinaryPipe;
using Oxa::Core::eLOG_ERROR;
using Oxa::Core::IMutex;
using Station::Plan;
using Station::ReadPlan;
using Station::ReadRecording;
using Station::Recorded;
using Station::Recorder;
using Station::RecordingImpossible;
using Station::Sample;
using Station::SampleSender;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using TestSupport::BackgroundChild;
using TestSupport::Eventually;

Elapse Ticks(long long ticks) { return Elapse(ticks, Elapse::TimerTicks); }

Plan ThePlan() { return ReadPlan("p", "a 1ms 3 0.005 msec\nb.c 10s 2 0s"); }

TEST(Recorder, WritesTheBytesOfARecording) {
  const TemporaryFolder folder;
  Recorder recorder(folder.File("x"), ThePlan());
  for (const Sample& sample :
       {Sample{0, 1, Ticks(50)}, {0, 2, Ticks(51)}, {1, 1, Ticks(7)}, {0, 3, Ticks(1)}})
    recorder.Keep(sample);
  EXPECT_EQ("", recorder.Finish());
  EXPECT_EQ("", recorder.Finish());
  EXPECT_EQ(WholeBytes(), ReadFile(folder.File("x")));
  EXPECT_EQ(4U, recorder.GetFlushed());
}

TEST(Recorder, WritesNegativeLatenesses) {
  const TemporaryFolder folder;
  Recorder recorder(folder.File("x"), ThePlan());
  recorder.Keep({0, 1, Ticks(-3)});
  EXPECT_EQ("", recorder.Finish());
  EXPECT_EQ(HeadBytes() + SampleBytes(0, 1, -3) + EndBytes(1), ReadFile(folder.File("x")));
}

TEST(Recorder, OfNothingIsWhole) {
  const TemporaryFolder folder;
  { const Recorder recorder(folder.Write("x", std::string(1000, 'x')), ThePlan()); }
  EXPECT_EQ(HeadBytes() + EndBytes(0), ReadFile(folder.File("x")));
}

TEST(Recorder, FlushesEverySampleBeforeItWaitsForTheNext) {
  const TemporaryFolder folder;
  Recorder recorder(folder.File("x"), ThePlan());
  EXPECT_EQ(HeadBytes(), ReadFile(folder.File("x")));
  recorder.Keep({0, 1, Ticks(50)});
  ASSERT_TRUE(Eventually([&] { return recorder.GetFlushed() == 1; }));
  EXPECT_EQ(HeadBytes() + SampleBytes(0, 1, 50), ReadFile(folder.File("x")));
  recorder.Keep({1, 2, Ticks(5)});
  ASSERT_TRUE(Eventually([&] { return recorder.GetFlushed() == 2; }));
  EXPECT_EQ(HeadBytes() + SampleBytes(0, 1, 50) + SampleBytes(1, 2, 5), ReadFile(folder.File("x")));
  const Recorded recorded = ReadRecording(folder.File("x"));  // while it is at work
  EXPECT_THAT(recorded.m_sDamage, HasSubstr("beyond its 2 samples: it ends without its end mark"));
}

std::string WhyImpossible(const std::string& file) {
  try {
    const Recorder recorder(file, ThePlan());
    return "it is possible";
  } catch (const RecordingImpossible& error) {
    return error.what();
  }
}

TEST(Recorder, RefusesWhatItCannotMake) {
  const TemporaryFolder folder;
  for (const std::string& file : {folder.Path(), folder.File("missing/x"), std::string()}) {
    std::string expected = "Nothing can be recorded in \"";
    expected.append(file).append("\": the file can't be made, or somebody else has it open");
    EXPECT_EQ(expected, WhyImpossible(file));
  }
}

TEST(Recorder, RefusesAFileThatIsOpenElsewhereAndLeavesItAlone) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("x", "precious");
  {
    const BinaryFileStream other(file, BinaryFileStream::READ_MODE, BinaryFileStream::eOPEN_IF_EXISTS);
    EXPECT_THAT(WhyImpossible(file), HasSubstr("somebody else has it open"));
  }
  EXPECT_EQ("precious", ReadFile(file));
  const Recorder first(file, ThePlan());
  EXPECT_THAT(WhyImpossible(file), HasSubstr("somebody else has it open"));
  EXPECT_EQ(HeadBytes(), ReadFile(file));
}

TEST(Recorder, RefusesAFileThatTakesNothing) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  EXPECT_THAT(WhyImpossible("/dev/full"), HasSubstr("Nothing can be recorded in \"/dev/full\": "));
}

class SampleSenderTest : public testing::Test {
 protected:
  Sample Next() { return {0, ++m_ulNumber, Ticks(1)}; }

  BinaryPipe m_pipe{Station::ullRECORDER_RING, IMutex::sINFINITE, Elapse(0)};
  SampleSender m_sender{m_pipe, "a.b"};
  Witness m_witness;
  unsigned long m_ulNumber = 0;
};

TEST_F(SampleSenderTest, TellsOfAFullPipeAndNeverWaits) {
  while (m_sender.Send(Next())) ASSERT_LE(m_ulNumber, 65536U);
  EXPECT_LE(65536U - 16, m_ulNumber);
  EXPECT_EQ((m_ulNumber - 1) * 16, m_pipe.AvailableBytes());
  EXPECT_FALSE(m_sender.Send(Next()));
  EXPECT_THAT(m_witness.m_raised, ElementsAre());
  EXPECT_THAT(m_witness.m_warnings, SizeIs(2));
  EXPECT_EQ("Sample " + std::to_string(m_ulNumber) + " of series \"a.b\" is not in the recording",
            m_witness.m_warnings.back());
  EXPECT_THAT(m_witness.m_logNames, Each("Station.Series.a_b"));
}

TEST_F(SampleSenderTest, GoesOnWhenThereIsRoomAgain) {
  while (m_sender.Send(Next())) continue;
  const unsigned next = static_cast<unsigned>(m_ulNumber) + 1;
  m_pipe.Skip(m_pipe.AvailableBytes());
  EXPECT_TRUE(m_sender.Send(Next()));
  unsigned char bytes[16] = {};
  EXPECT_EQ(16, m_pipe.Read(bytes, 16));
  EXPECT_EQ(SampleBytes(0, next, 1), std::string(bytes, bytes + 16));
  EXPECT_EQ(0U, m_pipe.AvailableBytes());
}

TEST_F(SampleSenderTest, TellsOfAClosedPipe) {
  EXPECT_TRUE(m_sender.Send(Next()));
  m_pipe.Close();
  EXPECT_FALSE(m_sender.Send(Next()));
  EXPECT_THAT(m_witness.m_warnings, ElementsAre("Sample 2 of series \"a.b\" is not in the recording"));
  EXPECT_THAT(m_witness.m_raised, ElementsAre());
}

TEST(Recorder, IsNotWholeIfSamplesComeTooLate) {
  const TemporaryFolder folder;
  Recorder recorder(folder.File("x"), ThePlan());
  EXPECT_EQ("", recorder.Finish());
  Witness witness;
  recorder.Keep({1, 1, Ticks(1)});
  EXPECT_THAT(witness.m_warnings, ElementsAre("Sample 1 of series \"b.c\" is not in the recording"));
  EXPECT_EQ(HeadBytes() + EndBytes(0), ReadFile(folder.File("x")));
}

// A file of a process can't grow beyond a limit, which is the nearest thing to a full disk.
class FileLimit {
 public:
  explicit FileLimit(rlim_t bytes) {
    m_previous = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit limit{bytes, m_before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;
  ~FileLimit() {
    ::setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_previous);
  }

 private:
  rlimit m_before{};
  void (*m_previous)(int) = nullptr;
};

TEST(Recorder, TellsOfAFileThatTakesNoMoreAndKeepsWhatItTook) {
  const TemporaryFolder folder;
  TestLog log;
  {
    const FileLimit limit(HeadBytes().size() + 24);
    Recorder recorder(folder.File("x"), ThePlan());
    recorder.Keep({0, 1, Ticks(1)});
    ASSERT_TRUE(Eventually([&] { return recorder.GetFlushed() == 1; }));
    recorder.Keep({0, 2, Ticks(1)});
    Witness witness;
    ASSERT_TRUE(Eventually([&] {
      recorder.Keep({0, 3, Ticks(1)});
      return !witness.m_warnings.empty();
    }));
    EXPECT_THAT(recorder.Finish(), HasSubstr("System call to ::WriteFile() failed"));
    EXPECT_EQ("", recorder.Finish());
    EXPECT_EQ(1U, recorder.GetFlushed());
  }
  const Recorded recorded = ReadRecording(folder.File("x"));
  EXPECT_THAT(recorded.m_measurements[0].m_latenesses, ElementsAre(Ticks(1)));
  EXPECT_THAT(recorded.m_sDamage, HasSubstr("beyond its 1 samples"));
  EXPECT_THAT(log.Messages("Oxa.Core.Thread", eLOG_ERROR),
              Contains(HasSubstr("Thread Recorder terminated due to error:\n")));
}

TEST(Recorder, KeepsWhatIsMeasuredOnSeveralThreads) {
  const TemporaryFolder folder;
  const Plan plan = ReadPlan("p", "a 100us 300 10s\nb 200us 200 0.1 Minutes\nc 1ms 20 0s\nd 20ms 2 10s");
  std::ostringstream out;
  Station::Progress progress(out, false);
  Station::SystemClock clock;
  Recorder recorder(folder.File("x"), plan);
  const auto measured = MeasureAll(
      plan, clock, progress, [] { return false; }, &recorder);
  EXPECT_EQ("", recorder.Finish());
  const Recorded recorded = ReadRecording(folder.File("x"));
  EXPECT_EQ("", recorded.m_sDamage);
  ASSERT_EQ(4U, recorded.m_measurements.size());
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(measured[i].m_series.m_sName, recorded.m_measurements[i].m_series.m_sName);
    EXPECT_EQ(measured[i].m_series.m_tolerance, recorded.m_measurements[i].m_series.m_tolerance);
    EXPECT_EQ(measured[i].m_series.m_sUnit, recorded.m_measurements[i].m_series.m_sUnit);
    EXPECT_EQ(measured[i].m_latenesses, recorded.m_measurements[i].m_latenesses);
    EXPECT_EQ(measured[i].m_ulLate, recorded.m_measurements[i].m_ulLate);
  }
}

constexpr unsigned uMANY = TestSupport::bSANITIZED ? 50000 : 1000000;

TEST(Recorder, KeepsAMillionSamplesByteByByte) {
  const TemporaryFolder folder;
  std::string expected = Text("OxaStation") + Little(2, 4) + Little(1, 4) + SeriesBytes("a", 1, 0, 1000000);
  std::vector<Elapse> latenesses;
  Recorder recorder(folder.File("x"), ReadPlan("p", "a 100ns 1000000 0s"));
  for (unsigned number = 1; number <= uMANY; ++number) {
    const long long lateness = number * 0x12345678ABLL - 0x123456789ABCDLL;
    latenesses.push_back(Ticks(lateness));
    recorder.Keep({0, number, Ticks(lateness)});
    expected += SampleBytes(0, number, lateness);
    const auto sent = [&] { return number - recorder.GetFlushed() < 50000; };
    ASSERT_TRUE(sent() || Eventually(sent));  // beyond that some would find no room
  }
  EXPECT_EQ("", recorder.Finish());
  EXPECT_TRUE(expected + EndBytes(uMANY) == ReadFile(folder.File("x")));
  const Recorded recorded = ReadRecording(folder.File("x"));
  EXPECT_EQ("", recorded.m_sDamage);
  EXPECT_TRUE(latenesses == recorded.m_measurements[0].m_latenesses);
}

// What the process that records said to be flushed.
unsigned long long Reported(const std::string& file) {
  const std::string bytes = ReadFile(file);
  unsigned long long flushed = 0;
  if (bytes.size() == sizeof flushed) std::memcpy(&flushed, bytes.data(), sizeof flushed);
  return flushed;
}

#ifdef OXACORE_SOAK
constexpr int iDEATHS = 300;
#else
constexpr int iDEATHS = 5;
#endif

TEST(Recorder, LosesNothingThatWasFlushedWhenItsProcessIsKilled) {
  const TemporaryFolder folder;
  std::mt19937 random(1);  // NOLINT: the same moments each time
  for (int death = 0; death < iDEATHS; ++death) {
    const std::string file = folder.File("x" + std::to_string(death));
    const std::string report = file + ".flushed";
    BackgroundChild child({RECORD_FOR_EVER, file, report});
    const unsigned long long enough = 1 + random() % 20000;
    ASSERT_TRUE(Eventually([&] { return Reported(report) >= enough; }));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
    child.Kill();
    const Recorded recorded = ReadRecording(file);
    const auto& latenesses = recorded.m_measurements.at(0).m_latenesses;
    EXPECT_LE(Reported(report), latenesses.size());
    EXPECT_THAT(recorded.m_sDamage, HasSubstr("it ends "));
    for (std::size_t i = 0; i < latenesses.size(); ++i)
      ASSERT_EQ(static_cast<long long>(i + 1) * 3, latenesses[i].GetRawTimerTicks());
    std::filesystem::remove(file);
  }
}

}  // namespace
