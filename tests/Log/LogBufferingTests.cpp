// The queue between writers and the thread of the log manager, and how it is switched off and on.
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/System.h>

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "LogTape.h"
#include "Support/ThreadState.h"

namespace {

using namespace Oxa::Core;
using LogTests::Eventually;
using LogTests::GetLogger;
using LogTests::TapeHandler;
using TestSupport::MillisecondsOf;

LogManager& Manager() { return *LogManager::Instance(); }

// Holds the thread of the log manager in the handling of one entry until it is opened.
class Gate {
 public:
  Gate() : m_handler([this](const OxaLogEntry& entry) { Pass(entry); }) {
    GetLogger("Gate")->WriteLog(eLOG_ERROR, "close");
    Eventually([this] { return m_bClosed.load(); });
  }
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;
  ~Gate() { Open(); }

  void Open() { m_bOpen = true; }
  TapeHandler& Handler() { return m_handler; }

 private:
  void Pass(const OxaLogEntry& entry) {
    if (entry.m_sLoggerPath != "Gate") return;
    m_bClosed = true;
    Eventually([this] { return m_bOpen.load(); });
  }

  std::atomic<bool> m_bOpen{false};
  std::atomic<bool> m_bClosed{false};
  TapeHandler m_handler;
};

std::vector<int> ReportedSizes(const std::string& text) {
  std::vector<int> sizes;
  const std::regex report("watermark \\((\\d+) items\\)");
  for (auto found = std::sregex_iterator(text.begin(), text.end(), report); found != std::sregex_iterator();
       ++found)
    sizes.push_back(std::stoi((*found)[1]));
  return sizes;
}

TEST(LogBuffering, IsOnAtFirst) { EXPECT_TRUE(Manager().GetBufferingMode()); }

TEST(LogBuffering, ThreadIsTheManagersOwn) {
  std::atomic<unsigned long> handlerThread{0};
  TapeHandler handler([&handlerThread](const OxaLogEntry&) { handlerThread = Thread::GetCurrentId(); });
  GetLogger("Buffering.Thread")->WriteLog(eLOG_ERROR, "text");
  handler.Await("Buffering.Thread", 1);
  EXPECT_NE(Thread::GetCurrentId(), handlerThread);
  const LogTests::Unbuffered unbuffered;
  GetLogger("Buffering.Thread")->WriteLog(eLOG_ERROR, "text");
  EXPECT_EQ(Thread::GetCurrentId(), handlerThread);
}

TEST(LogBuffering, ThreadHasItsName) {
  std::atomic<bool> has{false};
  TapeHandler handler([&has](const OxaLogEntry&) {
    char name[16] = "";
    ::pthread_getname_np(::pthread_self(), name, sizeof name);
    has = std::string(name) == std::string("LogManager Thread").substr(0, 15);
  });
  GetLogger("Buffering.Name")->WriteLog(eLOG_ERROR, "text");
  handler.Await("Buffering.Name", 1);
  EXPECT_TRUE(has);
}

// What becomes of the arguments behind the call is of no interest to the log.
TEST(LogBuffering, EntryIsOfTheMomentOfTheCall) {
  Gate gate;
  char word[] = "before";
  GetLogger("Buffering.Moment")->WriteLog(eLOG_ERROR, "%s", word);
  const Time behindTheCall;
  std::strcpy(word, "after");
  OxaSleep(2, Elapse::MilliSeconds, false);
  gate.Open();
  const auto entries = gate.Handler().Await("Buffering.Moment", 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ("before", entries[0].m_sMessage);
  EXPECT_LE(entries[0].m_time, behindTheCall);
}

TEST(LogBuffering, DropsWhatComesAtThreeThousandAndReportsEveryHundred) {
  Gate gate;
  const auto logger = GetLogger("Buffering.Full");
  testing::internal::CaptureStderr();
  for (int i = 0; i < 3001; ++i) logger->WriteLog(eLOG_ERROR, "%d", i);
  for (int i = 3001; i < 3100; ++i) logger->WriteLog(eLOG_ERROR, "%d", i);
  const std::string reports = testing::internal::GetCapturedStderr();
  gate.Open();
  const auto entries = gate.Handler().Await("Buffering.Full", 3000);
  ASSERT_EQ(3000U, entries.size());
  EXPECT_EQ("0", entries.front().m_sMessage);
  EXPECT_EQ("2999", entries.back().m_sMessage);
  std::vector<int> expected;
  for (int size = 1000; size <= 3000; size += 100) expected.push_back(size);
  EXPECT_EQ(expected, ReportedSizes(reports));
  EXPECT_TRUE(
      std::regex_search(reports, std::regex("Queue #\\d+\\n +new high watermark \\(1000 items\\)\\n")))
      << reports;
  EXPECT_TRUE(std::regex_search(
      reports, std::regex("high watermark \\(3000 items\\) reached hard limit \\(3000 items\\)\\n\\n$")))
      << reports;
  logger->WriteLog(eLOG_ERROR, "room again");
  EXPECT_EQ("room again", gate.Handler().Await("Buffering.Full", 3001).back().m_sMessage);
}

TEST(LogBuffering, FullQueueDoesNotHoldWritersUp) {
  Gate gate;
  const auto logger = GetLogger("Buffering.Quick");
  testing::internal::CaptureStderr();
  EXPECT_LT(MillisecondsOf([&] {
              for (int i = 0; i < 20000; ++i) logger->WriteLog(eLOG_ERROR, "%d", i);
            }),
            10000);
  testing::internal::GetCapturedStderr();
}

TEST(LogBuffering, OffMeansThatAMessageHasArrivedWhenTheCallReturns) {
  TapeHandler handler;
  const auto logger = GetLogger("Buffering.Off");
  Manager().SetBufferingMode(false);
  EXPECT_FALSE(Manager().GetBufferingMode());
  for (std::size_t i = 1; i <= 100; ++i) {
    logger->WriteLog(eLOG_ERROR, "text");
    ASSERT_EQ(i, handler.Of("Buffering.Off").size());
  }
  Manager().SetBufferingMode(true);
  EXPECT_TRUE(Manager().GetBufferingMode());
}

TEST(LogBuffering, OffSendsWhatWaits) {
  TapeHandler handler;
  const auto logger = GetLogger("Buffering.Waiting");
  for (int i = 0; i < 900; ++i) logger->WriteLog(eLOG_ERROR, "%d", i);
  Manager().SetBufferingMode(false);
  EXPECT_EQ(900U, handler.Of("Buffering.Waiting").size());
}

TEST(LogBuffering, OffSendsWhatASlowHandlerHasInHand) {
  TapeHandler handler([](const OxaLogEntry& entry) {
    if (entry.m_sLoggerPath == "Buffering.Slow") OxaSleep(30, Elapse::MilliSeconds, false);
  });
  const auto logger = GetLogger("Buffering.Slow");
  for (int i = 0; i < 5; ++i) {
    logger->WriteLog(eLOG_ERROR, "%d", i);
    Manager().SetBufferingMode(false);
    EXPECT_EQ(static_cast<std::size_t>(i + 1), handler.Of("Buffering.Slow").size());
    Manager().SetBufferingMode(true);
  }
}

TEST(LogBuffering, SwitchingToTheSameModeDoesNothing) {
  EXPECT_LT(MillisecondsOf([] { Manager().SetBufferingMode(true); }), 50);
  Manager().SetBufferingMode(false);
  EXPECT_LT(MillisecondsOf([] { Manager().SetBufferingMode(false); }), 50);
}

TEST(LogBuffering, GoesOnAndOffOverAndOver) {
  TapeHandler handler;
  const auto logger = GetLogger("Buffering.Cycles");
  std::size_t written = 0;
  for (int i = 0; i < 10; ++i) {
    Manager().SetBufferingMode(false);
    logger->WriteLog(eLOG_ERROR, "direct");
    ++written;
    ASSERT_EQ(written, handler.Of("Buffering.Cycles").size());
    Manager().SetBufferingMode(true);
    logger->WriteLog(eLOG_ERROR, "buffered");
    ++written;
    ASSERT_EQ(written, handler.Await("Buffering.Cycles", written).size());
  }
}

// Whether the thread sleeps at 50 looks in a row.
bool Rests(unsigned long thread) {
  for (int look = 0; look < 50; ++look) {
    if (!TestSupport::ThreadSleeps(thread)) return false;
    OxaSleep(1, Elapse::MilliSeconds, false);
  }
  return true;
}

// A queue that is left released from the end of the old thread would keep the new one from its sleep.
TEST(LogBuffering, NewThreadSleepsWhileThereIsNothingToDo) {
  std::atomic<unsigned long> thread{0};
  TapeHandler handler([&thread](const OxaLogEntry&) { thread = Thread::GetCurrentId(); });
  Manager().SetBufferingMode(false);
  Manager().SetBufferingMode(true);
  GetLogger("Buffering.Rest")->WriteLog(eLOG_ERROR, "text");
  handler.Await("Buffering.Rest", 1);
  EXPECT_TRUE(Eventually([&thread] { return Rests(thread); }));
}

TEST(LogBuffering, OffIsBoundedWhenAHandlerHangs) {
  Gate gate;
  GetLogger("Buffering.Hanging")->WriteLog(eLOG_ERROR, "behind the gate");
  EXPECT_LT(MillisecondsOf([] { Manager().SetBufferingMode(false); }), 10000);
  EXPECT_FALSE(Manager().GetBufferingMode());
  // The thread can't be replaced while it hangs: messages go on to be sent directly.
  EXPECT_LT(MillisecondsOf([] { Manager().SetBufferingMode(true); }), 10000);
  EXPECT_FALSE(Manager().GetBufferingMode());
  gate.Open();
  EXPECT_TRUE(Eventually([] {
    Manager().SetBufferingMode(true);
    return Manager().GetBufferingMode();
  }));
  GetLogger("Buffering.Hanging")->WriteLog(eLOG_ERROR, "by the new thread");
  EXPECT_EQ("by the new thread", gate.Handler().Await("Buffering.Hanging", 1).back().m_sMessage);
}

TEST(LogBuffering, MayBeSwitchedByAHandler) {
  TapeHandler handler([](const OxaLogEntry& entry) {
    if (entry.m_sMessage == "off") Manager().SetBufferingMode(false);
    if (entry.m_sMessage == "off and on") {
      Manager().SetBufferingMode(false);
      Manager().SetBufferingMode(true);
    }
  });
  const auto logger = GetLogger("Buffering.ByHandler");
  logger->WriteLog(eLOG_ERROR, "off and on");
  logger->WriteLog(eLOG_ERROR, "buffered");
  EXPECT_EQ(2U, handler.Await("Buffering.ByHandler", 2).size());
  EXPECT_TRUE(Manager().GetBufferingMode());
  logger->WriteLog(eLOG_ERROR, "off");
  EXPECT_TRUE(Eventually([] { return !Manager().GetBufferingMode(); }));
  EXPECT_EQ(3U, handler.Await("Buffering.ByHandler", 3).size());
  logger->WriteLog(eLOG_ERROR, "direct");
  EXPECT_EQ(4U, handler.Of("Buffering.ByHandler").size());
  Manager().SetBufferingMode(true);
  EXPECT_TRUE(Manager().GetBufferingMode());
  logger->WriteLog(eLOG_ERROR, "buffered");
  EXPECT_EQ(5U, handler.Await("Buffering.ByHandler", 5).size());
}

TEST(LogBuffering, MayBeSwitchedByManyThreads) {
  TapeHandler handler;
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([i] {
      for (int turn = 0; turn < 4; ++turn) Manager().SetBufferingMode((i + turn) % 2 == 0);
    });
  }
  std::thread writer([&stop] {
    while (!stop) {
      GetLogger("Buffering.Threads")->WriteLog(eLOG_ERROR, "text");
      std::this_thread::yield();
    }
  });
  for (std::thread& thread : threads) thread.join();
  stop = true;
  writer.join();
  Manager().SetBufferingMode(true);
  GetLogger("Buffering.End")->WriteLog(eLOG_ERROR, "text");
  EXPECT_EQ(1U, handler.Await("Buffering.End", 1).size());
}

}  // namespace
