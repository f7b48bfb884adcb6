#include "Display.h"

#include "Progress.h"
#include "Selection.h"
#include "Text.h"

#include <cstdio>
#include <iostream>

namespace OxaTest {

namespace {

const char* const sINDENTATION = "      ";
const char* const sOUTPUT_INDENTATION = "      | ";

std::string Seconds(double seconds) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f s", seconds);
  return text;
}

// "passed          0.001 s  PATH".
std::string Line(const char* what, const std::string& time, const std::string& path) {
  char text[64];
  std::snprintf(text, sizeof text, "  %-11s %9s  ", what, time.c_str());
  return text + OneLine(path) + '\n';
}

std::string LineOf(const TestRecord& test) {
  return Line(NameOf(test.m_eOutcome), Seconds(test.m_dSeconds), PathOf(test.m_sSuites, test.m_sName));
}

void ListBadOnes(const ModuleRecord& module) {
  for (const TreeRecord& tree : module.m_trees)
    for (const TestRecord& test : tree.m_tests)
      if (IsBad(test.m_eOutcome))
        std::cout << "  " << OneLine(module.m_sModule) << ": "
                  << OneLine(PathOf(test.m_sSuites, test.m_sName)) << '\n';
}

}  // namespace

Display::~Display() = default;

std::unique_ptr<Display> Display::Create() {
  if (Progress::IsPossible()) return std::make_unique<Progress>();
  return std::make_unique<Display>();
}

// What didn't pass says why, and what it printed.
void Display::Show(const TestRecord& test) {
  std::cout << LineOf(test);
  if (test.m_eOutcome != ePASSED) {
    std::cout << Indented(Printable(test.m_sText), sINDENTATION)
              << Indented(Printable(test.m_sOutput), sOUTPUT_INDENTATION);
  }
  std::cout.flush();
}

void Display::ShowAnnouncement(const std::string& path, const std::string& text) {
  std::cout << Line("announces", "", path) << Indented(Printable(text), sINDENTATION) << std::flush;
}

void Display::TreeBegins(const ModuleRecord& module, const TreeRecord& tree, int repetition) {
  std::cout << OneLine(module.m_sModule) << ": " << OneLine(tree.m_sRoot) << ", " << tree.m_tests.size()
            << (tree.m_tests.size() == 1 ? " test" : " tests");
  if (repetition > 0) std::cout << ", time " << repetition;
  std::cout << std::endl;
}

void Display::TestBegins(const std::string&) {}

void Display::Announces(const std::string& path, const std::string& text) { ShowAnnouncement(path, text); }

void Display::TestEnds(const TestRecord& test) { Show(test); }

void Display::ModuleEnds(const ModuleRecord& module) {
  if (module.m_sTrouble.empty()) return;
  Complain(module.m_sModule + ": " + module.m_sTrouble);
  std::cerr << Indented(Printable(module.m_sOutput), sOUTPUT_INDENTATION);
}

void Display::Summary(const std::vector<ModuleRecord>& modules) {
  Totals totals;
  bool any = false;
  for (const ModuleRecord& module : modules) {
    totals.Add(module);
    any = any || !module.m_trees.empty();
  }
  if (!any) return;
  if (totals.Bad() > 0) {
    std::cout << "Did not pass:\n";
    for (const ModuleRecord& module : modules) ListBadOnes(module);
  }
  std::cout << totals.Text() << " in " << Seconds(totals.m_dSeconds) << std::endl;
}

void Complain(const std::string& text) {
  std::cout.flush();
  std::cerr << "oxatest: " << OneLine(text) << std::endl;
}

}  // namespace OxaTest
