// A thread of the log manager that is killed while it takes entries out of the queue.
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <iostream>
#include <streambuf>
#include <string>
#include <thread>

#include "Log/BurstFolder.h"
#include "Log/LogTape.h"
#include "Platform/Linux/KillState.h"
#include "Platform/NativeThread.h"
#include "Support/LeakDetector.h"
#include "Support/ThreadState.h"
#include "Threads/ThreadTestSupport.h"

namespace {

using namespace Oxa::Core;
using LogTests::BurstFolder;
using LogTests::Eventually;
using LogTests::GetLogger;
using LogTests::Manager;
using LogTests::Numbers;
using LogTests::Write;

constexpr int iENTRIES = 2900;  // below the limit of the queue, and more than one report of its size

/// Keeps the first one that comes, once it is shut.
class Gate {
 public:
  void Shut() { m_bShut = true; }
  void Open() { m_bOpen = true; }
  void Pass() {
    if (!m_bShut.exchange(false)) return;
    m_bReached = true;
    Eventually([this] { return m_bOpen.load(); });
    m_bPassed = true;
  }
  bool IsReached() const { return m_bReached; }
  bool IsPassed() const { return m_bPassed; }

 private:
  std::atomic<bool> m_bShut{false};
  std::atomic<bool> m_bReached{false};
  std::atomic<bool> m_bOpen{false};
  std::atomic<bool> m_bPassed{false};
};

Gate s_lengthOfFile;  // on the way of whoever asks for the length of a file

/// Standard error with a gate: the queue reports with its lock held.
class GatedStandardError : public std::streambuf {
 public:
  GatedStandardError() {
    m_gate.Shut();
    std::cerr.rdbuf(this);
  }
  GatedStandardError(const GatedStandardError&) = delete;
  GatedStandardError& operator=(const GatedStandardError&) = delete;
  ~GatedStandardError() override { std::cerr.rdbuf(m_pBefore); }

  Gate m_gate;

 protected:
  std::streamsize xsputn(const char* /*text*/, std::streamsize size) override {
    m_gate.Pass();
    return size;
  }

 private:
  std::streambuf* const m_pBefore = std::cerr.rdbuf();
};

/// The log's thread, which lives on.
struct LogThread {
  Platform::NativeThread* m_pThread = nullptr;
  unsigned long m_ulId = 0;
};

LogThread FindLogThread() {
  LogThread found;
  std::atomic<bool> isFound{false};
  const LogTests::TapeHandler handler([&](const OxaLogEntry&) {
    if (isFound || Platform::t_kill.Thread() == nullptr) return;
    found = {Platform::t_kill.Thread(), Thread::GetCurrentId()};
    isFound = true;
  });
  GetLogger("Killed.First")->WriteLog(eLOG_ERROR, "text");
  EXPECT_TRUE(Eventually([&] { return isFound.load(); }));
  return found;
}

// It has written an entry to the file, and asked for as many as it ever takes.
void KillBeforeTheQueue() {
  const LogThread victim = FindLogThread();
  s_lengthOfFile.Shut();
  Write(0, 1);
  EXPECT_TRUE(Eventually([] { return s_lengthOfFile.IsReached(); }));
  GatedStandardError standardError;
  std::thread writer([] { Write(1, iENTRIES); });
  EXPECT_TRUE(Eventually([&] { return standardError.m_gate.IsReached(); }));
  s_lengthOfFile.Open();
  EXPECT_TRUE(Eventually([] { return s_lengthOfFile.IsPassed(); }));
  EXPECT_TRUE(Eventually([&] { return TestSupport::ThreadSleeps(victim.m_ulId); }));
  EXPECT_EQ(Platform::NativeThread::EKillEnd::eKILLED,
            victim.m_pThread->Kill(0, Platform::Deadline::InMilliseconds(10000)).m_eEnd);
  standardError.m_gate.Open();
  writer.join();
}

}  // namespace

// In place of the system's.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's names are reserved
extern "C" off_t lseek(int file, off_t offset, int whence) noexcept {
  s_lengthOfFile.Pass();
  return ::syscall(SYS_lseek, file, offset, whence);
}

namespace {

int CountOfEntries(const std::string& text) {
  int count = 0;
  for (std::size_t at = text.find("<LogEntry "); at != std::string::npos;
       at = text.find("<LogEntry ", at + 1))
    ++count;
  return count;
}

TEST(KilledLogThread, LeavesAllEntriesAndNoOthersToWhoeverEndsTheBuffering) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  TestSupport::ForgiveLeaks();  // before the thread, which the folder makes anew
  const BurstFolder folder;
  KillBeforeTheQueue();
  Manager().SetBufferingMode(false);
  EXPECT_EQ(Numbers(iENTRIES), folder.Numbers());
  EXPECT_EQ(iENTRIES, CountOfEntries(folder.Folder().Entries()));
  Manager().SetBufferingMode(true);
}

}  // namespace
