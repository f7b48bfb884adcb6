// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_ERRORHANDLING_H
#define OXACORE_AUTOTEST_MODULE_TEST_ERRORHANDLING_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "Error Handling Tests": errors and warnings, from raise to handling.
class TEST_ErrorHandling : public TestSuite {
 public:
  TEST_ErrorHandling();

 private:
  void Construction(std::string& text);
  void Errors(std::string& text);
  void Warnings(std::string& text);
  void AlertNotifications(std::string& text);
  void InPlaceHandling(std::string& text);
  void Cloning(std::string& text);
  void ParameterizedBase(std::string& text);
  void FatalErrorBasePath(std::string& text);
  void ErrorRecursion(std::string& text);
};

}  // namespace Oxa::Core

#endif
