#include <Infrastructure/OxaCore/ContainerAid.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <list>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using Oxa::Core::container_ptr;

namespace {

// Enters its name into a set when it is destroyed, and raises a flag if the name was there already.
class Basic {
 public:
  explicit Basic(const std::string& name) : m_sName(name) {}
  Basic(const Basic&) = delete;
  Basic& operator=(const Basic&) = delete;
  ~Basic() {
    if (!s_destroyed.insert(m_sName).second) s_bTwice = true;
  }

  const std::string& Name() const { return m_sName; }

  static std::set<std::string> s_destroyed;
  static bool s_bTwice;

 private:
  std::string m_sName;
};

std::set<std::string> Basic::s_destroyed;
bool Basic::s_bTwice = false;

using Pointer = container_ptr<Basic>;
using Names = std::set<std::string>;

static_assert(std::is_copy_constructible_v<Pointer> && std::is_copy_assignable_v<Pointer>);
static_assert(std::is_nothrow_move_constructible_v<Pointer> && std::is_nothrow_move_assignable_v<Pointer>);
static_assert(!std::is_convertible_v<Basic*, Pointer>, "nobody gives an object away unawares");

Pointer Make(const std::string& name) { return Pointer(new Basic(name)); }

template <class Container>
std::string NamesIn(const Container& container) {
  std::string names;
  for (const Pointer& item : container) names += (item.get() != nullptr ? item->Name() : "-") + " ";
  return names;
}

class ContainerPtrTest : public testing::Test {
 protected:
  void SetUp() override {
    Basic::s_destroyed.clear();
    Basic::s_bTwice = false;
  }
  void TearDown() override { EXPECT_FALSE(Basic::s_bTwice); }
};

TEST_F(ContainerPtrTest, GivesWhatItWasMadeFrom) {
  Basic* const p = new Basic("Basic1");
  const Pointer ptr(p);
  EXPECT_EQ(p, ptr.get());
  EXPECT_EQ(p, ptr.operator->());
  EXPECT_EQ(p, &(ptr.operator*()));
  EXPECT_EQ("Basic1", ptr->Name());
  EXPECT_EQ("Basic1", (*ptr).Name());
}

TEST_F(ContainerPtrTest, MadeFromNullItOwnsNothing) {
  { const Pointer none, null(nullptr), zero(0); }
  EXPECT_EQ(nullptr, Pointer().get());
  EXPECT_EQ(nullptr, Pointer(nullptr).get());
  EXPECT_TRUE(Basic::s_destroyed.empty());
}

TEST_F(ContainerPtrTest, DestroysItsObjectOnceAtItsEnd) {
  {
    const Pointer ptr(new Basic("Basic1"));
    EXPECT_TRUE(Basic::s_destroyed.empty());
  }
  EXPECT_EQ(Names{"Basic1"}, Basic::s_destroyed);
}

TEST_F(ContainerPtrTest, ACopyMovesTheObject) {
  {
    Pointer source(new Basic("Basic1"));
    Basic* const object = source.get();
    {
      const Pointer copy(source);
      EXPECT_EQ(nullptr, source.get());
      EXPECT_EQ(object, copy.get());
      EXPECT_TRUE(Basic::s_destroyed.empty());
    }
    EXPECT_EQ(Names{"Basic1"}, Basic::s_destroyed);
  }
  EXPECT_EQ(Names{"Basic1"}, Basic::s_destroyed);
}

TEST_F(ContainerPtrTest, ACopyOfAConstantOneMovesToo) {
  const Pointer source(new Basic("Basic1"));
  const Pointer copy(source);
  EXPECT_EQ(nullptr, source.get());
  EXPECT_EQ("Basic1", copy->Name());
}

TEST_F(ContainerPtrTest, OnlyTheLastHolderDestroys) {
  {
    Pointer third;
    {
      Pointer first(new Basic("Basic1"));
      Pointer second(first);
      third = second;
      EXPECT_EQ(nullptr, second.get());
    }
    EXPECT_TRUE(Basic::s_destroyed.empty());
    EXPECT_EQ("Basic1", third->Name());
  }
  EXPECT_EQ(Names{"Basic1"}, Basic::s_destroyed);
}

TEST_F(ContainerPtrTest, AssignmentDestroysWhatWasHeld) {
  Pointer target(new Basic("old"));
  Pointer source(new Basic("new"));
  target = source;
  EXPECT_EQ(Names{"old"}, Basic::s_destroyed);
  EXPECT_EQ("new", target->Name());
  EXPECT_EQ(nullptr, source.get());
}

TEST_F(ContainerPtrTest, AssignmentOfNothingDestroysToo) {
  Pointer target(new Basic("old"));
  const Pointer nothing;
  target = nothing;
  EXPECT_EQ(Names{"old"}, Basic::s_destroyed);
  EXPECT_EQ(nullptr, target.get());
}

TEST_F(ContainerPtrTest, AssignmentFromAMovedOne) {
  Pointer target;
  target = Make("Basic1");
  EXPECT_EQ("Basic1", target->Name());
  EXPECT_TRUE(Basic::s_destroyed.empty());
}

TEST_F(ContainerPtrTest, AssignedToItselfItKeepsItsObject) {
  Pointer ptr(new Basic("Basic1"));
  const Pointer& same = ptr;
  ptr = same;
  EXPECT_TRUE(Basic::s_destroyed.empty());
  EXPECT_EQ("Basic1", ptr->Name());
}

TEST_F(ContainerPtrTest, AssignmentFromInsideTheHeldObject) {
  struct Node {
    Basic m_basic;
    container_ptr<Node> m_next;
  };
  container_ptr<Node> head(new Node{Basic("first"), container_ptr<Node>()});
  head->m_next = container_ptr<Node>(new Node{Basic("second"), container_ptr<Node>()});
  head = head->m_next;
  EXPECT_EQ(Names{"first"}, Basic::s_destroyed);
  EXPECT_EQ("second", head->m_basic.Name());
}

TEST_F(ContainerPtrTest, AVectorKeepsItsObjectsWhileItGrows) {
  {
    std::vector<Pointer> items;
    for (int count = 0; count < 100; ++count) {
      items.push_back(Make("item" + std::to_string(count)));
      EXPECT_TRUE(Basic::s_destroyed.empty());
    }
    for (std::size_t at = 0; at < items.size(); ++at)
      EXPECT_EQ("item" + std::to_string(at), items[at]->Name());
  }
  EXPECT_EQ(100u, Basic::s_destroyed.size());
}

TEST_F(ContainerPtrTest, AVectorTakesNamedObjects) {
  std::vector<Pointer> items;
  Pointer named(new Basic("Basic1"));
  items.push_back(named);
  EXPECT_EQ(nullptr, named.get());
  EXPECT_EQ("Basic1 ", NamesIn(items));
}

TEST_F(ContainerPtrTest, ErasingFromAVectorDestroysTheOneObject) {
  {
    std::vector<Pointer> items;
    for (const char* name : {"a", "b", "c", "d"}) items.push_back(Make(name));
    items.erase(items.begin() + 1);
    EXPECT_EQ(Names{"b"}, Basic::s_destroyed);
    EXPECT_EQ("a c d ", NamesIn(items));
    items.erase(items.begin(), items.begin() + 2);
    EXPECT_EQ((Names{"a", "b", "c"}), Basic::s_destroyed);
    EXPECT_EQ("d ", NamesIn(items));
  }
  EXPECT_EQ((Names{"a", "b", "c", "d"}), Basic::s_destroyed);
}

TEST_F(ContainerPtrTest, InsertingIntoAVectorMovesTheOthers) {
  std::vector<Pointer> items;
  for (const char* name : {"a", "b", "c"}) items.push_back(Make(name));
  Pointer named(new Basic("x"));
  items.insert(items.begin() + 1, named);
  items.insert(items.begin(), Make("y"));
  EXPECT_EQ("y a x b c ", NamesIn(items));
  EXPECT_TRUE(Basic::s_destroyed.empty());
}

TEST_F(ContainerPtrTest, AVectorGrowsByNulls) {
  std::vector<Pointer> items(2);
  items[1] = Make("b");
  items.resize(4);
  EXPECT_EQ("- b - - ", NamesIn(items));
  items.resize(1);
  EXPECT_EQ(Names{"b"}, Basic::s_destroyed);
}

TEST_F(ContainerPtrTest, SortingLosesNothing) {
  std::vector<Pointer> items;
  for (int count = 0; count < 200; ++count) items.push_back(Make(std::to_string(1000 + count * 37 % 200)));
  const auto byName = [](const Pointer& a, const Pointer& b) { return a->Name() < b->Name(); };
  std::sort(items.begin(), items.end(), byName);
  EXPECT_TRUE(std::is_sorted(items.begin(), items.end(), byName));
  std::reverse(items.begin(), items.end());
  std::stable_sort(items.begin(), items.end(), byName);
  std::rotate(items.begin(), items.begin() + 50, items.end());
  EXPECT_TRUE(Basic::s_destroyed.empty());
  EXPECT_EQ("1050", items.front()->Name());
  items.clear();
  EXPECT_EQ(200u, Basic::s_destroyed.size());
}

TEST_F(ContainerPtrTest, RemovingByAConditionDestroysTheRemoved) {
  std::vector<Pointer> items;
  for (const char* name : {"a", "b", "c", "d"}) items.push_back(Make(name));
  items.erase(
      std::remove_if(items.begin(), items.end(), [](const Pointer& item) { return item->Name() < "c"; }),
      items.end());
  EXPECT_EQ((Names{"a", "b"}), Basic::s_destroyed);
  EXPECT_EQ("c d ", NamesIn(items));
}

TEST_F(ContainerPtrTest, ACopyOfAContainerMovesItsObjects) {
  std::vector<Pointer> items;
  items.push_back(Make("a"));
  const std::vector<Pointer> copy(items);
  EXPECT_EQ("- ", NamesIn(items));
  EXPECT_EQ("a ", NamesIn(copy));
}

TEST_F(ContainerPtrTest, AVectorFromAList) {
  const std::vector<Pointer> items{Make("a"), Make("b")};
  EXPECT_EQ("a b ", NamesIn(items));
  EXPECT_TRUE(Basic::s_destroyed.empty());
}

TEST_F(ContainerPtrTest, ListsAndDequesHoldThem) {
  {
    std::list<Pointer> list;
    std::deque<Pointer> deque;
    for (const char* name : {"b", "a", "c"}) list.push_back(Make(name));
    list.sort([](const Pointer& a, const Pointer& b) { return a->Name() < b->Name(); });
    EXPECT_EQ("a b c ", NamesIn(list));
    list.pop_front();
    EXPECT_EQ(Names{"a"}, Basic::s_destroyed);
    deque.push_front(list.back());
    deque.push_front(Make("d"));
    EXPECT_EQ("b - ", NamesIn(list));
    EXPECT_EQ("d c ", NamesIn(deque));
  }
  EXPECT_EQ((Names{"a", "b", "c", "d"}), Basic::s_destroyed);
}

TEST_F(ContainerPtrTest, MapsHoldThem) {
  {
    std::map<int, Pointer> map;
    map[1] = Make("a");
    map.insert(std::make_pair(2, Make("b")));
    std::pair<const int, Pointer> named(3, Make("c"));
    map.insert(named);
    map.emplace(4, new Basic("d"));
    EXPECT_EQ(nullptr, named.second.get());
    EXPECT_EQ("c", map[3]->Name());
    map.erase(2);
    EXPECT_EQ(Names{"b"}, Basic::s_destroyed);
    map[1] = Make("e");
    EXPECT_EQ((Names{"a", "b"}), Basic::s_destroyed);
  }
  EXPECT_EQ((Names{"a", "b", "c", "d", "e"}), Basic::s_destroyed);
}

}  // namespace
