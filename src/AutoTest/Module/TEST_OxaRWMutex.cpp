#include <Infrastructure/OxaCore/ModuleTestSuite.h>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_OxaRWMutex::TEST_OxaRWMutex() : TestSuite("OxaRWMutex Tests") {
  AddTestMethods(*this, {{"Test OxaRWMutex - single thread", &TEST_OxaRWMutex::SingleThread},
                         {"Test OxaRWMutex - multiple threads", &TEST_OxaRWMutex::MultipleThreads},
                         {"Test OxaRWMutex - deadlock", &TEST_OxaRWMutex::Deadlock}});
}

TEST_OxaRWMutex::~TEST_OxaRWMutex() = default;

void TEST_OxaRWMutex::SingleThread(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaRWMutex::MultipleThreads(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaRWMutex::Deadlock(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
