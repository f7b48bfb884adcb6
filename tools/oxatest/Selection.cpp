#include "Selection.h"

#include "Pattern.h"

#include <cstddef>

namespace OxaTest {

using Oxa::Core::Test;
using Oxa::Core::TestSuite;

std::string PathOf(const std::string& suites, const std::string& name) {
  return suites.empty() ? name : suites + '/' + name;
}

Selection::Selection(const Options& options)
    : m_options(options), m_sMatched(options.m_only.size() + options.m_disable.size(), '0') {}

// Looks at all of them, since each wants to be known by what it matches.
bool Selection::AnyMatches(const std::vector<std::string>& patterns, std::size_t firstDigit,
                           const std::string& path) {
  bool any = false;
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    if (!Matches(patterns[i], path)) continue;
    m_sMatched[firstDigit + i] = '1';
    any = true;
  }
  return any;
}

std::vector<PlannedTest> Selection::Apply(TestSuite& root) {
  std::vector<PlannedTest> tests;
  Visit(root, {"", m_options.m_only.empty(), root.IsEnabled()}, tests);
  return tests;
}

void Selection::Visit(TestSuite& suite, const Circumstance& around, std::vector<PlannedTest>& tests) {
  std::vector<boost::shared_ptr<Test>> children;
  suite.GetTests(children);
  for (const boost::shared_ptr<Test>& child : children) VisitOne(*child, around, tests);
}

void Selection::VisitOne(Test& test, const Circumstance& around, std::vector<PlannedTest>& tests) {
  const std::string path = PathOf(around.m_sSuites, test.GetName());
  const bool named = AnyMatches(m_options.m_only, 0, path);
  const bool wanted = named || around.m_bWanted;
  if (AnyMatches(m_options.m_disable, m_options.m_only.size(), path)) test.Enable(false);
  const bool enabled = around.m_bEnabled && test.IsEnabled();
  auto* const suite = dynamic_cast<TestSuite*>(&test);
  const std::size_t before = tests.size();
  if (suite != nullptr)
    Visit(*suite, {path, wanted, enabled}, tests);
  else if (wanted)
    tests.push_back({around.m_sSuites, test.GetName(), enabled});
  // A suite of which nothing is wanted isn't even set up.
  if (!wanted && tests.size() == before) test.Enable(false);
}

}  // namespace OxaTest
