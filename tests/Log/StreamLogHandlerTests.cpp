#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/StreamLogHandler.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>
#include <ext/stdio_filebuf.h>

#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "ErrorHandling/AlertXml.h"
#include "FileLimit.h"
#include "LogFakes.h"
#include "Platform/Terminal.h"
#include "Support/TemporaryFolder.h"
#include "Support/Together.h"

using namespace Oxa::Core;
using LogFakes::MakeEntry;

namespace {

const char* const sTIME = "2011/03/03 02:33:17.123";

OxaLogEntry Entry(const std::string& message, OxaLogSeverityEnum severity = eLOG_WARNING) {
  OxaLogEntry entry = MakeEntry(message);
  entry.m_eSeverity = severity;
  entry.m_time.ParseString(sTIME);
  return entry;
}

std::string Line(const char* severity, const std::string& message) {
  return std::string(sTIME) + ' ' + severity + " Test.Path: " + message;
}

// A terminal, and a stream that leads there.
class Terminal {
 public:
  Terminal() : m_iMaster(::posix_openpt(O_RDWR | O_NOCTTY)) {
    EXPECT_EQ(0, ::grantpt(m_iMaster));
    EXPECT_EQ(0, ::unlockpt(m_iMaster));
    const int slave = ::open(::ptsname(m_iMaster), O_RDWR | O_NOCTTY);
    termios settings = {};
    EXPECT_EQ(0, ::tcgetattr(slave, &settings));
    ::cfmakeraw(&settings);
    EXPECT_EQ(0, ::tcsetattr(slave, TCSANOW, &settings));
    m_pBuffer = std::make_unique<__gnu_cxx::stdio_filebuf<char>>(slave, std::ios::out);
    m_pStream = std::make_unique<std::ostream>(m_pBuffer.get());
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() { ::close(m_iMaster); }

  std::ostream& Stream() { return *m_pStream; }

  // What has come out of it; there must be something, soon.
  std::string Read() const {
    pollfd master = {m_iMaster, POLLIN, 0};
    if (::poll(&master, 1, 10000) != 1) return {};
    char bytes[1000];
    const ssize_t size = ::read(m_iMaster, bytes, sizeof bytes);
    return std::string(bytes, size > 0 ? static_cast<std::size_t>(size) : 0);
  }

 private:
  int m_iMaster;
  std::unique_ptr<__gnu_cxx::stdio_filebuf<char>> m_pBuffer;
  std::unique_ptr<std::ostream> m_pStream;
};

// What a handler made now writes to the terminal.
std::string Shown(const OxaLogEntry& entry) {
  Terminal terminal;
  StreamLogHandler handler(terminal.Stream());
  handler.HandleLogEntry(entry);
  return terminal.Read();
}

void Want(const char* terminal, const char* noColor) {
  ::setenv("TERM", terminal, 1);
  noColor != nullptr ? ::setenv("NO_COLOR", noColor, 1) : ::unsetenv("NO_COLOR");
}

TEST(StreamLogHandler, WritesALineForEachEntry) {
  std::ostringstream out;
  StreamLogHandler handler(out);
  handler.HandleLogEntry(Entry("channel 3 is gone"));
  handler.HandleLogEntry(Entry("", eLOG_VERBOSE));
  handler.HandleLogEntry(Entry("x", static_cast<OxaLogSeverityEnum>(9)));
  handler.OnLoggersChanged();
  EXPECT_EQ(Line("Warning", "channel 3 is gone\n") + Line("Verbose", "\n") + Line("Unknown", "x\n"),
            out.str());
}

TEST(StreamLogHandler, ShowsTheTextOfAnAlertAndOtherMarkupWhole) {
  std::ostringstream out;
  StreamLogHandler handler(out);
  OxaLogEntry entry = Entry("<Error><Message>a &lt; b</Message></Error>", eLOG_ERROR);
  entry.m_sForm = "xml";
  handler.HandleLogEntry(entry);
  entry.m_sMessage = "<Table/>";
  handler.HandleLogEntry(entry);
  EXPECT_EQ(Line("Error", "a < b\n") + Line("Error", "<Table/>\n"), out.str());
}

TEST(StreamLogHandler, ColoursTheSeveritiesOnATerminal) {
  Want("xterm", nullptr);
  EXPECT_EQ("\x1B[1;41;37m" + Line("Alarm", "m") + "\x1B[0m\n", Shown(Entry("m", eLOG_ALARM)));
  EXPECT_EQ("\x1B[31m" + Line("Error", "m") + "\x1B[0m\n", Shown(Entry("m", eLOG_ERROR)));
  EXPECT_EQ("\x1B[33m" + Line("Warning", "m") + "\x1B[0m\n", Shown(Entry("m", eLOG_WARNING)));
  EXPECT_EQ("\x1B[34m" + Line("Debug", "m") + "\x1B[0m\n", Shown(Entry("m", eLOG_DEBUG)));
  EXPECT_EQ(Line("Informational", "m\n"), Shown(Entry("m", eLOG_INFORMATIONAL)));
  EXPECT_EQ("\x1B[90m" + Line("Verbose", "m") + "\x1B[0m\n", Shown(Entry("m", eLOG_VERBOSE)));
}

TEST(StreamLogHandler, LeavesColoursToThoseWhoWantThem) {
  Want("xterm", "1");
  EXPECT_EQ(Line("Error", "m\n"), Shown(Entry("m", eLOG_ERROR)));
  Want("dumb", nullptr);
  EXPECT_EQ(Line("Error", "m\n"), Shown(Entry("m", eLOG_ERROR)));
  Want("", nullptr);
  EXPECT_EQ(Line("Error", "m\n"), Shown(Entry("m", eLOG_ERROR)));
  ::unsetenv("TERM");
  EXPECT_EQ(Line("Error", "m\n"), Shown(Entry("m", eLOG_ERROR)));
  Want("xterm", "");  // empty is as good as unset
  EXPECT_EQ("\x1B[31m" + Line("Error", "m") + "\x1B[0m\n", Shown(Entry("m", eLOG_ERROR)));
}

TEST(StreamLogHandler, LetsNoMessageCommandATerminal) {
  Want("xterm", nullptr);
  EXPECT_EQ(Line("Informational", "a\\x1B[2Jb\\x07\\x7F\tc\nd\xc3\xa9\n"),
            Shown(Entry("a\x1B[2Jb\x07\x7F\tc\nd\xc3\xa9", eLOG_INFORMATIONAL)));
  std::ostringstream out;
  StreamLogHandler handler(out);
  handler.HandleLogEntry(Entry("a\x1B[2Jb"));
  EXPECT_EQ(Line("Warning", "a\x1B[2Jb\n"), out.str());
}

TEST(StreamLogHandler, ColoursNothingThatIsNoTerminal) {
  Want("xterm", nullptr);
  const TestSupport::TemporaryFolder folder;
  std::ofstream file(folder.File("log"));
  StreamLogHandler(file).HandleLogEntry(Entry("m", eLOG_ERROR));
  EXPECT_EQ(Line("Error", "m\n"), folder.Read("log"));
  std::ostringstream text;
  StreamLogHandler(text).HandleLogEntry(Entry("m\xC2\x9B", eLOG_ALARM));
  EXPECT_EQ(Line("Alarm", "m\xC2\x9B\n"), text.str());
}

// They are there as single bytes, for terminals of bytes, and as characters of UTF-8.
TEST(StreamLogHandler, LetsNoControlAbove127Through) {
  Want("xterm", nullptr);
  const struct {
    const char* text;
    const char* shown;
  } cases[] = {
      {"\xC2\x9B"
       "2J",
       "\\xC2\\x9B2J"},
      {"\xC2\x80|\xC2\x9F|\xC2\xA0", "\\xC2\\x80|\\xC2\\x9F|\xC2\xA0"},
      {"\x9B"
       "2J",
       "\\x9B2J"},
      {"\x80|\x9F|\xA0", "\\x80|\\x9F|\xA0"},
      {"20 \xB0"
       "C \xB5m",
       "20 \xB0"
       "C \xB5m"},
      {"\xC3\x9B \xE2\x82\xAC \xF0\x9F\x98\x80", "\xC3\x9B \xE2\x82\xAC \xF0\x9F\x98\x80"},
      {"\xE2\x82", "\xE2\\x82"},                              // cut off
      {"\xC0\x9B \xE0\x82\x9B", "\xC0\\x9B \xE0\\x82\\x9B"},  // longer than it need be
      {"\xF0\x82\x82\x9B", "\xF0\\x82\\x82\\x9B"},
      {"\xED\xA0\x80", "\xED\xA0\\x80"},            // half of a pair
      {"\xF4\x90\x80\x80", "\xF4\\x90\\x80\\x80"},  // beyond the last
      {"\xF5\x80", "\xF5\\x80"},
  };
  for (const auto& one : cases)
    EXPECT_EQ(Line("Informational", one.shown + std::string("\n")),
              Shown(Entry(one.text, eLOG_INFORMATIONAL)));
}

TEST(StreamLogHandler, AMomentWithoutADateIsLeftOut) {
  std::ostringstream out;
  StreamLogHandler handler(out);
  OxaLogEntry entry = Entry("m");
  for (const long long ticks :
       {std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()}) {
    entry.m_time = Time(ticks, Time::ePlatformTimeCurrent);
    EXPECT_NO_THROW(handler.HandleLogEntry(entry));
  }
  EXPECT_EQ(" Warning Test.Path: m\n Warning Test.Path: m\n", out.str());
}

TEST(StreamLogHandler, KnowsATerminalFromAFile) {
  const TestSupport::TemporaryFolder folder;
  std::ofstream file(folder.File("log"));
  EXPECT_FALSE(Platform::IsTerminal(file));
  EXPECT_FALSE(Platform::IsTerminal(std::ostream(nullptr)));
  const int pipe = ::open("/dev/null", O_WRONLY);
  ::dup2(pipe, STDOUT_FILENO);
  EXPECT_FALSE(Platform::IsTerminal(std::cout));
  Terminal terminal;
  EXPECT_TRUE(Platform::IsTerminal(terminal.Stream()));
  std::ostringstream text;
  std::streambuf* const before = std::cout.rdbuf(text.rdbuf());
  EXPECT_FALSE(Platform::IsTerminal(std::cout));
  std::cout.rdbuf(before);
}

TEST(StreamLogHandler, KnowsATerminalThatWasOpenedAsAFile) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(0, ::grantpt(master));
  ASSERT_EQ(0, ::unlockpt(master));
  std::ofstream terminal(::ptsname(master));
  EXPECT_TRUE(Platform::IsTerminal(terminal));
  terminal.close();
  EXPECT_FALSE(Platform::IsTerminal(terminal));
  ::close(master);
}

TEST(StreamLogHandler, KnowsTheStandardStreams) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(0, ::grantpt(master));
  ASSERT_EQ(0, ::unlockpt(master));
  ASSERT_EQ(STDERR_FILENO, ::dup2(::open(::ptsname(master), O_RDWR | O_NOCTTY), STDERR_FILENO));
  EXPECT_TRUE(Platform::IsTerminal(std::cerr));
  EXPECT_TRUE(Platform::IsTerminal(std::clog));
}

TEST(StreamLogHandler, AStreamThatFailedGoesOnWhenItIsCleared) {
  std::ostringstream out;
  StreamLogHandler handler(out);
  out.setstate(std::ios::failbit);
  handler.HandleLogEntry(Entry("lost"));
  out.clear();
  handler.HandleLogEntry(Entry("kept"));
  EXPECT_EQ(Line("Warning", "kept\n"), out.str());
}

// Of this thread, or of the process.
bool IsLimitSignalWaiting() {
  sigset_t waiting;
  EXPECT_EQ(0, ::sigpending(&waiting));
  return ::sigismember(&waiting, SIGXFSZ) == 1;
}

void KeepLimitSignalBack(int how) {
  sigset_t signal;
  ::sigemptyset(&signal);
  ::sigaddset(&signal, SIGXFSZ);
  EXPECT_EQ(0, ::pthread_sigmask(how, &signal, nullptr));
}

// Writes a line to a file that has no room for it, and then one to a file that has.
void WriteAtTheLimit() {
  const TestSupport::TemporaryFolder folder;
  std::ofstream file(folder.File("log"));
  StreamLogHandler handler(file);
  {
    const LogTests::FileLimit limit(10);
    handler.HandleLogEntry(Entry(std::string(10000, 'x')));
    EXPECT_FALSE(file);
  }
  file.clear();
  handler.HandleLogEntry(Entry("kept"));
  EXPECT_TRUE(file);
  const std::string text = folder.Read("log");
  const std::string kept = Line("Warning", "kept\n");
  EXPECT_EQ(text.size() - kept.size(), text.rfind(kept));
}

TEST(StreamLogHandler, AFileThatCannotGrowIsAStreamThatFails) {
  ::signal(SIGXFSZ, SIG_DFL);  // whoever started this may have had it ignored
  WriteAtTheLimit();
  EXPECT_FALSE(IsLimitSignalWaiting());
}

TEST(StreamLogHandler, AFileThatCannotGrowLeavesNoSignalToAHostThatKeepsItBack) {
  KeepLimitSignalBack(SIG_BLOCK);
  WriteAtTheLimit();
  EXPECT_FALSE(IsLimitSignalWaiting());
  ::pthread_kill(::pthread_self(), SIGXFSZ);
  WriteAtTheLimit();
  EXPECT_TRUE(IsLimitSignalWaiting());  // the host's own
  ::signal(SIGXFSZ, SIG_IGN);
  KeepLimitSignalBack(SIG_UNBLOCK);
  ::signal(SIGXFSZ, SIG_DFL);
}

// Each sees what was raised, not what the markup has made of it.
TEST(StreamLogHandler, ShowsTheTextOfAnAlertWithItsControlsAndLines) {
  for (const std::string& text :
       {std::string("a\x1B[2Jb"), std::string("\x01\x02\x1F"), std::string("nul \0 within", 12),
        std::string("one\ntwo <&>\nthree"), std::string("tab\tcr\r"), std::string("\vpage\f"),
        std::string("&control27; &lt;"), std::string(100, 'l') + '\x07'}) {
    LogicError error(text);
    std::ostringstream out;
    StreamLogHandler handler(out);
    OxaLogEntry entry = Entry(AlertXml::AsText(error, ""), eLOG_ERROR);
    entry.m_sForm = "xml";
    handler.HandleLogEntry(entry);
    EXPECT_EQ(Line("Error", text + '\n'), out.str());
  }
}

TEST(StreamLogHandler, LinesOfSeveralThreadsDontMix) {
  std::ostringstream out;
  StreamLogHandler handler(out);
  TestSupport::Together(4, [&](int index) {
    for (int i = 0; i < 50; ++i)
      handler.HandleLogEntry(Entry(std::string(40, static_cast<char>('a' + index))));
  });
  std::istringstream lines(out.str());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const std::string expected = Line("Warning", std::string(40, line.empty() ? '?' : line.back()));
    EXPECT_EQ(expected, line);
  }
  EXPECT_EQ(200, count);
}

}  // namespace
