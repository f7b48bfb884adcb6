#include "AutoTest/Module/TEST_Notifications.h"

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Notifications.h>

#include <algorithm>
#include <boost/scoped_ptr.hpp>
#include <stdexcept>

#include "AutoTest/Module/AlertTape.h"
#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.Test.Notifications";
const char* const sLISTENER_ERROR = "a listener of the self-test throws";
const char* const sUNKNOWN_ERROR = "Unknown Error";
const char* const sPROBE = "the self-test asks whether this warning is told";

// Counts what it hears.
class Counter : public NotificationListener {
 public:
  Counter() = default;
  ~Counter() override = default;

  virtual void Heard() { ++m_iHeard; }

  int m_iHeard = 0;
  int m_iSourcesRemoved = 0;

 protected:
  void NotificationSourceIsRemoved(const NotificationSupport&) override { ++m_iSourcesRemoved; }
};

class Event : public Notification {
 public:
  void Notify(NotificationListener& listener) override {
    if (auto* const counter = dynamic_cast<Counter*>(&listener)) counter->Heard();
  }
};

// A source of events.
class Source : public NotificationSupport {
 public:
  Source() : NotificationSupport(eFIRST_ADDED_FIRST) {}

  void Tell() {
    Event event;
    Broadcast(event);
  }
};

// Leaves when it hears.
class Leaver : public Counter {
 public:
  explicit Leaver(Source& source) : m_source(source) {}

  void Heard() override {
    Counter::Heard();
    m_source.RemoveListener(*this);
  }

 private:
  Source& m_source;
};

// Sends all away when it hears.
class Closer : public Counter {
 public:
  explicit Closer(Source& source) : m_source(source) {}

  void Heard() override {
    Counter::Heard();
    m_source.RemoveAllListeners();
  }

 private:
  Source& m_source;
};

// Throws instead of counting: an error of the library's, any other exception, or what is none.
class Thrower : public Counter {
 public:
  enum EWhat { eERROR, eEXCEPTION, eTEXT };

  explicit Thrower(EWhat what) : m_eWhat(what) {}

  void Heard() override {
    if (m_eWhat == eERROR) OXA_RAISE_ERROR(sLOG_NAME, LogicError(sLISTENER_ERROR));
    if (m_eWhat == eEXCEPTION) throw std::runtime_error(sLISTENER_ERROR);
    throw sLISTENER_ERROR;
  }

 private:
  const EWhat m_eWhat;
};

// A listener of another kind.
class Stranger : public NotificationListener {};

void CheckTwoSources() {
  Counter counter;
  boost::scoped_ptr<Source> first(new Source);
  Source second;
  first->AddListener(counter);
  second.AddListener(counter);
  first->Tell();
  second.Tell();
  OXA_TEST_EQUALS(2, counter.m_iHeard);
  first.reset();
  OXA_TEST_EQUALS(1, counter.m_iSourcesRemoved);
  OXA_TEST_EQUALS(1, second.GetNumListeners());
  second.RemoveListener(counter);
  OXA_TEST_ASSERT(!second.HasListeners() && second.GetNumListeners() == 0);
  second.Tell();
  OXA_TEST_EQUALS(2, counter.m_iHeard);
}

void CheckDyingListener() {
  Source first;
  Source second;
  {
    Counter counter;
    first.AddListener(counter);
    second.AddListener(counter);
  }
  OXA_TEST_ASSERT(!first.HasListeners() && !second.HasListeners());
  first.Tell();
}

void CheckThreeSources() {
  Counter counter;
  for (int count = 1; count <= 3; ++count) {
    Source source;
    source.AddListener(counter);
  }
  OXA_TEST_EQUALS(3, counter.m_iSourcesRemoved);
}

// Those who are sent away while they are told still hear of that one.
void CheckRemovalOfOthers() {
  Source source;
  Closer closer(source);
  Counter after;
  source.AddListener(closer);
  source.AddListener(after);
  source.Tell();
  source.Tell();
  OXA_TEST_EQUALS(1, closer.m_iHeard);
  OXA_TEST_EQUALS(1, after.m_iHeard);
  OXA_TEST_ASSERT(!source.HasListeners());
}

int CountWarnings(const AlertTape& tape, const std::string& what) {
  const auto& heard = tape.GetHeard();
  return static_cast<int>(
      std::count(heard.begin(), heard.end(), "warned Listener threw error during notification: " + what));
}

// Whether the host has set a limit to this class of warnings, and it is used up.
bool AreWarningsSilenced() {
  const AlertTape tape(sPROBE);
  OXA_RAISE_WARNING(sLOG_NAME, ListenerErrorOnNotification(sPROBE));
  return tape.GetHeard().empty();
}

// The others hear, and the broadcaster gets a warning.
void CheckThrower(Thrower::EWhat thrown, const char* told) {
  Source source;
  Counter before;
  Thrower thrower(thrown);
  Counter after;
  source.AddListener(before);
  source.AddListener(thrower);
  source.AddListener(after);
  int warnings = 0;
  {
    const AlertTape tape(told);
    source.Tell();
    warnings = CountWarnings(tape, told);
  }
  OXA_TEST_EQUALS(1, before.m_iHeard);
  OXA_TEST_EQUALS(0, thrower.m_iHeard);
  OXA_TEST_EQUALS(1, after.m_iHeard);
  OXA_TEST_ASSERT(warnings == 1 || (warnings == 0 && AreWarningsSilenced()));
}

}  // namespace

TEST_Notifications::TEST_Notifications() : TestSuite("Notification Tests") {
  AddTestMethods(*this, {{"Basic Tests", &TEST_Notifications::Basics},
                         {"Remove On Notification Test", &TEST_Notifications::RemoveOnNotification},
                         {"Error On Notification Test", &TEST_Notifications::ErrorOnNotification}});
}

void TEST_Notifications::Basics(std::string&) {
  Source source;
  source.Tell();
  Counter counter;
  Stranger stranger;
  source.AddListener(counter);
  source.AddListener(counter);
  OXA_TEST_EQUALS(1, source.GetNumListeners());
  source.AddListener(stranger);
  source.Tell();
  OXA_TEST_EQUALS(1, counter.m_iHeard);
  source.RemoveAllListeners();
  OXA_TEST_EQUALS(1, counter.m_iSourcesRemoved);
  CheckTwoSources();
  CheckThreeSources();
  CheckDyingListener();
}

void TEST_Notifications::RemoveOnNotification(std::string&) {
  Source source;
  Counter before;
  Leaver leaver(source);
  Counter after;
  source.AddListener(before);
  source.AddListener(leaver);
  source.AddListener(after);
  source.Tell();
  source.Tell();
  OXA_TEST_EQUALS(2, before.m_iHeard);
  OXA_TEST_EQUALS(1, leaver.m_iHeard);
  OXA_TEST_EQUALS(2, after.m_iHeard);
  source.AddListener(leaver);
  source.Tell();
  OXA_TEST_EQUALS(2, leaver.m_iHeard);
  CheckRemovalOfOthers();
}

void TEST_Notifications::ErrorOnNotification(std::string&) {
  CheckThrower(Thrower::eERROR, sLISTENER_ERROR);
  CheckThrower(Thrower::eEXCEPTION, sLISTENER_ERROR);
  CheckThrower(Thrower::eTEXT, sUNKNOWN_ERROR);
}

}  // namespace Oxa::Core
