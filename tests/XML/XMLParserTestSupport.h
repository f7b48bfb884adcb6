// A handler that writes down what it is told, and streams that give their characters in pieces.
#ifndef OXACORE_TESTS_XML_XMLPARSERTESTSUPPORT_H
#define OXACORE_TESTS_XML_XMLPARSERTESTSUPPORT_H

#include <Infrastructure/OxaCore/XMLParser.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string>

namespace XMLParserTests {

using Oxa::Core::XMLParseHandler;
using Oxa::Core::XMLParser;

/// Each event is one line: a word, and the text behind a blank.
class Recorder : public XMLParseHandler<> {
 public:
  using Base = XMLParseHandler<>;

  void StartDoc() { Note("StartDoc"); }
  void SetVersion(const String& text) {
    Base::SetVersion(text);
    Note("SetVersion " + text);
  }
  void SetEncoding(const String& text) {
    Base::SetEncoding(text);
    Note("SetEncoding " + text);
  }
  void SetStandalone(bool isStandalone) {
    Base::SetStandalone(isStandalone);
    Note(isStandalone ? "SetStandalone yes" : "SetStandalone no");
  }
  void StartTag(const String& name) {
    Base::StartTag(name);
    Note("StartTag " + name);
  }
  void AttributeName(const String& name) { Note("AttributeName " + name); }
  void AttributeValueText(const String& text) { Note("AttributeValueText " + text); }
  void AttributeValueRef(const String& text) { Note("AttributeValueRef " + text); }
  void AttributeValue() { Note("AttributeValue"); }
  void Attribute() { Note("Attribute"); }
  void StartTagContent() { Note("StartTagContent"); }
  void EndEmptyTag() {
    Base::EndEmptyTag();
    Note("EndEmptyTag");
  }
  void EndTag(const String& name) {
    Base::EndTag(name);
    Note("EndTag " + name);
  }
  void Text(const String& text) { Note("Text " + text); }
  void ContentReference(const String& text) { Note("ContentReference " + text); }
  void Comment(const String& text) { Note("Comment " + text); }
  void CData(const String& text) override { Note("CData " + text); }
  void EndDoc() { Note("EndDoc"); }

  std::string m_sEvents;

 private:
  void Note(const std::string& event) { m_sEvents += event + '\n'; }
};

/// Gives `text` in pieces of `size` characters.
class Pieces : public std::streambuf {
 public:
  Pieces(std::string text, std::size_t size) : m_sText(std::move(text)), m_uSize(size) {}

 protected:
  int_type underflow() override {
    if (m_uAt == m_sText.size()) return traits_type::eof();
    char* const begin = &m_sText[m_uAt];
    m_uAt += std::min(m_uSize, m_sText.size() - m_uAt);
    setg(begin, begin, &m_sText[0] + m_uAt);
    return traits_type::to_int_type(*begin);
  }

 private:
  std::string m_sText;
  std::size_t m_uSize;
  std::size_t m_uAt = 0;
};

struct Outcome {
  bool full;
  std::string events;
};

inline Outcome ParseText(const std::string& text) {
  XMLParser<Recorder> parser;
  const bool full = parser.Parse(text);
  return {full, parser.m_sEvents};
}

inline Outcome ParseStream(std::istream& stream) {
  XMLParser<Recorder> parser;
  const bool full = parser.Parse(stream);
  return {full, parser.m_sEvents};
}

inline Outcome ParsePieces(const std::string& text, std::size_t size) {
  Pieces pieces(text, size);
  std::istream stream(&pieces);
  return ParseStream(stream);
}

/// Parses a text, and the same as a stream, whole, in single characters and in pieces: the verdicts and the
/// events have to be the same.
inline Outcome ParseAllWays(const std::string& text) {
  Outcome outcome = ParseText(text);
  std::istringstream stream(text);
  const Outcome streamed = ParseStream(stream);
  EXPECT_EQ(outcome.full, streamed.full) << text;
  EXPECT_EQ(outcome.events, streamed.events) << text;
  for (const std::size_t size : {1U, 7U}) {
    const Outcome pieced = ParsePieces(text, size);
    EXPECT_EQ(outcome.full, pieced.full) << text;
    EXPECT_EQ(outcome.events, pieced.events) << text;
  }
  return outcome;
}

}  // namespace XMLParserTests

#endif
