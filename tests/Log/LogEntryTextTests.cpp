#include "Log/LogEntryText.h"

#include <Infrastructure/OxaCore/Warning.h>
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLParser.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>

#include "Support/ChildProcess.h"
#include "Support/ThreadSanitizer.h"

namespace {

using namespace Oxa::Core;

const std::string sSEPARATOR_LINE =
    "<!-- ========================================================================  -->\n";
const std::string sEND = "</LogEntry>\n\n" + sSEPARATOR_LINE + "\n";

OxaLogEntry Entry(const std::string& message) {
  OxaLogEntry entry;
  entry.m_time = Time(8, 23, 1998, Elapse(2, 33, 17, 123000000));
  entry.m_eSeverity = eLOG_ERROR;
  entry.m_sMessage = message;
  entry.m_sLoggerPath = "Oxa.Core.Mutex";
  entry.m_sForm = "plain";
  return entry;
}

// The contract in one place: the writer, the separator and the empty lines around it.
std::string ByTheWriter(const OxaLogEntry& entry, const char* severity) {
  std::ostringstream out;
  XMLWriter writer;
  out << writer.StartTag("LogEntry");
  if (severity != nullptr) out << writer.Attribute("Severity", severity);
  out << writer.Tag("TimeStamp", entry.m_time.ToString()) << writer.Tag("LogName", entry.m_sLoggerPath);
  if (entry.m_sForm == "xml")
    out << writer.Markup(entry.m_sMessage);
  else
    out << writer.Tag("Message", entry.m_sMessage);
  out << writer.EndAllTags() << '\n' << sSEPARATOR_LINE << '\n';
  return out.str();
}

int LintStatus(const std::string& entries) {
  const TestSupport::TemporaryFile file;
  std::ofstream(file.Name(), std::ios::binary) << "<Log>" << entries << "</Log>";
  const TestSupport::ChildResult result = TestSupport::RunChild({"/usr/bin/xmllint", "--noout", file.Name()});
  EXPECT_EQ("", result.m_sError);
  return result.m_iStatus;
}

TEST(LogEntryText, IsAnElementWithASeparatorBehindIt) {
  EXPECT_EQ(
      "<LogEntry Severity=\"Error\" >\n"
      "  <TimeStamp>1998/08/23 02:33:17.123</TimeStamp>\n"
      "  <LogName>Oxa.Core.Mutex</LogName>\n"
      "  <Message>The mutex is gone.</Message>\n"
      "</LogEntry>\n"
      "\n"
      "<!-- ========================================================================  -->\n"
      "\n",
      LogEntryText(Entry("The mutex is gone.")));
}

TEST(LogEntryText, SeparatesBy72EqualSigns) {
  const std::string text = LogEntryText(Entry("m"));
  const std::string separator = "<!-- " + std::string(72, '=') + "  -->\n";
  ASSERT_GT(text.size(), separator.size() + 1);
  EXPECT_EQ("\n" + separator + "\n", text.substr(text.size() - separator.size() - 2));
  EXPECT_EQ(separator + "\n", std::string(sLOG_ENTRY_SEPARATOR));
}

TEST(LogEntryText, HasAWordForEachSeverity) {
  const char* const words[] = {"Alarm", "Error", "Warning", "Debug", "Informational", "Verbose"};
  for (int severity = 1; severity <= 6; ++severity) {
    const char* const word = words[severity - 1];
    EXPECT_STREQ(word, SeverityWord(static_cast<OxaLogSeverityEnum>(severity)));
    OxaLogEntry entry = Entry("m");
    entry.m_eSeverity = static_cast<OxaLogSeverityEnum>(severity);
    EXPECT_EQ(0U,
              LogEntryText(entry).find("<LogEntry Severity=\"" + std::string(word) + "\" >\n  <TimeStamp>"));
  }
}

TEST(LogEntryText, LeavesAnUnknownSeverityOut) {
  for (const int severity : {-1, 0, 7, 65536}) {
    EXPECT_EQ(nullptr, SeverityWord(static_cast<OxaLogSeverityEnum>(severity)));
    OxaLogEntry entry = Entry("m");
    entry.m_eSeverity = static_cast<OxaLogSeverityEnum>(severity);
    EXPECT_EQ(0U, LogEntryText(entry).find("<LogEntry>\n  <TimeStamp>"));
    EXPECT_EQ(ByTheWriter(entry, nullptr), LogEntryText(entry));
    entry.m_sForm = "xml";
    EXPECT_EQ(0U, LogEntryText(entry).find("<LogEntry>\n  <TimeStamp>"));
  }
}

TEST(LogEntryText, EscapesTheMessageAndTheLogger) {
  OxaLogEntry entry = Entry("a < b && \"c\" > 'd'");
  entry.m_sLoggerPath = "A<B";
  const std::string text = LogEntryText(entry);
  EXPECT_NE(std::string::npos, text.find("<LogName>A&lt;B</LogName>\n"));
  EXPECT_NE(std::string::npos,
            text.find("<Message>a &lt; b &amp;&amp; &quot;c&quot; &gt; &apos;d&apos;</Message>\n"));
}

TEST(LogEntryText, LaysOutTextsOfEveryLengthAsTheWriterDoes) {
  for (std::size_t length = 0; length < 200; ++length) {
    OxaLogEntry entry = Entry(std::string(length, 'm'));
    EXPECT_EQ(ByTheWriter(entry, "Error"), LogEntryText(entry)) << length;
    entry = Entry("m");
    entry.m_sLoggerPath.assign(length, 'p');
    EXPECT_EQ(ByTheWriter(entry, "Error"), LogEntryText(entry)) << length;
  }
}

TEST(LogEntryText, LaysOutWhateverTextsAsTheWriterDoes) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("one thread, and much that is watched for nothing");
  std::mt19937 random(20261121);
  const std::string letters = "abc <>&'\"\t\xB5.\n";
  for (int round = 0; round < 20000; ++round) {
    OxaLogEntry entry = Entry("");
    const std::size_t kinds = letters.size() - (round % 3 == 0 ? 0 : 1);  // most without line feeds
    for (auto i = random() % 100; i > 0; --i) entry.m_sMessage += letters[random() % kinds];
    entry.m_sLoggerPath.clear();
    for (auto i = random() % 90; i > 0; --i) entry.m_sLoggerPath += letters[random() % kinds];
    ASSERT_EQ(ByTheWriter(entry, "Error"), LogEntryText(entry)) << entry.m_sMessage;
  }
}

TEST(LogEntryText, LaysOutEveryByteAsTheWriterDoes) {
  for (int byte = 0; byte < 256; ++byte) {
    const char letter = static_cast<char>(byte);
    for (const std::string& text :
         {std::string(1, letter), 'a' + std::string(80, letter), letter + std::string("a")}) {
      OxaLogEntry entry = Entry(text);
      EXPECT_EQ(ByTheWriter(entry, "Error"), LogEntryText(entry)) << byte;
      entry = Entry("m");
      entry.m_sLoggerPath = text;
      EXPECT_EQ(ByTheWriter(entry, "Error"), LogEntryText(entry)) << byte;
    }
  }
}

TEST(LogEntryText, LaysOutAMessageOfSeveralLinesLineByLine) {
  EXPECT_NE(std::string::npos, LogEntryText(Entry("one\n  two < 3\n"))
                                   .find("  <Message>\n"
                                         "    one\n"
                                         "    two &lt; 3\n"
                                         "    \n"
                                         "  </Message>\n"
                                         "</LogEntry>\n"));
}

TEST(LogEntryText, PutsXmlWhereTheMessageWouldStand) {
  OxaLogEntry entry = Entry("<Warning><Message>a &lt; b</Message></Warning>");
  entry.m_sForm = "xml";
  const std::string text = LogEntryText(entry);
  EXPECT_NE(std::string::npos, text.find("<Message>a &lt; b</Message>"));
  EXPECT_EQ(text.find("<Message>"), text.rfind("<Message>"));
  EXPECT_LT(text.find("</LogName>"), text.find("<Warning>"));
  EXPECT_EQ(sEND, text.substr(text.size() - sEND.size()));
  EXPECT_EQ(ByTheWriter(entry, "Error"), text);
  EXPECT_EQ(0, LintStatus(text));
}

TEST(LogEntryText, LaysXmlOutAsAPartOfTheEntry) {
  OxaLogEntry entry =
      Entry("<Warning><Message>one\ntwo</Message><CallStack><Context/></CallStack></Warning>");
  entry.m_sForm = "xml";
  EXPECT_EQ(
      "<LogEntry Severity=\"Error\" >\n"
      "  <TimeStamp>1998/08/23 02:33:17.123</TimeStamp>\n"
      "  <LogName>Oxa.Core.Mutex</LogName>\n"
      "  <Warning>\n"
      "    <Message>\n"
      "      one\n"
      "      two\n"
      "    </Message>\n"
      "    <CallStack>\n"
      "      <Context/>\n"
      "    </CallStack>\n"
      "  </Warning>\n" +
          sEND,
      LogEntryText(entry));
}

// The log is one document, of which no entry may take the rest away.
TEST(LogEntryText, StaysWholeWhateverItsXml) {
  const char* const cases[][2] = {
      {"", ""},
      {"no xml", ""},
      {"<Error><Message>ab\x01"
       "c</Message><CallStack/></Error>",
       "  <Error>\n    <Message>ab</Message>\n  </Error>\n"},
      {"<Error><My Key>v</My Key></Error>", "  <Error></Error>\n"},
      {"<Error><Var name=\"vector<int>\">1</Var></Error>", "  <Error></Error>\n"},
      {"<Error><Message>a ]]> b</Message></Error>", "  <Error>\n    <Message>a</Message>\n  </Error>\n"},
      {"<Error><Message>a", "  <Error>\n    <Message>a</Message>\n  </Error>\n"},
      {"<Error/></LogEntry><LogEntry>", "  <Error/>\n"},
      {"<a></b>", "  <a></a>\n"},
      {"<Error><!-- a -- b --></Error>", "  <Error></Error>\n"},
  };
  for (const auto& tried : cases) {
    OxaLogEntry entry = Entry(tried[0]);
    entry.m_sForm = "xml";
    const std::string text = LogEntryText(entry);
    EXPECT_EQ("  <LogName>Oxa.Core.Mutex</LogName>\n" + (tried[1] + sEND),
              text.substr(text.find("  <LogName>")));
    EXPECT_EQ(0, LintStatus(text + LogEntryText(Entry("next")))) << text;
  }
}

TEST(LogEntryText, TakesNoOtherFormForXml) {
  for (const char* form : {"", "plain", "XML", "xml ", "Xml", "xmls"}) {
    OxaLogEntry entry = Entry("<Warning/>");
    entry.m_sForm = form;
    EXPECT_NE(std::string::npos, LogEntryText(entry).find("<Message>&lt;Warning/&gt;</Message>\n")) << form;
  }
}

TEST(LogEntryText, HoldsAWholeAlert) {
  struct FiveBelowSix : Warning {
    FiveBelowSix() : Warning("five < 6") {}
  } warning;
  std::ostringstream xml;
  XMLWriter writer;
  warning.ToXML(writer, xml, "");
  OxaLogEntry entry = Entry(xml.str());
  entry.m_sForm = "xml";
  entry.m_eSeverity = eLOG_WARNING;
  const std::string text = LogEntryText(entry);
  EXPECT_EQ(0, LintStatus(text + LogEntryText(Entry("next"))));
  EXPECT_NE(std::string::npos, text.find("five &lt; 6"));
}

// As the log manager writes it down.
OxaLogEntry WarningEntry(const std::string& message) {
  struct Odd : Warning {
    explicit Odd(const std::string& text) : Warning(text) {}
  } warning(message);
  std::ostringstream xml;
  XMLWriter writer;
  warning.ToXML(writer, xml, "");
  OxaLogEntry entry = Entry(xml.str());
  entry.m_sForm = "xml";
  return entry;
}

TEST(LogEntryText, HoldsAlertsOfWhateverText) {
  for (const char* odd : {"]]>", "--", "-->", "<a>", "&", "&amp;", "\xC3\xA4\xE2\x82\xAC", "'\"", "\t"}) {
    const std::string message = "before " + std::string(odd) + " behind";
    const std::string text = LogEntryText(WarningEntry(message));
    EXPECT_EQ(0, LintStatus(text + LogEntryText(Entry("next")))) << text;
    EXPECT_NE(std::string::npos, text.find("<Message>" + XMLFormatter::Escape(message) + "</Message>\n"))
        << text;
    EXPECT_NE(std::string::npos, text.find("<Severity>")) << text;
  }
}

TEST(LogEntryText, LaysALongMessageOfAnAlertOutLineByLine) {
  const std::string text = LogEntryText(WarningEntry("one\r\n\ttwo\n\nthree"));
  EXPECT_NE(std::string::npos, text.find("    <Message>\n"
                                         "      one\n"
                                         "      two\n"
                                         "      \n"
                                         "      three\n"
                                         "    </Message>\n"))
      << text;
  EXPECT_EQ(0, LintStatus(text));
}

// Which may last as long as the host's stream has nothing to give.
TEST(LogEntryText, DoesNotWaitForAParseOfTheHost) {
  const OxaLogEntry entry = WarningEntry("not late");
  const Lock parse(XMLParseMutex(), IMutex::sINFINITE);
  std::string text;
  std::thread([&text, &entry] { text = LogEntryText(entry); }).join();
  EXPECT_NE(std::string::npos, text.find("<Message>not late</Message>"));
}

// There is no way to write such a character. What stands behind it in the alert is lost, and nothing else.
TEST(LogEntryText, CutsAnAlertOffAtACharacterThatXmlDoesNotHave) {
  for (const char* odd : {"\x01", "\x07", "\x0B", "\x0C", "\x1B[31m", "\x1F"}) {
    const std::string text = LogEntryText(WarningEntry("before " + std::string(odd) + " behind"));
    EXPECT_EQ(0, LintStatus(text + LogEntryText(Entry("next")))) << text;
    EXPECT_NE(std::string::npos, text.find("<Message>before</Message>\n  </Warning>\n" + sEND)) << text;
    EXPECT_EQ(std::string::npos, text.find("behind")) << text;
  }
}

TEST(LogEntryText, IsTheSameForAMomentWhateverItsLength) {
  for (const std::size_t length : {0U, 1U, 1000U, 1400U, 1500U, 1600U, 100000U}) {
    const OxaLogEntry entry = Entry(std::string(length, 'm'));
    EXPECT_EQ(ByTheWriter(entry, "Error"), BriefLogEntryText(entry).Get()) << length;
  }
  const OxaLogEntry twoLines = Entry("one\ntwo");
  EXPECT_EQ(ByTheWriter(twoLines, "Error"), BriefLogEntryText(twoLines).Get());
}

TEST(LogEntryText, ParsesWithItsNeighbours) {
  std::string entries;
  for (const char* message : {"", "one", "two\nlines", "<&>", "-->"}) entries += LogEntryText(Entry(message));
  EXPECT_EQ(0, LintStatus(entries));
}

}  // namespace
