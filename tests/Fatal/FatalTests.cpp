#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "Dump/DumpReader.h"
#include "Support/BackgroundChild.h"
#include "Support/DyingChild.h"
#include "Support/Eventually.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using TestSupport::ChildResult;
using TestSupport::ReadFile;
using TestSupport::RecordsIn;
using TestSupport::RunDying;
using TestSupport::TemporaryFolder;

constexpr int iMINUS_ONE = 255;
const char* const sFIRST_FORM = ".*/FatalError_[0-9]+_[0-9]+/";
const char* const sSECOND_FORM = ".*/FatalError_[0-9]+-[A-Z][a-z][a-z]-[0-9]+_[0-9]+-[0-9]+-[0-9]+/";
const char* const sPROLOG = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const char* const sFILTER = "warning: Oxa.Core.OxaUnhandledExceptionFilter: ";
const char* const sCREATE = "warning: Oxa.Core.CreateFatalErrorPath: ";
const char* const sFATAL = "warning: Oxa.Core.AlertManager.OnFatalError: ";
const char* const sREPORT = "warning: Oxa.Core.AlertInfo.OnFatalError: ";
const char* const sDUMP = "warning: Microsoft.DebugHelp: ";

ChildResult Die(const TemporaryFolder& folder, std::vector<std::string> arguments,
                const std::vector<std::string>& environment = {}) {
  arguments.insert(arguments.begin(), FATAL_HOST);
  return RunDying(folder, arguments, environment);
}

std::vector<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::set<std::string> NamesIn(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

// Wrapped in one element: the entries of the host stand beside the error.
bool IsWellFormed(const std::string& report) {
  if (report.rfind(sPROLOG, 0) != 0) return false;
  if (std::system("command -v xmllint > /dev/null 2>&1") != 0) return true;
  const TemporaryFolder folder;
  const std::string file =
      folder.Write("report.xml", sPROLOG + ("<All>" + report.substr(std::string(sPROLOG).size())) + "</All>");
  return std::system(("xmllint --noout " + file).c_str()) == 0;
}

void ExpectRecords(const std::string& records, const std::string& message) {
  ASSERT_NE("", records);
  EXPECT_THAT(NamesIn(records), UnorderedElementsAre("CrashMiniDump.dmp", "ErrorInfo.xml"));
  const std::string report = ReadFile(records + "ErrorInfo.xml");
  EXPECT_TRUE(IsWellFormed(report)) << report;
  EXPECT_THAT(report, HasSubstr("<Circumstance>Fatal unhandled error</Circumstance>"));
  EXPECT_THAT(report, HasSubstr("<Message>" + message));
  EXPECT_EQ("MDMP", ReadFile(records + "CrashMiniDump.dmp").substr(0, 4));
}

// Died with status -1, and left one folder with a report and a dump.
void ExpectOrderlyDeath(const ChildResult& result, const TemporaryFolder& folder,
                        const std::string& message) {
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
  ExpectRecords(RecordsIn(folder), message);
  EXPECT_THAT(result.m_sError, HasSubstr("<Circumstance>Fatal unhandled error</Circumstance>"));
}

const char* const sUNCAUGHT = "nobody &lt;catches&gt; this";

// --- Every way to die

TEST(Fatal, UncaughtErrorLeavesItsFolder) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"error"});
  ExpectOrderlyDeath(result, folder, sUNCAUGHT);
  EXPECT_THAT(RecordsIn(folder), MatchesRegex(sFIRST_FORM));
  EXPECT_THAT(Lines(result.m_sOutput),
              ElementsAre("uncaught: nobody <catches> this, path " + RecordsIn(folder)));
}

TEST(Fatal, LogStopsBuffering) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"error", "say-buffering"});
  EXPECT_THAT(Lines(result.m_sOutput),
              ElementsAre("the log buffers", StartsWith("uncaught: "), "the log doesn't buffer"));
}

TEST(Fatal, ExceptionOfAnotherFamily) {
  const TemporaryFolder folder;
  ExpectOrderlyDeath(Die(folder, {"number"}), folder, "No Message");
}

TEST(Fatal, CallOfTerminateLeavesAReportAlone) {
  const TemporaryFolder folder;
  EXPECT_EQ(iMINUS_ONE, Die(folder, {"terminate"}).m_iStatus);
  ASSERT_NE("", RecordsIn(folder));
  EXPECT_THAT(NamesIn(RecordsIn(folder)), ElementsAre("ErrorInfo.xml"));
}

TEST(Fatal, FaultThatNobodyCatches) {
  const TemporaryFolder folder;
  ExpectOrderlyDeath(Die(folder, {"fault"}), folder, "Illegal write to virtual address 0 from 0x");
}

TEST(Fatal, FaultOnAThreadWithoutTranslator) {
  const TemporaryFolder folder;
  ExpectOrderlyDeath(Die(folder, {"untranslated"}), folder, "No Message");
}

TEST(Fatal, ThreadWithHardlyAnyStack) {
  const TemporaryFolder errors;
  ExpectOrderlyDeath(Die(errors, {"small-error"}), errors, sUNCAUGHT);
  const TemporaryFolder faults;
  ExpectOrderlyDeath(Die(faults, {"small-fault"}), faults, "No Message");
}

TEST(Fatal, StaticDestructor) {
  const TemporaryFolder folder;
  ExpectOrderlyDeath(Die(folder, {"static"}), folder, "Illegal write to virtual address 0 from 0x");
}

TEST(Fatal, WithoutALogManager) {
  const TemporaryFolder folder;
  ExpectOrderlyDeath(Die(folder, {"after-shutdown"}), folder, sUNCAUGHT);
}

TEST(Fatal, FilterCalledByTheHost) {
  const TemporaryFolder folder;
  ExpectOrderlyDeath(Die(folder, {"filter"}), folder,
                     "No Message");  // not known as the thread's last error yet
  const TemporaryFolder other;
  ExpectOrderlyDeath(Die(other, {"filter-without-facts"}), other, "No Message");
}

// No listener hears any more, no report is composed; the dump and the first words lie below the working folder.
TEST(Fatal, WhileTheLibraryUnloads) {
  const TemporaryFolder folder;
  const TemporaryFolder working;
  const ChildResult result = Die(folder, {"unloading", "cwd=" + working.Path()});
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
  EXPECT_EQ("", result.m_sOutput);
  EXPECT_EQ("", RecordsIn(folder));
  EXPECT_THAT(RecordsIn(working), MatchesRegex(sFIRST_FORM));
  ExpectRecords(RecordsIn(working), "No Message");
  EXPECT_THAT(ReadFile(RecordsIn(working) + "ErrorInfo.xml"),
              MatchesRegex(".*<Cause>Fault 0xc0000005 at 0x[0-9a-f]+, write to 0x0</Cause>.*"));
  const TestSupport::DumpReader dump(ReadFile(RecordsIn(working) + "CrashMiniDump.dmp"));
  EXPECT_EQ(0x50U, dump.Contents()) << "the default of a policy that nobody has any more";
}

TEST(Fatal, WarningsGoToStandardErrorWhileTheLibraryUnloads) {
  const TemporaryFolder folder;
  const TemporaryFolder working;
  const ChildResult result = Die(folder, {"unloading", "reports=0", "cwd=" + working.Path()});
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_EQ("", RecordsIn(working));
  EXPECT_THAT(result.m_sError, HasSubstr("<Circumstance>Warning During OxaCore Shutdown</Circumstance>"));
  EXPECT_THAT(result.m_sError, HasSubstr("Potential infinite error recursion was halted"));
}

// --- Several deaths

TEST(Fatal, ThreadsThatDieTogetherLeaveOneWholeRecord) {
  const TemporaryFolder errors;
  ExpectOrderlyDeath(Die(errors, {"eight-errors"}), errors, sUNCAUGHT);
  const TemporaryFolder faults;
  ExpectOrderlyDeath(Die(faults, {"eight-faults"}), faults, "No Message");
}

TEST(Fatal, ThreadsThatDieTogetherLeaveAsManyRecordsAsAreAllowed) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"eight-faults", "reports=3"});
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
  ASSERT_NE("", RecordsIn(folder));
  EXPECT_THAT(NamesIn(RecordsIn(folder)),
              UnorderedElementsAre("CrashMiniDump.dmp", "CrashMiniDump2.dmp", "CrashMiniDump3.dmp",
                                   "ErrorInfo.xml", "ErrorInfo3.xml", "ErrorInfo4.xml"));
  for (const char* report : {"ErrorInfo.xml", "ErrorInfo3.xml", "ErrorInfo4.xml"})
    EXPECT_TRUE(IsWellFormed(ReadFile(RecordsIn(folder) + report))) << report;
}

TEST(Fatal, SecondReportIsNumberThree) {
  const TemporaryFolder folder;
  EXPECT_EQ(iMINUS_ONE, Die(folder, {"error", "reports=2", "again=1"}).m_iStatus);
  ASSERT_NE("", RecordsIn(folder));
  EXPECT_THAT(NamesIn(RecordsIn(folder)), UnorderedElementsAre("CrashMiniDump.dmp", "CrashMiniDump2.dmp",
                                                               "ErrorInfo.xml", "ErrorInfo3.xml"));
}

TEST(Fatal, RecursionIsHaltedAtTheLimit) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"error", "again=5"});
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  ExpectRecords(RecordsIn(folder), sUNCAUGHT);
  EXPECT_THAT(result.m_sError, Not(HasSubstr("<?xml"))) << "the second death goes straight to the exit";
  EXPECT_THAT(
      Lines(result.m_sOutput),
      ElementsAre(StartsWith("uncaught: "),
                  std::string(sFILTER) + "Potential infinite error recursion was halted in "
                                         "OxaUnhandledExceptionFilter after it was reentered 2 times"));
}

TEST(Fatal, WithoutReportsThereIsNoFolder) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"error", "reports=0"});
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_EQ("", RecordsIn(folder));
  EXPECT_THAT(
      Lines(result.m_sOutput),
      ElementsAre(std::string(sFILTER) + "Potential infinite error recursion was halted in "
                                         "OxaUnhandledExceptionFilter after it was reentered 1 times"));
  EXPECT_THAT(result.m_sError, Not(HasSubstr("<?xml")));
}

TEST(Fatal, FaultOnTheWayComesToAnEnd) {
  for (const char* way : {"error", "untranslated"}) {
    const TemporaryFolder folder;
    EXPECT_EQ(iMINUS_ONE, Die(folder, {way, "fault-at-end"}).m_iStatus);
    ExpectRecords(RecordsIn(folder), way == std::string("error") ? sUNCAUGHT : "No Message");
    const TemporaryFolder other;
    const ChildResult result =
        Die(other, {way, "fault-at-warning", "base=" + other.Write("file", "") + "/below/"});
    EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
    EXPECT_TRUE(IsWellFormed(ReadFile(RecordsIn(other) + "ErrorInfo.xml"))) << way;
  }
}

TEST(Fatal, OperationsWithNumbersDontTrapOnTheWay) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"number", "trap"});
  ExpectOrderlyDeath(result, folder, "No Message");
  EXPECT_THAT(result.m_sOutput, HasSubstr("a third\n"));
}

// It has nobody to wait for, and an end of its own.
TEST(Fatal, ChildThatWasForkedOffOnTheWayDiesToo) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"error", "fork-at-end"});
  ExpectOrderlyDeath(result, folder, sUNCAUGHT);
  EXPECT_THAT(result.m_sOutput, HasSubstr("the child's end: 255\n"));
  EXPECT_THAT(Die(TemporaryFolder(), {"untranslated", "signal", "fork-at-end=terminate"}).m_sOutput,
              HasSubstr("the child's end: " + std::to_string(-SIGABRT) + "\n"))
      << "that of its own death";
}

TEST(Fatal, ListenerMayEndTheProcessItsOwnWay) {
  const TemporaryFolder folder;
  EXPECT_EQ(3, Die(folder, {"error", "exit-at-end=3"}).m_iStatus);
  ExpectRecords(RecordsIn(folder), sUNCAUGHT);
}

// --- What a host sets

TEST(Fatal, EntriesOfTheHostComeAheadOfTheError) {
  const TemporaryFolder folder;
  Die(folder, {"error", "info=Serial:17", "info=Site:a <b>", "info=Serial:18"});
  const std::string report = ReadFile(RecordsIn(folder) + "ErrorInfo.xml");
  EXPECT_TRUE(IsWellFormed(report)) << report;
  EXPECT_THAT(report, AnyOf(StartsWith(sPROLOG + std::string("<Serial>")),
                            StartsWith(sPROLOG + std::string("<Site>"))))
      << "nothing is around them";
  const auto serial = report.find("<Serial>18</Serial>");
  const auto site = report.find("<Site>a &lt;b&gt;</Site>");
  EXPECT_LT(serial, report.find("<Error>"));
  EXPECT_LT(site, report.find("<Error>"));
  EXPECT_THAT(report, Not(HasSubstr(">17<"))) << "a second entry of a key replaces the first";
}

TEST(Fatal, WithoutEntriesTheErrorComesFirst) {
  const TemporaryFolder folder;
  Die(folder, {"error"});
  EXPECT_THAT(
      ReadFile(RecordsIn(folder) + "ErrorInfo.xml"),
      StartsWith(sPROLOG + std::string("<Error>\n  <Circumstance>Fatal unhandled error</Circumstance>")));
}

TEST(Fatal, EntriesThatAreNoXmlSpoilNothing) {
  const TemporaryFolder folder;
  Die(folder, {"error", "info=1st <key>:5 \xB5m\x01", "info=:empty", "info=Rack_3.a-b:6"});
  const std::string report = ReadFile(RecordsIn(folder) + "ErrorInfo.xml");
  EXPECT_TRUE(IsWellFormed(report)) << report;
  EXPECT_THAT(report, HasSubstr("<_1st__key_>5 \xC2\xB5m?</_1st__key_>"));
  EXPECT_THAT(report, HasSubstr("<_>empty</_>"));
  EXPECT_THAT(report, HasSubstr("<Rack_3.a-b>6</Rack_3.a-b>"));
}

TEST(Fatal, BasePathIsMadeWithAllItsFolders) {
  const TemporaryFolder folder;
  const TemporaryFolder base;
  const ChildResult result = Die(folder, {"error", "base=" + base.File("far/away")});
  EXPECT_EQ("", RecordsIn(folder));
  std::string records;
  for (const auto& entry : std::filesystem::directory_iterator(base.File("far/away")))
    records = entry.path().string() + '/';
  EXPECT_THAT(records, MatchesRegex(sFIRST_FORM));
  ExpectRecords(records, sUNCAUGHT);
  EXPECT_THAT(Lines(result.m_sOutput), ElementsAre("uncaught: nobody <catches> this, path " + records));
}

TEST(Fatal, HostMayWantTheSignal) {
  const TemporaryFolder errors;
  EXPECT_EQ(-SIGABRT, Die(errors, {"error", "signal"}).m_iStatus);
  ExpectRecords(RecordsIn(errors), sUNCAUGHT);
  const TemporaryFolder faults;
  EXPECT_EQ(-SIGSEGV, Die(faults, {"fault", "signal"}).m_iStatus);
  EXPECT_EQ(-SIGSEGV, Die(TemporaryFolder(), {"untranslated", "signal"}).m_iStatus);
  EXPECT_EQ(-SIGABRT, Die(TemporaryFolder(), {"terminate", "signal"}).m_iStatus);
  EXPECT_EQ(-SIGABRT, Die(TemporaryFolder(), {"error", "signal", "fault-at-end"}).m_iStatus);
  EXPECT_EQ(-SIGSEGV, Die(TemporaryFolder(), {"untranslated", "signal", "again=1"}).m_iStatus)
      << "that of the first death";
}

// The second one leaves modules out that nothing refers to: it may be the smaller of the first two.
TEST(Fatal, PoliciesDifferInWhatTheyDump) {
  const std::uint64_t contents[] = {0, 0x50, 0x1a25, 0x1826};
  std::size_t sizes[4];
  for (int policy = 0; policy < 4; ++policy) {
    const TemporaryFolder folder;
    Die(folder, {"error", "policy=" + std::to_string(policy)});
    const TestSupport::DumpReader dump(ReadFile(RecordsIn(folder) + "CrashMiniDump.dmp"));
    EXPECT_EQ(contents[policy], dump.Contents());
    sizes[policy] = dump.Size();
  }
  EXPECT_LT(std::max(sizes[0], sizes[1]), sizes[2]);
  EXPECT_LT(sizes[2], sizes[3]);
}

// Its stack is there, too.
void ExpectThreadAt(std::uint64_t place, const TestSupport::DumpReader& dump, unsigned id, const char* way) {
  const auto thread = dump.ThreadOf(id);
  EXPECT_EQ(place, thread.m_registers.m_uPlace) << way;
  const std::uint64_t stack = thread.m_registers.m_general[4];
  EXPECT_LE(thread.m_stack.m_uStart, stack) << way;
  EXPECT_GT(thread.m_stack.m_uStart + thread.m_stack.m_uSize, stack) << way;
}

// Not at what carries exceptions, nor where the process ends.
void ExpectFailingFrame(const char* way, unsigned code) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {way, "say-places"});
  unsigned process = 0;
  unsigned long from = 0;
  unsigned long to = 0;
  ASSERT_EQ(3, std::sscanf(result.m_sOutput.c_str(), "%u %lx %lx", &process, &from, &to)) << result.m_sOutput;
  const TestSupport::DumpReader dump(ReadFile(RecordsIn(folder) + "CrashMiniDump.dmp"));
  const auto exception = dump.TheException();
  EXPECT_EQ(code, exception.m_uCode) << way;
  EXPECT_EQ(process, exception.m_uThread) << way;
  EXPECT_EQ(exception.m_registers.m_uPlace, exception.m_uAddress) << way;
  EXPECT_LE(from, exception.m_registers.m_uPlace) << way;
  EXPECT_GT(to, exception.m_registers.m_uPlace) << way;
  if (code == SIGABRT) {
    constexpr unsigned uCALL = 0xE8;  // the last of its five bytes is the place
    EXPECT_EQ(uCALL, dump.Memory<std::uint8_t>(exception.m_uAddress - 4)) << way;
  }
  ExpectThreadAt(exception.m_uAddress, dump, process, way);
}

TEST(Fatal, DumpStandsAtTheFrameThatFailed) {
  ExpectFailingFrame("error", SIGABRT);
#if !defined(__SANITIZE_ADDRESS__)  // its own frame stands behind what throws
  ExpectFailingFrame("number", SIGABRT);
#endif
  ExpectFailingFrame("forwarded", SIGABRT);
  ExpectFailingFrame("fault", SIGSEGV);
  ExpectFailingFrame("filter", SIGSEGV);
}

// --- Fallbacks, row by row

TEST(Fatal, FallsBackToTheProgramsFolder) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, {"error", "base=Q:\\nowhere"});
  ExpectOrderlyDeath(result, folder, sUNCAUGHT);
  const std::string records = RecordsIn(folder);
  EXPECT_THAT(records, MatchesRegex(sSECOND_FORM));
  const auto failed =
      MatchesRegex(std::string(sCREATE) +
                   "Failed to create fatal error directory named:\\|Q:.nowhere/FatalError_[0-9]+_[0-9]+/");
  const std::string stored = sCREATE + ("Storing fatal error information in fallback path of|" + records);
  EXPECT_THAT(Lines(result.m_sOutput), ElementsAre(failed, stored, failed, stored,
                                                   "uncaught: nobody <catches> this, path " + records));
}

TEST(Fatal, FallsBackToTheProcessPathThatTheHostSet) {
  const TemporaryFolder folder;
  const TemporaryFolder process;
  Die(folder, {"error", "process=" + process.File(""), "base=" + folder.Write("file", "") + "/below"});
  EXPECT_EQ("", RecordsIn(folder));
  EXPECT_THAT(RecordsIn(process), MatchesRegex(sSECOND_FORM));
  ExpectRecords(RecordsIn(process), sUNCAUGHT);
}

std::vector<std::string> NowhereBut(const TemporaryFolder& folder, const TemporaryFolder& working) {
  const std::string file = folder.Write("file", "");
  return {"error", "process=" + file + "/", "base=" + file + "/", "cwd=" + working.Path()};
}

TEST(Fatal, FallsBackToTheWorkingFolder) {
  const TemporaryFolder folder;
  const TemporaryFolder working;
  const ChildResult result = Die(folder, NowhereBut(folder, working));
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  ExpectRecords(working.File(""), sUNCAUGHT);
  const auto failed =
      StartsWith(sCREATE + ("Failed to create fatal error directory named:|" + folder.File("file/")));
  EXPECT_THAT(
      Lines(result.m_sOutput),
      ElementsAre(
          failed, std::string(sFILTER) + "Storing minidump in fallback path of|" + working.File(""), failed,
          std::string(sFATAL) + "Storing fatal error information in fallback path of|" + working.File(""),
          "uncaught: nobody <catches> this, path " + working.File("")));
}

TEST(Fatal, WithoutAFileStandardErrorTellsAllTheSame) {
  const TemporaryFolder folder;
  const TemporaryFolder working;
  std::filesystem::create_directory(working.File("ErrorInfo.xml"));
  std::filesystem::create_directory(working.File("CrashMiniDump.dmp"));
  const ChildResult result = Die(folder, NowhereBut(folder, working));
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  const auto lines = Lines(result.m_sOutput);
  ASSERT_EQ(7U, lines.size()) << result.m_sOutput;
  EXPECT_EQ(sDUMP + ("Failed to create minidump file named:||" + working.File("CrashMiniDump.dmp")) +
                "||with the following error:||Is a directory",
            lines[2]);
  EXPECT_EQ(sREPORT + ("Failed to open file to generate the XML error report named:|" +
                       working.File("ErrorInfo.xml")),
            lines[5]);
  EXPECT_THAT(result.m_sError, HasSubstr("<Message>nobody &lt;catches&gt; this</Message>"));
}

// The library for symbols was asked for when the error was raised, and failed then.
TEST(Fatal, WithoutTheLibraryForSymbolsThereIsAReportAndNoDump) {
  const TemporaryFolder folder;
  const TemporaryFolder broken;
  broken.Write("libdw.so.1", "this is no library");
  const ChildResult result = Die(folder, {"error"}, {"LD_LIBRARY_PATH=" + broken.Path()});
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << result.m_sError;
  ASSERT_NE("", RecordsIn(folder));
  EXPECT_THAT(NamesIn(RecordsIn(folder)), ElementsAre("ErrorInfo.xml"));
  EXPECT_THAT(ReadFile(RecordsIn(folder) + "ErrorInfo.xml"),
              HasSubstr(std::string("<Message>") + sUNCAUGHT + "</Message>"));
  EXPECT_THAT(
      Lines(result.m_sOutput),
      ElementsAre(sDUMP + std::string("Failed to load dbghelp.dll, call stack and minidumps unavailable"),
                  sFILTER + std::string("No dbghelp.dll available to generate CrashMiniDump.dmp"),
                  "uncaught: nobody <catches> this, path " + RecordsIn(folder)));
}

// Should the report not come to its end, they are there.
TEST(Fatal, WithoutTheLibraryForSymbolsThereAreFirstWordsAsWell) {
  const TemporaryFolder folder;
  const TemporaryFolder broken;
  broken.Write("libdw.so.1", "this is no library");
  const ChildResult result =
      Die(folder, {"error", "info=Serial:17", "die-at-warning=2"}, {"LD_LIBRARY_PATH=" + broken.Path()});
  EXPECT_EQ(3, result.m_iStatus) << result.m_sError;
  ASSERT_NE("", RecordsIn(folder));
  const std::string words = ReadFile(RecordsIn(folder) + "ErrorInfo.xml");
  EXPECT_TRUE(IsWellFormed(words)) << words;
  EXPECT_THAT(words, HasSubstr("<Serial>17</Serial>"));
  EXPECT_THAT(words, HasSubstr("<Cause>Nothing caught what was raised at 0x"));
}

TEST(Fatal, FullDiskEndsTheProcessAllTheSame) {
  for (const char* size : {"0", "100", "5000"}) {
    const TemporaryFolder folder;
    const ChildResult result = Die(folder, {"error", std::string("files=") + size});
    EXPECT_EQ(iMINUS_ONE, result.m_iStatus) << size;
    EXPECT_NE("", RecordsIn(folder)) << size;
    const std::string report = ReadFile(RecordsIn(folder) + "ErrorInfo.xml");
    EXPECT_TRUE(size != std::string("5000") || IsWellFormed(report)) << report;
  }
}

// --- The watch

struct HangingHost {
  HangingHost(const char* hang, const char* way, const char* base = "info=Site:A")
      : m_sHang(hang), m_child({Copy(m_folder), way, "info=Serial:18", hang, base}) {}

  static std::string Copy(const TemporaryFolder& folder) {
    TestSupport::ExpectDeaths();
    std::filesystem::copy_file(FATAL_HOST, folder.File("host"));
    return folder.File("host");
  }

  std::string m_sHang;
  TemporaryFolder m_folder;
  TestSupport::BackgroundChild m_child;
};

// All at the same time, since each takes as long as the watch waits.
TEST(FatalWatch, EndsWhateverHangs) {
  HangingHost listener("hang-at-end", "error");
  HangingHost log("hang-log", "untranslated");
  HangingHost output("hold-output", "error");
  HangingHost warning("hang-at-warning", "untranslated", "base=Q:\\nowhere");
  const double milliseconds = TestSupport::MillisecondsOf([&] {
    for (HangingHost* host : {&listener, &log, &output, &warning}) {
      EXPECT_EQ(iMINUS_ONE, host->m_child.Await()) << host->m_sHang;
      const std::string report = ReadFile(RecordsIn(host->m_folder) + "ErrorInfo.xml");
      EXPECT_TRUE(IsWellFormed(report)) << host->m_sHang << report;
      EXPECT_THAT(report, HasSubstr("<Serial>18</Serial>")) << host->m_sHang;
      EXPECT_THAT(ReadFile(RecordsIn(host->m_folder) + "CrashMiniDump.dmp"), StartsWith("MDMP"))
          << host->m_sHang;
    }
  });
  EXPECT_LE(9000, milliseconds);
  EXPECT_GE(15000, milliseconds);
  EXPECT_THAT(ReadFile(RecordsIn(warning.m_folder) + "ErrorInfo.xml"), HasSubstr("<Cause>Fault 0xc0000005"))
      << "the first words: the warning that hangs is owed ahead of the report";
}

}  // namespace
