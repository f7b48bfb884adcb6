#include "JUnit.h"

#include "Text.h"

#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <ostream>
#include <string>

namespace OxaTest {

using Oxa::Core::XMLFormatter;
using Oxa::Core::XMLWriter;
using Attributes = Oxa::Core::XMLAttributeMap<std::string>;

namespace {

const char* const sBAD_MODULE = "(module)";
const char* const sBAD_MODULE_TYPE = "bad module";
const char* const sPROGRAM = "oxatest";

std::string Seconds(double seconds) {
  char text[64];
  std::snprintf(text, sizeof text, "%.6f", seconds);
  return text;
}

std::string TimeStamp(std::time_t moment) {
  char text[64] = "";
  std::tm parts{};
  if (::gmtime_r(&moment, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  return text;
}

// Line ends would be read back as blanks.
std::string Value(const std::string& text) {
  std::string value;
  for (const char c : XMLFormatter::Escape(Printable(text))) {
    if (c == '\n' || c == '\t')
      value += c == '\n' ? "&#10;" : "&#9;";
    else
      value += c;
  }
  return value;
}

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

class Document {
 public:
  explicit Document(std::ostream& out) : m_rOut(out), m_writer(XMLFormatter::CreateCompact()) {}

  void Write(const std::vector<ModuleRecord>& modules) {
    m_rOut << m_writer.StartDocA() << '\n';
    Begin("testsuites", Counts(modules));
    for (const ModuleRecord& module : modules) Write(module);
    End();
    m_rOut << '\n';
  }

 private:
  static std::int64_t Errors(const Totals& totals) {
    return totals.Bad() - totals.m_counts[eFAILED] + totals.m_counts[eINTERRUPTED];
  }

  static Attributes Counts(const std::string& name, const Totals& totals, int troubles) {
    Attributes attributes;
    attributes["name"] = Value(name);
    attributes["tests"] = std::to_string(totals.All() + troubles);
    attributes["failures"] = std::to_string(totals.m_counts[eFAILED]);
    attributes["errors"] = std::to_string(Errors(totals) + troubles);
    attributes["skipped"] = std::to_string(totals.m_counts[eDISABLED] + totals.m_counts[eNOT_RUN]);
    attributes["time"] = Seconds(totals.m_dSeconds);
    return attributes;
  }

  static Attributes Counts(const std::vector<ModuleRecord>& modules) {
    Totals totals;
    int troubles = 0;
    for (const ModuleRecord& module : modules) {
      totals.Add(module);
      troubles += module.m_sTrouble.empty() ? 0 : 1;
    }
    return Counts(sPROGRAM, totals, troubles);
  }

  void Write(const ModuleRecord& module) {
    for (const TreeRecord& tree : module.m_trees) {
      Totals totals;
      totals.Add(tree);
      BeginSuite(module, Counts(tree.m_sRoot, totals, 0));
      for (const TestRecord& test : tree.m_tests) Write(tree, test);
      if (&tree == &module.m_trees.back() && module.m_sTrouble.empty()) Output(module.m_sOutput);
      End();
    }
    if (!module.m_sTrouble.empty()) WriteTrouble(module);
  }

  void BeginSuite(const ModuleRecord& module, Attributes attributes) {
    attributes["package"] = Value(module.m_sModule);
    attributes["timestamp"] = TimeStamp(module.m_begin);
    Begin("testsuite", attributes);
  }

  // Stands for the tests that nobody knows.
  void WriteTrouble(const ModuleRecord& module) {
    BeginSuite(module, Counts(module.m_sModule, Totals(), 1));
    BeginCase(module.m_sModule, sBAD_MODULE, 0);
    Complain("error", sBAD_MODULE_TYPE, module.m_sTrouble);
    Output(module.m_sOutput);
    End();
    End();
  }

  void Write(const TreeRecord& tree, const TestRecord& test) {
    BeginCase(test.m_sSuites.empty() ? tree.m_sRoot : tree.m_sRoot + '.' + test.m_sSuites, test.m_sName,
              test.m_dSeconds);
    if (test.m_eOutcome == eDISABLED || test.m_eOutcome == eNOT_RUN) {
      Attributes attributes;
      attributes["message"] = NameOf(test.m_eOutcome);
      m_rOut << m_writer.Tag("skipped", attributes);
    } else if (test.m_eOutcome != ePASSED) {
      Complain(test.m_eOutcome == eFAILED ? "failure" : "error", NameOf(test.m_eOutcome), test.m_sText);
    }
    Output(test.m_eOutcome == ePASSED ? Joined(test.m_sText, test.m_sOutput) : test.m_sOutput);
    End();
  }

  // What a test that passed has to say stands in front of what it printed.
  static std::string Joined(const std::string& text, const std::string& output) {
    return text.empty() || output.empty() ? text + output : text + '\n' + output;
  }

  void BeginCase(const std::string& className, const std::string& name, double seconds) {
    Attributes attributes;
    attributes["classname"] = Value(className);
    attributes["name"] = Value(name);
    attributes["time"] = Seconds(seconds);
    Begin("testcase", attributes);
  }

  void Complain(const char* element, const std::string& type, const std::string& text) {
    Attributes attributes;
    attributes["type"] = Value(type);
    attributes["message"] = Value(FirstLine(Printable(text)));
    m_rOut << m_writer.Tag(element, attributes, Printable(text));
  }

  void Output(const std::string& text) {
    if (!text.empty()) m_rOut << m_writer.Tag("system-out", Printable(text));
  }

  void Begin(const char* element, const Attributes& attributes) {
    m_rOut << m_writer.StartTag(element, attributes) << m_writer.Text("\n");
  }

  void End() { m_rOut << m_writer.EndTag() << m_writer.Text("\n"); }

  std::ostream& m_rOut;
  XMLWriter m_writer;
};

}  // namespace

void WriteJUnit(std::ostream& out, const std::vector<ModuleRecord>& modules) { Document(out).Write(modules); }

}  // namespace OxaTest
