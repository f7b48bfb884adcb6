#include <Infrastructure/OxaCore/ModuleTestSuite.h>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_OxaThread::TEST_OxaThread() : TestSuite("Oxa::Core::Thread Tests") {
  AddTestMethods(*this, {{"Oxa::Core::Thread Test", &TEST_OxaThread::Threads},
                         {"Deadlock test", &TEST_OxaThread::Deadlock},
                         {"Lifetime Management Test", &TEST_OxaThread::LifetimeManagement},
                         {"Thread Notifications Test", &TEST_OxaThread::ThreadNotifications},
                         {"Thread Pool Test", &TEST_OxaThread::Pool},
                         {"Thread Startup Test", &TEST_OxaThread::Startup},
                         {"Mutex Lock Test", &TEST_OxaThread::MutexLock},
                         {"Kill Thread Test", &TEST_OxaThread::KillThread},
                         {"Named Cross Process Mutex Test", &TEST_OxaThread::CrossProcessMutex}});
}

TEST_OxaThread::~TEST_OxaThread() = default;

void TEST_OxaThread::Threads(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::Deadlock(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::LifetimeManagement(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::ThreadNotifications(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::Pool(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::Startup(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::MutexLock(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::KillThread(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_OxaThread::CrossProcessMutex(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
