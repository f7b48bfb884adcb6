#include <Infrastructure/OxaCore/AutoTest.h>

namespace Oxa::Core {

Test::Listener::Listener() = default;
Test::Listener::~Listener() = default;
void Test::Listener::CustomNotification(const Test&) {}
void Test::Listener::SettingUpTest(const Test&) {}
void Test::Listener::ExecutingTest(const Test&) {}
void Test::Listener::TestCompleted(const Test&) {}
void Test::Listener::TearingDownTest(const Test&) {}

Test::CustomNotification::CustomNotification(const Test& test) : m_test(test) {}
Test::CustomNotification::~CustomNotification() = default;
void Test::CustomNotification::Tell(Listener& listener) { listener.CustomNotification(m_test); }

TestNotification::TestNotification(EKind kind, const Test& test) : m_eKind(kind), m_test(test) {}
TestNotification::~TestNotification() = default;

void TestNotification::Tell(Test::Listener& listener) {
  switch (m_eKind) {
    case eSETTING_UP:
      return listener.SettingUpTest(m_test);
    case eEXECUTING:
      return listener.ExecutingTest(m_test);
    case eCOMPLETED:
      return listener.TestCompleted(m_test);
    case eTEARING_DOWN:
      return listener.TearingDownTest(m_test);
    default:
      return;
  }
}

ErrorDuringTestNotification::ErrorDuringTestNotification(const std::string& testName,
                                                         const std::string& message)
    : Warning(AlertMessage("Listener error occurred during notification for test %1%:\n%2%", testName,
                           message)) {}
ErrorDuringTestNotification::~ErrorDuringTestNotification() = default;

}  // namespace Oxa::Core
