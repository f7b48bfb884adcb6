// What is known of a run.
#ifndef OXATEST_RECORDS_H
#define OXATEST_RECORDS_H

#include "Outcome.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace OxaTest {

/// All texts as the module gave them: any bytes.
struct TestRecord {
  std::string m_sSuites;  ///< around it but the root, joined by "/"
  std::string m_sName;
  EOutcome m_eOutcome = eNOT_RUN;
  std::string m_sText;
  double m_dSeconds = 0;
  std::string m_sOutput;  ///< the end of what was printed meanwhile
};

/// One run of one tree.
struct TreeRecord {
  std::string m_sRoot;
  std::vector<TestRecord> m_tests;
};

struct ModuleRecord;

/// How many tests ended how, and how long they took.
struct Totals {
  std::array<std::int64_t, eOUTCOMES> m_counts{};
  double m_dSeconds = 0;

  void Add(const TreeRecord& tree);
  void Add(const ModuleRecord& module);
  void Add(const Totals& others);
  std::int64_t All() const;
  std::int64_t Bad() const;

  /// "5 passed, 1 failed", or "no tests".
  std::string Text() const;
};

struct ModuleRecord {
  std::string m_sModule;
  std::string m_sTrouble;  ///< why it can't be run; empty: it can
  bool m_bInterrupted = false;
  std::time_t m_begin = 0;
  std::string m_sMatched;           ///< see Message::eMATCHED; empty: not known
  std::vector<TreeRecord> m_trees;  ///< one for each repetition that wasn't dropped
  std::size_t m_uDropped = 0;       ///< repetitions of which only the totals are known
  Totals m_dropped;
  std::string m_sOutput;  ///< what was printed outside of tests
};

}  // namespace OxaTest

#endif
