// Which tests of a tree are to run.
#ifndef OXATEST_SELECTION_H
#define OXATEST_SELECTION_H

#include "Options.h"

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>
#include <vector>

namespace OxaTest {

/// A test, not a suite, by its place in the tree.
struct PlannedTest {
  std::string m_sSuites;  ///< the names of the suites around it but the root's, joined by "/"
  std::string m_sName;
  bool m_bEnabled;
};

/// "SUITES/NAME", or the name alone.
std::string PathOf(const std::string& suites, const std::string& name);

class Selection {
 public:
  explicit Selection(const Options& options);

  /// Disables what --only leaves out and what --disable names. Gives all tests but those that --only leaves out, in
  /// the order of a run.
  std::vector<PlannedTest> Apply(Oxa::Core::TestSuite& root);

  /// One digit for each pattern, those of --only first: whether it matched anything in any tree.
  const std::string& Matched() const { return m_sMatched; }

 private:
  // What the suites around a test say of it.
  struct Circumstance {
    std::string m_sSuites;
    bool m_bWanted;   // --only names one of them
    bool m_bEnabled;  // all of them are
  };

  bool AnyMatches(const std::vector<std::string>& patterns, std::size_t firstDigit, const std::string& path);
  void Visit(Oxa::Core::TestSuite& suite, const Circumstance& around, std::vector<PlannedTest>& tests);
  void VisitOne(Oxa::Core::Test& test, const Circumstance& around, std::vector<PlannedTest>& tests);

  const Options& m_options;
  std::string m_sMatched;
};

}  // namespace OxaTest

#endif
