#include <Infrastructure/OxaCore/TempSet.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

using Oxa::Core::TempSet;

namespace {

static_assert(std::has_virtual_destructor_v<TempSet<bool>>);
static_assert(!std::is_copy_constructible_v<TempSet<bool>>);
static_assert(!std::is_copy_assignable_v<TempSet<bool>>);

TEST(TempSetTest, SetsInsideTheScopeAndRestoresBehindIt) {
  bool flag = false;
  {
    const TempSet<bool> guard(flag, true);
    EXPECT_TRUE(flag);
  }
  EXPECT_FALSE(flag);
}

TEST(TempSetTest, AFlagThatWasSetStaysSet) {
  bool flag = true;
  { const TempSet<bool> guard(flag, true); }
  EXPECT_TRUE(flag);
  {
    const TempSet<bool> guard(flag, false);
    EXPECT_FALSE(flag);
  }
  EXPECT_TRUE(flag);
}

TEST(TempSetTest, RestoresWhenAnExceptionPasses) {
  bool flag = false;
  try {
    const TempSet<bool> guard(flag, true);
    throw std::runtime_error("on its way");
  } catch (const std::runtime_error&) {
    EXPECT_FALSE(flag);
  }
}

TEST(TempSetTest, WritesTheFormerValueBackWhateverHappenedMeanwhile) {
  int value = 1;
  {
    const TempSet<int> guard(value, 2);
    value = 3;
  }
  EXPECT_EQ(1, value);
}

TEST(TempSetTest, NestedOnesUndoEachOther) {
  std::string text = "outside";
  {
    const TempSet<std::string> outer(text, "outer");
    {
      const TempSet<std::string> inner(text, "inner");
      EXPECT_EQ("inner", text);
    }
    EXPECT_EQ("outer", text);
  }
  EXPECT_EQ("outside", text);
}

TEST(TempSetTest, TakesAValueThatIsTheTargetItself) {
  bool flag = true;
  {
    const TempSet<bool> guard(flag, flag);
    EXPECT_TRUE(flag);
  }
  EXPECT_TRUE(flag);
}

}  // namespace
