#include "Progress.h"

#include "Text.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include <sys/ioctl.h>
#include <unistd.h>

namespace OxaTest {

namespace {

const char* const sCLEAR_LINE = "\r\x1B[K";
const std::size_t uUSUAL_WIDTH = 80;

std::size_t Width() {
  winsize size{};
  const bool known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return (known ? size.ws_col : uUSUAL_WIDTH) - 1;  // a full line would begin another one
}

}  // namespace

Progress::~Progress() = default;

bool Progress::IsPossible() {
  const char* const kind = std::getenv("TERM");
  return ::isatty(STDOUT_FILENO) == 1 && kind != nullptr && *kind != '\0' && std::string(kind) != "dumb";
}

void Progress::Clear() { std::cout << sCLEAR_LINE << std::flush; }

void Progress::TreeBegins(const ModuleRecord& module, const TreeRecord& tree, int repetition) {
  Clear();
  Display::TreeBegins(module, tree, repetition);
  m_uTests = tree.m_tests.size();
  m_uBegun = 0;
}

void Progress::TestBegins(const std::string& path) {
  ++m_uBegun;
  m_sLine = '[' + std::to_string(m_uBegun) + '/' + std::to_string(std::max(m_uBegun, m_uTests)) + "] " +
            OneLine(path);
  ShowLine();
}

void Progress::ShowLine() const { std::cout << sCLEAR_LINE << Shortened(m_sLine, Width()) << std::flush; }

void Progress::Announces(const std::string& path, const std::string& text) {
  Clear();
  ShowAnnouncement(path, text);
  ShowLine();
}

void Progress::TestEnds(const TestRecord& test) {
  if (test.m_eOutcome == ePASSED || test.m_eOutcome == eDISABLED) return;
  Clear();
  Show(test);
}

void Progress::ModuleEnds(const ModuleRecord& module) {
  Clear();
  Display::ModuleEnds(module);
}

}  // namespace OxaTest
