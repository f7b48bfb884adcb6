// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_UNITIZEDVALUE_H
#define OXACORE_AUTOTEST_MODULE_TEST_UNITIZEDVALUE_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "UnitizedValue Tests": values with units.
class TEST_UnitizedValue : public TestSuite {
 public:
  TEST_UnitizedValue();

 private:
  void Comparison(std::string& text);
  void Conversion(std::string& text);
  void Math(std::string& text);
  void Output(std::string& text);
};

}  // namespace Oxa::Core

#endif
