// Makes records of what a module's process tells, and of how it ends.
#ifndef OXATEST_SESSION_H
#define OXATEST_SESSION_H

#include "Display.h"
#include "Message.h"
#include "Records.h"
#include "Workplace.h"

#include <chrono>
#include <cstddef>
#include <string>

namespace OxaTest {

class Session {
 public:
  /// How the process came to its end.
  enum EEnding { eBY_ITSELF, eTOOK_TOO_LONG, eWAS_INTERRUPTED };

  /// `repeated`: whether there is more than one repetition; `list`: whether the tests are only to be told.
  Session(ModuleRecord& module, Workplace& workplace, Display& display, bool repeated, bool list);

  void Take(const Message& message);

  /// The process is over. `clean`: with exit status 0; `how` says it in words.
  void End(EEnding ending, bool clean, const std::string& how);

 private:
  enum EPlace { eLOADING, eBUILDING, eIN_TEST, eBEHIND_TEST, eIN_SUITE, eBEHIND_SUITE, eUNLOADING, eOVER };

  void Plan(const Message& message, EOutcome outcome);
  void BeginTree();
  void BeginTest(const Message& message);
  void EndTest(const Message& message);
  void EndSuite(const Message& message);
  void EnterSuite(const Message& message, EPlace place);
  void Blame(EOutcome outcome, const std::string& how);
  TestRecord& Append(const std::string& suites, const std::string& name);
  std::vector<TestRecord>& Tests() { return m_module.m_trees.back().m_tests; }

  ModuleRecord& m_module;
  Workplace& m_workplace;
  Display& m_display;
  const bool m_bRepeated;
  const bool m_bList;
  EPlace m_ePlace = eLOADING;
  std::size_t m_uTest = 0;  // the one that runs, or ran last
  std::string m_sSuites;    // of the suite in which things are
  std::string m_sSuite;
  std::chrono::steady_clock::time_point m_begin;
};

}  // namespace OxaTest

#endif
