// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_SMARTPTR_H
#define OXACORE_AUTOTEST_MODULE_TEST_SMARTPTR_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "Smart Pointer Tests": shared pointers, as the library hands them out and takes them.
class TEST_SmartPtr : public TestSuite {
 public:
  TEST_SmartPtr();

 private:
  void DefaultConstruction(std::string& text);
  void CopyConstruction(std::string& text);
  void Assignment(std::string& text);
  void Conversions(std::string& text);
  void Dereferencing(std::string& text);
  void Arrays(std::string& text);
};

}  // namespace Oxa::Core

#endif
