// How the station dies: each kind in a process of its own, with folders of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <regex>

#include "DefaultLog.h"
#include "PageReader.h"
#include "Support/ChildProcess.h"
#include "Support/DyingChild.h"
#include "Support/Sanitized.h"
#include "Support/SecondsNow.h"
#include "TemporaryFolder.h"

namespace {

using StationTests::DefaultLog;
using StationTests::Element;
using StationTests::ReadFile;
using StationTests::ReadPage;
using StationTests::TemporaryFolder;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using TestSupport::ChildResult;
using TestSupport::RunChild;

constexpr int iDIED = 255;
const std::chrono::seconds LIMIT(120);

// A station that died, and what it left behind.
class Death {
 public:
  explicit Death(std::vector<std::string> arguments) {
    TestSupport::ExpectDeaths();
    arguments.insert(arguments.begin(), STATION);
    arguments.insert(arguments.end(), {"--folder", m_folder.File("reports"), "--log", m_folder.File("log")});
    m_begin = TestSupport::SecondsNow();
    m_result = RunChild(arguments, {}, LIMIT);
    m_end = TestSupport::SecondsNow();
  }

  int Status() const { return m_result.m_iStatus; }
  const std::string& Output() const { return m_result.m_sOutput; }
  const std::string& ErrorOutput() const { return m_result.m_sError; }
  std::string Base() const { return m_folder.File("reports") + '/'; }

  // What the station wrote behind `label`.
  std::string Told(const std::string& label) const {
    std::smatch found;
    const std::regex line("(?:^|\n)" + label + ": +([^\n]*)\n");
    return std::regex_search(Output(), found, line) ? found[1].str() : std::string();
  }

  // All that lies below the base folder, without it.
  std::vector<std::string> LeftBehind() const {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Base(), ignored))
      names.push_back(entry.path().string().substr(Base().size()));
    return names;
  }

  // Folders are called by the moment. It isn't known to us, but between which two it was.
  std::vector<std::string> PossibleFolders() const {
    std::vector<std::string> folders;
    for (std::time_t moment = m_begin; moment <= m_end; ++moment) {
      std::tm local{};
      ::localtime_r(&moment, &local);
      char name[64];
      std::snprintf(name, sizeof name, "FatalError_%d%d%d_%d%d%d/", local.tm_year + 1900, local.tm_mon + 1,
                    local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
      folders.push_back(Base() + name);
    }
    return folders;
  }

  // Everything in the report, in its order, below one root.
  ReadPage Report() const {
    std::string text = ReadFile(Told("Left behind") + "ErrorInfo.xml");
    text.erase(0, text.find("?>") + 2);
    return ReadPage("<all>" + text + "</all>");
  }

  std::uintmax_t DumpSize() const {
    std::error_code failure;
    const std::uintmax_t size =
        std::filesystem::file_size(Told("Left behind") + "CrashMiniDump.dmp", failure);
    return failure ? 0 : size;
  }

  const TemporaryFolder& Folder() const { return m_folder; }

 private:
  TemporaryFolder m_folder;
  std::time_t m_begin;
  std::time_t m_end;
  ChildResult m_result;
};

// The folder that was told beforehand is the one that was made, unless the second ended in between; and the one
// that the listener was told is.
void ExpectToldFolder(const Death& death) {
  const std::string made = death.Told("Left behind");
  const auto possible = death.PossibleFolders();
  const auto told = std::find(possible.begin(), possible.end(), death.Told("Folder"));
  ASSERT_NE(possible.end(), told) << death.Output();
  ASSERT_NE("", made) << death.Output();
  EXPECT_NE(possible.end(), std::find(told, possible.end(), made)) << death.Output();
  std::vector<std::string> wanted{made.substr(death.Base().size(), made.size() - death.Base().size() - 1)};
  wanted.push_back(wanted[0] + "/ErrorInfo.xml");
  wanted.push_back(wanted[0] + "/CrashMiniDump.dmp");
  EXPECT_THAT(death.LeftBehind(), testing::UnorderedElementsAreArray(wanted));
}

// Longer texts stand in lines of their own.
std::string Trimmed(const std::string& text) {
  return std::regex_replace(text, std::regex("^\\s+|\\s+$"), "");
}

std::string TextOf(const ReadPage& page, const std::string& name) {
  const auto all = page.All(name);
  return all.empty() ? "no " + name : Trimmed(all[0].m_sText);
}

struct Kind {
  const char* m_sName;
  const char* m_sMessage;  // a pattern for the whole of it
  const char*
      m_sFunction;  // part of the name of the one on top of the call stack; null: no stack is asked for
};

class StationDeath : public testing::TestWithParam<Kind> {};

TEST_P(StationDeath, LeavesWhatItSays) {
  const Kind& kind = GetParam();
  const Death death({"crash", kind.m_sName});
  EXPECT_EQ(iDIED, death.Status());
  EXPECT_THAT(death.Told("Crash"), testing::StartsWith(std::string(kind.m_sName) + ": "));
  ExpectToldFolder(death);
  EXPECT_LT(0U, death.DumpSize());
  const ReadPage report = death.Report();
  ASSERT_TRUE(report.m_bWellFormed);
  EXPECT_TRUE(std::regex_match(TextOf(report, "Message"), std::regex(kind.m_sMessage)))
      << TextOf(report, "Message");
  EXPECT_EQ("Fatal unhandled error", TextOf(report, "Circumstance"));
  EXPECT_EQ(std::string("dying by ") + kind.m_sName, TextOf(report, "Doing"));
  EXPECT_THAT(death.ErrorOutput(), HasSubstr("<Circumstance>Fatal unhandled error</Circumstance>"));
  if (kind.m_sFunction != nullptr) {
    EXPECT_THAT(TextOf(report, "CallStack"), testing::Not(HasSubstr("no CallStack")));
    EXPECT_THAT(TextOf(report, "FunctionName"), HasSubstr(kind.m_sFunction));
  }
}

std::string NameOf(const testing::TestParamInfo<Kind>& info) {
  return std::regex_replace(std::string(info.param.m_sName), std::regex("-"), "_");
}

// A thread that has raised nothing gets the last error of another one, and a series may have missed a sample.
constexpr const char* sNO_ERROR = "No Message|Sample [0-9]+ of series .* was missed: .*";

const Kind aKINDS[] = {
    {"null-write", "Illegal write to virtual address 0 from 0x[0-9a-f]+", "WriteThroughNull"},
    {"null-call", "Illegal read from virtual address 0 from 0", nullptr},
    {"stack-overflow", "Stack overflow detected at 0x[0-9a-f]+", "Descend"},
    {"error", "Channel 7 of the instrument is lost", "ReadChannel"},
    {"bare-thread", sNO_ERROR, nullptr},
    {"static-destructor", "Illegal write to virtual address 0 from 0x[0-9a-f]+", "WriteThroughNull"},
};
INSTANTIATE_TEST_SUITE_P(Chief, StationDeath, testing::ValuesIn(aKINDS), NameOf);

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

const Kind aOTHER_KINDS[] = {
    {"null-read", "Illegal read from virtual address 0 from 0x[0-9a-f]+", "ReadThroughNull"},
    {"divide", "Integer divide by zero attempted at 0x[0-9a-f]+", "DivideByZero"},
    {"truncated-file", "Attempted to access unreachable page from 0x[0-9a-f]+", "ReadBeyondMappedFile"},
#if defined(__x86_64__)
    {"illegal-instruction", "Attempted to execute an illegal instruction from 0x[0-9a-f]+",
     "RunNoInstruction"},
    {"private-instruction",
     "Attempted to execute instruction not allowed in current machine mode from 0x[0-9a-f]+",
     "RunPrivateInstruction"},
    {"int-overflow", "Integer overflow due to operation at 0x[0-9a-f]+", "RunOverflowInstruction"},
    {"misaligned", "Attempted to access misaligned data from 0x[0-9a-f]+", "ReadMisaligned"},
    {"float-divide", "Floating point divide by zero attempted at 0x[0-9a-f]+", "DivideFloatByZero"},
    {"float-invalid", "Invalid floating point operation attempted at 0x[0-9a-f]+", "DoInvalidFloatOperation"},
    {"float-overflow", "Exceeded maximum exponent for float operation at 0x[0-9a-f]+", "OverflowFloat"},
    {"float-underflow", "Result below minimum exponent for float operation at 0x[0-9a-f]+", "UnderflowFloat"},
    {"float-denormal",
     "One of the operands in a floating-point operation from 0x[0-9a-f]+ is too small to represent as a "
     "standard floating-point value",
     "UseDenormalFloat"},
    {"float-stack", "Stack overflowed or underflowed due to operation at 0x[0-9a-f]+", "PopEmptyFloatStack"},
#endif
    {"exception", sNO_ERROR, nullptr},
    {"unknown", sNO_ERROR, nullptr},
    {"thread", "Illegal write to virtual address 0 from 0x[0-9a-f]+", "WriteThroughNull"},
    {"threads", "Illegal write to virtual address 0 from 0x[0-9a-f]+", "WriteThroughNull"},
    {"listener", "Illegal write to virtual address 0 from 0x[0-9a-f]+", "WriteThroughNull"},
};
INSTANTIATE_TEST_SUITE_P(Other, StationDeath, testing::ValuesIn(aOTHER_KINDS), NameOf);

TEST(StationCrash, EveryKindIsTested) {
  std::vector<std::string> listed;
  const std::string list = RunChild({STATION, "crash"}).m_sOutput;
  const std::regex line("  ([a-z-]+) +[a-zA-Z].*\n");
  for (auto it = std::sregex_iterator(list.begin(), list.end(), line); it != std::sregex_iterator(); ++it)
    listed.push_back((*it)[1]);
  std::vector<std::string> tested{"abort", "heap"};
  for (const Kind& kind : aKINDS) tested.emplace_back(kind.m_sName);
  for (const Kind& kind : aOTHER_KINDS) tested.emplace_back(kind.m_sName);
  EXPECT_THAT(tested, testing::UnorderedElementsAreArray(listed));
}

#if defined(OXACORE_SOAK)
// Whatever wants memory afterwards faults again, until the watch over the dying process ends it.
TEST(StationCrash, LeavesADumpWhereNothingCanBeAllocated) {
  const Death death({"crash", "heap"});
  EXPECT_EQ(iDIED, death.Status());
  EXPECT_THAT(death.LeftBehind(), testing::Contains(testing::EndsWith("/CrashMiniDump.dmp")));
}
#endif

TEST(StationCrash, DumpsMoreByEachPolicy) {
  std::uintmax_t last = 0;
  for (const char* const policy : {"1", "2", "3"}) {
    const Death death({"crash", "null-write", "--policy", policy});
    EXPECT_EQ(iDIED, death.Status());
    EXPECT_LT(last, death.DumpSize()) << policy;
    last = death.DumpSize();
  }
}

#endif

TEST(StationCrash, ListsItsKindsAndLeavesNothing) {
  const ChildResult result = RunChild({STATION, "crash"});
  EXPECT_EQ(0, result.m_iStatus);
  EXPECT_EQ("", result.m_sError);
  EXPECT_THAT(result.m_sOutput,
              testing::StartsWith("  null-write          writes through a null pointer: AccessViolation\n"));
  EXPECT_THAT(result.m_sOutput, HasSubstr("\n  static-destructor   a fault after the end of main\n"));
}

TEST(StationCrash, RefusesUnknownKinds) {
  const ChildResult result = RunChild({STATION, "crash", "of-boredom"});
  EXPECT_EQ(2, result.m_iStatus);
  EXPECT_EQ("station: unknown kind of crash \"of-boredom\"; station crash lists them\nTry station --help.\n",
            result.m_sError);
}

TEST(StationCrash, TellsWhatItWasDoingAheadOfTheError) {
  const TemporaryFolder folder;
  const Death death({"crash", "error", "--plan", folder.Write("plan", "a 20ms 30 1s\nb.c 20ms 30 1s")});
  const ReadPage report = death.Report();
  std::vector<std::string> names;
  for (const Element& element : report.m_elements) names.push_back(element.m_sName);
  ASSERT_LT(5U, names.size());
  EXPECT_THAT(std::vector<std::string>(names.begin() + 1, names.begin() + 4),
              testing::UnorderedElementsAre("Doing", "Plan", "Series"));
  EXPECT_EQ("Error", names[4]);
  EXPECT_EQ(folder.File("plan"), TextOf(report, "Plan"));
  EXPECT_EQ("a, b.c", TextOf(report, "Series"));
}

TEST(StationCrash, ShowsTheRoadOfAnErrorAndTheVariablesOnIt) {
  const Death death({"crash", "error"});
  const ReadPage report = death.Report();
  std::vector<std::string> functions;
  for (const Element& element : report.All("FunctionName")) functions.push_back(Trimmed(element.m_sText));
  const auto last = functions.end();
  ASSERT_LT(2U, functions.size());
  EXPECT_THAT(std::vector<std::string>(last - 2, last),
              ElementsAre(HasSubstr("ReadChannel"), HasSubstr("LeaveErrorUncaught")));
  std::vector<std::string> variables;
  for (const Element& element : report.All("Var"))
    variables.push_back(element.Get("name") + " = " + Trimmed(element.m_sText));
  EXPECT_THAT(variables, IsSupersetOf({std::string("channel = 7")}));
}

TEST(StationCrash, EndsBySignalOnRequest) {
  const std::pair<const char*, int> signals[] = {
      {"null-write", SIGSEGV}, {"divide", SIGFPE}, {"error", SIGABRT}};
  for (const auto& [kind, signal] : signals) {
    const Death death({"crash", kind, "--by-signal"});
    EXPECT_EQ(-signal, death.Status()) << kind;
    ExpectToldFolder(death);
    EXPECT_TRUE(death.Report().m_bWellFormed);
  }
}

TEST(StationCrash, AbortIsNobodysFault) {
  const Death death({"crash", "abort"});
  EXPECT_EQ(-SIGABRT, death.Status());
  EXPECT_EQ("none", death.Told("Folder"));
  EXPECT_EQ("", death.Told("Left behind"));
  EXPECT_THAT(death.LeftBehind(), IsEmpty());
}

TEST(StationCrash, TellsAFolderThatCannotBe) {
  const TemporaryFolder folder;
  const ChildResult result =
      RunChild({STATION, "crash", "error", "--folder", folder.File("a|b"), "--log", folder.Path()});
  EXPECT_EQ(2, result.m_iStatus);
  EXPECT_EQ("station: the folder can't hold reports: " + folder.File("a|b") + "\n", result.m_sError);
  EXPECT_EQ(1, DefaultLog(folder.Path()).Count("Attempted to set an invalid fatal error base path of:"));
}

TEST(StationCrash, FallsBackOnAnotherFolder) {
  TestSupport::ExpectDeaths();
  const TemporaryFolder folder;
  const ChildResult result = RunChild(
      {STATION, "crash", "error", "--folder", folder.Write("file", "") + "/x", "--log", folder.File("log")});
  EXPECT_EQ(iDIED, result.m_iStatus);
  EXPECT_THAT(result.m_sOutput,
              ContainsRegex("\nLeft behind: +" + folder.File("log") +
                            "/FatalError_[0-9]+-[A-Z][a-z]+-[0-9]+_[0-9]+-[0-9]+-[0-9]+/\n"));
}

TEST(StationCrash, AFaultInOneSeriesEndsThatSeriesOnly) {
  const TemporaryFolder folder;
  const ChildResult result =
      RunChild({STATION, "--plan", STATION_PLANS "/faulty.plan", "--log", folder.Path()}, {}, LIMIT);
  EXPECT_EQ(1, result.m_iStatus);
  EXPECT_THAT(result.m_sError,
              testing::MatchesRegex("station: series \"faulty\" given up: Illegal write to virtual address 0 "
                                    "from 0x[0-9a-f]+\n"));
  EXPECT_THAT(result.m_sOutput, ContainsRegex("\nfaulty +2 "));
  EXPECT_THAT(result.m_sOutput, ContainsRegex("\nsteady +20 "));
  const DefaultLog log(folder.Path());
  EXPECT_LE(1, log.Count("<LogName>OS.Windows</LogName>"));
  EXPECT_LE(1, log.Count("<ThreadName>Series faulty</ThreadName>"));
  for (const std::string& name : folder.Names()) EXPECT_THAT(name, testing::StartsWith("DefaultLog"));
}

}  // namespace
