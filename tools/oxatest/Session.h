// Makes records of what a module's process tells, and of how it ends.
#ifndef OXATEST_SESSION_H
#define OXATEST_SESSION_H

#include "Display.h"
#include "Message.h"
#include "Options.h"
#include "Records.h"
#include "Workplace.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace OxaTest {

class Session {
 public:
  /// How the process came to its end.
  enum EEnding { eBY_ITSELF, eTOOK_TOO_LONG, eTOLD_NONSENSE, eWAS_INTERRUPTED };

  /// `module` and `options` must outlive it, as must the others.
  Session(ModuleRecord& module, Workplace& workplace, Display& display, const Options& options);

  void Take(const Message& message);

  /// The process is over. `clean`: with exit status 0; `how` says it in words.
  void End(EEnding ending, bool clean, const std::string& how);

 private:
  enum EPlace { eLOADING, eBUILDING, eIN_TEST, eBEHIND_TEST, eIN_SUITE, eBEHIND_SUITE, eUNLOADING, eOVER };

  void NewTree(const std::string& root);
  void DropTree();
  void Plan(const Message& message, EOutcome outcome);
  void BeginTree();
  std::size_t Planned(const std::string& suites, const std::string& name);
  void BeginTest(const Message& message);
  void EndTest(const Message& message);
  void Announce(const std::string& text);
  void EndSuite(const Message& message);
  void EnterSuite(const Message& message, EPlace place);
  void Blame(EOutcome outcome, const std::string& how);
  std::string Kept(std::string text);
  void TakeOutputOfModule(std::uint64_t end);
  TestRecord& Append(const std::string& suites, const std::string& name);
  std::vector<TestRecord>& Tests() { return m_module.m_trees.back().m_tests; }

  ModuleRecord& m_module;
  Workplace& m_workplace;
  Display& m_display;
  const Options& m_options;
  EPlace m_ePlace = eLOADING;
  std::vector<std::size_t> m_running;  // each runs the next one
  std::size_t m_uTest = 0;             // the one that runs, or ran last
  std::size_t m_uNext = 0;             // behind the last one that was planned and began
  std::size_t m_uKept = 0;             // bytes of what tests said
  std::string m_sSuites;               // of the suite in which things are
  std::string m_sSuite;
  std::chrono::steady_clock::time_point m_begin;
};

}  // namespace OxaTest

#endif
