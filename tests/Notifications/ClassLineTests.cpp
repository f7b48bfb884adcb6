#include <Infrastructure/OxaCore/ClassLine.h>

#include <gtest/gtest.h>

using Oxa::Core::IsInStraightLine;

namespace {

struct Base {
  virtual ~Base() = default;
};
struct Middle : Base {};
struct Last : Middle {};
struct Other {
  virtual ~Other() = default;
};
struct Second : Other, Middle {};
struct Hidden : private Middle {};
struct Shared : virtual Middle {};

template <class Derived, class To>
bool InLine() {
  return IsInStraightLine(typeid(Derived), typeid(To));
}

}  // namespace

TEST(ClassLine, LeadsToItself) { EXPECT_TRUE((InLine<Last, Last>())); }

#ifdef __GLIBCXX__  // where the tables tell
TEST(ClassLine, LeadsToEachSingleBase) {
  EXPECT_TRUE((InLine<Last, Middle>()));
  EXPECT_TRUE((InLine<Last, Base>()));
}
#endif

TEST(ClassLine, LeadsNeitherUpNorAside) {
  EXPECT_FALSE((InLine<Middle, Last>()));
  EXPECT_FALSE((InLine<Last, Other>()));
}

TEST(ClassLine, LeavesAllThatIsNotStraightToTheCast) {
  EXPECT_FALSE((InLine<Second, Middle>()));
  EXPECT_FALSE((InLine<Hidden, Middle>()));
  EXPECT_FALSE((InLine<Shared, Middle>()));
}
