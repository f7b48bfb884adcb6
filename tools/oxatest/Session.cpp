#include "Session.h"

#include "Selection.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace OxaTest {

namespace {

const char* const sIN_SET_UP = " in the set-up of the suite, or in what it does itself";
const char* const sIN_TEAR_DOWN = ", behind its tests";
const char* const sBEHIND_TEST = ", after the test: in its tear-down, or in what its suite does itself";
const char* const sBEHIND_TREE = ", behind all tests, while the tree or the library was given up";
const char* const sWHILE_LOADING = " while it was loaded";
const char* const sWHILE_BUILDING = " in GetModuleTestSuite";
const char* const sAFTER_LIST = ", behind the list of its tests";
const char* const sBEHIND = "(behind all tests)";
const char* const sTOO_MUCH = "[left out: the tests of this module have said too much]\n";
const std::size_t uMOST_KEPT = 16U << 20;
const std::size_t uMOST_OF_MODULE = 65536;

EOutcome ReadOutcome(const std::string& text) {
  const int outcome = std::atoi(text.c_str());
  return outcome >= 0 && outcome < eOUTCOMES ? static_cast<EOutcome>(outcome) : eERROR;
}

}  // namespace

Session::Session(ModuleRecord& module, Workplace& workplace, Display& display, const Options& options)
    : m_module(module), m_workplace(workplace), m_display(display), m_options(options) {}

void Session::Take(const Message& message) {
  // Only a damaged message can speak of tests without a tree.
  if (m_module.m_trees.empty() && message.m_eKind >= Message::eTEST && message.m_eKind < Message::eDONE)
    return;
  switch (message.m_eKind) {
    case Message::eSTARTED:
      m_workplace.TakeOutput(message.m_uOutput);
      break;
    case Message::eBAD_MODULE:
      m_module.m_sTrouble = message.Text(0);
      m_ePlace = eOVER;
      break;
    case Message::eLOADED:
      m_ePlace = eBUILDING;
      break;
    case Message::eMATCHED:
      m_module.m_sMatched = message.Text(0);
      break;
    case Message::eTREE:
      NewTree(message.Text(0));
      break;
    case Message::eTEST:
      Plan(message, eNOT_RUN);
      break;
    case Message::eDISABLED_TEST:
      Plan(message, eDISABLED);
      break;
    case Message::eRUN:
      BeginTree();
      break;
    case Message::eBEGIN:
      BeginTest(message);
      break;
    case Message::eRESULT:
      EndTest(message);
      break;
    case Message::eTEAR_DOWN:
      m_ePlace = eBEHIND_TEST;
      break;
    case Message::eSUITE_BEGIN:
      EnterSuite(message, eIN_SUITE);
      break;
    case Message::eSUITE_RESULT:
      EndSuite(message);
      break;
    case Message::eSUITE_TEAR_DOWN:
      EnterSuite(message, eBEHIND_SUITE);
      break;
    case Message::eANNOUNCED:
      Announce(message.Text(0));
      break;
    case Message::eTREE_DONE:
    case Message::eDONE:
      m_ePlace = eUNLOADING;
      break;
  }
}

void Session::NewTree(const std::string& root) {
  if (!m_module.m_trees.empty()) DropTree();
  m_module.m_trees.push_back({root, {}});
  m_running.clear();
  m_uTest = m_uNext = 0;
}

// Of a repetition in which nothing went wrong nobody wants to know more than that, but in a JUnit file: days of
// repetitions need no more memory than one.
void Session::DropTree() {
  Totals totals;
  totals.Add(m_module.m_trees.back());
  if (totals.Bad() > 0 || !m_options.m_sJUnit.empty()) return;
  for (const TestRecord& test : Tests()) m_uKept -= test.m_sText.size() + test.m_sOutput.size();
  m_module.m_dropped.Add(totals);
  ++m_module.m_uDropped;
  m_module.m_trees.pop_back();
}

// So that a module with very many tests that say much doesn't take all memory.
std::string Session::Kept(std::string text) {
  if (m_uKept > uMOST_KEPT && text.size() > std::strlen(sTOO_MUCH)) text = sTOO_MUCH;
  m_uKept += text.size();
  return text;
}

void Session::TakeOutputOfModule(std::uint64_t end) {
  std::string& output = m_module.m_sOutput;
  output += m_workplace.TakeOutput(end);
  if (output.size() > uMOST_OF_MODULE)
    output = "[the beginning is left out]\n" + output.substr(output.size() - uMOST_OF_MODULE);
}

void Session::Plan(const Message& message, EOutcome outcome) {
  Append(message.Text(0), message.Text(1)).m_eOutcome = outcome;
}

TestRecord& Session::Append(const std::string& suites, const std::string& name) {
  Tests().emplace_back();
  Tests().back().m_sSuites = suites;
  Tests().back().m_sName = name;
  return Tests().back();
}

void Session::BeginTree() {
  const TreeRecord& tree = m_module.m_trees.back();
  const std::size_t repetition = m_module.m_uDropped + m_module.m_trees.size();
  m_display.TreeBegins(m_module, tree, m_options.m_iRepeat > 1 ? static_cast<int>(repetition) : 0);
  for (const TestRecord& test : tree.m_tests)
    if (test.m_eOutcome == eDISABLED) m_display.TestEnds(test);
}

// Tests begin in the order in which they were planned: as a rule it is the next one.
std::size_t Session::Planned(const std::string& suites, const std::string& name) {
  const auto isMeant = [&suites, &name](const TestRecord& test) {
    return test.m_eOutcome == eNOT_RUN && test.m_sText.empty() && test.m_sSuites == suites &&
           test.m_sName == name;
  };
  const auto begin = Tests().begin();
  const auto next = begin + static_cast<std::ptrdiff_t>(std::min(m_uNext, Tests().size()));
  auto found = std::find_if(next, Tests().end(), isMeant);
  if (found == Tests().end()) {
    found = std::find_if(begin, next, isMeant);
    if (found == next) return Tests().size();
  }
  m_uNext = static_cast<std::size_t>(found - begin) + 1;
  return m_uNext - 1;
}

// One that wasn't planned was added to the tree while it ran.
void Session::BeginTest(const Message& message) {
  TakeOutputOfModule(message.m_uOutput);
  m_uTest = Planned(message.Text(0), message.Text(1));
  if (m_uTest == Tests().size()) Append(message.Text(0), message.Text(1));
  m_running.push_back(m_uTest);
  m_ePlace = eIN_TEST;
  m_begin = std::chrono::steady_clock::now();
  m_display.TestBegins(PathOf(message.Text(0), message.Text(1)));
}

// Of the innermost one.
void Session::EndTest(const Message& message) {
  if (m_running.empty()) return;
  m_uTest = m_running.back();
  m_running.pop_back();
  TestRecord& test = Tests()[m_uTest];
  test.m_eOutcome = ReadOutcome(message.Text(2));
  test.m_sText = Kept(message.Text(3));
  test.m_dSeconds = std::atof(message.Text(4).c_str());
  test.m_sOutput = Kept(m_workplace.TakeOutput(message.m_uOutput));
  m_display.TestEnds(test);
}

// Before the first test, and between suites, it is the module that speaks.
void Session::Announce(const std::string& text) {
  const bool ofTest = (m_ePlace == eIN_TEST || m_ePlace == eBEHIND_TEST) && m_uTest < Tests().size();
  m_display.Announces(
      ofTest ? PathOf(Tests()[m_uTest].m_sSuites, Tests()[m_uTest].m_sName) : PathOf(m_sSuites, m_sSuite),
      text);
}

void Session::EndSuite(const Message& message) {
  TakeOutputOfModule(message.m_uOutput);
  TestRecord& test = Append(message.Text(0), message.Text(1));
  test.m_eOutcome = ReadOutcome(message.Text(2));
  test.m_sText = Kept(message.Text(3));
  m_display.TestEnds(test);
}

void Session::EnterSuite(const Message& message, EPlace place) {
  m_sSuites = message.Text(0);
  m_sSuite = message.Text(1);
  m_ePlace = place;
}

void Session::End(EEnding ending, bool clean, const std::string& how) {
  m_module.m_bInterrupted = ending == eWAS_INTERRUPTED;
  const bool asPlanned = ending == eBY_ITSELF && clean && m_ePlace == eUNLOADING;
  if (!asPlanned && m_ePlace != eOVER) {
    if (m_ePlace == eLOADING)
      m_module.m_sTrouble = how + sWHILE_LOADING;
    else if (m_ePlace == eBUILDING)
      m_module.m_sTrouble = how + sWHILE_BUILDING;
    else if (m_options.m_bList)
      m_module.m_sTrouble = how + sAFTER_LIST;
    else
      Blame(ending == eTOOK_TOO_LONG ? eHUNG : ending == eWAS_INTERRUPTED ? eINTERRUPTED : eCRASHED, how);
  }
  TakeOutputOfModule(m_workplace.OutputSize());
  m_display.ModuleEnds(m_module);
}

// Names the test that ran, or the place where none did.
void Session::Blame(EOutcome outcome, const std::string& how) {
  const bool ofTest = (m_ePlace == eIN_TEST || m_ePlace == eBEHIND_TEST) && m_uTest < Tests().size();
  const bool ofSuite = m_ePlace == eIN_SUITE || m_ePlace == eBEHIND_SUITE;
  TestRecord& test = ofTest ? Tests()[m_uTest] : ofSuite ? Append(m_sSuites, m_sSuite) : Append("", sBEHIND);
  const std::string before = test.m_sText;
  test.m_eOutcome = outcome;
  if (m_ePlace == eIN_TEST) {
    test.m_dSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
    test.m_sText = how;
  } else {
    test.m_sText = how + (ofTest                      ? sBEHIND_TEST
                          : m_ePlace == eIN_SUITE     ? sIN_SET_UP
                          : m_ePlace == eBEHIND_SUITE ? sIN_TEAR_DOWN
                                                      : sBEHIND_TREE);
    if (!before.empty()) test.m_sText += '\n' + before;
  }
  if (ofTest) test.m_sOutput += Kept(m_workplace.TakeOutput());
  m_display.TestEnds(test);
}

}  // namespace OxaTest
