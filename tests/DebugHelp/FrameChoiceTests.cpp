// Which frames are kept and which are left out, what they are called by where less is known of them, and where a stack
// ends.

#include <cstdlib>
#include <sstream>

#include "DebugHelp/StackHostRuns.h"
#include "Support/TemporaryFolder.h"
#include "Support/ThreadSanitizer.h"

namespace StackTests {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> FramesIn(const Printed& printed, const std::string& module) {
  std::vector<std::string> frames;
  for (const std::string& line : printed.m_lines) {
    const auto at = line.find(" [" + module + "]");
    if (at != std::string::npos) frames.push_back(line.substr(0, at));
  }
  return frames;
}

TEST(FrameChoice, FilesOfTheAllocatorTheStartUpAndTheErrorSystemAreLeftOut) {
  const std::vector<std::string> expected = {"VictimIgnored.cpp:15 Bottom", "news.cpp:20 Shown1",
                                             "new.cpp.h:21 Shown2",         "myerror.cpp:22 Shown3",
                                             "error.c:23 Shown4",           "main.cpp:24 Shown5",
                                             "callstack.hpp:25 Shown6",     "VictimIgnored.cpp:33 RunVictim"};
  EXPECT_EQ(expected, FramesIn(RunHost(Victim("VictimIgnored"), "hidden"), "VictimIgnored"));
}

class Named : public ::testing::Test {
 protected:
  // The frames of a module of that file name.
  std::size_t CountFrames(const std::string& file, const std::string& name,
                          const std::vector<std::string>& steps = {}) {
    fs::create_symlink(Victim("VictimO0"), m_folder.File(file));
    const Printed printed = RunHost(m_folder.File(file), "templated", 0, steps);
    EXPECT_TRUE(printed.Has(" main [StackHost]")) << printed.All();
    fs::remove(m_folder.File(file));
    return FramesIn(printed, name).size();
  }

  const TestSupport::TemporaryFolder m_folder;
};

TEST_F(Named, ModulesOfTheFrameworkAreLeftOut) {
  for (const std::string name : {"mfc71", "mfc71d", "mfc71u", "mfc71ud", "mfc40", "mfc40u", "mfc40d",
                                 "mfc40ud", "mfc42", "mfc42u", "mfc42d", "mfc42ud"})
    EXPECT_EQ(0U, CountFrames(name + ".so", name));
  EXPECT_EQ(0U, CountFrames("MFC42UD.so", "MFC42UD"));
  EXPECT_EQ(0U, CountFrames("mfc71.so.1.2", "mfc71"));
}

TEST_F(Named, ModulesOfSimilarNamesAreNot) {
  for (const std::string name : {"mfc", "mfc70", "mfc71x", "xmfc71", "mfc42udd"})
    EXPECT_EQ(2U, CountFrames(name + ".so", name)) << name;
}

TEST_F(Named, NoneIsLeftOutWithoutThatFilter) {
  EXPECT_EQ(2U, CountFrames("mfc71.so", "mfc71", {"change=all-modules"}));
}

// The text between two others in the first line that has the first one.
std::string Between(const Printed& printed, const std::string& begin, const std::string& end) {
  const int found = printed.Find(begin);
  if (found < 0) return "nothing: " + printed.All();
  const std::string& line = printed.m_lines[static_cast<std::size_t>(found)];
  const auto from = line.find(begin) + begin.size();
  return line.substr(from, line.find(end, from) - from);
}

std::string InHexadecimal(const std::string& decimal) {
  std::ostringstream text;
  text << std::hex << std::strtoull(decimal.c_str(), nullptr, 10);
  return text.str();
}

TEST(FrameName, IsModuleAndOffsetOrElseBaseAndOffset) {
  const Printed named = RunHost(Victim("VictimO0"), "templated", 0, {"change=no-symbols"});
  const std::string offset = Between(named, At("templated") + "VictimO0+", " ");
  ASSERT_EQ(std::string::npos, offset.find_first_not_of("0123456789")) << offset;
  const Printed nameless = RunHost(Victim("VictimO0"), "templated", 0,
                                   {"base", "change=no-symbols", "change=no-modules", "change=any-module"});
  const std::string base = Between(nameless, "base ", "\n");
  EXPECT_EQ(base + "+" + InHexadecimal(offset), Between(nameless, At("templated"), " "));
  // No module, no such key.
  EXPECT_EQ(base + "+" + InHexadecimal(offset) + " []", Between(nameless, At("templated"), "] ") + "]");
}

TEST(FrameName, IsKnownWithoutModulesToo) {
  const Printed printed =
      RunHost(Victim("VictimO0"), "templated", 0, {"change=no-modules", "change=any-module"});
  EXPECT_TRUE(printed.Has(At("templated") + "victim::Templated<long> []")) << printed.All();
}

TEST(FrameName, MattersNotWhereModulesMustBeKnown) {
  const Printed printed = RunHost(Victim("VictimO0"), "templated", 0, {"change=no-modules"});
  EXPECT_TRUE(printed.Has("0 frames")) << printed.All();
}

TEST(FrameLimit, IsTheNumberThatWasAskedFor) {
  for (const auto& [most, frames] : {std::pair(-1, 0), {0, 0}, {1, 1}, {5, 5}, {101, 101}, {120, 120}}) {
    const Printed printed = RunHost(Victim("VictimO0"), "descend", 150, {"walk=" + std::to_string(most)});
    EXPECT_TRUE(printed.Has(std::to_string(frames) + " frames")) << most;
    EXPECT_EQ(static_cast<std::size_t>(frames) + 1, printed.m_lines.size()) << printed.All();
    EXPECT_EQ(frames > 0, printed.Find(AtHost("walk")) == 0);
    EXPECT_EQ(frames > 1, printed.Find(At("bottom")) == 1);
  }
}

TEST(StackEnd, IsWhereAFrameWithAnInlinedFunctionComesTwice) {
  const Printed printed = RunHost(Victim("VictimO0"), "around", 0, {"walk=100"});
  ASSERT_EQ(4U, printed.m_lines.size()) << printed.All();
  EXPECT_TRUE(BeginsWith(printed.m_lines[0], AtHost("walk")));
  EXPECT_TRUE(BeginsWith(printed.m_lines[1], At("loop inside") + "victim::LoopInside [VictimO0]"));
  EXPECT_TRUE(BeginsWith(printed.m_lines[2], At("loop around") + "victim::LoopAround [VictimO0]"));
  EXPECT_EQ("3 frames", printed.m_lines[3]);
}

// Compiled without rules for frames in memory, and then without those of the debug data.
void MakeWithoutRules(const std::string& module) {
  const std::string command =
      std::string(OBJCOPY) + " -R .debug_frame " + Victim("VictimNoRules") + " " + module;
  ASSERT_EQ(0, std::system(command.c_str()));
}

TEST(StackWithSignal, GoesOnAtTheInstructionThatWasInterrupted) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("it reports every handler that allocates, and takes minutes to tell how");
  const Printed printed = RunHost(Victim("VictimO0"), "handler", 0, {"walk=100"});
  ASSERT_GE(printed.m_lines.size(), 5U) << printed.All();
  EXPECT_TRUE(BeginsWith(printed.m_lines[0], AtHost("walk")));
  EXPECT_TRUE(BeginsWith(printed.m_lines[1], At("handler") + "victim::OnTrap [VictimO0]"));
  EXPECT_TRUE(BeginsWith(printed.m_lines[2], At("trap") + "victim::Trap [VictimO0]"));
  EXPECT_TRUE(BeginsWith(printed.m_lines[3], At("interrupted") + "victim::Interrupted [VictimO0]"));
}

// What was learnt of a module goes with it.
TEST(StackWithModules, IsOfThoseThatAreLoadedNow) {
  const Printed printed = RunHost(Victim("VictimO0"), "descend", 3,
                                  {"walk=100", "base", "twice", "load=" + Victim("VictimStripped"), "base"});
  const int base = printed.Find("base ");
  ASSERT_GE(base, 0) << printed.All();
  if (printed.Count(printed.m_lines[static_cast<std::size_t>(base)]) != 2)
    GTEST_SKIP() << "the second module lies elsewhere";
  EXPECT_EQ(printed.Count("[VictimO0]"), 5) << printed.All();
  EXPECT_EQ(printed.Count("[VictimStripped]"), 0);
  EXPECT_EQ(printed.Count(AtHost("walk")), 2);
  EXPECT_EQ(printed.Count(" main [StackHost]"), 2) << printed.All();
}

TEST(FrameVariables, AreNoMoreThan256OfAScope) {
  const Printed printed = RunHost(Victim("VictimO0"), "many", 0, {"walk=100"});
  const int frame = printed.Find(At("many"));
  ASSERT_GE(frame, 0) << printed.All();
  const std::string& line = printed.m_lines[static_cast<std::size_t>(frame)];
  EXPECT_NE(line.find(" v0=0"), std::string::npos) << line;
  EXPECT_NE(line.find(" v254=254"), std::string::npos) << line;  // the parameter is one, too
  EXPECT_EQ(line.find(" v255="), std::string::npos) << line;
}

// Followed by their frame pointers.
TEST(StackWithoutRules, LeadsThroughLargeFrames) {
  const TestSupport::TemporaryFolder folder;
  const std::string module = folder.File("module.so");
  MakeWithoutRules(module);
  const Printed printed = RunHost(module, "wide", 0, {"walk=100"});
  ASSERT_GE(printed.m_lines.size(), 5U) << printed.All();
  EXPECT_TRUE(BeginsWith(printed.m_lines[1], At("wide") + "victim::Wide [module]"));
  EXPECT_TRUE(BeginsWith(printed.m_lines[2], At("run wide") + "RunVictim [module]"));
  EXPECT_TRUE(BeginsWith(printed.m_lines[3], AtHost("run")));
  EXPECT_TRUE(printed.Has(" main [StackHost]"));
}

TEST(StackEnd, IsAFrameOfItsOwnWhereNothingIsKnownOfIt) {
  const TestSupport::TemporaryFolder folder;
  const std::string module = folder.File("module.so");
  MakeWithoutRules(module);
  const Printed printed = RunHost(module, "outermost", 0, {"walk=100"});
  ASSERT_EQ(3U, printed.m_lines.size()) << printed.All();
  EXPECT_TRUE(BeginsWith(printed.m_lines[0], AtHost("walk")));
  EXPECT_TRUE(BeginsWith(printed.m_lines[1], At("outermost") + "victim::Outermost [module]"));
  EXPECT_EQ("2 frames", printed.m_lines[2]);
}

TEST(StackWithTraps, IsTakenWhateverTheVariablesAre) {
  const Printed printed = RunHost(Victim("VictimO0"), "small", 0, {"trap"});
  EXPECT_TRUE(printed.Has(At("small") + "victim::Small [VictimO0]")) << printed.All();
  EXPECT_TRUE(printed.Has(" small=5e-324")) << printed.All();
  EXPECT_TRUE(printed.Has(" main [StackHost]"));
  EXPECT_TRUE(printed.Has("the trap is on"));
}

}  // namespace
}  // namespace StackTests
