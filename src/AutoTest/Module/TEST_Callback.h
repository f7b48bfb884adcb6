// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_CALLBACK_H
#define OXACORE_AUTOTEST_MODULE_TEST_CALLBACK_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "Callback template & macro Tests": callbacks.
class TEST_Callback : public TestSuite {
 public:
  TEST_Callback();

 private:
  void Variants(std::string& text);
  void SmartPointers(std::string& text);
};

}  // namespace Oxa::Core

#endif
