// What the runner shows while it runs.
#ifndef OXATEST_DISPLAY_H
#define OXATEST_DISPLAY_H

#include "Records.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace OxaTest {

/// Plain lines on standard output: one for each test that ended. Complaints go to standard error.
class Display {
 public:
  Display() = default;
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  virtual ~Display();

  /// For a terminal on standard output one with a line of progress, else a plain one.
  static std::unique_ptr<Display> Create();

  /// The tests of `tree` are known and begin. `repetition` counts from 1; 0 if there is only one.
  virtual void TreeBegins(const ModuleRecord& module, const TreeRecord& tree, int repetition);
  virtual void TestBegins(const std::string& path);
  /// What the test says while it runs.
  virtual void Announces(const std::string& path, const std::string& text);
  /// May come a second time for a test: when its tear-down ended the process.
  virtual void TestEnds(const TestRecord& test);
  /// With module.m_sTrouble, if it has any.
  virtual void ModuleEnds(const ModuleRecord& module);

  /// What all came to; nothing if not a single tree was seen.
  void Summary(const std::vector<ModuleRecord>& modules);

 protected:
  static void Show(const TestRecord& test);
  static void ShowAnnouncement(const std::string& path, const std::string& text);
};

/// "oxatest: " and the text, on standard error.
void Complain(const std::string& text);

}  // namespace OxaTest

#endif
