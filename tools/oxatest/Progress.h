// The form of the display for a terminal.
#ifndef OXATEST_PROGRESS_H
#define OXATEST_PROGRESS_H

#include "Display.h"

namespace OxaTest {

/// One line that tells how far the run is and which test runs, over and over in its place. Tests that pass leave no
/// line of their own.
class Progress : public Display {
 public:
  ~Progress() override;

  /// Whether standard output is a terminal that can do that.
  static bool IsPossible();

  void TreeBegins(const ModuleRecord& module, const TreeRecord& tree, int repetition) override;
  void TestBegins(const std::string& path) override;
  void Announces(const std::string& path, const std::string& text) override;
  void TestEnds(const TestRecord& test) override;
  void ModuleEnds(const ModuleRecord& module) override;

 private:
  static void Clear();
  void ShowLine() const;

  std::size_t m_uTests = 0;
  std::size_t m_uBegun = 0;
  std::string m_sLine;
};

}  // namespace OxaTest

#endif
