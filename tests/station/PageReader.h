// Reads a page back by the library's own parser, for tests.
#ifndef STATION_TESTS_PAGEREADER_H
#define STATION_TESTS_PAGEREADER_H

#include <Infrastructure/OxaCore/XMLParser.h>

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace StationTests {

struct Element {
  std::string m_sName;
  std::map<std::string, std::string> m_attributes;  // as they are written, with references
  std::string m_sText;                              // of this element alone, as it is written
  bool m_bEmptyTag = false;

  std::string Get(const std::string& name) const {
    const auto found = m_attributes.find(name);
    return found == m_attributes.end() ? std::string() : found->second;
  }
};

class ElementHandler : public Oxa::Core::XMLParseHandler<> {
 public:
  void StartTag(const std::string& name) {
    XMLParseHandler::StartTag(name);
    m_elements.push_back({name, {}, {}, false});
    m_open.push_back(&m_elements.back());
  }
  void AttributeName(const std::string& name) { m_pValue = &m_open.back()->m_attributes[name]; }
  void AttributeValueText(const std::string& text) { *m_pValue += text; }
  void AttributeValueRef(const std::string& text) { *m_pValue += text; }
  void EndEmptyTag() {
    XMLParseHandler::EndEmptyTag();
    m_open.back()->m_bEmptyTag = true;
    m_open.pop_back();
  }
  void EndTag(const std::string& name) {
    XMLParseHandler::EndTag(name);
    if (m_open.back()->m_sName != name) m_bMatched = false;
    m_open.pop_back();
  }
  void Text(const std::string& text) { AddText(text); }
  void ContentReference(const std::string& text) { AddText(text); }

  std::deque<Element> m_elements;  // in the order of their start tags
  bool m_bMatched = true;          // whether each end tag has the name of its start tag

 private:
  void AddText(const std::string& text) {
    if (!m_open.empty()) m_open.back()->m_sText += text;
  }

  std::vector<Element*> m_open;
  std::string* m_pValue = nullptr;
};

/// The elements of a page; what `m_bWellFormed` is false for isn't to be trusted.
struct ReadPage {
  explicit ReadPage(const std::string& page) {
    Oxa::Core::XMLParser<ElementHandler> parser;
    m_bWellFormed = parser.Parse(page) && parser.m_bMatched;
    m_elements = parser.m_elements;
  }

  /// All of that name, or, with `kind`, those that have that class.
  std::vector<Element> All(const std::string& name, const std::string& kind = std::string()) const {
    std::vector<Element> all;
    for (const Element& element : m_elements)
      if (element.m_sName == name && (kind.empty() || element.Get("class") == kind)) all.push_back(element);
    return all;
  }

  /// The texts of these, with a '|' behind each.
  std::string Texts(const std::string& name, const std::string& kind = std::string()) const {
    std::string texts;
    for (const Element& element : All(name, kind)) texts += element.m_sText + '|';
    return texts;
  }

  bool m_bWellFormed;
  std::deque<Element> m_elements;
};

}  // namespace StationTests

#endif
