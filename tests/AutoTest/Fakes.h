// Tests and listeners that the tests of self-tests share.
#ifndef OXACORE_TESTS_AUTOTEST_FAKES_H
#define OXACORE_TESTS_AUTOTEST_FAKES_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <boost/make_shared.hpp>
#include <functional>
#include <string>
#include <vector>

namespace AutoTestTests {

using namespace Oxa::Core;
using SelfTest = Oxa::Core::Test;  // in a TEST, Test is that of the test program
using Result = SelfTest::Result;
using Texts = std::vector<std::string>;

/// A test of functions; passes with the text "done" where there is none. Counts the calls of its operations.
class Probe : public SelfTest {
 public:
  explicit Probe(const std::string& name = "Probe") : SelfTest(name) {}
  Probe(const std::string& name, std::function<Result()> execute) : SelfTest(name), m_execute(execute) {}

  void ReadConfig(const std::string& config) override { m_configs.push_back("read " + config); }
  void WriteConfig(const std::string& config) override { m_configs.push_back("write " + config); }

  std::function<void()> m_setup;
  std::function<Result()> m_execute;
  std::function<void()> m_tearDown;
  int m_iSetups = 0;
  int m_iExecutes = 0;
  int m_iTearDowns = 0;
  Texts m_configs;

 protected:
  void Setup() override {
    ++m_iSetups;
    if (m_setup) m_setup();
  }
  Result Execute() override {
    ++m_iExecutes;
    return m_execute ? m_execute() : Result(GetName(), Result::ePASSED, "done");
  }
  void TearDown() override {
    ++m_iTearDowns;
    if (m_tearDown) m_tearDown();
  }
};

/// One that ends as `type`, by returning.
inline boost::shared_ptr<Probe> Ending(const std::string& name, Result::EType type) {
  return boost::make_shared<Probe>(name, [=] { return Result(name, type, std::string()); });
}

/// Keeps what it hears as "setup NAME", "execute NAME", "completed NAME", "teardown NAME", "custom NAME".
class Tape : public SelfTest::Listener {
 public:
  void CustomNotification(const SelfTest& test) override { Note("custom ", test); }

  Texts m_heard;
  std::function<void(const std::string&)> m_onStep;

 protected:
  void SettingUpTest(const SelfTest& test) override { Note("setup ", test); }
  void ExecutingTest(const SelfTest& test) override { Note("execute ", test); }
  void TestCompleted(const SelfTest& test) override { Note("completed ", test); }
  void TearingDownTest(const SelfTest& test) override { Note("teardown ", test); }

 private:
  void Note(const char* step, const SelfTest& test) {
    m_heard.push_back(step + test.GetName());
    if (m_onStep) m_onStep(m_heard.back());
  }
};

/// Keeps the alerts that it hears as "raised MESSAGE", "handled MESSAGE", "warning MESSAGE", and the last place.
class Alerts : public AlertListener {
 public:
  Alerts() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Alerts() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void ErrorRaised(Error& error) override { Note("raised ", error); }
  void ErrorHandled(Error& error) override { Note("handled ", error); }
  void WarningRaised(Warning& warning) override { Note("warning ", warning); }

  Texts m_heard;
  std::string m_sLogName;
  std::string m_sFunction;

 private:
  void Note(const char* what, AlertInfo& alert) {
    m_heard.push_back(what + alert.GetData(AlertInfo::sMESSAGE));
    m_sLogName = alert.GetData(AlertInfo::sLOG_NAME);
    if (alert.GetUnwindStack() && !alert.GetUnwindStack()->empty()) {
      m_sFunction = alert.GetUnwindStack()->front().Get(CodeContext::sFUNCTION);
    }
  }
};

/// "-1 Name: text" for each.
inline Texts Told(const std::vector<Result>& results) {
  Texts told;
  for (const Result& result : results) {
    told.push_back(std::to_string(result.GetType()) + " " + result.GetTestName() + ": " + result.GetText());
  }
  return told;
}

inline Texts ResultsOf(const SelfTest& test) {
  std::vector<Result> results;
  test.GetResults(results);
  return Told(results);
}

}  // namespace AutoTestTests

#endif
