// Random sequences of manipulators through the compact writer, against a plain model of it.
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "XML/XMLTestSupport.h"

using namespace XMLTest;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

// What a compact writer is to do, in the simplest words.
class Model {
 public:
  std::string text;

  void StartDoc(const std::string& version, bool standalone, bool endTags) {
    if (endTags) EndAll();
    text +=
        "<?xml version=\"" + version + "\" encoding=\"E\"" + (standalone ? " standalone=\"yes\"" : "") + "?>";
  }
  void StyleSheet(const std::string& href, const std::string& type) {
    text += "<?xml-stylesheet type=\"" + type + "\"\nhref=\"" + href + "\"?>";
  }
  void Start(const std::string& name, const Pairs& attributes) {
    Flush();
    m_open.push_back(Tag{name, attributes, false});
  }
  void Attribute(const std::string& name, const std::string& value) {
    if (!m_open.empty()) Set(m_open.back().attributes, name, value);
  }
  void End() {
    if (m_open.empty()) return;
    Content("</" + m_open.back().name + ">");
    m_open.pop_back();
  }
  void EndAll() {
    while (!m_open.empty()) End();
  }
  void Element(const std::string& name, const Pairs& attributes, const std::string& content) {
    const std::string start = "<" + name + Attributes(attributes);
    Content(content.empty() ? start + "/>" : start + ">" + Escaped(content) + "</" + name + ">");
  }
  void Content(const std::string& written) {
    Flush();
    text += written;
  }

  static void Set(Pairs& attributes, const std::string& name, const std::string& value) {
    for (auto& attribute : attributes)
      if (attribute.first == name) return void(attribute.second = value);
    attributes.emplace_back(name, value);
  }
  static std::string Escaped(const std::string& plain) {
    static const char* const from = "<>&'\"";
    static const char* const to[] = {"&lt;", "&gt;", "&amp;", "&apos;", "&quot;"};
    std::string result;
    for (const char c : plain) {
      const char* const found = c == 0 ? nullptr : std::char_traits<char>::find(from, 5, c);
      result += found != nullptr ? to[found - from] : std::string(1, c);
    }
    return result;
  }

 private:
  struct Tag {
    std::string name;
    Pairs attributes;
    bool written;
  };

  static std::string Attributes(const Pairs& attributes) {
    std::string result;
    for (const auto& attribute : attributes)
      result += " " + attribute.first + "=\"" + attribute.second + "\"";
    return result;
  }
  void Flush() {
    if (m_open.empty() || m_open.back().written) return;
    m_open.back().written = true;
    text += "<" + m_open.back().name + Attributes(m_open.back().attributes) + ">";
  }

  std::vector<Tag> m_open;
};

// One random document, written to the writer and to the model.
class RandomDocument {
 public:
  explicit RandomDocument(unsigned seed) : m_random(seed) {}

  void Step() {
    const std::string name = Name(), text = Text();
    const bool flag = Number(2) == 1;
    std::istringstream stream(text);
    XMLWriter& w = m_doc.writer;
    switch (Number(16)) {
      case 0:
        return Both(w.StartDocA(name, "E", flag, !flag), [&] { m_model.StartDoc(name, flag, !flag); });
      case 1:
        return Both(w.StyleSheet(text, name), [&] { m_model.StyleSheet(text, name); });
      case 2:
        return Both(w.EndTag(), [&] { m_model.End(); });
      case 3:
        return Both(w.EndAllTags(), [&] { m_model.EndAll(); });
      case 4:
        return Both(w.Tag(name, text), [&] { m_model.Element(name, {}, text); });
      case 5:
        return WithAttributes(name, text);
      case 6:
        return Both(w.Attribute(name, text), [&] { m_model.Attribute(name, text); });
      case 7:
        return Both(w.Text(text), [&] { m_model.Content(Model::Escaped(text)); });
      case 8:
        return Both(w.Text(stream), [&] { m_model.Content(Model::Escaped(text)); });
      case 9:
        return Both(w.EntityReference(name), [&] { m_model.Content("&" + name + ";"); });
      case 10:
        return Both(w.Markup(text), [&] { m_model.Content(text); });
      case 11:
        return Both(w.Comment(text, flag), [&] { m_model.Content("<!--" + text + "-->"); });
      case 12:
        return Both(w.CDATASection(text, flag), [&] { m_model.Content("<![CDATA[" + text + "]]>"); });
      case 13:
        return Both(w.CDATASection(stream, flag), [&] { m_model.Content("<![CDATA[" + text + "]]>"); });
      default:
        return Both(w.StartTag(name), [&] { m_model.Start(name, {}); });
    }
  }

  void Finish() {
    Both(m_doc.writer.EndDoc(), [&] { m_model.EndAll(); });
    ASSERT_EQ(m_model.text, m_doc.Text());
  }

 private:
  template <class Expect>
  void Both(const XMLWriter::Manipulator& manipulator, const Expect& expect) {
    m_doc.out << manipulator;
    expect();
  }

  void WithAttributes(const std::string& name, const std::string& text) {
    Map map;
    Pairs pairs;
    for (std::size_t count = Number(4); count > 0; --count) {
      const std::string key = Name(), value = Text();
      map[key] = value;
      Model::Set(pairs, key, value);
    }
    if (Number(2) == 1)
      Both(m_doc.writer.StartTag(name, map), [&] { m_model.Start(name, pairs); });
    else
      Both(m_doc.writer.Tag(name, map, text), [&] { m_model.Element(name, pairs, text); });
  }

  std::size_t Number(std::size_t limit) { return m_random() % limit; }
  std::string Name() { return std::string(1 + Number(3), "abc"[Number(3)]); }
  std::string Text() {
    std::string text(Number(10) == 0 ? Number(5000) : Number(30), ' ');
    for (char& c : text) c = static_cast<char>(Number(3) == 0 ? "<>&'\""[Number(5)] : Number(256));
    return text;
  }

  std::mt19937 m_random;
  Compact m_doc;
  Model m_model;
};

#ifdef OXACORE_SOAK
constexpr unsigned uDOCUMENTS = 100000;
#else
constexpr unsigned uDOCUMENTS = 1000;
#endif

}  // namespace

TEST(XMLRandom, CompactWriterDoesWhatTheModelDoes) {
  for (unsigned seed = 0; seed < uDOCUMENTS; ++seed) {
    SCOPED_TRACE(seed);
    RandomDocument document(seed);
    for (unsigned step = 0; step < 60; ++step) document.Step();
    document.Finish();
    if (testing::Test::HasFatalFailure()) return;
  }
}
