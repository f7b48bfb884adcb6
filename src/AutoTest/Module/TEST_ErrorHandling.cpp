#include "AutoTest/Module/TEST_ErrorHandling.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_ErrorHandling::TEST_ErrorHandling() : TestSuite("Error Handling Tests") {
  AddTestMethods(*this, {{"Test Construction", &TEST_ErrorHandling::Construction},
                         {"Test Errors", &TEST_ErrorHandling::Errors},
                         {"Test Warnings", &TEST_ErrorHandling::Warnings},
                         {"Test Notifications", &TEST_ErrorHandling::AlertNotifications},
                         {"Test In Place Handling", &TEST_ErrorHandling::InPlaceHandling},
                         {"Test Cloning", &TEST_ErrorHandling::Cloning},
                         {"Test Derivation From Parameterized Base", &TEST_ErrorHandling::ParameterizedBase},
                         {"Test Set And Get FatalErrorBasePath", &TEST_ErrorHandling::FatalErrorBasePath},
                         {"Test Error Recursion", &TEST_ErrorHandling::ErrorRecursion}});
}

void TEST_ErrorHandling::Construction(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::Errors(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::Warnings(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::AlertNotifications(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::InPlaceHandling(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::Cloning(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::ParameterizedBase(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::FatalErrorBasePath(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_ErrorHandling::ErrorRecursion(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
