// The global dictionary registers its units when it is first used. That happens once in a process: this program has
// one test.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <gtest/gtest.h>

#include <new>
#include <set>
#include <vector>

#include "Support/Allocations.h"
#include "Support/Together.h"
#include "Units/Quantities.h"

namespace {

using namespace Oxa::Core;
using namespace UnitTests;

const UnitDescriptor* Find(const std::string& name) { return Value::sm_spGlobalDictionary->FindUnit(name); }

/// Whether a look-up fails when its `number`th allocation does.
bool FailsWithout(unsigned long number) {
  const TestSupport::FailAllocation failing(number);
  try {
    Find("Kilometer");
  } catch (const std::bad_alloc&) {
    return true;
  } catch (AllocationFailed&) {
    return true;
  }
  return false;
}

TEST(GlobalDictionary, RegistersItsUnitsAtTheFirstUseThatHasTheMemory) {
  for (const unsigned long number : {1UL, 2UL, 3UL, 10UL, 100UL, 500UL, 1000UL})
    EXPECT_TRUE(FailsWithout(number));

  std::vector<const UnitDescriptor*> found(8);
  TestSupport::Together(8, [&](int thread) { found[static_cast<std::size_t>(thread)] = Find("km"); });
  EXPECT_EQ(1U, std::set<const UnitDescriptor*>(found.begin(), found.end()).size());
  ASSERT_NE(nullptr, found[0]);
  EXPECT_EQ("Kilometer", found[0]->GetName());

  EXPECT_FALSE(FailsWithout(1));
  EXPECT_EQ(found[0], Find("Kilometer"));
  EXPECT_EQ(nullptr, Find("Yottameter"));
}

}  // namespace
