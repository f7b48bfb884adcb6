#include <Infrastructure/OxaCore/Globals.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Oxa::Core;

std::vector<std::string> s_deaths;
ManagedGlobals* s_pUnderTest = nullptr;

struct First {
  ~First() { s_deaths.emplace_back("First"); }
};

struct Second {
  // Looks up an older global while it dies: no lock may be held then.
  ~Second() {
    s_deaths.emplace_back(s_pUnderTest->Get<First>("First") != nullptr ? "Second, First alive" : "Second");
  }
};

// Adds another global while it is being built itself.
struct Nesting {
  Nesting() { s_pUnderTest->Add<First>("Inner"); }
  ~Nesting() { s_deaths.emplace_back("Nesting"); }
};

class GlobalsTest : public testing::Test {
 protected:
  GlobalsTest() {
    s_deaths.clear();
    s_pUnderTest = &m_globals;
  }
  ManagedGlobals m_globals;
};

TEST_F(GlobalsTest, GetGivesWhatAddMade) {
  First* const added = m_globals.Add<First>("First");
  EXPECT_NE(nullptr, added);
  EXPECT_EQ(added, m_globals.Get<First>("First"));
}

TEST_F(GlobalsTest, UnknownNameGivesNull) { EXPECT_EQ(nullptr, m_globals.Get<First>("First")); }

TEST_F(GlobalsTest, NameUnderAnotherTypeGivesNull) {
  m_globals.Add<First>("Name");
  EXPECT_EQ(nullptr, m_globals.Get<Second>("Name"));
  EXPECT_NE(nullptr, m_globals.Get<First>("Name"));
}

TEST_F(GlobalsTest, KeyIsNameAndDecoratedType) {
  EXPECT_EQ(std::string("System") + typeid(First).name(), GlobalEntryBase::MakeKey("System", typeid(First)));
}

TEST_F(GlobalsTest, RemoveDestroys) {
  m_globals.Add<First>("First");
  m_globals.Remove<First>("First");
  EXPECT_EQ(nullptr, m_globals.Get<First>("First"));
  EXPECT_EQ(std::vector<std::string>{"First"}, s_deaths);
  m_globals.Remove<First>("First");
  EXPECT_EQ(1u, s_deaths.size());
}

TEST_F(GlobalsTest, RemoveOfTheWrongTypeLeavesTheObject) {
  m_globals.Add<First>("Name");
  m_globals.Remove<Second>("Name");
  EXPECT_TRUE(s_deaths.empty());
}

TEST_F(GlobalsTest, DestroyAllGoesBackwardsAndOlderOnesCanBeLookedUp) {
  m_globals.Add<First>("First");
  m_globals.Add<Second>("Second");
  m_globals.DestroyAll();
  EXPECT_EQ((std::vector<std::string>{"Second, First alive", "First"}), s_deaths);
  m_globals.DestroyAll();
  EXPECT_EQ(2u, s_deaths.size());
}

TEST_F(GlobalsTest, GlobalAddedFromAConstructorComesBefore) {
  m_globals.Add<Nesting>("Nesting");
  EXPECT_NE(nullptr, m_globals.Get<First>("Inner"));
  m_globals.DestroyAll();
  EXPECT_EQ((std::vector<std::string>{"Nesting", "First"}), s_deaths);
}

TEST_F(GlobalsTest, DestructorDestroysWhatIsLeft) {
  {
    ManagedGlobals inner;
    inner.Add<First>("First");
  }
  EXPECT_EQ(std::vector<std::string>{"First"}, s_deaths);
}

TEST_F(GlobalsTest, ThreadsMayAddLookUpAndRemoveAtOnce) {
  struct Item {};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      for (int i = 0; i < 200; ++i) {
        const std::string name = std::to_string(thread) + "/" + std::to_string(i);
        Item* const item = m_globals.Add<Item>(name);
        EXPECT_EQ(item, m_globals.Get<Item>(name));
        if (i % 2 == 0) m_globals.Remove<Item>(name);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_NE(nullptr, m_globals.Get<Item>("3/199"));
  EXPECT_EQ(nullptr, m_globals.Get<Item>("3/198"));
}

}  // namespace
