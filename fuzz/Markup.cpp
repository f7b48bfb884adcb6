// The layout of markup: what has been laid out is a document, and comes out of a second layout as it is; what can't
// be parsed leaves the layout whole for those who write on.
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLParser.h>

#include <sstream>
#include <string>

#include "FuzzTarget.h"

namespace {

using namespace Oxa::Core;
using namespace OxaFuzz;

std::string LaidOut(const std::string& markup) {
  std::ostringstream out;
  XMLFormatter::CreatePrettyPrint()->FormatMarkup(out, markup);
  return out.str();
}

std::string StreamLaidOut(const std::string& markup) {
  std::istringstream in(markup);
  std::ostringstream out;
  XMLFormatter::CreatePrettyPrint()->FormatMarkupStream(out, in);
  return out.str();
}

// Tells whether references vanish from the content: that parts a text where nothing parts it afterwards.
class References : public XMLParseHandler<> {
 public:
  void ContentReference(const String& text) {
    for (const char* const known : {"&lt;", "&gt;", "&amp;", "&apos;", "&quot;"})
      if (text == known) return;
    m_bVanish = true;
  }
  bool Vanish() const { return m_bVanish; }

 private:
  bool m_bVanish = false;
};

void CheckDocument(const std::string& laidOut, bool referencesVanish) {
  XMLParser<References> parser;
  Check(parser.Parse(laidOut), "what was a document is one in the layout", laidOut);
  Check(!parser.Vanish(), "no reference but the predefined ones is left in the content", laidOut);
  const std::string again = LaidOut(laidOut);
  if (!referencesVanish) CheckSame(laidOut, again, "what is laid out comes out as it is");
  CheckSame(again, LaidOut(again), "what is laid out twice comes out as it is");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  const std::string markup(reinterpret_cast<const char*>(data), size);
  const std::string laidOut = LaidOut(markup);
  CheckSame(laidOut, StreamLaidOut(markup), "a stream is laid out as a text");
  XMLParser<References> parser;
  if (parser.Parse(markup)) CheckDocument(laidOut, parser.Vanish());
  return 0;
}
