// From a call on a logger to the entry that a handler receives.
#include <Infrastructure/OxaCore/LogManager.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

#include "LogTape.h"

// Bad formats are wanted here, and the compiler is not to see them.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace {

using namespace Oxa::Core;
using LogTests::GetLogger;
using LogTests::TapeHandler;

void WriteByVarArgs(Logger& logger, OxaLogSeverityEnum severity, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  logger.WriteLogVarArgs(severity, format, args);
  va_end(args);
}

TEST(LoggerMessage, BecomesAnEntryWithAllThatBelongsToIt) {
  TapeHandler handler;
  const Time before;
  GetLogger("Message.Whole")->WriteLog(eLOG_WARNING, "channel %d of %s", 3, "four");
  const std::vector<OxaLogEntry> entries = handler.Await("Message.Whole", 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ(eLOG_WARNING, entries[0].m_eSeverity);
  EXPECT_EQ("channel 3 of four", entries[0].m_sMessage);
  EXPECT_EQ("Message.Whole", entries[0].m_sLoggerPath);
  EXPECT_EQ("plain", entries[0].m_sForm);
  EXPECT_GE(entries[0].m_time, before);
  EXPECT_LE(entries[0].m_time, Time());
}

TEST(LoggerMessage, KeepsItsOrderAndItsSeverity) {
  TapeHandler handler;
  const auto logger = GetLogger("Message.Order");
  logger->SetSeverityFilters(~0U);
  for (int severity = 1; severity <= 6; ++severity)
    logger->WriteLog(static_cast<OxaLogSeverityEnum>(severity), "%d", severity);
  const std::vector<OxaLogEntry> entries = handler.Await("Message.Order", 6);
  ASSERT_EQ(6U, entries.size());
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(i + 1, static_cast<int>(entries[static_cast<std::size_t>(i)].m_eSeverity));
    EXPECT_EQ(std::to_string(i + 1), entries[static_cast<std::size_t>(i)].m_sMessage);
  }
}

TEST(LoggerMessage, IsNotExpandedWhereItsSeverityIsOff) {
  TapeHandler handler;
  const auto logger = GetLogger("Message.Off");
  // Whoever reads this text dies.
  const char* const trap = reinterpret_cast<const char*>(std::uintptr_t{16});
  logger->WriteLog(eLOG_DEBUG, "%s", trap);
  logger->WriteLog(eLOG_VERBOSE, std::string("%s"), trap);
  WriteByVarArgs(*logger, eLOG_DEBUG, "%s", trap);
  logger->SetSeverityFilters(0);
  logger->WriteLog(eLOG_ALARM, "%s", trap);
  logger->SetSeverityFilters(uDEFAULT_LOG_FILTERS);
  logger->WriteLog(eLOG_ALARM, "the only one");
  EXPECT_EQ(std::vector<std::string>{"the only one"}, LogTests::Messages(handler.Await("Message.Off", 1)));
}

TEST(LoggerMessage, MayComeAsAString) {
  TapeHandler handler;
  const auto logger = GetLogger("Message.String");
  logger->WriteLog(eLOG_ERROR, std::string("%d %s"), 5, "six");
  WriteByVarArgs(*logger, eLOG_ERROR, "%d %s", 7, "eight");
  EXPECT_EQ((std::vector<std::string>{"5 six", "7 eight"}),
            LogTests::Messages(handler.Await("Message.String", 2)));
}

TEST(LoggerMessage, IsCutAtTheLargestBuffer) {
  TapeHandler handler;
  const std::string text(20000, 'x');
  GetLogger("Message.Long")->WriteLog(eLOG_ERROR, "%s", text.c_str());
  WriteByVarArgs(*GetLogger("Message.Long"), eLOG_ERROR, "%s", text.c_str());
  const std::string cut(16383, 'x');
  EXPECT_EQ((std::vector<std::string>{cut, cut}), LogTests::Messages(handler.Await("Message.Long", 2)));
}

// Keeps the compiler from seeing what these tests do on purpose.
const char* Hidden(const char* format) {
  const char* volatile hidden = format;
  return hidden;
}

void ExpectBadFormat(const TapeHandler& handler, const std::string& name, const std::string& format) {
  const std::vector<OxaLogEntry> entries = handler.Await("Oxa.Core.LogManager", 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ(eLOG_ERROR, entries[0].m_eSeverity);
  EXPECT_EQ("plain", entries[0].m_sForm);
  EXPECT_EQ("A formatting error occurred while writing a log message from logger <" + name +
                ">\nThe formatting string is:\n\t" + format,
            entries[0].m_sMessage);
}

TEST(BadFormat, GivesOneEntryThatNamesLoggerAndFormat) {
  TapeHandler handler;
  const char* const format = Hidden("ends with %");
  GetLogger("Message.Bad")->WriteLog(eLOG_INFORMATIONAL, format, 0);
  ExpectBadFormat(handler, "Bad", "ends with %");
  EXPECT_TRUE(handler.Of("Message.Bad").empty());
}

TEST(BadFormat, AsAStringToo) {
  TapeHandler handler;
  GetLogger("Bad")->WriteLog(eLOG_INFORMATIONAL, std::string("%d %"), 1);
  ExpectBadFormat(handler, "Bad", "%d %");
}

TEST(BadFormat, WithAListOfArgumentsToo) {
  TapeHandler handler;
  WriteByVarArgs(*GetLogger("A.B.C"), eLOG_WARNING, Hidden("%d %"), 1);
  ExpectBadFormat(handler, "C", "%d %");
}

TEST(BadFormat, NullIsToldInWords) {
  TapeHandler handler;
  const char* const format = Hidden(nullptr);
  GetLogger("Message.Null")->WriteLog(eLOG_ALARM, format, 0);
  ExpectBadFormat(handler, "Null", "!!!NULL!!!");
}

TEST(BadFormat, IsOnlyToldIfTheSeverityIsOn) {
  TapeHandler handler;
  GetLogger("Message.Quiet")->WriteLog(eLOG_DEBUG, Hidden("%"), 0);
  GetLogger("Message.Quiet")->WriteLog(eLOG_ALARM, "end");
  handler.Await("Message.Quiet", 1);
  EXPECT_TRUE(handler.Of("Oxa.Core.LogManager").empty());
}

}  // namespace
