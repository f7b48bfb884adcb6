// Frames: which are there, in which order, with which line, function and module.

#include <algorithm>

#include "DebugHelp/StackHostRuns.h"

namespace StackTests {
namespace {

class Compiled : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!IsThere(GetParam())) GTEST_SKIP() << "not compiled here";
  }
  std::string Module() const { return Victim(GetParam()); }
  std::string In() const { return std::string(" [") + GetParam() + "]"; }
};

TEST_P(Compiled, ShowsTheFunctionsThatWerePutIntoOthers) {
  const Printed printed = RunHost(Module(), "inlined");
  ASSERT_GE(printed.m_lines.size(), 7U) << printed.All();
  // The first frame is the code that failed.
  EXPECT_EQ(printed.m_lines[0], AtHost("raise") + "(anonymous namespace)::Raise [StackHost]");
  // Short debug data has no more of such a function than its own name.
  const std::string in = GetParam() == std::string("VictimG1") ? "" : "victim::(anonymous namespace)::";
  EXPECT_TRUE(BeginsWith(printed.m_lines[1], At("innermost") + in + "Innermost" + In()));
  EXPECT_TRUE(BeginsWith(printed.m_lines[2], At("middle") + in + "Middle" + In()));
  EXPECT_TRUE(BeginsWith(printed.m_lines[3], At("inlined") + "victim::Inlined" + In()));
  EXPECT_TRUE(BeginsWith(printed.m_lines[4], At("run inlined") + "RunVictim" + In()));
  EXPECT_TRUE(
      BeginsWith(printed.m_lines[5], AtHost("run") + "(anonymous namespace)::RunAndPrint [StackHost]"));
  EXPECT_TRUE(printed.Has(" main [StackHost]"));
}

TEST_P(Compiled, ShowsMembersAndTemplatesByTheirQualifiedNames) {
  const Printed members = RunHost(Module(), "descend", 2);
  ASSERT_GE(members.m_lines.size(), 5U) << members.All();
  EXPECT_TRUE(BeginsWith(members.m_lines[1], At("bottom") + "victim::Counter::Descend" + In()));
  EXPECT_TRUE(BeginsWith(members.m_lines[2], At("descend") + "victim::Counter::Descend" + In()));
  EXPECT_TRUE(BeginsWith(members.m_lines[3], At("descend") + "victim::Counter::Descend" + In()));
  EXPECT_TRUE(BeginsWith(members.m_lines[4], At("run descend") + "RunVictim" + In()));
  const Printed templates = RunHost(Module(), "templated", 7);
  ASSERT_GE(templates.m_lines.size(), 2U) << templates.All();
  EXPECT_TRUE(BeginsWith(templates.m_lines[1], At("templated") + "victim::Templated<long>" + In()));
}

TEST_P(Compiled, AStackOfMoreThanAHundredFramesIsCutThere) {
  const Printed printed = RunHost(Module(), "descend", 150);
  EXPECT_TRUE(printed.Has("100 frames")) << printed.All();
  EXPECT_EQ(printed.Count("victim::Counter::Descend" + In()), 99);
  EXPECT_FALSE(printed.Has(" main "));
}

INSTANTIATE_TEST_SUITE_P(DebugHelp, Compiled,
                         ::testing::Values("VictimO0", "VictimO2", "VictimG1", "VictimClangO0",
                                           "VictimClangO2"),
                         [](const auto& victim) { return std::string(victim.param); });

TEST(CallStack, HasNoFramesOfTheErrorSystem) {
  const Printed printed = RunHost(Victim("VictimO0"), "templated");
  for (const char* const file : {"error.cpp", "new.cpp", "error.h", "raisesite.h", "raisesite.cpp",
                                 "microsoftdebughelp", "stackwalk", "callstack"}) {
    for (std::string line : printed.m_lines) {
      std::transform(line.begin(), line.end(), line.begin(),
                     [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
      EXPECT_NE(line.rfind(file, 0), 0U) << line;
    }
  }
  EXPECT_TRUE(BeginsWith(printed.m_lines[0], AtHost("raise"))) << printed.All();
}

TEST(CallStack, HasNoFramesWithoutALine) {
  const Printed printed = RunHost(Victim("VictimStripped"), "descend", 3);
  EXPECT_FALSE(printed.Has("Victim")) << printed.All();
  // But it leads through them.
  EXPECT_TRUE(BeginsWith(printed.m_lines[0], AtHost("raise")));
  EXPECT_TRUE(BeginsWith(printed.m_lines[1], AtHost("run")));
  EXPECT_TRUE(printed.Has(" main [StackHost]"));
}

TEST(CallStack, EndsWhereAFrameComesTwice) {
  const Printed printed = RunHost(Victim("VictimO0"), "loop", 0, {"walk=100"});
  ASSERT_GE(printed.m_lines.size(), 3U) << printed.All();
  EXPECT_EQ(printed.Count("victim::Loop [VictimO0]"), 1) << printed.All();
  EXPECT_TRUE(BeginsWith(printed.m_lines[0], AtHost("walk")));
  EXPECT_TRUE(BeginsWith(printed.m_lines[1], At("loop") + "victim::Loop [VictimO0]"));
  EXPECT_TRUE(printed.Has("2 frames"));
}

TEST(CallStack, CarriesTheVariables) {
  const Printed printed = RunHost(Victim("VictimO0"), "descend", 3);
  const int bottom = printed.Find(At("bottom"));
  ASSERT_GE(bottom, 0) << printed.All();
  EXPECT_NE(printed.m_lines[static_cast<std::size_t>(bottom)].find(" depth=0"), std::string::npos);
  const int outermost = bottom + 3;
  EXPECT_NE(printed.m_lines[static_cast<std::size_t>(outermost)].find(" depth=3"), std::string::npos)
      << printed.All();
  EXPECT_TRUE(RunHost(Victim("VictimO0"), "inlined").Has(" innermostArgument=42"));
}

TEST(CallStack, StandsInTheXmlOfTheError) {
  const Printed printed = RunHost(Victim("VictimO0"), "templated", 0, {"xml"});
  EXPECT_NE(printed.m_child.m_sOutput.find("<CallStack>"), std::string::npos) << printed.All();
  EXPECT_NE(printed.m_child.m_sOutput.find("<Module>VictimO0</Module>"), std::string::npos);
  EXPECT_NE(printed.m_child.m_sOutput.find("<FunctionName>victim::Templated&lt;long&gt;</FunctionName>"),
            std::string::npos);
}

TEST(CallStack, IsPaidForByTheInitialThrow) {
  const Printed printed = RunHost(Victim("VictimO0"), "templated", 0, {"initialize", "unavailable"});
  EXPECT_TRUE(printed.Has("unavailable 0"));
  EXPECT_TRUE(printed.Has("victim::Templated<long>"));
}

TEST(CallStack, IsThereOnManyThreadsAtOnce) {
  const Printed printed = RunHost(Victim("VictimO2"), "-", 0, {"threads=8"});
  EXPECT_TRUE(printed.Has("whole stacks: 160")) << printed.All();
}

TEST(CallStack, TellsOfTheThreadAndTheProcessThatRaise) {
  const Printed printed = RunHost(Victim("VictimO0"), "-", 0, {"whose"});
  for (const char* const who :
       {"main sees itself", "other sees itself", "main again sees itself", "before sees itself, first",
        "behind sees itself, second", "child sees itself"})
    EXPECT_TRUE(printed.Has(who)) << printed.All();
}

}  // namespace
}  // namespace StackTests
