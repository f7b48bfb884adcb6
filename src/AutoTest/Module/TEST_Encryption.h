// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_ENCRYPTION_H
#define OXACORE_AUTOTEST_MODULE_TEST_ENCRYPTION_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "Encryption Tests": what hides texts and values.
class TEST_Encryption : public TestSuite {
 public:
  TEST_Encryption();

 private:
  void Strings(std::string& text);
  void Password(std::string& text);
  void ByteVectors(std::string& text);
  void FundamentalTypes(std::string& text);
};

}  // namespace Oxa::Core

#endif
