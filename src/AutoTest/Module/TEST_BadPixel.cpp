#include "AutoTest/Module/TEST_BadPixel.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_BadPixel::TEST_BadPixel() : TestSuite("BadPixel Tests") {
  AddTestMethods(*this, {{"Valid Bad Pixel Types Test", &TEST_BadPixel::ValidTypes},
                         {"Invalid Bad Pixel Type Test", &TEST_BadPixel::InvalidType}});
}

void TEST_BadPixel::ValidTypes(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_BadPixel::InvalidType(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
