// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_NOTIFICATIONS_H
#define OXACORE_AUTOTEST_MODULE_TEST_NOTIFICATIONS_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "Notification Tests": notifications and those who listen.
class TEST_Notifications : public TestSuite {
 public:
  TEST_Notifications();

 private:
  void Basics(std::string& text);
  void RemoveOnNotification(std::string& text);
  void ErrorOnNotification(std::string& text);
};

}  // namespace Oxa::Core

#endif
