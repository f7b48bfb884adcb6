#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/JournalLogHandler.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/SystemTools.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "LogFakes.h"
#include "Platform/Journal.h"
#include "Platform/Linux/JournalSocket.h"
#include "Support/EndedByForce.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"

using namespace Oxa::Core;
using LogFakes::MakeEntry;

namespace {

using Fields = std::map<std::string, std::string>;

// Reads a record as the journal does.
Fields FieldsOf(const std::string& record) {
  Fields fields;
  std::size_t at = 0;
  while (at < record.size()) {
    const std::size_t end = record.find_first_of("=\n", at);
    if (end == std::string::npos) break;
    const std::string name = record.substr(at, end - at);
    at = end + 1;
    std::uint64_t size = record.find('\n', at) - at;
    if (record[end] == '\n') {
      std::memcpy(&size, record.data() + at, sizeof size);
      at += sizeof size;
    }
    EXPECT_EQ('\n', record[at + size]);
    EXPECT_EQ(0U, fields.count(name)) << name;
    fields[name] = record.substr(at, size);
    at += size + 1;
  }
  EXPECT_EQ(record.size(), at);
  return fields;
}

// A socket that takes records as the journal's own does, for as long as it is open.
class Journal {
 public:
  explicit Journal(const std::string& path)
      : m_sPath(path), m_iSocket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(0, ::bind(m_iSocket, reinterpret_cast<sockaddr*>(&address), sizeof address));
  }
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;
  ~Journal() {
    ::close(m_iSocket);
    ::unlink(m_sPath.c_str());
  }

  bool HasRecord() const {
    pollfd waiting = {m_iSocket, POLLIN, 0};
    return ::poll(&waiting, 1, 0) == 1;
  }

  // The next record, whichever way it comes.
  std::string Next() {
    std::string record(300000, ' ');
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    iovec data = {record.data(), record.size()};
    msghdr message = {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t size = ::recvmsg(m_iSocket, &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
    EXPECT_LE(0, size);
    record.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    m_bHandedOver = header != nullptr;
    return m_bHandedOver ? ContentOf(header) : record;
  }

  Fields NextFields() { return FieldsOf(Next()); }

  bool WasHandedOver() const { return m_bHandedOver; }

 private:
  // Of the file in memory, which nobody may change any more.
  static std::string ContentOf(const cmsghdr* header) {
    int file = -1;
    std::memcpy(&file, CMSG_DATA(header), sizeof file);
    EXPECT_EQ(F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL, ::fcntl(file, F_GET_SEALS));
    struct stat facts = {};
    EXPECT_EQ(0, ::fstat(file, &facts));
    std::string content(static_cast<std::size_t>(facts.st_size), ' ');
    EXPECT_EQ(facts.st_size, ::pread(file, content.data(), content.size(), 0));
    ::close(file);
    return content;
  }

  const std::string m_sPath;
  const int m_iSocket;
  bool m_bHandedOver = false;
};

class WarningCounter : public AlertListener {
 public:
  void WarningRaised(Warning& warning) override {
    if (dynamic_cast<JournalUnreachable*>(&warning) == nullptr) return;
    m_sLast = warning.GetData(AlertInfo::sMESSAGE);
    m_sLogName = warning.GetData(AlertInfo::sLOG_NAME);
    ++m_iCount;
  }
  int m_iCount = 0;
  std::string m_sLast;
  std::string m_sLogName;
};

class JournalLog : public testing::Test {
 protected:
  JournalLog() : m_sPath(m_folder.File("journal")) { Platform::SetJournalSocket(m_sPath.c_str()); }
  ~JournalLog() override { Platform::SetJournalSocket(nullptr); }

  TestSupport::TemporaryFolder m_folder;
  const std::string m_sPath;
};

TEST_F(JournalLog, AnEntryBecomesFields) {
  Journal journal(m_sPath);
  JournalLogHandler handler("station");
  OxaLogEntry entry = MakeEntry("channel 3 is = gone");
  entry.m_time = Time(116444736000000000 + 15000000, Time::ePlatformTimeCurrent);
  handler.HandleLogEntry(entry);
  EXPECT_EQ((Fields{{"MESSAGE", "channel 3 is = gone"},
                    {"PRIORITY", "4"},
                    {"SYSLOG_IDENTIFIER", "station"},
                    {"OXA_LOGGER", "Test.Path"},
                    {"OXA_SEVERITY", "Warning"},
                    {"OXA_FORM", "plain"},
                    {"OXA_TIME_USEC", "1500000"}}),
            journal.NextFields());
  EXPECT_FALSE(journal.HasRecord());
  EXPECT_TRUE(handler.IsReachable());
  EXPECT_EQ(0U, handler.GetLostEntries());
}

TEST_F(JournalLog, EachSeverityHasItsPriority) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  const std::map<int, std::string> expected = {{0, "6"}, {1, "1"}, {2, "3"}, {3, "4"},
                                               {4, "7"}, {5, "6"}, {6, "7"}, {7, "6"}};
  for (const auto& [severity, priority] : expected) {
    OxaLogEntry entry = MakeEntry("m");
    entry.m_eSeverity = static_cast<OxaLogSeverityEnum>(severity);
    handler.HandleLogEntry(entry);
    Fields fields = journal.NextFields();
    EXPECT_EQ(priority, fields["PRIORITY"]) << severity;
    EXPECT_EQ(severity >= 1 && severity <= 6 ? 1U : 0U, fields.count("OXA_SEVERITY")) << severity;
  }
}

TEST_F(JournalLog, TheProgramsNameIsItsIdentifier) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  handler.HandleLogEntry(MakeEntry("m"));
  EXPECT_EQ("TestLogHandlers", journal.NextFields()["SYSLOG_IDENTIFIER"]);
}

TEST_F(JournalLog, LinesAndAnyBytesComeWhole) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  for (const std::string& message :
       {std::string("one\ntwo\n"), std::string("\n"), std::string(), std::string("\0\x1B\xff=\t", 5),
        "MESSAGE=other\nPRIORITY=0\n" + std::string(1000, 'x')}) {
    handler.HandleLogEntry(MakeEntry(message));
    Fields fields = journal.NextFields();
    EXPECT_EQ(message, fields["MESSAGE"]);
    EXPECT_EQ("4", fields["PRIORITY"]);
  }
}

TEST_F(JournalLog, WhatIsTooLargeForAMessageIsHandedOver) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  const std::string message(20U << 20U, 'm');
  handler.HandleLogEntry(MakeEntry(message));
  EXPECT_TRUE(message == journal.NextFields()["MESSAGE"]);
  EXPECT_TRUE(journal.WasHandedOver());
  EXPECT_EQ(0U, handler.GetLostEntries());
  handler.HandleLogEntry(MakeEntry("small"));
  EXPECT_EQ("small", journal.NextFields()["MESSAGE"]);
  EXPECT_FALSE(journal.WasHandedOver());
}

TEST_F(JournalLog, WhatCannotBeHandedOverIsLost) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  const rlimit limit = {1U << 20U, RLIM_INFINITY};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
  handler.HandleLogEntry(MakeEntry(std::string(2U << 20U, 'm')));
  EXPECT_EQ(1U, handler.GetLostEntries());
}

TEST_F(JournalLog, AnAlertTellsWhereItWasRaised) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  OxaLogEntry entry = MakeEntry(
      "<Error><Category>Logic</Category><Message>\n  a &lt;b&gt; &amp; &quot;c&quot;\n</Message>"
      "<CallStack><Context><File>not.cpp</File></Context></CallStack>"
      "<UnwindStack><Context><File>Probe.cpp</File><FunctionName>Acme::Read</FunctionName><Line>42</Line>"
      "<Variables><Var name=\"File\">x</Var></Variables></Context>"
      "<Context><File>Main.cpp</File><Line>7</Line></Context></UnwindStack></Error>");
  entry.m_sForm = "xml";
  handler.HandleLogEntry(entry);
  Fields fields = journal.NextFields();
  EXPECT_EQ("a <b> & \"c\"", fields["MESSAGE"]);
  EXPECT_EQ("Probe.cpp", fields["CODE_FILE"]);
  EXPECT_EQ("42", fields["CODE_LINE"]);
  EXPECT_EQ("Acme::Read", fields["CODE_FUNC"]);
  EXPECT_EQ("xml", fields["OXA_FORM"]);
  EXPECT_EQ(entry.m_sMessage, fields["OXA_XML"]);
}

TEST_F(JournalLog, WhatIsNoAlertIsItsOwnMessage) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  for (const char* const xml : {"<Table><Row/></Table>", "no markup <at all", ""}) {
    OxaLogEntry entry = MakeEntry(xml);
    entry.m_sForm = "xml";
    handler.HandleLogEntry(entry);
    Fields fields = journal.NextFields();
    EXPECT_EQ(xml, fields["MESSAGE"]);
    EXPECT_EQ(xml, fields["OXA_XML"]);
    EXPECT_EQ(0U, fields.count("CODE_FILE"));
  }
}

TEST_F(JournalLog, ARaisedErrorArrivesByTheLog) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  LogManager::Instance()->RegisterHandler(&handler);
  const int line = __LINE__ + 2;
  try {
    OXA_RAISE_ERROR("Test.Journal", LogicError("on <purpose>\x1B[0m\nand by chance"));
  } catch (const LogicError&) {
  }
  ASSERT_TRUE(TestSupport::Eventually([&] { return journal.HasRecord(); }));
  LogManager::Instance()->UnregisterHandler(&handler);
  Fields fields = journal.NextFields();
  EXPECT_EQ("on <purpose>\x1B[0m\nand by chance", fields["MESSAGE"]);
  EXPECT_EQ("Test.Journal", fields["OXA_LOGGER"]);
  EXPECT_EQ("3", fields["PRIORITY"]);
  EXPECT_EQ(std::to_string(line), fields["CODE_LINE"]);
  EXPECT_NE(std::string::npos, fields["CODE_FILE"].find("JournalLogHandlerTests.cpp"));
  EXPECT_NE("", fields["CODE_FUNC"]);
}

TEST_F(JournalLog, AMissingJournalIsToldOnceAndSurvived) {
  WarningCounter counter;
  AlertManager::Instance()->AddAlertListener(counter);
  JournalLogHandler handler;
  EXPECT_TRUE(handler.IsReachable());
  for (int i = 0; i < 5; ++i) handler.HandleLogEntry(MakeEntry("lost"));
  EXPECT_FALSE(handler.IsReachable());
  EXPECT_EQ(5U, handler.GetLostEntries());
  EXPECT_EQ(1, counter.m_iCount);
  EXPECT_EQ("The system's journal can't be reached: " + MSWindows::GetWindowsErrorMessage(ENOENT),
            counter.m_sLast);
  EXPECT_EQ("Oxa.Core.JournalLogHandler", counter.m_sLogName);
  AlertManager::Instance()->RemoveAlertListener(counter);
}

TEST_F(JournalLog, AJournalThatComesBackIsFoundAndToldWhatIsMissing) {
  WarningCounter counter;
  AlertManager::Instance()->AddAlertListener(counter);
  JournalLogHandler handler("station");
  for (int round = 1; round <= 2; ++round) {
    for (int i = 0; i < 3; ++i) handler.HandleLogEntry(MakeEntry("lost"));
    Journal journal(m_sPath);
    handler.HandleLogEntry(MakeEntry("back"));
    EXPECT_EQ("back", journal.NextFields()["MESSAGE"]);
    EXPECT_EQ((Fields{{"MESSAGE", "3 log entries didn't reach the journal"},
                      {"PRIORITY", "4"},
                      {"SYSLOG_IDENTIFIER", "station"}}),
              journal.NextFields());
    handler.HandleLogEntry(MakeEntry("again"));
    EXPECT_EQ("again", journal.NextFields()["MESSAGE"]);
    EXPECT_FALSE(journal.HasRecord());
    EXPECT_TRUE(handler.IsReachable());
    EXPECT_EQ(3UL * static_cast<unsigned long>(round), handler.GetLostEntries());
    EXPECT_EQ(round, counter.m_iCount);
  }
  AlertManager::Instance()->RemoveAlertListener(counter);
}

// Nobody listens behind the name any more.
TEST_F(JournalLog, ADeadSocketIsSurvived) {
  { const Journal dead(m_sPath); }
  const int left = ::socket(AF_UNIX, SOCK_DGRAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, m_sPath.c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(0, ::bind(left, reinterpret_cast<sockaddr*>(&address), sizeof address));
  ::close(left);
  EXPECT_EQ(ECONNREFUSED, Platform::SendToJournal("MESSAGE=m\n", 10, true));
  JournalLogHandler handler;
  handler.HandleLogEntry(MakeEntry("lost"));
  EXPECT_FALSE(handler.IsReachable());
}

// Sends until an entry is lost.
void FillQueue(JournalLogHandler& handler) {
  for (int sent = 0; handler.GetLostEntries() == 0 && sent < 100000; ++sent)
    handler.HandleLogEntry(MakeEntry("m"));
}

constexpr int iMOST_ALARMS = 500;  // in 10 seconds
volatile std::sig_atomic_t s_iAlarms = 0;

void SetAlarms(suseconds_t period) {
  const itimerval timer = {{0, period}, {0, period}};
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

void OnAlarm(int) {
  s_iAlarms = s_iAlarms + 1;
  if (s_iAlarms == iMOST_ALARMS) SetAlarms(0);
}

// Each of them cuts the waiting short, before it is over.
TEST_F(JournalLog, SignalsDontMakeABusyJournalHoldTheLogUpForLonger) {
  const Journal journal(m_sPath);
  JournalLogHandler handler;
  ::signal(SIGALRM, OnAlarm);
  SetAlarms(20000);
  FillQueue(handler);
  EXPECT_EQ(EAGAIN, Platform::SendToJournal("MESSAGE=m\n", 10, true));
  const std::string large(1U << 22U, 'm');
  EXPECT_EQ(EAGAIN, Platform::SendToJournal(large.data(), large.size(), true));
  SetAlarms(0);
  EXPECT_EQ(1U, handler.GetLostEntries());
  EXPECT_LT(0, s_iAlarms);
  EXPECT_LT(s_iAlarms, iMOST_ALARMS);
}

TEST_F(JournalLog, TheFurthestMomentsAreTold) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  OxaLogEntry entry = MakeEntry("m");
  entry.m_time = Time(std::numeric_limits<long long>::min(), Time::ePlatformTimeCurrent);
  handler.HandleLogEntry(entry);
  EXPECT_EQ("-922337203685477581", journal.NextFields()["OXA_TIME_USEC"]);
  entry.m_time = Time(std::numeric_limits<long long>::max(), Time::ePlatformTimeCurrent);
  handler.HandleLogEntry(entry);
  EXPECT_EQ("910692730085477580", journal.NextFields()["OXA_TIME_USEC"]);
}

// One that hangs takes what its queue has room for. The first entry beyond that waits for a moment, the others don't.
TEST_F(JournalLog, ABusyJournalHoldsTheLogUpOnce) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  FillQueue(handler);
  ASSERT_EQ(1U, handler.GetLostEntries());
  const double milliseconds = TestSupport::MillisecondsOf([&] {
    for (int i = 0; i < 200; ++i) handler.HandleLogEntry(MakeEntry("m"));
  });
  EXPECT_EQ(201U, handler.GetLostEntries());
  EXPECT_LT(milliseconds, 10000.0);  // a tenth of a second each would be 20 seconds
  while (journal.HasRecord()) journal.Next();
  handler.HandleLogEntry(MakeEntry("back"));
  EXPECT_EQ("back", journal.NextFields()["MESSAGE"]);
  EXPECT_EQ("201 log entries didn't reach the journal", journal.NextFields()["MESSAGE"]);
}

// There is room for the entry that finds the journal again, and none for what it is to be told.
TEST_F(JournalLog, WhatIsMissingIsToldLaterWhereItCouldNotBe) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  FillQueue(handler);
  ASSERT_EQ(1U, handler.GetLostEntries());
  journal.Next();
  handler.HandleLogEntry(MakeEntry("back"));
  EXPECT_TRUE(handler.IsReachable());
  while (journal.HasRecord()) journal.Next();
  handler.HandleLogEntry(MakeEntry("later"));
  EXPECT_EQ("later", journal.NextFields()["MESSAGE"]);
  EXPECT_EQ("1 log entries didn't reach the journal", journal.NextFields()["MESSAGE"]);
  EXPECT_FALSE(journal.HasRecord());
  EXPECT_EQ(1U, handler.GetLostEntries());
}

std::ptrdiff_t CountSockets() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return std::count_if(begin(files), end(files), [](const auto& file) {
    std::error_code gone;
    return std::filesystem::read_symlink(file, gone).string().rfind("socket:", 0) == 0;
  });
}

// While it waits for a journal that is busy, which is long enough for it to arrive.
TEST_F(JournalLog, AKillWaitsUntilNothingIsOpen) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the thread sanitizer holds the signals of kills back";
#endif
  const Journal journal(m_sPath);
  JournalLogHandler handler;
  FillQueue(handler);
  const std::ptrdiff_t sockets = CountSockets();
  TestSupport::KilledThread::Run([](std::atomic<bool>& now) {
    now = true;
    Platform::SendToJournal("MESSAGE=m\n", 10, true);
  });
  EXPECT_EQ(sockets, CountSockets());
}

TEST_F(JournalLog, ACancellationWaitsUntilTheEntryIsSent) {
  Journal journal(m_sPath);
  JournalLogHandler handler;
  EXPECT_TRUE(TestSupport::CancelledThread::Finishes(
      [&] { handler.HandleLogEntry(MakeEntry("sent all the same")); }));
  EXPECT_EQ("sent all the same", journal.NextFields()["MESSAGE"]);
}

}  // namespace
