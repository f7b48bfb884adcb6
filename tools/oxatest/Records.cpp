#include "Records.h"

#include <cstddef>
#include <numeric>

namespace OxaTest {

void Totals::Add(const TreeRecord& tree) {
  for (const TestRecord& test : tree.m_tests) {
    ++m_counts[static_cast<std::size_t>(test.m_eOutcome)];
    m_dSeconds += test.m_dSeconds;
  }
}

void Totals::Add(const ModuleRecord& module) {
  for (const TreeRecord& tree : module.m_trees) Add(tree);
  Add(module.m_dropped);
}

void Totals::Add(const Totals& others) {
  for (std::size_t i = 0; i < m_counts.size(); ++i) m_counts[i] += others.m_counts[i];
  m_dSeconds += others.m_dSeconds;
}

std::int64_t Totals::All() const {
  return std::accumulate(m_counts.begin(), m_counts.end(), std::int64_t{0});
}

std::int64_t Totals::Bad() const {
  std::int64_t bad = 0;
  for (std::size_t i = 0; i < m_counts.size(); ++i)
    if (IsBad(static_cast<EOutcome>(i))) bad += m_counts[i];
  return bad;
}

std::string Totals::Text() const {
  std::string text;
  for (std::size_t i = 0; i < m_counts.size(); ++i) {
    if (m_counts[i] == 0) continue;
    text += (text.empty() ? "" : ", ") + std::to_string(m_counts[i]) + ' ' + NameOf(static_cast<EOutcome>(i));
  }
  return text.empty() ? "no tests" : text;
}

}  // namespace OxaTest
