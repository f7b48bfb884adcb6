// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_PERFORMANCETIMER_H
#define OXACORE_AUTOTEST_MODULE_TEST_PERFORMANCETIMER_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "PerformanceTimer Tests": the timer of operations.
class TEST_PerformanceTimer : public TestSuite {
 public:
  TEST_PerformanceTimer();

 private:
  void Timer(std::string& text);
};

}  // namespace Oxa::Core

#endif
