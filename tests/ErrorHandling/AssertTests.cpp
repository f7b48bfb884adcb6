#include <Infrastructure/OxaCore/Assert.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Oxa::Core;

// The debugger's output is standard error here.
template <class Function>
std::string DebuggerOutput(const Function& function) {
  testing::internal::CaptureStderr();
  function();
  return testing::internal::GetCapturedStderr();
}

TEST(Assert, WritesFileLineAndMessageAndGivesFalse) {
  bool result = true;
  EXPECT_EQ("a.cpp(42): Failed Assertion(m_Mutex != 0)\n", DebuggerOutput([&result] {
              result = AssertFailed("m_Mutex != 0", CodeContext("a.cpp", 42, "", "", ""));
            }));
  EXPECT_FALSE(result);
}

// The queue of the log may tell there how full other tests have left it.
TEST(Assert, LogFormWritesTheSame) {
  bool result = true;
  const std::string output =
      DebuggerOutput([&result] { result = LogAssertFailed("x", CodeContext("a.cpp", -1, "", "", "")); });
  EXPECT_EQ(0U, output.find("a.cpp(0): Failed Assertion(x)\n")) << output;
  EXPECT_FALSE(result);
}

TEST(Assert, MacroReportsTheSourceTextAndGoesOn) {
  const int size = 3;
  bool held = true;
  const std::string output = DebuggerOutput([&] { held = OXA_ASSERT(size == 4); });
  EXPECT_FALSE(held);
  EXPECT_NE(std::string::npos, output.find("AssertTests.cpp("));
  EXPECT_NE(std::string::npos, output.find("): Failed Assertion(size == 4)\n"));
}

TEST(Assert, MacroSaysNothingWhenTheConditionHolds) {
  int evaluated = 0;
  EXPECT_EQ("", DebuggerOutput([&] { EXPECT_TRUE(OXA_ASSERT(++evaluated == 1)); }));
  EXPECT_EQ(1, evaluated);
}

TEST(Assert, MacroTakesCommas) {
  const std::string output = DebuggerOutput([] { OXA_ASSERT(std::is_same<int, long>::value); });
  EXPECT_NE(std::string::npos, output.find("Failed Assertion(std::is_same<int, long>::value)"));
}

}  // namespace
