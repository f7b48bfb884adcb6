// What the log says of threads that end by an error.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "LogTape.h"
#include "Threads/ThreadTestSupport.h"

namespace {

using namespace Oxa::Core;
using LogTests::TapeHandler;
using testing::HasSubstr;

const char* const sLOGGER = "Oxa.Core.Thread";

class FunctionTask : public Task {
 public:
  explicit FunctionTask(std::function<void(TaskDirective&)> work) : m_work(std::move(work)) {}
  int Run(TaskDirective& directive) override {
    m_work(directive);
    return 0;
  }

 private:
  const std::function<void(TaskDirective&)> m_work;
};

boost::shared_ptr<Thread> Started(const std::function<void(TaskDirective&)>& work) {
  boost::shared_ptr<Thread> thread = Thread::Create("Doomed 100%s");
  thread->Start(boost::shared_ptr<Task>(new FunctionTask(work)));
  return thread;
}

OxaLogEntry OnlyEntry(const TapeHandler& handler) {
  const std::vector<OxaLogEntry> entries = handler.Await(sLOGGER, 1);
  EXPECT_EQ(1U, entries.size());
  return entries.empty() ? OxaLogEntry() : entries.front();
}

TEST(LogThreadErrors, AreALineOfTheirThreadWithTheErrorsMessage) {
  TapeHandler handler;
  const auto thread =
      Started([](TaskDirective&) { OXA_RAISE_ERROR("Doomed.Task", LogicError("100% wrong: %s")); });
  const OxaLogEntry entry = OnlyEntry(handler);
  EXPECT_EQ(eLOG_ERROR, entry.m_eSeverity);
  EXPECT_EQ("plain", entry.m_sForm);
  EXPECT_EQ("Thread Doomed 100%s terminated due to error:\n100% wrong: %s", entry.m_sMessage);
}

TEST(LogThreadErrors, OfForeignKindAreRaisedErrors) {
  TapeHandler handler;
  const auto thread = Started([](TaskDirective&) { throw 5; });
  const OxaLogEntry entry = OnlyEntry(handler);
  EXPECT_EQ(eLOG_ERROR, entry.m_eSeverity);
  EXPECT_EQ("xml", entry.m_sForm);
  EXPECT_THAT(entry.m_sMessage, HasSubstr("<Circumstance>Error Raised</Circumstance>"));
  EXPECT_THAT(entry.m_sMessage,
              HasSubstr("Thread Doomed 100%s terminated due to an unknown error thrown from Task Run()"));
}

TEST(LogThreadErrors, OfKilledThreadsAreRaisedErrors) {
  OXA_SKIP_WHERE_NOBODY_CAN_BE_KILLED();
  TapeHandler handler;
  const auto thread = Started([](TaskDirective& directive) {
    while (!directive.MustStop()) OxaSleep(1, Elapse::MilliSeconds, false);
  });
  ASSERT_TRUE(thread->TimedWaitForState(Thread::eTHREAD_RUNNING, Elapse(30)));
  ASSERT_TRUE(thread->Kill(Elapse(30)));
  const OxaLogEntry entry = OnlyEntry(handler);
  EXPECT_EQ("xml", entry.m_sForm);
  EXPECT_THAT(entry.m_sMessage, HasSubstr("<Circumstance>Error Raised</Circumstance>"));
  EXPECT_THAT(entry.m_sMessage, HasSubstr("Thread named Doomed 100%s killed by call to Thread::Kill()"));
}

}  // namespace
