// Runs oxatest, and reads what it wrote.
#ifndef OXACORE_TESTS_TOOLS_OXATEST_H
#define OXACORE_TESTS_TOOLS_OXATEST_H

#include <Infrastructure/OxaCore/XMLParser.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"
#include "Support/DyingChild.h"
#include "Support/TemporaryFolder.h"

namespace OxatestTests {

/// One element with all that is in it.
struct Element {
  std::string m_sName;
  std::map<std::string, std::string> m_attributes;  ///< values as they stand, with their references
  std::string m_sText;                              ///< the same, of this element alone
  std::vector<Element> m_children;

  /// The first child of that name, or one without a name.
  const Element& Child(const std::string& name) const {
    static const Element none;
    for (const Element& child : m_children)
      if (child.m_sName == name) return child;
    return none;
  }
  std::string Attribute(const std::string& name) const {
    const auto found = m_attributes.find(name);
    return found == m_attributes.end() ? "(none)" : found->second;
  }
};

/// Makes elements of what the library's parser finds.
class Reader : public Oxa::Core::XMLParseHandler<> {
 public:
  void StartTag(const std::string& name) {
    m_open.emplace_back();
    m_open.back().m_sName = name;
  }
  void AttributeName(const std::string& name) { m_sAttribute = name; }
  void AttributeValueText(const std::string& text) { m_sValue += text; }
  void AttributeValueRef(const std::string& text) { m_sValue += text; }
  void Attribute() {
    m_open.back().m_attributes[m_sAttribute] = m_sValue;
    m_sValue.clear();
  }
  void EndEmptyTag() { End(); }
  void EndTag(const std::string&) { End(); }
  void Text(const std::string& text) { m_open.back().m_sText += text; }
  void ContentReference(const std::string& text) { m_open.back().m_sText += text; }

  Element m_root;

 private:
  void End() {
    const Element ended = m_open.back();
    m_open.pop_back();
    (m_open.empty() ? m_root : m_open.back().m_children.emplace_back()) = ended;
  }

  std::vector<Element> m_open;
  std::string m_sAttribute;
  std::string m_sValue;
};

/// What a run came to.
struct RunResult {
  int m_iStatus = -1;
  std::string m_sOutput;
  std::string m_sError;
  bool m_bParsed = false;  ///< whether the JUnit file is a document
  Element m_junit;

  /// The test case of that name in whichever suite; one without a name if there is none.
  Element Case(const std::string& name) const {
    for (const Element& suite : m_junit.m_children)
      for (const Element& test : suite.m_children)
        if (test.m_sName == "testcase" && test.Attribute("name") == name) return test;
    return {};
  }
  bool Says(const std::string& text) const { return m_sOutput.find(text) != std::string::npos; }
  bool Complains(const std::string& text) const { return m_sError.find(text) != std::string::npos; }
};

inline bool IsThereXmllint() { return std::system("command -v xmllint > /dev/null 2>&1") == 0; }

/// Parses a JUnit file by the library and, where it is there, by xmllint.
inline bool ReadJUnit(const std::string& file, Element& root) {
  Oxa::Core::XMLParser<Reader> parser;
  const bool parsed = parser.Parse(TestSupport::ReadFile(file));
  root = parser.m_root;
  if (!IsThereXmllint()) return parsed;
  return std::system(("xmllint --noout --nonet " + file).c_str()) == 0 && parsed;
}

/// Runs it with a JUnit file, and a folder of its own for what is temporary, which has to be empty behind it. `before`
/// is a program that becomes oxatest, with its arguments.
inline RunResult RunOxatest(std::vector<std::string> arguments, std::vector<std::string> environment = {},
                            const std::vector<std::string>& before = {}) {
  TestSupport::ExpectDeaths();
  const TestSupport::TemporaryFolder folder;
  const TestSupport::TemporaryFolder temporary;
  arguments.insert(arguments.begin(), OXATEST);
  arguments.insert(arguments.begin(), before.begin(), before.end());
  arguments.push_back("--junit=" + folder.File("junit.xml"));
  environment.push_back("TMPDIR=" + temporary.Path());
  const TestSupport::ChildResult result = TestSupport::RunChild(arguments, environment);
  RunResult run;
  run.m_iStatus = temporary.Names().empty() ? result.m_iStatus : -2000;
  run.m_sOutput = result.m_sOutput;
  run.m_sError = result.m_sError;
  if (folder.Has("junit.xml")) run.m_bParsed = ReadJUnit(folder.File("junit.xml"), run.m_junit);
  return run;
}

/// The same by a shell with redirections, such as ">&-".
inline RunResult RunRedirected(const std::vector<std::string>& arguments, const std::string& redirections) {
  return RunOxatest(arguments, {}, {"/bin/sh", "-c", "exec \"$0\" \"$@\" " + redirections});
}

}  // namespace OxatestTests

#endif
