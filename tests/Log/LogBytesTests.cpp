// Which bytes of a message reach the log as they are: the table of docs/log.md, row by row.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Warning.h>
#include <Infrastructure/OxaCore/XMLFormatter.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Log/LogFolder.h"
#include "Log/LogTape.h"

namespace {

using namespace Oxa::Core;
using LogTests::GetLogger;
using LogTests::TapeHandler;

const char* const sPATH = "Bytes";

struct Odd : Warning {
  explicit Odd(const std::string& text) : Warning(text) {}
};

void Write(const std::string& text) { GetLogger(sPATH)->WriteLog(eLOG_ERROR, "%s", text.c_str()); }

void Warn(const std::string& text) { OXA_RAISE_WARNING(sPATH, Odd(text)); }

void RaiseAndHandle(const std::string& text) {
  try {
    OXA_RAISE_ERROR(sPATH, LogicError(text));
  } catch (LogicError&) {
  }
}

bool IsControl(int byte) { return byte < 32 && byte != '\t' && byte != '\n' && byte != '\r'; }

std::string Between(int byte) { return 'a' + std::string(1, static_cast<char>(byte)) + 'b'; }

// Of a text with a byte between "a" and "b", at the indentation of that element.
std::string Element(const std::string& indent, int byte) {
  if (byte == '\n')
    return indent + "<Message>\n" + indent + "  a\n" + indent + "  b\n" + indent + "</Message>\n";
  return indent + "<Message>" + XMLFormatter::Escape(Between(byte)) + "</Message>\n";
}

std::string EveryByteButNul() {
  std::string text;
  for (int byte = 1; byte < 256; ++byte) text += static_cast<char>(byte);
  return text;
}

// The default log in a folder of its own, each entry on disk when the call returns.
class LogBytes : public testing::Test {
 protected:
  LogBytes() { CloseLog(); }
  ~LogBytes() override { CloseLog(); }

  // What stands in the last entry that has come since the last call, behind the name of the logger.
  std::string Logged() const {
    const std::string entries = m_folder.Entries();
    m_folder.Put("DefaultLog.entries", "");
    const std::string mark = "\n  <LogName>Bytes</LogName>\n";  // that of an alert stands further in
    const std::size_t begin = entries.rfind(mark);
    if (begin == std::string::npos) return "nothing";
    const std::string entry = entries.substr(begin + mark.size());
    return entry.substr(0, entry.rfind("</LogEntry>\n"));
  }

 private:
  // It is opened anew by the next entry, in the folder of that moment.
  static void CloseLog() {
    LogTests::TapeService service;
    LogManager::Instance()->InstallLogService(service);
  }

  const LogTests::LogFolder m_folder;
  const LogTests::Unbuffered m_unbuffered;
};

TEST_F(LogBytes, HandlersGetEveryByteAsItWas) {
  TapeHandler handler;
  Write(EveryByteButNul());
  const auto entries = handler.Await(sPATH, 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_EQ(EveryByteButNul(), entries[0].m_sMessage);
  EXPECT_EQ("nothing", Logged());
}

TEST_F(LogBytes, APlainMessageKeepsAllBytesButTheFiveThatAreEscapedAndTheEndsOfLines) {
  for (int byte = 1; byte < 256; ++byte) {
    Write(Between(byte));
    EXPECT_EQ(Element("  ", byte), Logged()) << byte;
  }
}

TEST_F(LogBytes, APlainMessageEndsAtItsFirstNul) {
  GetLogger(sPATH)->WriteLog(eLOG_ERROR, "a%cb", 0);
  EXPECT_EQ("  <Message>a</Message>\n", Logged());
  GetLogger(sPATH)->WriteLog(eLOG_ERROR, std::string("c\0d", 3));
  EXPECT_EQ("  <Message>c</Message>\n", Logged());
}

TEST_F(LogBytes, APlainMessageOfOneLineKeepsItsBlanksAndOneOfSeveralDoesNot) {
  Write(" \ta  b\t ");
  EXPECT_EQ("  <Message> \ta  b\t </Message>\n", Logged());
  Write("a\r\n  b \r\n\r\nc");
  EXPECT_EQ("  <Message>\n    a\n    b\n    \n    c\n  </Message>\n", Logged());
  Write("");
  EXPECT_EQ("  <Message/>\n", Logged());
}

TEST_F(LogBytes, MarkupInAPlainMessageIsText) {
  Write("<a b=\"\">&amp;</a> ]]> <!--");
  EXPECT_EQ("  <Message>&lt;a b=&quot;&quot;&gt;&amp;amp;&lt;/a&gt; ]]&gt; &lt;!--</Message>\n", Logged());
}

TEST_F(LogBytes, AnAlertKeepsTheSameBytesAndEndsAtAControlCharacter) {
  for (int byte = 0; byte < 256; ++byte) {
    Warn(Between(byte));
    const std::string logged = Logged();
    if (IsControl(byte)) {
      const std::string end = "    <Message>a</Message>\n  </Warning>\n";
      ASSERT_GE(logged.size(), end.size()) << byte;
      EXPECT_EQ(end, logged.substr(logged.size() - end.size())) << byte;
    } else {
      EXPECT_NE(std::string::npos, logged.find(Element("    ", byte))) << byte << logged;
      EXPECT_NE(std::string::npos, logged.find("<UnwindStack>")) << byte;
    }
  }
}

TEST_F(LogBytes, AnAlertLosesTheWhiteSpaceAroundItsTexts) {
  Warn(" \ta  b\r ");
  EXPECT_NE(std::string::npos, Logged().find("    <Message>a  b</Message>\n")) << Logged();
}

TEST_F(LogBytes, MarkupInAnAlertIsText) {
  Warn("<a>&amp;</a> ]]> <!--");
  EXPECT_NE(std::string::npos,
            Logged().find("    <Message>&lt;a&gt;&amp;amp;&lt;/a&gt; ]]&gt; &lt;!--</Message>\n"))
      << Logged();
}

TEST_F(LogBytes, HandlersGetTheAlertBeforeItIsLaidOut) {
  TapeHandler handler;
  Warn(std::string("a\0\x01<b ", 6));
  const auto entries = handler.Await(sPATH, 1);
  ASSERT_EQ(1U, entries.size());
  EXPECT_NE(std::string::npos,
            entries[0].m_sMessage.find(std::string("<Message>a\0\x01&lt;b </Message>", 28)))
      << entries[0].m_sMessage;
}

TEST_F(LogBytes, TheLineOfAHandledErrorIsAPlainMessage) {
  RaiseAndHandle("a\x01\x9F<b ");
  EXPECT_EQ("  <Message>Error Handled: a\x01\x9F&lt;b </Message>\n", Logged());
  RaiseAndHandle(std::string("a\0b", 3));
  EXPECT_EQ("  <Message>Error Handled: a</Message>\n", Logged());
}

// As a host may hand them to a service of its own, or to the library's.
TEST_F(LogBytes, AnEntryThatAHostMadeIsWrittenWithItsNul) {
  EXPECT_NE(std::string::npos,
            LogTests::EntryText(std::string("a\0b", 3)).find(std::string("<Message>a\0b</Message>\n", 23)));
}

}  // namespace
