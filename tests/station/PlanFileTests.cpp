#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Plan.h"
#include "StationAlerts.h"
#include "TemporaryFolder.h"
#include "WithoutPrivileges.h"

namespace {

using Station::PlanUnreadable;
using Station::ReadPlanFile;
using StationTests::TemporaryFolder;
using StationTests::WithoutPrivileges;

std::string WhyUnreadable(const std::string& file) {
  try {
    ReadPlanFile(file);
  } catch (const PlanUnreadable& error) {
    return error.what();
  }
  return "it was read";
}

TEST(PlanFile, IsReadByteByByte) {
  const TemporaryFolder folder;
  const std::string text("a 1s\r\n\0\xB5 no end", 15);
  EXPECT_EQ(text, ReadPlanFile(folder.Write("plan", text)));
  EXPECT_EQ("", ReadPlanFile(folder.Write("empty", "")));
}

TEST(PlanFile, MustExist) {
  EXPECT_EQ("The plan \"/nowhere/plan\" can't be read: No such file or directory",
            WhyUnreadable("/nowhere/plan"));
  EXPECT_EQ("The plan \"\" can't be read: No such file or directory", WhyUnreadable(""));
}

TEST(PlanFile, IsNoFolder) {
  const TemporaryFolder folder;
  EXPECT_EQ("The plan \"" + folder.Path() + "\" can't be read: it is a folder", WhyUnreadable(folder.Path()));
}

TEST(PlanFile, MustBeReadable) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("plan", "");
  ASSERT_EQ(0, ::chmod(file.c_str(), 0));
  const WithoutPrivileges nobody;
  EXPECT_EQ("The plan \"" + file + "\" can't be read: Permission denied", WhyUnreadable(file));
}

TEST(PlanFile, ShowsItsNameInPrintableAscii) {
  EXPECT_EQ("The plan \"/nowhere/\\xB5\" can't be read: No such file or directory",
            WhyUnreadable("/nowhere/\xB5"));
}

TEST(PlanFile, HasAGreatestLength) {
  const TemporaryFolder folder;
  const std::string longest(64 * 1024, '#');
  EXPECT_EQ(longest, ReadPlanFile(folder.Write("longest", longest)));
  const std::string file = folder.Write("longer", longest + '#');
  EXPECT_EQ("The plan \"" + file + "\" can't be read: it is longer than 64 KiB", WhyUnreadable(file));
  EXPECT_EQ("The plan \"/dev/zero\" can't be read: it is longer than 64 KiB", WhyUnreadable("/dev/zero"));
}

TEST(PlanFile, ThatFailsWhileItIsReadIsRefused) {
  // Opens for everybody, but has nothing to be read at its first byte.
  EXPECT_EQ("The plan \"/proc/self/mem\" can't be read: reading failed", WhyUnreadable("/proc/self/mem"));
}

}  // namespace
