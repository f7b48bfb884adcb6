#include <Infrastructure/OxaCore/ModuleTestSuite.h>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_OxaDictionary::TEST_OxaDictionary() : TestSuite("Oxa::Core::Dictionary Tests") {
  AddTestMethods(*this, {{"Basics Test", &TEST_OxaDictionary::Basics},
                         {"Shortcuts Test", &TEST_OxaDictionary::Shortcuts},
                         {"Convert Test", &TEST_OxaDictionary::Convert},
                         {"Stress Test", &TEST_OxaDictionary::Stress}});
}

TEST_OxaDictionary::~TEST_OxaDictionary() = default;

void TEST_OxaDictionary::Basics(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaDictionary::Shortcuts(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaDictionary::Convert(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaDictionary::Stress(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
