#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLParser.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <iostream>
#include <sstream>
#include <string>

using namespace Oxa::Core;

std::string Write() {
  std::ostringstream out;
  XMLWriter writer(XMLFormatter::CreatePrettyPrint());
  out << writer.StartDocA() << writer.StartTag("Probe") << writer.Attribute("id", "7")
      << writer.Tag("Name", "left & right") << writer.Comment(" in Kelvin ") << writer.Tag("Limit", "310.5")
      << writer.EndDoc();
  return out.str();
}

// Hears what the parser recognises. Its operations are found by name; those that it doesn't have are passed over.
class Reader : public XMLParseHandler<> {
 public:
  void StartTag(const std::string& name) {
    XMLParseHandler<>::StartTag(name);  // keeps the names of the open elements, tagNames
    m_sText.clear();
  }
  void Text(const std::string& text) { m_sText += text; }
  void ContentReference(const std::string& reference) { m_sText += reference == "&amp;" ? "&" : reference; }
  void EndTag(const std::string& name) {
    if (tagNames.size() == 2) std::cout << name << ": " << m_sText << '\n';
    XMLParseHandler<>::EndTag(name);
  }

 private:
  std::string m_sText;
};

int main() {
  InitializeOxaCore();
  const std::string document = Write();
  std::cout << document << '\n';
  XMLParser<Reader> parser;
  if (!parser.Parse(document)) std::cout << "that was no document\n";
  if (!parser.Parse("<Probe><Name>cut o")) std::cout << "and this is none\n";
  ShutdownOxaCore();
}
