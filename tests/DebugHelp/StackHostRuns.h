// Runs StackHost, and reads what it prints.
#ifndef OXACORE_TESTS_DEBUGHELP_STACKHOSTRUNS_H
#define OXACORE_TESTS_DEBUGHELP_STACKHOSTRUNS_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"

namespace StackTests {

/// The number of the line that is marked by "// at: " and the text.
inline int LineOf(const std::string& mark, const char* source = VICTIM_SOURCE) {
  std::ifstream file(source);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    const auto at = line.find("// at: " + mark);
    if (at != std::string::npos && at + 7 + mark.size() == line.size()) return number;
  }
  ADD_FAILURE() << "no line is marked " << mark;
  return 0;
}

/// "Victim.cpp:12 " for a marked line.
inline std::string At(const std::string& mark) { return "Victim.cpp:" + std::to_string(LineOf(mark)) + " "; }
inline std::string AtHost(const std::string& mark) {
  return "StackHost.cpp:" + std::to_string(LineOf(mark, HOST_SOURCE)) + " ";
}

inline std::string Victim(const std::string& name) { return std::string(VICTIMS) + "/" + name + ".so"; }

inline bool IsThere(const std::string& victim) { return std::filesystem::exists(Victim(victim)); }

/// What a run printed, by lines.
struct Printed {
  TestSupport::ChildResult m_child;
  std::vector<std::string> m_lines;

  bool Has(const std::string& part) const { return Find(part) >= 0; }
  int Find(const std::string& part) const {
    for (std::size_t i = 0; i < m_lines.size(); ++i)
      if (m_lines[i].find(part) != std::string::npos) return static_cast<int>(i);
    return -1;
  }
  int Count(const std::string& part) const {
    int count = 0;
    for (const std::string& line : m_lines)
      if (line.find(part) != std::string::npos) ++count;
    return count;
  }
  std::string All() const { return m_child.m_sOutput + m_child.m_sError; }
};

inline Printed RunHost(const std::string& module, const std::string& what, int number = 0,
                       const std::vector<std::string>& steps = {},
                       const std::vector<std::string>& environment = {}) {
  std::vector<std::string> command = {STACK_HOST, module, what, std::to_string(number)};
  command.insert(command.end(), steps.begin(), steps.end());
  Printed printed{TestSupport::RunChild(command, environment), {}};
  EXPECT_EQ(printed.m_child.m_iStatus, 0) << printed.All();
  std::istringstream lines(printed.m_child.m_sOutput);
  for (std::string line; std::getline(lines, line);) printed.m_lines.push_back(line);
  return printed;
}

/// The line as it begins; the rest is variables.
inline ::testing::AssertionResult BeginsWith(const std::string& line, const std::string& begin) {
  if (line.rfind(begin, 0) == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << '"' << line << "\" doesn't begin with \"" << begin << '"';
}

}  // namespace StackTests

#endif
