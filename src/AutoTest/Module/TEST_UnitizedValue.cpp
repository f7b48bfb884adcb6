#include "AutoTest/Module/TEST_UnitizedValue.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_UnitizedValue::TEST_UnitizedValue() : TestSuite("UnitizedValue Tests") {
  AddTestMethods(*this, {{"UnitizedValue Comparison Test", &TEST_UnitizedValue::Comparison},
                         {"UnitizedValue Conversion Test", &TEST_UnitizedValue::Conversion},
                         {"UnitizedValue Math Test", &TEST_UnitizedValue::Math},
                         {"UnitizedValue Output Test", &TEST_UnitizedValue::Output}});
}

void TEST_UnitizedValue::Comparison(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_UnitizedValue::Conversion(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_UnitizedValue::Math(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_UnitizedValue::Output(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
