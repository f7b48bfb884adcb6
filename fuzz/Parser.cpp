// The parser: a text and a stream of the same bytes have the same verdict and the same events, whatever pieces the
// stream comes in; and a document's events make a document.
#include <Infrastructure/OxaCore/XMLParser.h>

#include <algorithm>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string>

#include "FuzzTarget.h"

namespace {

using namespace Oxa::Core;
using namespace OxaFuzz;

// Writes the events down, one to a line. Pieces of one text stand on one line, since a stream may part it elsewhere.
class Recorder : public XMLParseHandler<> {
 public:
  void StartDoc() { Note("StartDoc"); }
  void SetVersion(const String& text) { Note("Version ", text); }
  void SetEncoding(const String& text) { Note("Encoding ", text); }
  void SetStandalone(bool yes) { Note("Standalone ", yes ? "yes" : "no"); }
  void StartTag(const String& name) {
    XMLParseHandler<>::StartTag(name);
    Note("StartTag ", name);
  }
  void AttributeName(const String& name) { Note("AttributeName ", name); }
  void AttributeValueText(const String& text) { Join("AttributeValueText ", text); }
  void AttributeValueRef(const String& text) { Note("AttributeValueRef ", text); }
  void AttributeValue() { Note("AttributeValue"); }
  void Attribute() { Note("Attribute"); }
  void StartTagContent() { Note("StartTagContent"); }
  void EndEmptyTag() {
    Check(!tagNames.empty(), "an empty-element tag ends a tag", m_sEvents);
    XMLParseHandler<>::EndEmptyTag();
    Note("EndEmptyTag");
  }
  void EndTag(const String& name) {
    Check(!tagNames.empty(), "an end tag ends a tag", m_sEvents);
    XMLParseHandler<>::EndTag(name);
    Note("EndTag ", name);
  }
  void Text(const String& text) { Join("Text ", text); }
  void ContentReference(const String& text) { Note("ContentReference ", text); }
  void Comment(const String& text) { Note("Comment ", text); }
  void CData(const String& text) override { Note("CData ", text); }
  void EndDoc() {
    Check(tagNames.empty(), "at the end of a document all tags are ended", m_sEvents);
    Note("EndDoc");
  }

  const String& GetEvents() const { return m_sEvents; }

 private:
  void Note(const char* event, const String& text = String()) {
    m_sEvents.append("\n").append(event).append(text);
    m_pLast = event;
  }

  void Join(const char* event, const String& text) {
    Check(!text.empty(), "no text is empty", m_sEvents);
    if (m_pLast == event)
      m_sEvents += text;
    else
      Note(event, text);
    m_pLast = event;
  }

  String m_sEvents;
  const char* m_pLast = nullptr;
};

// Gives a text in pieces of one size.
class PieceBuffer : public std::streambuf {
 public:
  PieceBuffer(std::string text, std::size_t piece) : m_sText(std::move(text)), m_uPiece(piece) {}

 protected:
  int_type underflow() override {
    if (m_uAt == m_sText.size()) return traits_type::eof();
    const std::size_t size = std::min(m_uPiece, m_sText.size() - m_uAt);
    char* const begin = &m_sText[m_uAt];
    setg(begin, begin, begin + size);
    m_uAt += size;
    return traits_type::to_int_type(*begin);
  }

 private:
  std::string m_sText;
  std::size_t m_uPiece;
  std::size_t m_uAt = 0;
};

// The verdict and the events.
template <class Source>
std::string Parsed(Source&& source) {
  XMLParser<Recorder> parser;
  const bool matched = parser.Parse(source);
  return (matched ? "matches" : "doesn't match") + parser.GetEvents();
}

void CheckSameByStream(const std::string& text, std::size_t piece) {
  PieceBuffer buffer(text, piece);
  CheckSame(Parsed(text), Parsed(std::istream(&buffer)), "text and stream have the same verdict and events");
}

// With a comment in front, so that what the parser keeps of a stream is full in the middle of `text`.
std::string FarBehind(const std::string& text) {
  constexpr std::size_t uKEPT = 16384;
  constexpr std::size_t uMARKS = 7;
  return "<!--" + std::string(uKEPT - uMARKS - std::min(text.size() / 2, uKEPT / 2), ' ') + "-->" + text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const std::size_t piece : {std::size_t(1), 2 + size % 61, size + 1}) CheckSameByStream(text, piece);
  CheckSameByStream(FarBehind(text), 1000 * (size % 41 + 1));
  return 0;
}
