// XML parsed with events: a log with attributes, nested elements, indentation and texts of which some have
// references. Every parser counts elements, attributes and characters of text, and has to come to the same.
#include <Infrastructure/OxaCore/XMLParser.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "BenchSupport.h"

#ifdef OXA_PEER_EXPAT
#include <expat.h>
#endif
#ifdef OXA_PEER_GLIB
#include <glib.h>
#endif
#ifdef OXA_PEER_LIBXML2
#include <libxml/parser.h>
#endif
#ifdef OXA_PEER_QT
#include <QXmlStreamReader>
#endif

namespace {

constexpr int iENTRIES = 400;

std::string MakeDocument() {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Log>\n";
  for (int entry = 0; entry < iENTRIES; ++entry) {
    text +=
        "  <LogEntry Severity=\"Error\" Host=\"station-7\">\n"
        "    <TimeStamp>21-Nov-2026 11:04:39.250</TimeStamp>\n"
        "    <LogName>Oxa.Core.BinaryPipe.Read</LogName>\n"
        "    <Message>Read of 1024 bytes failed: 12 &lt; 1024 &amp;&amp; the other end is gone</Message>\n"
        "    <UnwindStack>\n      <Context Kind=\"frame\">\n"
        "        <File>/home/station/source/instrument/src/Transport/BinaryPipe.cpp</File>\n"
        "        <Line>217</Line>\n        <FunctionName>Acme::Transport::Pipe::Read</FunctionName>\n"
        "        <FunctionSignature>std::size_t Acme::Transport::Pipe::Read(std::vector&lt;unsigned "
        "char&gt;&amp;, "
        "const Elapse&amp;)</FunctionSignature>\n"
        "        <ThreadID Main=\"no\" />\n      </Context>\n    </UnwindStack>\n  </LogEntry>\n";
  }
  return text + "</Log>\n";
}

const std::string& Document() {
  static const std::string s_text = MakeDocument();
  return s_text;
}

struct Counts {
  std::size_t elements = 0;
  std::size_t ends = 0;
  std::size_t attributes = 0;
  std::size_t text = 0;  // a reference counts as one character
};

// A parser that was faster since it did something else is no peer.
void Finish(benchmark::State& state, const Counts& counts, bool good) {
  const std::size_t elements = 1 + iENTRIES * 11;
  const std::size_t attributes = iENTRIES * 4;
  const std::size_t rounds = static_cast<std::size_t>(state.iterations());
  const bool right = good && counts.elements == elements * rounds && counts.ends == elements * rounds &&
                     counts.attributes == attributes * rounds && counts.text > rounds * Document().size() / 2;
  if (!right) state.SkipWithError("not what stands in the document");
  state.SetBytesProcessed(static_cast<std::int64_t>(Document().size() * rounds));
}

class Counting : public Oxa::Core::XMLParseHandler<> {
 public:
  void StartTag(const String& name) {
    Oxa::Core::XMLParseHandler<>::StartTag(name);
    ++m_counts.elements;
  }
  void Attribute() { ++m_counts.attributes; }
  void EndEmptyTag() {
    Oxa::Core::XMLParseHandler<>::EndEmptyTag();
    ++m_counts.ends;
  }
  void EndTag(const String& name) {
    Oxa::Core::XMLParseHandler<>::EndTag(name);
    ++m_counts.ends;
  }
  void Text(const String& text) { m_counts.text += text.size(); }
  void ContentReference(const String&) { ++m_counts.text; }

  Counts m_counts;
};

void OursFromText(benchmark::State& state) {
  Oxa::Core::XMLParser<Counting> parser;
  bool good = true;
  for (auto _ : state) good = parser.Parse(Document()) && good;
  Finish(state, parser.m_counts, good);
}

void OursFromStream(benchmark::State& state) {
  Oxa::Core::XMLParser<Counting> parser;
  std::istringstream stream(Document());
  bool good = true;
  for (auto _ : state) {
    stream.clear();
    stream.seekg(0);
    good = parser.Parse(stream) && good;
  }
  Finish(state, parser.m_counts, good);
}

void OursFromTextAgain(benchmark::State& state) { OursFromText(state); }

OXA_BENCH("XML parsed with events", "Ours", OursFromText);
OXA_BENCH("XML parsed with events, from a stream", "Ours", OursFromStream);
OXA_BENCH("XML parsed with events, from a stream", "ours from a text", OursFromTextAgain);

#ifdef OXA_PEER_EXPAT

Counts& CountsOf(void* data) { return *static_cast<Counts*>(data); }

void ExpatStart(void* data, const XML_Char*, const XML_Char** attributes) {
  ++CountsOf(data).elements;
  for (; *attributes != nullptr; attributes += 2) ++CountsOf(data).attributes;
}
void ExpatEnd(void* data, const XML_Char*) { ++CountsOf(data).ends; }
void ExpatText(void* data, const XML_Char*, int size) {
  CountsOf(data).text += static_cast<std::size_t>(size);
}

void Expat(benchmark::State& state) {
  Counts counts;
  bool good = true;
  XML_Parser parser = XML_ParserCreate(nullptr);
  for (auto _ : state) {
    XML_ParserReset(parser, nullptr);
    XML_SetUserData(parser, &counts);
    XML_SetElementHandler(parser, &ExpatStart, &ExpatEnd);
    XML_SetCharacterDataHandler(parser, &ExpatText);
    const std::string& text = Document();
    good = XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK && good;
  }
  XML_ParserFree(parser);
  Finish(state, counts, good);
}
OXA_BENCH("XML parsed with events", "expat", Expat);

#endif

#ifdef OXA_PEER_LIBXML2

Counts& CountsIn(void* data) { return *static_cast<Counts*>(data); }

void LibXml2Start(void* data, const xmlChar*, const xmlChar** attributes) {
  ++CountsIn(data).elements;
  for (; attributes != nullptr && *attributes != nullptr; attributes += 2) ++CountsIn(data).attributes;
}
void LibXml2End(void* data, const xmlChar*) { ++CountsIn(data).ends; }
void LibXml2Text(void* data, const xmlChar*, int size) {
  CountsIn(data).text += static_cast<std::size_t>(size);
}

void LibXml2(benchmark::State& state) {
  Counts counts;
  bool good = true;
  xmlSAXHandler handler;
  std::memset(&handler, 0, sizeof(handler));
  handler.startElement = &LibXml2Start;
  handler.endElement = &LibXml2End;
  handler.characters = &LibXml2Text;
  handler.ignorableWhitespace = &LibXml2Text;
  for (auto _ : state) {
    const std::string& text = Document();
    good = xmlSAXUserParseMemory(&handler, &counts, text.data(), static_cast<int>(text.size())) == 0 && good;
  }
  Finish(state, counts, good);
}
OXA_BENCH("XML parsed with events", "libxml2", LibXml2);

#endif

#ifdef OXA_PEER_GLIB

void GMarkupStart(GMarkupParseContext*, const gchar*, const gchar** names, const gchar**, gpointer data,
                  GError**) {
  Counts& counts = *static_cast<Counts*>(data);
  ++counts.elements;
  for (; *names != nullptr; ++names) ++counts.attributes;
}
void GMarkupEnd(GMarkupParseContext*, const gchar*, gpointer data, GError**) {
  ++static_cast<Counts*>(data)->ends;
}
void GMarkupText(GMarkupParseContext*, const gchar*, gsize size, gpointer data, GError**) {
  static_cast<Counts*>(data)->text += size;
}

void GMarkup(benchmark::State& state) {
  const GMarkupParser handler = {&GMarkupStart, &GMarkupEnd, &GMarkupText, nullptr, nullptr};
  Counts counts;
  bool good = true;
  for (auto _ : state) {
    GMarkupParseContext* context =
        g_markup_parse_context_new(&handler, static_cast<GMarkupParseFlags>(0), &counts, nullptr);
    const std::string& text = Document();
    good =
        g_markup_parse_context_parse(context, text.data(), static_cast<gssize>(text.size()), nullptr) != 0 &&
        g_markup_parse_context_end_parse(context, nullptr) != 0 && good;
    g_markup_parse_context_free(context);
  }
  Finish(state, counts, good);
}
OXA_BENCH("XML parsed with events", "GMarkup", GMarkup);

#endif

#ifdef OXA_PEER_QT

void QtRound(const QByteArray& text, Counts& counts, bool& good) {
  QXmlStreamReader reader(text);
  while (!reader.atEnd()) {
    switch (reader.readNext()) {
      case QXmlStreamReader::StartElement:
        ++counts.elements;
        counts.attributes += static_cast<std::size_t>(reader.attributes().size());
        break;
      case QXmlStreamReader::EndElement:
        ++counts.ends;
        break;
      case QXmlStreamReader::Characters:
        counts.text += static_cast<std::size_t>(reader.text().size());
        break;
      default:
        break;
    }
  }
  good = !reader.hasError() && good;
}

void Qt(benchmark::State& state) {
  Counts counts;
  bool good = true;
  const QByteArray text(Document().data(), static_cast<int>(Document().size()));
  for (auto _ : state) QtRound(text, counts, good);
  Finish(state, counts, good);
}
OXA_BENCH("XML parsed with events", "Qt", Qt);

#endif

}  // namespace
