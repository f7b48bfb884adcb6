#include "AutoTest/Module/TEST_PerformanceTimer.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_PerformanceTimer::TEST_PerformanceTimer() : TestSuite("PerformanceTimer Tests") {
  AddTestMethods(*this, {{"TestPerformanceTimer", &TEST_PerformanceTimer::Timer}});
}

void TEST_PerformanceTimer::Timer(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
