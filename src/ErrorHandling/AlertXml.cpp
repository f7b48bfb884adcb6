#include "ErrorHandling/AlertXml.h"

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <ostream>

#include "ErrorHandling/ContextTexts.h"
#include "XML/PrettyPrintFormatter.h"
#include "XML/TextOutput.h"

namespace Oxa::Core {

namespace {

const char* const sCIRCUMSTANCE = "Circumstance";
const char* const sCALL_STACK = "CallStack";
const char* const sUNWIND_STACK = "UnwindStack";
const char* const sCONTEXT = "Context";
const char* const sVARIABLES = "Variables";
const char* const sVARIABLE = "Var";
const char* const sVARIABLE_NAME = "name";
constexpr std::size_t uUSUAL_SIZE = 2048;  // without the call stack
constexpr std::size_t uUSUAL_CONTEXT = 512;

XMLAttributeMap<std::string> NameOf(const std::string& variable) {
  XMLAttributeMap<std::string> attributes;
  attributes[sVARIABLE_NAME] = variable;
  return attributes;
}

// A writer, and so whatever layout and open tags a caller has.
class WriterTarget {
 public:
  WriterTarget(XMLWriter& writer, std::ostream& out) : m_rWriter(writer), m_rOut(out) {}

  void Begin(const std::string& name) { m_rOut << m_rWriter.StartTag(name); }
  void Tag(const std::string& name, const std::string& content) { m_rWriter.PutTag(m_rOut, name, content); }
  void Variable(const std::string& name, const std::string& value) {
    m_rWriter.PutTag(m_rOut, sVARIABLE, NameOf(name), value);
  }
  void End(const std::string& /*name*/) { m_rOut << m_rWriter.EndTag(); }

 private:
  XMLWriter& m_rWriter;
  std::ostream& m_rOut;
};

// A text in the layout of the pretty printer. No tag takes attributes late here, so that none is held back.
class TextTarget {
 public:
  explicit TextTarget(std::string& text) : m_rText(text), m_out(text) {}

  void Begin(const std::string& name) { m_layout.PutStartTag(m_out, name, XMLWriter::sEMPTY_MAP, false); }
  void Tag(const std::string& name, const std::string& content) { Put(name, XMLWriter::sEMPTY_MAP, content); }
  void Variable(const std::string& name, const std::string& value) { Put(sVARIABLE, NameOf(name), value); }
  void End(const std::string& name) { m_layout.PutEndTag(m_out, name); }
  void Flush() { m_out.Flush(); }

  /// Ends the line of a start tag: what follows are whole lines.
  void BreakLine() { m_layout.BreakLine(m_out); }
  /// Whole lines that WrittenFrom gave at a place like this one.
  void PutLines(const ContextText& known) { m_layout.PutLines(m_out, known.m_sElement, known.m_uLines); }
  /// How much is written.
  std::size_t Written() {
    m_out.Flush();
    return m_rText.size();
  }
  std::string WrittenFrom(std::size_t begin) {
    m_out.Flush();
    return m_rText.substr(begin);
  }

 private:
  void Put(const std::string& name, const XMLAttributeMap<std::string>& attributes,
           const std::string& content) {
    m_layout.PutStartTag(m_out, name, attributes, content.empty());
    if (content.empty()) return;
    m_layout.PutText(m_out, content);
    m_layout.PutEndTag(m_out, name);
  }

  std::string& m_rText;
  PrettyPrintFormatter m_layout;
  TextOutput m_out;
};

template <class Target>
void PutTable(Target& target, const AlertData& table) {
  for (const auto& [key, value] : table) target.Tag(key, value);
}

template <class Target>
void PutVariables(Target& target, const AlertData& variables) {
  target.Begin(sVARIABLES);
  for (const auto& [name, value] : variables) target.Variable(name, value);
  target.End(sVARIABLES);
}

template <class Target>
void PutContextAnew(Target& target, const CodeContext& context) {
  target.Begin(sCONTEXT);
  PutTable(target, context.GetContextInfo());
  if (context.HasVariableInfo()) PutVariables(target, context.GetVariables());
  target.End(sCONTEXT);
}

template <class Target>
void PutContext(Target& target, const CodeContext& context) {
  PutContextAnew(target, context);
}

// Tables of contexts come again and again. One with variables behind it is written anew: what is kept isn't to keep
// those.
void PutContext(TextTarget& target, const CodeContext& context) {
  if (context.GetContextInfo().empty() || context.HasVariableInfo()) return PutContextAnew(target, context);
  target.BreakLine();
  if (const auto known = FindContextText(context)) return target.PutLines(*known);
  const std::size_t begin = target.Written();
  PutContextAnew(target, context);
  KeepContextText(context, target.WrittenFrom(begin));
}

template <class Target>
void PutStack(Target& target, const char* name, const boost::shared_ptr<std::vector<CodeContext>>& stack) {
  if (!stack || stack->empty()) return;
  target.Begin(name);
  for (const CodeContext& context : *stack) PutContext(target, context);
  target.End(name);
}

}  // namespace

template <class Target>
void AlertXml::Put(Target& target, AlertInfo& alert, const std::string& circumstance) {
  const std::string name = alert.XMLElementName();
  target.Begin(name);
  if (!circumstance.empty()) target.Tag(sCIRCUMSTANCE, circumstance);
  if (alert.m_spData) {
    PutTable(target, *alert.m_spData);
  } else {
    AlertData missing;
    alert.GetAllData(missing);
    PutTable(target, missing);
  }
  PutStack(target, sCALL_STACK, alert.m_spCallStack);
  PutStack(target, sUNWIND_STACK, alert.m_spUnwindStack);
  target.End(name);
}

std::string AlertXml::AsText(AlertInfo& alert, const char* circumstance) {
  std::string text;
  text.reserve(uUSUAL_SIZE + uUSUAL_CONTEXT * (alert.m_spCallStack ? alert.m_spCallStack->size() : 0));
  TextTarget target(text);
  Put(target, alert, circumstance);
  target.Flush();
  return text;
}

void AlertInfo::ToXML(XMLWriter& writer, std::ostream& out, const std::string& circumstance) {
  WriterTarget target(writer, out);
  AlertXml::Put(target, *this, circumstance);
}

}  // namespace Oxa::Core
