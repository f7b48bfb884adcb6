#include "AutoTest/Module/TEST_BadPixel.h"

#include <Infrastructure/OxaCore/BadPixel.h>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_BadPixel::TEST_BadPixel() : TestSuite("BadPixel Tests") {
  AddTestMethods(*this, {{"Valid Bad Pixel Types Test", &TEST_BadPixel::ValidTypes},
                         {"Invalid Bad Pixel Type Test", &TEST_BadPixel::InvalidType}});
}

void TEST_BadPixel::ValidTypes(std::string&) {
  OXA_TEST_EQUALS(-128, static_cast<signed char>(BadPixel<char>::Value()));
  OXA_TEST_EQUALS(255, BadPixel<unsigned char>::Value());
  OXA_TEST_EQUALS(32767, BadPixel<short>::Value());
  OXA_TEST_EQUALS(2147483647L, BadPixel<long>::Value());
  OXA_TEST_ASSERT(static_cast<double>(BadPixel<float>::Value()) == BadPixel<double>::Value());
  OXA_TEST_ASSERT(BadPixel<double>::Value() == 1.7014118346046923e38);
}

void TEST_BadPixel::InvalidType(std::string&) {
  OXA_TEST_ASSERT(Raises<NoBadPixelValue>(BadPixel<int>::Value));
}

}  // namespace Oxa::Core
