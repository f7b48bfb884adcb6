#include "Reporter.h"

#include "Outcome.h"
#include "Selection.h"

#include <Infrastructure/OxaCore/CodeContext.h>

#include <boost/shared_ptr.hpp>
#include <utility>

namespace OxaTest {

using Oxa::Core::CodeContext;
using Oxa::Core::Error;
using Oxa::Core::Test;
using Result = Test::Result;
using Results = std::vector<Result>;

namespace {

// Where the error was raised: "\nat FILE:LINE in FUNCTION".
std::string PlaceOf(const Error& error) {
  const boost::shared_ptr<std::vector<CodeContext>> places = error.GetUnwindStack();
  if (!places || places->empty()) return "";
  const CodeContext& first = places->front();
  return "\nat " + first.Get(CodeContext::sFILE) + ':' + first.Get(CodeContext::sLINE) + " in " +
         first.Get(CodeContext::sFUNCTION);
}

std::string TextOf(const Result& result) {
  const boost::shared_ptr<Error> failure = result.GetFailure();
  return failure ? result.GetText() + PlaceOf(*failure) : result.GetText();
}

std::string TextOf(const Results& results) {
  std::string text;
  for (const Result& result : results) text += (text.empty() ? "" : "\n") + TextOf(result);
  return text;
}

// The worst, as Test::GetResult has it.
EOutcome OutcomeOf(const Results& results) {
  EOutcome outcome = eNOT_RUN;
  for (const Result& result : results) {
    if (result.GetType() == Result::eERROR) return eERROR;
    if (result.GetType() == Result::eFAILED) outcome = eFAILED;
    if (result.GetType() == Result::ePASSED && outcome == eNOT_RUN) outcome = ePASSED;
  }
  return outcome;
}

}  // namespace

// A test that is run by another one, and isn't in the tree, is heard by nobody; one that runs itself again is.
bool Reporter::IsInnermost(const Test& test) const {
  return !m_levels.empty() && m_levels.back().m_pTest == &test;
}

std::string Reporter::SuitesWithin() const {
  if (m_levels.size() < 2) return "";
  return PathOf(m_levels.back().m_sSuites, m_levels.back().m_pTest->GetName());
}

// What is to be told is the name of the test, which needn't be part of the tree.
void Reporter::CustomNotification(const Test& test) { m_channel.Tell(Message::eANNOUNCED, {test.GetName()}); }

void Reporter::SettingUpTest(const Test& test) {
  m_levels.push_back({&test, SuitesWithin(), std::chrono::steady_clock::now()});
  m_channel.Tell(test.IsTestSuite() ? Message::eSUITE_BEGIN : Message::eBEGIN,
                 {m_levels.back().m_sSuites, test.GetName()});
}

void Reporter::TestCompleted(const Test& test) {
  if (!IsInnermost(test)) return;
  const Level& level = m_levels.back();
  Results results;
  test.GetResults(results);
  if (m_levels.size() > 1) m_levels[m_levels.size() - 2].m_uOfChildren += results.size();
  if (test.IsTestSuite() && level.m_uOfChildren <= results.size())
    results.erase(results.begin(), results.begin() + static_cast<std::ptrdiff_t>(level.m_uOfChildren));
  TellOwnResults(level, results);
}

// Of a suite only what went wrong is told: its own results count for it, and it has none as a rule.
void Reporter::TellOwnResults(const Level& level, const Results& results) {
  const bool suite = level.m_pTest->IsTestSuite();
  const EOutcome outcome = OutcomeOf(results);
  if (suite && outcome != eERROR && outcome != eFAILED) return;
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - level.m_begin;
  m_channel.Tell(suite ? Message::eSUITE_RESULT : Message::eRESULT,
                 {level.m_sSuites, level.m_pTest->GetName(), std::to_string(outcome), TextOf(results),
                  std::to_string(seconds.count())});
}

void Reporter::TearingDownTest(const Test& test) {
  if (!IsInnermost(test)) return;
  const std::string suites = std::move(m_levels.back().m_sSuites);
  m_levels.pop_back();
  m_channel.Tell(test.IsTestSuite() ? Message::eSUITE_TEAR_DOWN : Message::eTEAR_DOWN,
                 {suites, test.GetName()});
}

}  // namespace OxaTest
