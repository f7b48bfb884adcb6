#include "AutoTest/Module/TEST_Callback.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_Callback::TEST_Callback() : TestSuite("Callback template & macro Tests") {
  AddTestMethods(*this, {{"Test callback variants", &TEST_Callback::Variants},
                         {"Test callback example with smart pointers", &TEST_Callback::SmartPointers}});
}

void TEST_Callback::Variants(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_Callback::SmartPointers(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
