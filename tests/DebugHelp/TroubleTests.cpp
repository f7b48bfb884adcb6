// Stacks where they are hard to come by.

#include "DebugHelp/StackHostRuns.h"
#include "Support/TemporaryFolder.h"
#include "Support/ThreadSanitizer.h"

namespace StackTests {
namespace {

#if defined(OXACORE_SOAK)
constexpr int iROUNDS = 5000;
#else
constexpr int iROUNDS = 150;
#endif

TEST(Trouble, DamagedDebugDataGivesLessAndNothingWorse) {
  OXA_SKIP_UNDER_THREAD_SANITIZER("one thread, and much that is watched for nothing");
  const TestSupport::TemporaryFolder folder;
  const std::string module = folder.File("module.so");
  const std::string debug = folder.File("module.debug");
  const std::string objcopy = OBJCOPY;
  ASSERT_EQ(std::system((objcopy + " --only-keep-debug " + Victim("VictimO0") + " " + debug).c_str()), 0);
  ASSERT_EQ(
      std::system(
          (objcopy + " -S --add-gnu-debuglink=" + debug + " " + Victim("VictimO0") + " " + module).c_str()),
      0);
  const Printed printed = RunHost(module, "-", iROUNDS, {"damage=" + debug});
  EXPECT_TRUE(printed.Has("survived, with frames")) << printed.All();
}

TEST(Trouble, AModuleThatIsBeingLoadedMayRaiseWhileOtherThreadsDo) {
  const Printed printed = RunHost(Victim("VictimLoading"), "templated");
  EXPECT_TRUE(printed.Has(At("load") + "(anonymous namespace)::AtLoad::AtLoad [VictimLoading]"))
      << printed.All();
  EXPECT_TRUE(printed.Has("victim::Templated<long> [VictimLoading]"));
}

TEST(Trouble, AForkedChildHasCallStacks) {
  const Printed printed = RunHost(Victim("VictimO0"), "templated", 0, {"twice", "fork"});
  EXPECT_EQ(printed.Count("victim::Templated<long>"), 3) << printed.All();
}

}  // namespace
}  // namespace StackTests
