// The layout of the pretty printer step by step, without any thought of speed: what it is compared with.
#ifndef OXACORE_TESTS_XML_PRETTYMODEL_H
#define OXACORE_TESTS_XML_PRETTYMODEL_H

#include <cctype>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace XMLTest {

class PrettyModel {
 public:
  using Pairs = std::vector<std::pair<std::string, std::string>>;

  std::string text;

  void StartDoc(const std::string& version, const std::string& encoding, bool standalone) {
    m_startTags.clear();
    m_indents = {""};
    m_line = 1;
    text += "<?xml version=\"" + version + "\" encoding=\"" + encoding + "\"";
    text += standalone ? " standalone=\"yes\"?>" : "?>";
    EndAndClear();
  }

  void StartTag(const std::string& name, const Pairs& attributes, bool empty) {
    Break();
    const std::size_t line = m_line;
    text += Indent() + "<" + name;
    m_column += Indent().size() + name.size() + 1;
    if (!attributes.empty()) Attributes(attributes);
    text += empty ? "/>" : ">";
    if (empty) return EndAndClear();
    ++m_column;
    m_startTags.emplace_back(line, name.size());
    m_indents.push_back(Indent() + "  ");
  }

  void EndTag(const std::string& name) {
    if (m_indents.size() >= 2) m_indents.pop_back();
    if (m_startTags.empty()) {
      if (m_column == 0) text += Indent();
    } else if (m_startTags.back().first != m_line || name.size() + 3 + m_column >= 80) {
      Break();
      text += Indent();
    }
    text += "</" + name + ">";
    EndAndClear();
  }

  void Text(const std::string& plain) {
    const std::string escaped = Escaped(plain);
    if (escaped.find('\n') == std::string::npos) return Place(escaped);
    Break();
    for (const std::string& piece : Split(escaped)) {
      text += Indent() + Trimmed(piece);
      End();
    }
    m_column = 0;
  }

  void Place(const std::string& piece) {
    if (m_column == 0) {
      text += Indent() + piece;
      m_column = Indent().size() + piece.size();
    } else if (m_startTags.empty() || piece.size() + m_column + m_startTags.back().second + 3 < 80) {
      text += piece;
      m_column += piece.size();
    } else {
      End();
      text += Indent() + piece;
      m_column = Indent().size() + piece.size();
    }
    if (m_column >= 80) EndAndClear();
  }

  void TextStream(const std::string& plain) {
    Break();
    std::istringstream stream(plain);
    for (std::string line; std::getline(stream, line);) {
      End();
      text += Indent() + Escaped(Trimmed(line));
    }
    EndAndClear();
  }

  void Block(const std::string& prefix, const std::string& content, const std::string& suffix,
             bool preserve) {
    Align();
    const std::size_t line = m_line;
    text += prefix;
    m_column += prefix.size();
    const bool inLines = !content.empty() && !preserve && content.find('\n') != std::string::npos;
    if (inLines || (!content.empty() && m_column + content.size() + suffix.size() > 80)) {
      for (const std::string& piece : inLines ? Split(content) : std::vector<std::string>{content}) {
        End();
        text += Indent() + "  " + (inLines ? Trimmed(piece) : piece);
      }
      EndAndClear();
    } else {
      text += content;
      m_column += content.size();
    }
    if (line != m_line && m_column == 0) text += Indent();
    text += suffix;
    EndAndClear();
  }

  void CData(const std::string& content, bool preserve) {
    if (content.size() + Indent().size() <= 68) {
      Align();
      text += "<![CDATA[" + content + "]]>";
      EndAndClear();
    } else if (!preserve) {
      Block("<![CDATA[", content, "]]>", preserve);
    } else {
      text += "\n\n<![CDATA[" + content + "]]>\n\n";
      m_line += 3 + Split(content).size();
      m_column = 0;
    }
  }

  void CDataStream(const std::string& content, bool preserve) {
    const std::size_t before = text.size();
    text += "\n\n<![CDATA[" + (preserve ? content : "\n" + Packed(content)) + "]]>\n\n";
    m_line += Split(text.substr(before)).size() - 1;
    m_column = 0;
  }

  static std::string Escaped(const std::string& plain) {
    std::string result;
    for (const char c : plain)
      result += c == '<'    ? "&lt;"
                : c == '>'  ? "&gt;"
                : c == '&'  ? "&amp;"
                : c == '\'' ? "&apos;"
                : c == '"'  ? "&quot;"
                            : std::string(1, c);
    return result;
  }

  static std::string Trimmed(std::string line) {
    while (!line.empty() && IsSpace(line.back())) line.pop_back();
    while (!line.empty() && IsSpace(line.front())) line.erase(0, 1);
    return line;
  }

 private:
  static bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

  // At the line feeds: always one piece more than there are of them.
  static std::vector<std::string> Split(const std::string& whole) {
    std::vector<std::string> pieces(1);
    for (const char c : whole)
      if (c == '\n')
        pieces.emplace_back();
      else
        pieces.back() += c;
    return pieces;
  }

  static std::string Packed(const std::string& content) {
    std::string data, lines;
    for (const char c : content)
      if (!IsSpace(c)) data += c;
    for (std::size_t at = 0; at < data.size(); at += 76) lines += "  " + data.substr(at, 76) + "\n";
    return lines;
  }

  const std::string& Indent() const { return m_indents.back(); }
  void End() {
    text += "\n";
    ++m_line;
  }
  void EndAndClear() {
    End();
    m_column = 0;
  }
  void Break() {
    if (m_column != 0) EndAndClear();
  }
  void Align() {
    if (m_column == Indent().size()) return;
    End();
    text += Indent();
    m_column = Indent().size();
  }

  void Attributes(const Pairs& attributes) {
    std::string all = " ";
    for (const auto& attribute : attributes) all += attribute.first + "=\"" + attribute.second + "\" ";
    if (all.size() + m_column <= 80) {
      text += all;
      m_column += all.size();
      return;
    }
    const std::string margin(m_column + 1, ' ');
    for (std::size_t i = 0; i < attributes.size(); ++i) {
      const std::string one = attributes[i].first + "=\"" + attributes[i].second + "\" ";
      if (i > 0) End();
      text += (i > 0 ? margin : " ") + one;
      m_column = margin.size() + one.size();
    }
  }

  std::size_t m_line = 1;
  std::size_t m_column = 0;
  std::vector<std::pair<std::size_t, std::size_t>> m_startTags;  // line, and size of the name
  std::vector<std::string> m_indents{""};
};

}  // namespace XMLTest

#endif
