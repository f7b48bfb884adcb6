// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_UNITDICTIONARY_H
#define OXACORE_AUTOTEST_MODULE_TEST_UNITDICTIONARY_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "UnitDictionary Tests": the dictionary of units.
class TEST_UnitDictionary : public TestSuite {
 public:
  TEST_UnitDictionary();

 private:
  void Construction(std::string& text);
  void StorageAndRetrieval(std::string& text);
};

}  // namespace Oxa::Core

#endif
