#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <ostream>

namespace Oxa::Core {

namespace {

const char* const sCIRCUMSTANCE = "Circumstance";
const char* const sCALL_STACK = "CallStack";
const char* const sUNWIND_STACK = "UnwindStack";
const char* const sCONTEXT = "Context";
const char* const sVARIABLES = "Variables";
const char* const sVARIABLE = "Var";
const char* const sVARIABLE_NAME = "name";

void PutTable(XMLWriter& writer, std::ostream& out, const AlertData& table) {
  for (const auto& [key, value] : table) writer.PutTag(out, key, value);
}

void PutVariables(XMLWriter& writer, std::ostream& out, const AlertData& variables) {
  out << writer.StartTag(sVARIABLES);
  for (const auto& [name, value] : variables) {
    XMLAttributeMap<std::string> attributes;
    attributes[sVARIABLE_NAME] = name;
    writer.PutTag(out, sVARIABLE, attributes, value);
  }
  out << writer.EndTag();
}

void PutContext(XMLWriter& writer, std::ostream& out, const CodeContext& context) {
  out << writer.StartTag(sCONTEXT);
  PutTable(writer, out, context.GetContextInfo());
  if (context.HasVariableInfo()) PutVariables(writer, out, context.GetVariables());
  out << writer.EndTag();
}

void PutStack(XMLWriter& writer, std::ostream& out, const char* name,
              const boost::shared_ptr<std::vector<CodeContext>>& stack) {
  if (!stack || stack->empty()) return;
  out << writer.StartTag(name);
  for (const CodeContext& context : *stack) PutContext(writer, out, context);
  out << writer.EndTag();
}

}  // namespace

void AlertInfo::ToXML(XMLWriter& writer, std::ostream& out, const std::string& circumstance) {
  out << writer.StartTag(XMLElementName());
  if (!circumstance.empty()) out << writer.Tag(sCIRCUMSTANCE, circumstance);
  AlertData data;
  GetAllData(data);
  PutTable(writer, out, data);
  PutStack(writer, out, sCALL_STACK, m_spCallStack);
  PutStack(writer, out, sUNWIND_STACK, m_spUnwindStack);
  out << writer.EndTag();
}

}  // namespace Oxa::Core
