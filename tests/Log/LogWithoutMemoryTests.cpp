// Fails every single allocation of a log call, one after the other.
#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "LogTape.h"
#include "Support/Allocations.h"

// Bad formats are wanted here, and the compiler is not to see them.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace {

using namespace Oxa::Core;
using LogTests::GetLogger;
using LogTests::TapeHandler;
using TestSupport::FailAllocation;
using TestSupport::ThreadAllocations;

constexpr unsigned long ulENOUGH = 2000;

// Gives how many allocations `action` could fail at; it has to come back from each.
unsigned long FailEachAllocation(const std::function<void()>& action) {
  for (unsigned long number = 1; number < ulENOUGH; ++number) {
    const FailAllocation failing(number);
    action();
    if (!failing.Happened()) return number - 1;
  }
  return ulENOUGH;
}

TEST(LogWithoutMemory, DisabledMessagesAllocateNothing) {
  const auto logger = GetLogger("Memory.Off");
  const unsigned long before = ThreadAllocations().m_ulCount;
  for (int i = 0; i < 100; ++i)
    logger->WriteLog(eLOG_DEBUG, "a text that is long enough to need memory of its own %d", i);
  EXPECT_EQ(before, ThreadAllocations().m_ulCount);
}

TEST(LogWithoutMemory, MessagesAreLostInSilence) {
  TapeHandler handler;
  const auto logger = GetLogger("Memory.With.A.Long.Path.To.It");
  const std::string text(6000, 'x');
  const unsigned long failed = FailEachAllocation([&] { logger->WriteLog(eLOG_ERROR, "%s", text.c_str()); });
  EXPECT_GE(failed, 2U);
  EXPECT_LT(failed, ulENOUGH);
  logger->WriteLog(eLOG_ERROR, "alive");
  EXPECT_TRUE(TestSupport::Eventually([&] {
    const auto entries = handler.Of("Memory.With.A.Long.Path.To.It");
    return !entries.empty() && entries.back().m_sMessage == "alive";
  }));
}

TEST(LogWithoutMemory, BadFormatsAreLostInSilence) {
  const auto logger = GetLogger("Memory.Bad");
  const char* volatile format = "a format that ends with a directive that is not complete %";
  const unsigned long failed = FailEachAllocation([&] {
    const char* const hidden = format;
    logger->WriteLog(eLOG_ERROR, hidden, 0);
  });
  EXPECT_GE(failed, 1U);
  EXPECT_LT(failed, ulENOUGH);
}

TEST(LogWithoutMemory, ErrorsStillFly) {
  TapeHandler handler;
  int caught = 0;
  const unsigned long failed = FailEachAllocation([&caught] {
    try {
      OXA_RAISE_ERROR("Memory.Raise", LogicError("an error with a text that is long enough"));
    } catch (Error&) {
      ++caught;
    } catch (std::bad_alloc&) {
      ++caught;
    }
  });
  EXPECT_LT(failed, ulENOUGH);
  EXPECT_EQ(static_cast<int>(failed) + 1, caught);
}

TEST(LogWithoutMemory, FailedAssertsReturn) {
  testing::internal::CaptureStderr();
  const std::string text = "an assertion with a text that is long enough for the heap";
  const CodeContext place("file.cpp", 12, "build", "F", "void F()");
  const unsigned long failed = FailEachAllocation([&] { EXPECT_FALSE(LogAssertFailed(text, place)); });
  testing::internal::GetCapturedStderr();
  EXPECT_GE(failed, 2U);
  EXPECT_LT(failed, ulENOUGH);
}

TEST(LogWithoutMemory, LoggersAreMadeWholeOrNotAtAll) {
  constexpr int iPATHS = static_cast<int>(ulENOUGH);
  std::vector<std::string> paths;
  for (int i = 0; i < iPATHS; ++i) paths.push_back("Memory.Made.Number" + std::to_string(i));
  std::size_t tried = 0;
  const unsigned long failed = FailEachAllocation([&] {
    const std::string& path = paths[tried++];
    try {
      const auto logger = LogManager::Instance()->GetLogger(path);
      EXPECT_TRUE(logger && logger->GetPath().size() == path.size());
    } catch (std::bad_alloc&) {
      return;
    } catch (Error&) {
      return;
    }
  });
  EXPECT_LT(failed, ulENOUGH);
  for (std::size_t i = 0; i < tried; ++i)
    EXPECT_EQ(paths[i], LogManager::Instance()->GetLogger(paths[i])->GetPath());
}

TEST(LogWithoutMemory, DirectSendingSurvives) {
  const LogTests::Unbuffered unbuffered;
  TapeHandler handler;
  const auto logger = GetLogger("Memory.Direct.With.A.Long.Path");
  const unsigned long failed =
      FailEachAllocation([&] { logger->WriteLog(eLOG_ERROR, "a text that is long enough for the heap"); });
  EXPECT_LT(failed, ulENOUGH);
  logger->WriteLog(eLOG_ERROR, "alive");
  const LogTests::TapeHandler late;  // the first one may have been dropped, since it throws without memory
  logger->WriteLog(eLOG_ERROR, "alive");
  EXPECT_EQ("alive", late.Of("Memory.Direct.With.A.Long.Path").back().m_sMessage);
}

}  // namespace
