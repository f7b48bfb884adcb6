// The tree of the module's own suite: what is in it, in which order, and who owns it.
#include <Infrastructure/OxaCore/SystemLibrary.h>

#include <dlfcn.h>

#include <boost/weak_ptr.hpp>
#include <iterator>
#include <string>
#include <type_traits>

#include "AutoTest/ModuleSuite.h"

namespace {

using namespace Oxa::Core;
using namespace ModuleSuiteTests;

const char* const sFUNCTION = "GetModuleTestSuite";
using Function = Suite();

const char* const aOUTLINES[] = {
    R"(Smart Pointer Tests:
  Test default construction/destruction
  Test copy construction/destruction
  Test assignment operator
  Test implicit type conversion in copy & assign
  Test dereferencing a pointer
  Tests array storage and array style access)",
    R"(BadPixel Tests:
  Valid Bad Pixel Types Test
  Invalid Bad Pixel Type Test)",
    R"(PerformanceTimer Tests:
  TestPerformanceTimer)",
    R"(StringTools Tests:
  TestTrimWS
  TestUpCase
  TestDownCase
  TestLineBreaks
  TestEscape
  TestUnEscape
  TestArray2Str
  TestStr2Array
  TestConversion
  TestSplitJoin)",
    R"(PathName Tests:
  TestSetBase
  TestExtractFNameExt
  TestExtractDrivePath
  ValidatePath
  ValidateFileName
  IsPathRelative
  IsDirectoryRelative
  IsDriveRelative
  IsPathAbsolute
  MakePathAbsolute
  MakePathRelative
  FileExists
  IsDir
  File Delete
  Directory Create/Delete)",
    R"(GraphAlgo Tests:
  TestGraphAdjListDirected
  TestEnumeratedSet
  TestDirectedGraph
  TestRawTopoSort)",
    R"(container_ptr Tests:
  Standalone Test
  In Containers Test)",
    R"(Notification Tests:
  Basic Tests
  Remove On Notification Test
  Error On Notification Test)",
    R"(Encryption Tests:
  String Encryption Test
  Password Test
  BYTE Vector Encryption Test
  Fundamental Type Encryption Test)",
    R"(I/O Tests:
  I/O With Binary File Test
  File Open Types Test
  Data I/O with Binary File Test
  Buffered I/O with Binary File
  Bounded I/O with Binary File Test
  I/O Chain Test
  BinaryPipe Test
  Base64 Streams Test
  Binary Stream Adapter Test
  XML Tests:
  Test XMLWriter
  Test XMLParser)",
    R"(UnitDescriptor Tests:
  Test construction/destruction
  Test accessor methods
  Test numeric converter methods
  Test assignment and comparison operators
  Test arithmetic and comparison operators
  Test serialization)",
    R"(UnitDictionary Tests:
  Test construction/destruction
  Test storage and retrieval methods)",
    R"(UnitizedValue Tests:
  UnitizedValue Comparison Test
  UnitizedValue Conversion Test
  UnitizedValue Math Test
  UnitizedValue Output Test)",
    R"(Error Handling Tests:
  Test Construction
  Test Errors
  Test Warnings
  Test Notifications
  Test In Place Handling
  Test Cloning
  Test Derivation From Parameterized Base
  Test Set And Get FatalErrorBasePath
  Test Error Recursion)",
    R"(Callback template & macro Tests:
  Test callback variants
  Test callback example with smart pointers)",
    R"(Oxa::Core::Time Tests:
  Test Oxa::Core::Time
  Test Elapse)"};
static_assert(std::is_default_constructible_v<TEST_OxaDictionary>);
static_assert(std::is_default_constructible_v<TEST_OxaRWMutex>);
static_assert(std::is_default_constructible_v<TEST_OxaThread>);

TEST(ModuleSuite, HoldsSixteenSuitesInTheirOrder) {
  const Suite root = GetModuleTestSuite();
  EXPECT_EQ("OxaCore Tests", root->GetName());
  EXPECT_EQ(16, root->GetNumChildTests());
  Texts outlines;
  for (const auto& child : ChildrenOf(*root)) outlines.push_back(Outline(dynamic_cast<TestSuite&>(*child)));
  EXPECT_EQ(Texts(std::begin(aOUTLINES), std::end(aOUTLINES)), outlines);
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
  EXPECT_EQ(R"(Oxa::Core::Dictionary Tests:
  Basics Test
  Shortcuts Test
  Convert Test
  Stress Test)",
            Outline(TEST_OxaDictionary()));
  EXPECT_EQ(R"(OxaRWMutex Tests:
  Test OxaRWMutex - single thread
  Test OxaRWMutex - multiple threads
  Test OxaRWMutex - deadlock)",
            Outline(TEST_OxaRWMutex()));
  EXPECT_EQ(R"(Oxa::Core::Thread Tests:
  Oxa::Core::Thread Test
  Deadlock test
  Lifetime Management Test
  Thread Notifications Test
  Thread Pool Test
  Thread Startup Test
  Mutex Lock Test
  Kill Thread Test
  Named Cross Process Mutex Test)",
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
