// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_UNITDESCRIPTOR_H
#define OXACORE_AUTOTEST_MODULE_TEST_UNITDESCRIPTOR_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "UnitDescriptor Tests": descriptors of units.
class TEST_UnitDescriptor : public TestSuite {
 public:
  TEST_UnitDescriptor();

 private:
  void Construction(std::string& text);
  void Accessors(std::string& text);
  void Converters(std::string& text);
  void AssignmentAndComparison(std::string& text);
  void ArithmeticAndComparison(std::string& text);
  void Serialization(std::string& text);
};

}  // namespace Oxa::Core

#endif
