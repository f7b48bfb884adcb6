// The tree of the module's own suite: what is in it, in which order, and who owns it.
#include <Infrastructure/OxaCore/SystemLibrary.h>

#include <dlfcn.h>

#include <boost/weak_ptr.hpp>
#include <string>
#include <type_traits>

#include "AutoTest/ModuleSuite.h"

namespace {

using namespace Oxa::Core;
using namespace ModuleSuiteTests;

const char* const sFUNCTION = "GetModuleTestSuite";
using Function = Suite();

const Texts& OutlineOfTree() {
  static const Texts s_outline = {
      "Smart Pointer Tests:\n"
      "  Test default construction/destruction\n"
      "  Test copy construction/destruction\n"
      "  Test assignment operator\n"
      "  Test implicit type conversion in copy & assign\n"
      "  Test dereferencing a pointer\n"
      "  Tests array storage and array style access",
      "BadPixel Tests:\n"
      "  Valid Bad Pixel Types Test\n"
      "  Invalid Bad Pixel Type Test",
      "PerformanceTimer Tests:\n"
      "  TestPerformanceTimer",
      "StringTools Tests:\n"
      "  TestTrimWS\n"
      "  TestUpCase\n"
      "  TestDownCase\n"
      "  TestLineBreaks\n"
      "  TestEscape\n"
      "  TestUnEscape\n"
      "  TestArray2Str\n"
      "  TestStr2Array\n"
      "  TestConversion\n"
      "  TestSplitJoin",
      "PathName Tests:\n"
      "  TestSetBase\n"
      "  TestExtractFNameExt\n"
      "  TestExtractDrivePath\n"
      "  ValidatePath\n"
      "  ValidateFileName\n"
      "  IsPathRelative\n"
      "  IsDirectoryRelative\n"
      "  IsDriveRelative\n"
      "  IsPathAbsolute\n"
      "  MakePathAbsolute\n"
      "  MakePathRelative\n"
      "  FileExists\n"
      "  IsDir\n"
      "  File Delete\n"
      "  Directory Create/Delete",
      "GraphAlgo Tests:\n"
      "  TestGraphAdjListDirected\n"
      "  TestEnumeratedSet\n"
      "  TestDirectedGraph\n"
      "  TestRawTopoSort",
      "container_ptr Tests:\n"
      "  Standalone Test\n"
      "  In Containers Test",
      "Notification Tests:\n"
      "  Basic Tests\n"
      "  Remove On Notification Test\n"
      "  Error On Notification Test",
      "Encryption Tests:\n"
      "  String Encryption Test\n"
      "  Password Test\n"
      "  BYTE Vector Encryption Test\n"
      "  Fundamental Type Encryption Test",
      "I/O Tests:\n"
      "  I/O With Binary File Test\n"
      "  File Open Types Test\n"
      "  Data I/O with Binary File Test\n"
      "  Buffered I/O with Binary File\n"
      "  Bounded I/O with Binary File Test\n"
      "  I/O Chain Test\n"
      "  BinaryPipe Test\n"
      "  Base64 Streams Test\n"
      "  Binary Stream Adapter Test\n"
      "  XML Tests:\n"
      "  Test XMLWriter\n"
      "  Test XMLParser",
      "UnitDescriptor Tests:\n"
      "  Test construction/destruction\n"
      "  Test accessor methods\n"
      "  Test numeric converter methods\n"
      "  Test assignment and comparison operators\n"
      "  Test arithmetic and comparison operators\n"
      "  Test serialization",
      "UnitDictionary Tests:\n"
      "  Test construction/destruction\n"
      "  Test storage and retrieval methods",
      "UnitizedValue Tests:\n"
      "  UnitizedValue Comparison Test\n"
      "  UnitizedValue Conversion Test\n"
      "  UnitizedValue Math Test\n"
      "  UnitizedValue Output Test",
      "Error Handling Tests:\n"
      "  Test Construction\n"
      "  Test Errors\n"
      "  Test Warnings\n"
      "  Test Notifications\n"
      "  Test In Place Handling\n"
      "  Test Cloning\n"
      "  Test Derivation From Parameterized Base\n"
      "  Test Set And Get FatalErrorBasePath\n"
      "  Test Error Recursion",
      "Callback template & macro Tests:\n"
      "  Test callback variants\n"
      "  Test callback example with smart pointers",
      "Oxa::Core::Time Tests:\n"
      "  Test Oxa::Core::Time\n"
      "  Test Elapse"};
  return s_outline;
}

static_assert(std::is_default_constructible_v<TEST_OxaDictionary>);
static_assert(std::is_default_constructible_v<TEST_OxaRWMutex>);
static_assert(std::is_default_constructible_v<TEST_OxaThread>);

TEST(ModuleSuite, HoldsSixteenSuitesInTheirOrder) {
  const Suite root = GetModuleTestSuite();
  EXPECT_EQ("OxaCore Tests", root->GetName());
  EXPECT_EQ(16, root->GetNumChildTests());
  Texts outlines;
  for (const auto& child : ChildrenOf(*root)) outlines.push_back(Outline(dynamic_cast<TestSuite&>(*child)));
  EXPECT_EQ(OutlineOfTree(), outlines);
}

TEST(ModuleSuite, HasEverythingEnabled) {
  const Suite root = GetModuleTestSuite();
  EXPECT_EQ(root->GetTotalTests(true, true), root->GetTotalTests(true, false));
  EXPECT_EQ(83, root->GetTotalTests(false, true));
}

TEST(ModuleSuite, IsAnIndependentTreeAtEachCall) {
  const Suite first = GetModuleTestSuite();
  const Suite second = GetModuleTestSuite();
  EXPECT_NE(first, second);
  EXPECT_TRUE(first.unique());
  const auto children = ChildrenOf(*first);
  const auto others = ChildrenOf(*second);
  for (std::size_t i = 0; i < children.size(); ++i) EXPECT_NE(children[i], others.at(i));
  children.front()->Enable(false);
  EXPECT_TRUE(others.front()->IsEnabled());
  first->Clear();
  EXPECT_EQ(16, second->GetNumChildTests());
}

TEST(ModuleSuite, GoesWithItsLastOwner) {
  Suite root = GetModuleTestSuite();
  const boost::weak_ptr<TestSuite> tree(root);
  const boost::weak_ptr<SelfTest> leaf(
      ChildrenOf(dynamic_cast<TestSuite&>(*ChildrenOf(*root).front())).front());
  EXPECT_FALSE(leaf.expired());
  root.reset();
  EXPECT_TRUE(tree.expired());
  EXPECT_TRUE(leaf.expired());
}

TEST(ModuleSuite, ThreeFurtherSuitesAreBuiltByThemselves) {
  EXPECT_EQ(
      "Oxa::Core::Dictionary Tests:\n"
      "  Basics Test\n"
      "  Shortcuts Test\n"
      "  Convert Test\n"
      "  Stress Test",
      Outline(TEST_OxaDictionary()));
  EXPECT_EQ(
      "OxaRWMutex Tests:\n"
      "  Test OxaRWMutex - single thread\n"
      "  Test OxaRWMutex - multiple threads\n"
      "  Test OxaRWMutex - deadlock",
      Outline(TEST_OxaRWMutex()));
  EXPECT_EQ(
      "Oxa::Core::Thread Tests:\n"
      "  Oxa::Core::Thread Test\n"
      "  Deadlock test\n"
      "  Lifetime Management Test\n"
      "  Thread Notifications Test\n"
      "  Thread Pool Test\n"
      "  Thread Startup Test\n"
      "  Mutex Lock Test\n"
      "  Kill Thread Test\n"
      "  Named Cross Process Mutex Test",
      Outline(TEST_OxaThread()));
}

// As a runner does it, in the library's own file.
TEST(ModuleSuite, IsFoundByItsPlainName) {
  void* const function = ::dlsym(RTLD_DEFAULT, sFUNCTION);
  Dl_info file = {};
  if (function == nullptr || ::dladdr(function, &file) == 0) GTEST_SKIP() << "linked into the program";
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(file.dli_fname));
  ASSERT_TRUE(library);
  ASSERT_TRUE(library->HasFunction(sFUNCTION));
  EXPECT_EQ(16, library->GetFunction<Function>(sFUNCTION)()->GetNumChildTests());
}

}  // namespace
