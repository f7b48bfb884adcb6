// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_BADPIXEL_H
#define OXACORE_AUTOTEST_MODULE_TEST_BADPIXEL_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "BadPixel Tests": the values that mark an invalid sample.
class TEST_BadPixel : public TestSuite {
 public:
  TEST_BadPixel();

 private:
  void ValidTypes(std::string& text);
  void InvalidType(std::string& text);
};

}  // namespace Oxa::Core

#endif
