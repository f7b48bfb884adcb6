// Random sequences of parts through the pretty printer, against a plain model of it.
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "XML/PrettyModel.h"
#include "XML/XMLTestSupport.h"

using namespace XMLTest;

namespace {

class RandomLayout {
 public:
  explicit RandomLayout(unsigned seed) : m_random(seed) {}

  void Step() {
    const std::string name = Name(), text = Text();
    const bool flag = Number(2) == 1;
    std::istringstream stream(text);
    XMLFormatter& f = *m_spFormatter;
    switch (Number(18)) {
      case 0:
        if (Number(4) == 0) StartDoc(name, flag);
        return;
      case 1:
        f.FormatTextStream(m_out, stream);
        return m_model.TextStream(text);
      case 2:
        f.FormatProcessingInstruction(m_out, name, text, flag);
        return m_model.Block("<?" + name + " ", text, "?>", flag);
      case 3:
      case 4:
        return Markup(name, text, flag);
      case 5:
        f.FormatComment(m_out, text, flag);
        return m_model.Block("<!-- ", text, " -->", flag);
      case 6:
        f.FormatCDATAStream(m_out, stream, flag);
        return m_model.CDataStream(text, flag);
      case 7:
        f.FormatCDATA(m_out, text, flag);
        return m_model.CData(text, flag);
      case 8:
        f.FormatEntityReference(m_out, "&" + name + ";");
        return m_model.Place("&" + name + ";");
      case 9:
        f.FormatStyleSheet(m_out, text, name);
        return m_model.Block("<?xml-stylesheet ", "type=\"" + name + "\"\nhref=\"" + text + "\"", "?>",
                             false);
      case 10:
        return Element(name, text);
      case 11:
      case 12:
        f.FormatText(m_out, text);
        return m_model.Text(text);
      case 13:
      case 14:
        f.FormatEndTag(m_out, name);
        return m_model.EndTag(name);
      default:
        return StartTag(name, Number(3) == 0);
    }
  }

  void Compare() const { ASSERT_EQ(m_model.text, m_out.str()); }

 private:
  void StartDoc(const std::string& version, bool standalone) {
    m_spFormatter->FormatStartDoc(m_out, version, "E", standalone);
    m_model.StartDoc(version, "E", standalone);
  }

  void StartTag(const std::string& name, bool empty) {
    Map map;
    PrettyModel::Pairs pairs;
    for (std::size_t count = Number(4); count > 0; --count) {
      const std::string key = Name() + std::to_string(count), value = Name();
      map[key] = value;
      pairs.emplace_back(key, value);
    }
    m_spFormatter->FormatStartTag(m_out, name, map, empty);
    m_model.StartTag(name, pairs, empty);
  }

  // As it is written part by part, but for the white space around the text.
  void Markup(const std::string& name, std::string content, bool asStream) {
    for (char& c : content)
      if (c == '\v' || c == '\f') c = ' ';  // no characters of XML
    const std::string markup =
        "<" + name + "><" + name + "/>" + PrettyModel::Escaped(content) + "</" + name + ">";
    std::istringstream stream(markup);
    if (asStream)
      m_spFormatter->FormatMarkupStream(m_out, stream);
    else
      m_spFormatter->FormatMarkup(m_out, markup);
    m_model.StartTag(name, {}, false);
    m_model.StartTag(name, {}, true);
    const std::string trimmed = PrettyModel::Trimmed(content);
    if (!trimmed.empty()) m_model.Text(trimmed);
    m_model.EndTag(name);
  }

  void Element(const std::string& name, const std::string& content) {
    m_spFormatter->FormatTag(m_out, name, Map(), content);
    m_model.StartTag(name, {}, content.empty());
    if (content.empty()) return;
    m_model.Text(content);
    m_model.EndTag(name);
  }

  std::size_t Number(std::size_t limit) { return m_random() % limit; }

  std::string Name() { return std::string(1 + Number(Number(4) == 0 ? 70 : 8), "abc"[Number(3)]); }

  // Mostly around the widths where the layout decides; some with line feeds and other white space.
  std::string Text() {
    std::string text(Number(3) == 0 ? 60 + Number(100) : Number(20), 'x');
    const bool inLines = Number(3) == 0;
    for (char& c : text)
      if (Number(8) == 0) c = inLines ? "\n \t\v\f\r<"[Number(7)] : "<&>'\" \tyz"[Number(9)];
    return text;
  }

  std::mt19937 m_random;
  std::ostringstream m_out;
  boost::shared_ptr<XMLFormatter> m_spFormatter = XMLFormatter::CreatePrettyPrint();
  PrettyModel m_model;
};

#ifdef OXACORE_SOAK
constexpr unsigned uDOCUMENTS = 100000;
#else
constexpr unsigned uDOCUMENTS = 1500;
#endif

}  // namespace

TEST(XMLRandom, PrettyPrinterDoesWhatTheModelDoes) {
  for (unsigned seed = 0; seed < uDOCUMENTS; ++seed) {
    SCOPED_TRACE(seed);
    RandomLayout layout(seed);
    for (unsigned step = 0; step < 60; ++step) layout.Step();
    layout.Compare();
    if (testing::Test::HasFatalFailure()) return;
  }
}
