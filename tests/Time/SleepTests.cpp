#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "Support/ChildProcess.h"

namespace {

using namespace Oxa::Core;
using TestSupport::RunChild;
using TestSupport::TemporaryFile;

template <class Operation>
long long MillisecondsOf(const Operation& operation) {
  const auto start = std::chrono::steady_clock::now();
  operation();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
      .count();
}

// Whether the process waits in a sleep.
// The host tells by its name that it is about to sleep: the library itself sleeps as it is being loaded.
bool IsInMain(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  return std::getline(file, name) && name == "about to sleep";
}

bool Sleeps(pid_t process) {
  if (!IsInMain(process)) return false;
  std::ifstream file("/proc/" + std::to_string(process) + "/wchan");
  const std::string place{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (place.find("nanosleep") != std::string::npos) return true;
  std::ifstream call("/proc/" + std::to_string(process) + "/syscall");
  std::string number;
  call >> number;
  return number == "230" || number == "35";  // clock_nanosleep, nanosleep
}

struct LongSleep {
  bool m_bSlept = false;
  std::string m_sOutput;
  std::string m_sError;
};

// Starts a process that sleeps, waits until it does, and ends it.
LongSleep SleepInChild(const std::string& action, const std::string& value, const std::string& units) {
  const TemporaryFile output, error;
  const pid_t child = fork();
  if (child == 0) {
    dup2(output.Handle(), STDOUT_FILENO);
    dup2(error.Handle(), STDERR_FILENO);
    execl(TIME_HOST, TIME_HOST, action.c_str(), value.c_str(), units.c_str(), nullptr);
    _exit(127);
  }
  LongSleep result;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  int status = 0;
  while (std::chrono::steady_clock::now() < deadline && waitpid(child, &status, WNOHANG) == 0) {
    if (Sleeps(child)) {
      result.m_bSlept = true;
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  if (result.m_bSlept) {
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
  }
  result.m_sOutput = output.Content();
  result.m_sError = error.Content();
  return result;
}

LongSleep SleepInChild(long long value, Elapse::TimeUnits units) {
  return SleepInChild("sleep", std::to_string(value), std::to_string(units));
}

void ExpectAssertion(const LongSleep& sleep, const std::string& condition) {
  EXPECT_TRUE(sleep.m_bSlept) << "beyond the bound it still sleeps";
  EXPECT_NE(std::string::npos, sleep.m_sError.find("): Failed Assertion(" + condition + ")\n"))
      << sleep.m_sError;
}

// As long as asked, and not ten times or a thousand times as long.
template <class Operation>
void ExpectLasts(long long milliseconds, const Operation& operation) {
  const long long taken = MillisecondsOf(operation);
  EXPECT_GE(taken, milliseconds);
  EXPECT_LT(taken, milliseconds + 8000);
}

TEST(Sleep, InEachUnit) {
  ExpectLasts(20, [] { OxaSleep(20000000, Elapse::NanoSeconds, false); });
  ExpectLasts(20, [] { OxaSleep(20000, Elapse::MicroSeconds, false); });
  ExpectLasts(20, [] { OxaSleep(20, Elapse::MilliSeconds, false); });
  ExpectLasts(1000, [] { OxaSleep(1, Elapse::Seconds, false); });
  ExpectLasts(20, [] { OxaSleep(200000, Elapse::TimerTicks, false); });
  ExpectLasts(20, [] { OxaSleep(Elapse(20, Elapse::MilliSeconds), false); });
  ExpectLasts(20, [] { OxaSleep(Elapse(20, Elapse::MilliSeconds), true); });
}

TEST(Sleep, BelowAMillisecondIsCutOff) {
  const auto thousandTimes = [](long value, Elapse::TimeUnits units) {
    return MillisecondsOf([=] {
      for (int i = 0; i < 1000; ++i) OxaSleep(value, units, false);
    });
  };
  EXPECT_LT(thousandTimes(999999, Elapse::NanoSeconds), 900);
  EXPECT_LT(thousandTimes(999, Elapse::MicroSeconds), 900);
  EXPECT_LT(thousandTimes(9999, Elapse::TimerTicks), 900);
  EXPECT_LT(MillisecondsOf([] {
              for (int i = 0; i < 1000; ++i) OxaSleep(Elapse(9999, Elapse::TimerTicks), false);
            }),
            900);
}

TEST(Sleep, NegativeValuesAreNothing) {
  for (int units = Elapse::NanoSeconds; units <= Elapse::TimerTicks; ++units) {
    EXPECT_LT(MillisecondsOf([=] { OxaSleep(-1000, static_cast<Elapse::TimeUnits>(units), false); }), 10000);
  }
}

TEST(Sleep, MinutesHoursAndDays) {
  for (const Elapse::TimeUnits units : {Elapse::Minutes, Elapse::Hours, Elapse::Days}) {
    const LongSleep sleep = SleepInChild(1, units);
    EXPECT_TRUE(sleep.m_bSlept);
    EXPECT_EQ("", sleep.m_sError);
  }
}

TEST(Sleep, WithinTheBoundNothingIsAsserted) {
  const struct {
    long long value;
    Elapse::TimeUnits units;
  } sleeps[] = {
      {49, Elapse::Days}, {1193, Elapse::Hours}, {71582, Elapse::Minutes}, {4294967, Elapse::Seconds}};
  for (const auto& request : sleeps) {
    const LongSleep sleep = SleepInChild(request.value, request.units);
    EXPECT_TRUE(sleep.m_bSlept) << request.value;
    EXPECT_EQ("", sleep.m_sError);
  }
}

TEST(Sleep, BeyondTheBoundAssertsAndSleeps) {
  ExpectAssertion(SleepInChild(50, Elapse::Days), "uval <= 49U");
  ExpectAssertion(SleepInChild(1194, Elapse::Hours), "uval <= 1193U");
  ExpectAssertion(SleepInChild(71583, Elapse::Minutes), "uval <= 71582U");
}

// 4294968 seconds are 704 milliseconds above 32 bits.
TEST(Sleep, BeyondTheBoundTheLow32BitsRemain) {
  const auto start = std::chrono::steady_clock::now();
  const auto result = RunChild({TIME_HOST, "sleep", "4294968", std::to_string(Elapse::Seconds)});
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(704));
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("\ndone\n", result.m_sOutput);
  EXPECT_NE(std::string::npos, result.m_sError.find("): Failed Assertion(uval <= 4294967U)\n"))
      << result.m_sError;
}

// Each of these is 1024 milliseconds above a multiple of 2^32 of them, and only by the right factor.
TEST(Sleep, MinutesHoursAndDaysHaveTheirLengths) {
  const struct {
    const char* value;
    Elapse::TimeUnits units;
    const char* condition;
  } sleeps[] = {{"41589600", Elapse::Minutes, "uval <= 71582U"},
                {"693160", Elapse::Hours, "uval <= 1193U"},
                {"1426983", Elapse::Days, "uval <= 49U"}};
  for (const auto& request : sleeps) {
    SCOPED_TRACE(request.value);
    ExpectLasts(1024, [&] {
      const auto result = RunChild({TIME_HOST, "sleep", request.value, std::to_string(request.units)});
      EXPECT_EQ(0, result.m_iStatus);
      EXPECT_EQ("\ndone\n", result.m_sOutput);
      EXPECT_NE(std::string::npos,
                result.m_sError.find("): Failed Assertion(" + std::string(request.condition) + ")\n"))
          << result.m_sError;
    });
  }
}

TEST(Sleep, AnUnknownUnitAssertsAndDoesNotSleep) {
  const auto result = RunChild({TIME_HOST, "sleep", "100000000", "8"});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("\ndone\n", result.m_sOutput);
  EXPECT_NE(std::string::npos, result.m_sError.find("): Failed Assertion(false)\n")) << result.m_sError;
}

TEST(Sleep, ANegativeSpanIsAVeryLongSleep) {
  const LongSleep sleep = SleepInChild("sleep-ticks", "-10000", "0");
  EXPECT_TRUE(sleep.m_bSlept);
  EXPECT_EQ("", sleep.m_sOutput);
}

// Its low 32 bits are zero, as if it were nothing.
TEST(Sleep, ASpanOfAMultipleOf32BitsIsNothing) {
  EXPECT_LT(MillisecondsOf([] { OxaSleep(Elapse(4294967296, Elapse::MilliSeconds), false); }), 10000);
  EXPECT_LT(MillisecondsOf([] { OxaSleep(4294967296, Elapse::MilliSeconds, false); }), 10000);
}

}  // namespace
