#include "CommandLine.h"

#include <gtest/gtest.h>

namespace {

using Station::CommandLine;
using Station::ReadCommandLine;

TEST(CommandLine, MayBeEmpty) {
  const CommandLine read = ReadCommandLine({});
  EXPECT_FALSE(read.m_plan.has_value());
  EXPECT_EQ(".", read.m_sFolder);
  EXPECT_FALSE(read.m_bHelp);
  EXPECT_EQ("", read.m_sMistake);
}

TEST(CommandLine, TakesPlanAndFolder) {
  const CommandLine read = ReadCommandLine({"--out", "there", "--plan", "my.plan"});
  EXPECT_EQ("my.plan", read.m_plan);
  EXPECT_EQ("there", read.m_sFolder);
  EXPECT_EQ("", read.m_sMistake);
}

TEST(CommandLine, TakesTheLastOfTwo) {
  const CommandLine read = ReadCommandLine({"--out", "a", "--out", "b", "--plan", "-"});
  EXPECT_EQ("b", read.m_sFolder);
  EXPECT_EQ("-", read.m_plan);
}

TEST(CommandLine, AsksForHelp) { EXPECT_TRUE(ReadCommandLine({"--help"}).m_bHelp); }

TEST(CommandLine, NamesItsMistakes) {
  EXPECT_EQ("unknown argument \"--plam\"", ReadCommandLine({"--plam", "x"}).m_sMistake);
  EXPECT_EQ("unknown argument \"x\"", ReadCommandLine({"--help", "x"}).m_sMistake);
  EXPECT_EQ("unknown argument \"--out=a\"", ReadCommandLine({"--out=a"}).m_sMistake);
  EXPECT_EQ("unknown argument \"\"", ReadCommandLine({""}).m_sMistake);
  EXPECT_EQ("unknown argument \"\\x1B[2J\"", ReadCommandLine({"\x1B[2J"}).m_sMistake);
  EXPECT_EQ("--plan needs a file behind it", ReadCommandLine({"--plan"}).m_sMistake);
  EXPECT_EQ("--plan needs a file behind it", ReadCommandLine({"--plan", "--out", "a"}).m_sMistake);
  EXPECT_EQ("--out needs a folder behind it", ReadCommandLine({"--plan", "x", "--out"}).m_sMistake);
}

}  // namespace
