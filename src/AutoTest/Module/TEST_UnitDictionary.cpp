#include "AutoTest/Module/TEST_UnitDictionary.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_UnitDictionary::TEST_UnitDictionary() : TestSuite("UnitDictionary Tests") {
  AddTestMethods(*this, {{"Test construction/destruction", &TEST_UnitDictionary::Construction},
                         {"Test storage and retrieval methods", &TEST_UnitDictionary::StorageAndRetrieval}});
}

void TEST_UnitDictionary::Construction(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_UnitDictionary::StorageAndRetrieval(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
