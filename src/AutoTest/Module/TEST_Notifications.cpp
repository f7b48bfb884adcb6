#include "AutoTest/Module/TEST_Notifications.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_Notifications::TEST_Notifications() : TestSuite("Notification Tests") {
  AddTestMethods(*this, {{"Basic Tests", &TEST_Notifications::Basics},
                         {"Remove On Notification Test", &TEST_Notifications::RemoveOnNotification},
                         {"Error On Notification Test", &TEST_Notifications::ErrorOnNotification}});
}

void TEST_Notifications::Basics(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_Notifications::RemoveOnNotification(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_Notifications::ErrorOnNotification(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
