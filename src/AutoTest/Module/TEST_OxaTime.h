// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_OXATIME_H
#define OXACORE_AUTOTEST_MODULE_TEST_OXATIME_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "Oxa::Core::Time Tests": moments and spans of time.
class TEST_OxaTime : public TestSuite {
 public:
  TEST_OxaTime();

 private:
  void Moments(std::string& text);
  void Spans(std::string& text);
};

}  // namespace Oxa::Core

#endif
