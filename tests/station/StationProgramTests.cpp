#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>

#include "Support/ChildProcess.h"
#include "TemporaryFolder.h"

namespace {

using StationTests::ReadFile;
using StationTests::TemporaryFolder;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using TestSupport::AwaitChild;
using TestSupport::ChildResult;
using TestSupport::RunChild;

const char* const sSTARTED_UP = "Error handling started up via initial throw...\n";
const std::chrono::seconds LIMIT(60);

ChildResult RunStation(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{STATION};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunChild(command);
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// The number that stands behind `name` in the lines below the table.
int Figure(const std::string& output, const std::string& name) {
  const auto at = output.find('\n' + name);
  return at == std::string::npos ? -1 : std::stoi(output.substr(at + 1 + name.size()));
}

bool HasXmllint() { return RunChild({"/bin/sh", "-c", "command -v xmllint"}).m_iStatus == 0; }

void ExpectWellFormed(const std::string& file) {
  if (!HasXmllint()) GTEST_SKIP() << "xmllint isn't installed (package libxml2-utils)";
  const ChildResult lint = RunChild({"/usr/bin/env", "xmllint", "--noout", file});
  EXPECT_EQ(0, lint.m_iStatus) << lint.m_sError;
}

// Starts the station with `plan` in `folder`, its output in files there.
pid_t Start(const TemporaryFolder& folder, const std::string& plan) {
  const std::string file = folder.Write("plan", plan);
  const std::string output = folder.File("output");
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(STDOUT_FILENO);
    ::open(output.c_str(), O_WRONLY | O_CREAT, 0600);
    ::execl(STATION, STATION, "--plan", file.c_str(), "--out", folder.Path().c_str(), nullptr);
    ::_exit(127);
  }
  return child;
}

void AwaitText(const std::string& file, const std::string& text) {
  const auto deadline = std::chrono::steady_clock::now() + LIMIT;
  while (ReadFile(file).find(text) == std::string::npos) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

TEST(StationProgram, RunsItsOwnPlanFromAnywhere) {
  const TemporaryFolder folder;
  const auto start = std::chrono::steady_clock::now();
  const ChildResult result = RunChild({"/bin/sh", "-c", "cd \"$1\" && exec \"$0\"", STATION, folder.Path()});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ(
      "station: default.plan:14: Invalid Parameter: interval = \"100\\xC2\\xB5s\" (the unit is unknown; ns, "
      "us, ms "
      "and s are known)\n"
      "station: default.plan:15: Invalid Parameter: count = \"many\" (a whole number is wanted)\n"
      "station: default.plan:16: Invalid Parameter: count = {Not Provided}\n",
      result.m_sError);
  EXPECT_THAT(result.m_sOutput, StartsWith(sSTARTED_UP));
  for (const char* const row : {"\nfast +500( +[0-9.]+){4} ", "\nslow +20( +[0-9.]+){4} ",
                                "\nburst +50( +[0-9.]+){4} ", "\nstrict +200( +[0-9.]+){4} +200\n"}) {
    EXPECT_THAT(result.m_sOutput, ContainsRegex(row));
  }
  EXPECT_THAT(result.m_sOutput, HasSubstr("\nAlerts:             ./alerts.xml\n"));
  ExpectWellFormed(folder.File("alerts.xml"));
}

TEST(StationProgram, WritesEveryAlertThatItCounts) {
  const TemporaryFolder folder;
  const ChildResult result = RunStation({"--out", folder.Path()});
  const std::string alerts = ReadFile(folder.File("alerts.xml"));
  const int errors = Figure(result.m_sOutput, "Errors survived:");
  EXPECT_EQ(3, Figure(result.m_sOutput, "Lines refused:"));
  EXPECT_EQ(errors, Count(alerts, "<Error>"));
  EXPECT_EQ(errors, 3 + Figure(result.m_sOutput, "Samples retried:"));
  EXPECT_EQ(Count(alerts, "<Warning>"), Figure(result.m_sOutput, "Warnings raised:"));
  EXPECT_LE(10, Figure(result.m_sOutput, "Warnings raised:"));
  EXPECT_LE(190, Figure(result.m_sOutput, "Warnings silenced:"));
}

TEST(StationProgram, ShowsNoProgressOffATerminal) {
  const TemporaryFolder folder;
  const ChildResult result =
      RunStation({"--plan", folder.Write("plan", "a 1ms 150 1s"), "--out", folder.Path()});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("", result.m_sError);
  EXPECT_EQ(std::string::npos, result.m_sOutput.find('\r'));
  EXPECT_EQ(std::string::npos, result.m_sOutput.find('\033'));
}

TEST(StationProgram, ShowsProgressOnATerminal) {
  const TemporaryFolder folder;
  const std::string plan = folder.Write("plan", "a 1ms 150 1s");
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    ::execl(STATION, STATION, "--plan", plan.c_str(), "--out", folder.Path().c_str(), nullptr);
    ::_exit(127);
  }
  std::string output;
  char piece[256];
  for (ssize_t got = 0; (got = ::read(terminal, piece, sizeof piece)) > 0;) {
    output.append(piece, static_cast<std::size_t>(got));
  }
  EXPECT_EQ(0, AwaitChild(child, LIMIT));
  ::close(terminal);
  EXPECT_THAT(output, ContainsRegex("\r\033\\[Ka: [0-9]+ of 150"));
  EXPECT_THAT(output, HasSubstr("\r\033[K\r\nHow late the system wakes a sleeper"));
}

TEST(StationProgram, SurvivesABinaryPlan) {
  const TemporaryFolder folder;
  std::string bytes;
  for (int i = 0; i < 4096; ++i) bytes += static_cast<char>(i * 7 + i / 256);
  const ChildResult result =
      RunStation({"--plan", folder.Write("plan", bytes + "\na 1ms 3 1s\n"), "--out", folder.Path()});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_LT(0, Figure(result.m_sOutput, "Lines refused:"));
  for (const char c : result.m_sError) EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F));
  ExpectWellFormed(folder.File("alerts.xml"));
}

TEST(StationProgram, SaysWhenNothingCanBeMeasured) {
  const TemporaryFolder folder;
  const ChildResult result =
      RunStation({"--plan", folder.Write("plan", "# nothing\n"), "--out", folder.Path()});
  EXPECT_EQ(1, result.m_iStatus);
  EXPECT_EQ("station: the plan has no series that could be measured\n", result.m_sError);
  ExpectWellFormed(folder.File("alerts.xml"));
}

TEST(StationProgram, EndsWith2WhenThePlanIsMissing) {
  const TemporaryFolder folder;
  const ChildResult result = RunStation({"--plan", folder.File("missing"), "--out", folder.Path()});
  EXPECT_EQ(2, result.m_iStatus);
  EXPECT_EQ("station: The plan \"" + folder.File("missing") + "\" can't be read: No such file or directory\n",
            result.m_sError);
  EXPECT_EQ(sSTARTED_UP, result.m_sOutput);
  EXPECT_THAT(ReadFile(folder.File("alerts.xml")), HasSubstr("<Error>"));
  ExpectWellFormed(folder.File("alerts.xml"));
}

TEST(StationProgram, EndsWith2WhenThePlanIsAFolder) {
  const TemporaryFolder folder;
  const ChildResult result = RunStation({"--plan", folder.Path(), "--out", folder.Path()});
  EXPECT_EQ(2, result.m_iStatus);
  EXPECT_EQ("station: The plan \"" + folder.Path() + "\" can't be read: it is a folder\n", result.m_sError);
}

TEST(StationProgram, EndsWith2WhenTheFolderCannotBeUsed) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "");
  const ChildResult result = RunStation({"--out", file});
  EXPECT_EQ(2, result.m_iStatus);
  EXPECT_EQ("station: The output folder \"" + file + "\" can't be used: Not a directory\n", result.m_sError);
}

TEST(StationProgram, EndsWith2OnAnUnknownArgument) {
  const ChildResult result = RunStation({"--fast"});
  EXPECT_EQ(2, result.m_iStatus);
  EXPECT_EQ("station: unknown argument \"--fast\"\nTry station --help.\n", result.m_sError);
  EXPECT_EQ("", result.m_sOutput);
}

TEST(StationProgram, HelpsOnRequest) {
  const ChildResult result = RunStation({"--help"});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("", result.m_sError);
  EXPECT_THAT(result.m_sOutput, StartsWith("usage: station [--plan FILE] [--out FOLDER] [--help]\n"));
  EXPECT_THAT(result.m_sOutput, HasSubstr("exit status:\n  0  "));
}

TEST(StationProgram, EndsWith1WhenASeriesIsGivenUp) {
  const TemporaryFolder folder;
  // No system wakes a sleeper within 100 ns, time after time.
  const ChildResult result = RunStation(
      {"--plan", folder.Write("plan", "hopeless 100ns 100000 1s\nfine 1ms 3 1s"), "--out", folder.Path()});
  EXPECT_EQ(1, result.m_iStatus);
  EXPECT_THAT(result.m_sError, StartsWith("station: series given up: Sample "));
  EXPECT_THAT(result.m_sOutput, ContainsRegex("\nfine +3 "));
  const int retried = Figure(result.m_sOutput, "Samples retried:");
  EXPECT_LE(500, retried);  // a busy machine may have missed one of the fine series too
  EXPECT_EQ(retried + 1, Figure(result.m_sOutput, "Errors survived:"));
  ExpectWellFormed(folder.File("alerts.xml"));
}

TEST(StationProgram, EndsWith1WhenItsResultsAreLost) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const TemporaryFolder folder;
  const std::string plan = folder.Write("plan", "a 1ms 3 1s");
  const ChildResult table = RunChild(
      {"/bin/sh", "-c", "exec \"$0\" --plan \"$1\" --out \"$2\" > /dev/full", STATION, plan, folder.Path()});
  EXPECT_EQ(1, table.m_iStatus);
  EXPECT_EQ("station: the results could not all be written\n", table.m_sError);

  const TemporaryFolder full;
  std::filesystem::create_symlink("/dev/full", full.File("alerts.xml"));
  const ChildResult alerts = RunStation({"--plan", plan, "--out", full.Path()});
  EXPECT_EQ(1, alerts.m_iStatus);
  EXPECT_EQ("station: the results could not all be written\n", alerts.m_sError);
}

class StationProgramStoppedBy : public testing::TestWithParam<int> {};

TEST_P(StationProgramStoppedBy, ASignalShowsWhatWasMeasured) {
  const TemporaryFolder folder;
  const pid_t child = Start(folder, "first 1ms 5 0ns\nendless 10s 1000000 1s\nnever 1ms 1 1s");
  AwaitText(folder.File("alerts.xml"), "Sample 5 of series");
  ::kill(child, GetParam());
  EXPECT_EQ(128 + GetParam(), AwaitChild(child, std::chrono::seconds(8)));
  const std::string output = ReadFile(folder.File("output"));
  EXPECT_THAT(output, ContainsRegex("\nfirst +5( +[0-9.]+){4} +5\n"));
  EXPECT_THAT(output, Not(HasSubstr("\nnever")));
  EXPECT_EQ(5, Figure(output, "Warnings raised:"));
  ExpectWellFormed(folder.File("alerts.xml"));
}

INSTANTIATE_TEST_SUITE_P(EitherSignal, StationProgramStoppedBy, testing::Values(SIGINT, SIGTERM));

TEST(StationProgram, LeavesAGoodDocumentWhenItIsKilled) {
  const TemporaryFolder folder;
  const pid_t child = Start(folder, "first 1ms 5 0ns\nendless 10s 1000000 1s");
  AwaitText(folder.File("alerts.xml"), "Sample 5 of series");
  ::kill(child, SIGKILL);
  EXPECT_EQ(-SIGKILL, AwaitChild(child, LIMIT));
  ExpectWellFormed(folder.File("alerts.xml"));
}

}  // namespace
