#include "CommandLine.h"

#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace {

using Station::CommandLine;
using Station::ReadCommandLine;

TEST(CommandLine, MayBeEmpty) {
  const CommandLine read = ReadCommandLine({});
  EXPECT_FALSE(read.m_plan.has_value());
  EXPECT_EQ(Station::eMEASURE, read.m_eCommand);
  EXPECT_EQ("", read.m_sLogFolder);
  EXPECT_EQ("", read.m_sRecording);
  EXPECT_EQ("", read.m_sReport);
  EXPECT_EQ("", read.m_sDailyFolder);
  EXPECT_TRUE(read.m_logOpenings.empty());
  EXPECT_FALSE(read.m_bHelp);
  EXPECT_EQ("", read.m_sMistake);
}

TEST(CommandLine, TakesPlanAndFolder) {
  const CommandLine read = ReadCommandLine({"--log", "there", "--plan", "my.plan"});
  EXPECT_EQ("my.plan", read.m_plan);
  EXPECT_EQ("there", read.m_sLogFolder);
  EXPECT_EQ("", read.m_sMistake);
}

TEST(CommandLine, TakesTheLastOfTwo) {
  const CommandLine read = ReadCommandLine({"--log", "a", "--log", "b", "--plan", "-"});
  EXPECT_EQ("b", read.m_sLogFolder);
  EXPECT_EQ("-", read.m_plan);
}

TEST(CommandLine, TakesEveryOpening) {
  const CommandLine read = ReadCommandLine({"--open", "Station.Clock=Debug", "--open", "a=Verbose"});
  EXPECT_EQ("", read.m_sMistake);
  ASSERT_EQ(2U, read.m_logOpenings.size());
  EXPECT_EQ("Station.Clock", read.m_logOpenings[0].m_sPath);
  EXPECT_EQ(Oxa::Core::eLOG_DEBUG, read.m_logOpenings[0].m_eLevel);
  EXPECT_EQ("a", read.m_logOpenings[1].m_sPath);
  EXPECT_EQ(Oxa::Core::eLOG_VERBOSE, read.m_logOpenings[1].m_eLevel);
}

TEST(CommandLine, TakesWhatIsToBeKept) {
  const CommandLine read = ReadCommandLine({"--record", "samples", "--daily", "days", "--report", "page"});
  EXPECT_EQ(Station::eMEASURE, read.m_eCommand);
  EXPECT_EQ("samples", read.m_sRecording);
  EXPECT_EQ("days", read.m_sDailyFolder);
  EXPECT_EQ("page", read.m_sReport);
  EXPECT_EQ("", read.m_sMistake);
}

TEST(CommandLine, TakesCommands) {
  const CommandLine replay = ReadCommandLine({"replay", "samples", "--log", "there"});
  EXPECT_EQ(Station::eREPLAY, replay.m_eCommand);
  EXPECT_EQ("samples", replay.m_sOperand);
  EXPECT_EQ("there", replay.m_sLogFolder);
  EXPECT_EQ("", replay.m_sMistake);
  const CommandLine days = ReadCommandLine({"--log", "there", "days", "replay"});
  EXPECT_EQ(Station::eDAYS, days.m_eCommand);
  EXPECT_EQ("replay", days.m_sOperand);
  EXPECT_EQ("", days.m_sMistake);
}

TEST(CommandLine, TakesATestWithAllThatMeasuringTakes) {
  const CommandLine read = ReadCommandLine(
      {"test", "--plan", "a", "--record", "b", "--daily", "c", "--report", "d", "--open", "e=Debug"});
  EXPECT_EQ(Station::eTEST, read.m_eCommand);
  EXPECT_EQ("a", read.m_plan);
  EXPECT_EQ("d", read.m_sReport);
  EXPECT_EQ("", read.m_sMistake);
  EXPECT_EQ(Station::eTEST, ReadCommandLine({"--log", "a", "test"}).m_eCommand);
}

TEST(CommandLine, TakesOneCommandAndItsOptionsOnly) {
  EXPECT_EQ("one thing at a time: \"test\"", ReadCommandLine({"replay", "a", "test"}).m_sMistake);
  EXPECT_EQ("one thing at a time: \"days\"", ReadCommandLine({"test", "days", "a"}).m_sMistake);
  EXPECT_EQ("one thing at a time: \"test\"", ReadCommandLine({"test", "test"}).m_sMistake);
  EXPECT_EQ("--report is for measuring and replays",
            ReadCommandLine({"days", "a", "--report", "b"}).m_sMistake);
  EXPECT_EQ("", ReadCommandLine({"replay", "a", "--report", "b"}).m_sMistake);
  EXPECT_EQ("one thing at a time: \"days\"", ReadCommandLine({"replay", "a", "days", "b"}).m_sMistake);
  EXPECT_EQ("one thing at a time: \"replay\"", ReadCommandLine({"replay", "a", "replay", "a"}).m_sMistake);
  EXPECT_EQ("--plan is for measuring", ReadCommandLine({"replay", "a", "--plan", "b"}).m_sMistake);
  EXPECT_EQ("--record is for measuring", ReadCommandLine({"--record", "b", "days", "a"}).m_sMistake);
  EXPECT_EQ("--daily is for measuring", ReadCommandLine({"days", "a", "--daily", "b"}).m_sMistake);
  EXPECT_EQ("--open is for measuring", ReadCommandLine({"days", "a", "--open", "b=Debug"}).m_sMistake);
}

// By whatever path, and whether it is there or not.
TEST(CommandLine, DestroysNothingThatItNames) {
  const StationTests::TemporaryFolder folder;
  const std::string file = folder.Write("x", "");
  std::filesystem::create_symlink("x", folder.File("link"));
  const std::string detour = folder.Path() + "/./x";
  EXPECT_EQ("--report would overwrite what is replayed",
            ReadCommandLine({"replay", file, "--report", detour}).m_sMistake);
  EXPECT_EQ("--report would overwrite the plan",
            ReadCommandLine({"--plan", folder.File("link"), "--report", file}).m_sMistake);
  EXPECT_EQ("--record would overwrite the plan",
            ReadCommandLine({"test", "--record", detour, "--plan", file}).m_sMistake);
  EXPECT_EQ("--report would overwrite the recording",
            ReadCommandLine({"--record", "new", "--report", "./new"}).m_sMistake);
  EXPECT_EQ("", ReadCommandLine({"--record", file, "--report", file + "y"}).m_sMistake);
}

TEST(CommandLine, AsksForHelp) { EXPECT_TRUE(ReadCommandLine({"--help"}).m_bHelp); }

TEST(CommandLine, NamesItsMistakes) {
  EXPECT_EQ("unknown argument \"--plam\"", ReadCommandLine({"--plam", "x"}).m_sMistake);
  EXPECT_EQ("unknown argument \"x\"", ReadCommandLine({"--help", "x"}).m_sMistake);
  EXPECT_EQ("unknown argument \"--log=a\"", ReadCommandLine({"--log=a"}).m_sMistake);
  EXPECT_EQ("unknown argument \"\"", ReadCommandLine({""}).m_sMistake);
  EXPECT_EQ("unknown argument \"\\x1B[2J\"", ReadCommandLine({"\x1B[2J"}).m_sMistake);
  EXPECT_EQ("--plan needs a file behind it", ReadCommandLine({"--plan"}).m_sMistake);
  EXPECT_EQ("--plan needs a file behind it", ReadCommandLine({"--plan", "--log", "a"}).m_sMistake);
  EXPECT_EQ("--log needs a folder behind it", ReadCommandLine({"--plan", "x", "--log"}).m_sMistake);
  EXPECT_EQ("--log needs a folder behind it", ReadCommandLine({"--log", ""}).m_sMistake);
  EXPECT_EQ("--record needs a file behind it", ReadCommandLine({"--record"}).m_sMistake);
  EXPECT_EQ("--daily needs a folder behind it", ReadCommandLine({"--daily", "--help"}).m_sMistake);
  EXPECT_EQ("--report needs a file behind it", ReadCommandLine({"--report", "--log"}).m_sMistake);
  EXPECT_EQ("unknown argument \"x\"", ReadCommandLine({"test", "x"}).m_sMistake);
  EXPECT_EQ("replay needs a file behind it", ReadCommandLine({"replay"}).m_sMistake);
  EXPECT_EQ("days needs a folder behind it", ReadCommandLine({"days", ""}).m_sMistake);
  EXPECT_EQ("--open needs PATH=LEVEL behind it", ReadCommandLine({"--open"}).m_sMistake);
}

TEST(CommandLine, NamesTheMistakesOfOpenings) {
  EXPECT_EQ("--open: \"a..b\" is no path of a logger: names with single dots between them make one",
            ReadCommandLine({"--open", "a..b=Debug"}).m_sMistake);
  EXPECT_EQ("--open: \"x\" is no level: Alarm, Error, Warning, Debug, Informational and Verbose are known",
            ReadCommandLine({"--open", "Station=x", "--plam"}).m_sMistake);
  EXPECT_EQ("--open: \"Station\" has no level: PATH=LEVEL is wanted, as in Station.Clock=Debug",
            ReadCommandLine({"--open", "Station"}).m_sMistake);
}

TEST(CommandLine, TakesACrash) {
  const CommandLine read = ReadCommandLine(
      {"crash", "null-write", "--folder", "there", "--policy", "3", "--by-signal", "--plan", "p"});
  EXPECT_EQ("", read.m_sMistake);
  EXPECT_EQ(Station::eCRASH, read.m_eCommand);
  EXPECT_EQ("null-write", read.m_sOperand);
  EXPECT_EQ("there", read.m_sReportFolder);
  EXPECT_EQ(3, read.m_dumpPolicy);
  EXPECT_TRUE(read.m_bEndBySignal);
}

TEST(CommandLine, TakesACrashWithoutKind) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"crash"}, {"--log", "there", "crash"}, {"crash", "--log", "there"}}) {
    const CommandLine read = ReadCommandLine(arguments);
    EXPECT_EQ("", read.m_sMistake);
    EXPECT_EQ(Station::eCRASH, read.m_eCommand);
    EXPECT_EQ("", read.m_sOperand);
    EXPECT_FALSE(read.m_dumpPolicy.has_value());
    EXPECT_FALSE(read.m_bEndBySignal);
  }
}

TEST(CommandLine, RefusesWhatNoCrashIs) {
  EXPECT_EQ("unknown kind of crash \"test\"; station crash lists them",
            ReadCommandLine({"crash", "test"}).m_sMistake);
  for (const char* const policy : {"4", "-1", "33", "x", " 1"}) {
    EXPECT_EQ("--policy: \"" + std::string(policy) + "\" is none; 0 to 3 are",
              ReadCommandLine({"crash", "error", "--policy", policy}).m_sMistake);
  }
  EXPECT_EQ("--policy needs 0 to 3 behind it", ReadCommandLine({"crash", "error", "--policy"}).m_sMistake);
  EXPECT_EQ("--folder is for crashes", ReadCommandLine({"--folder", "a"}).m_sMistake);
  EXPECT_EQ("--policy is for crashes", ReadCommandLine({"days", "a", "--policy", "1"}).m_sMistake);
  EXPECT_EQ("--by-signal is for crashes", ReadCommandLine({"test", "--by-signal"}).m_sMistake);
  EXPECT_EQ("--record is for measuring", ReadCommandLine({"crash", "error", "--record", "a"}).m_sMistake);
  EXPECT_EQ("--daily is for measuring", ReadCommandLine({"crash", "error", "--daily", "a"}).m_sMistake);
  EXPECT_EQ("--report is for measuring and replays",
            ReadCommandLine({"crash", "error", "--report", "a"}).m_sMistake);
  EXPECT_EQ("one thing at a time: \"crash\"", ReadCommandLine({"test", "crash", "error"}).m_sMistake);
}

}  // namespace
