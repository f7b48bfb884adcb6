#include "AutoTest/Module/TEST_container_ptr.h"

#include <Infrastructure/OxaCore/ContainerAid.h>

#include <set>
#include <utility>
#include <vector>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

// Those that are gone, and whether any of them went twice.
struct Departures {
  std::set<std::string> m_names;
  bool m_bTwice = false;
};

// Says when it is destroyed.
class Item {
 public:
  Item(const std::string& name, Departures& departures) : m_sName(name), m_departures(departures) {}
  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;
  ~Item() {
    if (!m_departures.m_names.insert(m_sName).second) m_departures.m_bTwice = true;
  }

 private:
  std::string m_sName;
  Departures& m_departures;
};

using ItemPtr = container_ptr<Item>;

bool IsGone(const Departures& departures, const char* name) { return departures.m_names.count(name) != 0; }

void CheckAccess() {
  Departures departures;
  {
    auto* const item = new Item("Basic1", departures);
    const ItemPtr ptr(item);
    OXA_TEST_ASSERT(ptr.get() == item);
    OXA_TEST_ASSERT(ptr.operator->() == item);
    OXA_TEST_ASSERT(&(ptr.operator*()) == item);
    OXA_TEST_ASSERT(departures.m_names.empty());
  }
  OXA_TEST_ASSERT(IsGone(departures, "Basic1") && !departures.m_bTwice);
}

void CheckCopies() {
  Departures departures;
  {
    ItemPtr first(new Item("Moved", departures));
    ItemPtr second(first);  // NOLINT(performance-unnecessary-copy-initialization): copies move
    OXA_TEST_ASSERT(first.get() == nullptr && second.get() != nullptr);
    ItemPtr third(new Item("Replaced", departures));
    third = second;
    OXA_TEST_ASSERT(second.get() == nullptr && third.get() != nullptr);
    OXA_TEST_ASSERT(IsGone(departures, "Replaced") && !IsGone(departures, "Moved"));
  }
  OXA_TEST_ASSERT(IsGone(departures, "Moved") && !departures.m_bTwice);
}

}  // namespace

TEST_container_ptr::TEST_container_ptr() : TestSuite("container_ptr Tests") {
  AddTestMethods(*this, {{"Standalone Test", &TEST_container_ptr::Standalone},
                         {"In Containers Test", &TEST_container_ptr::InContainers}});
}

void TEST_container_ptr::Standalone(std::string&) {
  CheckAccess();
  CheckCopies();
  OXA_TEST_ASSERT(ItemPtr().get() == nullptr);
}

void TEST_container_ptr::InContainers(std::string&) {
  Departures departures;
  {
    std::vector<ItemPtr> items;
    for (const char* const name : {"1", "2", "3", "4", "5"}) {
      items.push_back(ItemPtr(new Item(name, departures)));  // grows, and moves what it has
    }
    OXA_TEST_ASSERT(departures.m_names.empty());
    items.erase(items.begin() + 1);
    OXA_TEST_ASSERT(IsGone(departures, "2"));
    OXA_TEST_EQUALS(1, static_cast<long>(departures.m_names.size()));
    std::swap(items.front(), items.back());
    OXA_TEST_EQUALS(1, static_cast<long>(departures.m_names.size()));
  }
  OXA_TEST_EQUALS(5, static_cast<long>(departures.m_names.size()));
  OXA_TEST_ASSERT(!departures.m_bTwice);
}

}  // namespace Oxa::Core
