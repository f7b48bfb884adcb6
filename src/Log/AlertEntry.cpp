#include "Log/AlertEntry.h"

#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/XMLParser.h>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/trim.hpp>

#include "XML/XMLCharacters.h"

namespace Oxa::Core {

namespace {

const char* const sUNWIND_STACK = "UnwindStack";
const char* const sCONTEXT = "Context";
constexpr std::size_t uDEPTH_OF_DATA = 2;
constexpr std::size_t uDEPTH_OF_STACK = 4;  // of what stands in the contexts

// What stands for a character that no XML may have, and that the messages of alerts have all the same.
std::string ReferenceTo(char character) {
  return "&control" + std::to_string(static_cast<unsigned char>(character)) + ';';
}

bool IsForbidden(char character) { return !XMLCharacters::IsIn(XMLCharacters::uCHAR, character); }

std::string WithReferences(const std::string& xml) {
  std::string replaced;
  replaced.reserve(xml.size());
  for (const char character : xml) {
    if (IsForbidden(character))
      replaced += ReferenceTo(character);
    else
      replaced += character;
  }
  return replaced;
}

// Takes away what the markup's layout has put around each line. A text on the line of its tags has nothing of it.
void RemoveLayout(std::string& text) {
  if (text.find('\n') == std::string::npos) return;
  boost::algorithm::trim_if(text, boost::algorithm::is_any_of(" \n"));
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end + 1))
    text.erase(end + 1, text.find_first_not_of(' ', end + 1) - end - 1);
}

// Fills in an AlertEntry. Whoever writes to the log may be in a parse of their own: this one waits for nobody's.
class AlertReader : public XMLParseHandler<> {
 public:
  AlertReader() {
    entities["&lt;"] = "<";
    entities["&gt;"] = ">";
    entities["&amp;"] = "&";
    entities["&apos;"] = "'";
    entities["&quot;"] = "\"";
    for (char character = 0; character < ' '; ++character)
      if (IsForbidden(character)) entities[ReferenceTo(character)] = std::string(1, character);
  }

  Lock GetLock() override { return Lock(m_mutex, IMutex::sINFINITE); }

  void Text(const String& text) {
    if (std::string* const part = Part()) *part += text;
  }
  void ContentReference(const String& reference) {
    String text;
    std::string* const part = Part();
    if (part != nullptr && ResolveReference(reference, text)) *part += text;
  }
  void EndTag(const String& name) {
    if (tagNames.size() == uDEPTH_OF_STACK - 1 && name == sCONTEXT && tagNames[1] == sUNWIND_STACK)
      m_bRaiseSeen = true;
    XMLParseHandler<>::EndTag(name);
  }

  AlertEntry& Entry() { return m_entry; }

 private:
  // Where the text of the innermost element belongs; null if nobody wants it.
  std::string* Part() {
    if (tagNames.size() == uDEPTH_OF_DATA)
      return tagNames[1] == AlertInfo::sMESSAGE ? &m_entry.m_sMessage : nullptr;
    const bool atRaise = tagNames.size() == uDEPTH_OF_STACK && tagNames[1] == sUNWIND_STACK && !m_bRaiseSeen;
    if (!atRaise) return nullptr;
    if (tagNames[3] == CodeContext::sFILE) return &m_entry.m_sFile;
    if (tagNames[3] == CodeContext::sLINE) return &m_entry.m_sLine;
    return tagNames[3] == CodeContext::sFUNCTION ? &m_entry.m_sFunction : nullptr;
  }

  AlertEntry m_entry;
  bool m_bRaiseSeen = false;
  Mutex m_mutex;
};

}  // namespace

AlertEntry ReadAlertEntry(const std::string& xml) {
  XMLParser<AlertReader> reader;
  reader.Parse(WithReferences(xml));
  AlertEntry& entry = reader.Entry();
  for (std::string* const part : {&entry.m_sMessage, &entry.m_sFile, &entry.m_sLine, &entry.m_sFunction})
    RemoveLayout(*part);
  return entry;
}

}  // namespace Oxa::Core
