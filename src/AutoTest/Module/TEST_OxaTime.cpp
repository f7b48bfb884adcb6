#include "AutoTest/Module/TEST_OxaTime.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_OxaTime::TEST_OxaTime() : TestSuite("Oxa::Core::Time Tests") {
  AddTestMethods(*this,
                 {{"Test Oxa::Core::Time", &TEST_OxaTime::Moments}, {"Test Elapse", &TEST_OxaTime::Spans}});
}

void TEST_OxaTime::Moments(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaTime::Spans(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
