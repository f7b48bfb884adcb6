// XML written to memory: log entries with an attribute, nested elements and texts of which some need escaping.
// Every writer gets the same calls and gives the same document, but for a line end behind the declaration;
// pugixml writes a tree that was built beforehand, since it has no writer.
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <sstream>
#include <string>

#include "BenchSupport.h"

#ifdef OXA_PEER_LIBXML2
#include <libxml/xmlwriter.h>
#endif
#ifdef OXA_PEER_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef OXA_PEER_TINYXML2
#include <tinyxml2.h>
#endif

namespace {

using Oxa::Core::XMLFormatter;
using Oxa::Core::XMLWriter;

constexpr int iENTRIES = 100;

struct Element {
  std::string name;
  std::string text;
};

const Element s_elements[] = {
    {"TimeStamp", "21-Nov-2026 11:04:39.250"},
    {"LogName", "Oxa.Core.BinaryPipe.Read"},
    {"Message", "Read of 1024 bytes failed: 12 < 1024 && the other end is gone (reason -> timeout)"},
    {"Severity", "Error"},
    {"Category", "I/O"},
};
const Element s_context[] = {
    {"File", "/home/station/source/instrument/src/Transport/BinaryPipe.cpp"},
    {"Line", "217"},
    {"FunctionName", "Acme::Transport::Pipe::Read"},
    {"FunctionSignature",
     "std::size_t Acme::Transport::Pipe::Read(std::vector<unsigned char>&, const Elapse&)"},
    {"ProcessName", "station"},
    {"ProcessID", "32171"},
    {"ThreadID", "32174"},
};

void OursWrites(XMLWriter& writer, std::ostream& out) {
  out << writer.StartDocA() << writer.StartTag("Log");
  for (int entry = 0; entry < iENTRIES; ++entry) {
    out << writer.StartTag("LogEntry") << writer.Attribute("Severity", "Error");
    for (const Element& element : s_elements) out << writer.Tag(element.name, element.text);
    out << writer.StartTag("UnwindStack") << writer.StartTag("Context");
    for (const Element& element : s_context)
      out << writer.StartTag(element.name) << writer.Text(element.text) << writer.EndTag();
    out << writer.EndTag() << writer.EndTag() << writer.EndTag();
  }
  out << writer.EndDoc();
}

void Ours(benchmark::State& state, const boost::shared_ptr<XMLFormatter>& formatter) {
  std::ostringstream out;
  XMLWriter writer(formatter);
  std::streamoff size = 0;
  for (auto _ : state) {
    out.seekp(0);
    OursWrites(writer, out);
    size = out.tellp();
  }
  state.SetBytesProcessed(size * static_cast<std::int64_t>(state.iterations()));
}

void OursCompact(benchmark::State& state) { Ours(state, XMLFormatter::CreateCompact()); }
void OursIndented(benchmark::State& state) { Ours(state, XMLFormatter::CreatePrettyPrint()); }

OXA_BENCH("XML written", "Ours", OursCompact);
OXA_BENCH("XML written, indented", "Ours", OursIndented);

#ifdef OXA_PEER_LIBXML2

const xmlChar* Text(const std::string& text) { return reinterpret_cast<const xmlChar*>(text.c_str()); }
const xmlChar* Text(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

void LibXml2Writes(xmlTextWriterPtr writer) {
  xmlTextWriterStartDocument(writer, "1.0", "UTF-8", nullptr);
  xmlTextWriterStartElement(writer, Text("Log"));
  for (int entry = 0; entry < iENTRIES; ++entry) {
    xmlTextWriterStartElement(writer, Text("LogEntry"));
    xmlTextWriterWriteAttribute(writer, Text("Severity"), Text("Error"));
    for (const Element& element : s_elements)
      xmlTextWriterWriteElement(writer, Text(element.name), Text(element.text));
    xmlTextWriterStartElement(writer, Text("UnwindStack"));
    xmlTextWriterStartElement(writer, Text("Context"));
    for (const Element& element : s_context) {
      xmlTextWriterStartElement(writer, Text(element.name));
      xmlTextWriterWriteString(writer, Text(element.text));
      xmlTextWriterEndElement(writer);
    }
    xmlTextWriterEndElement(writer);
    xmlTextWriterEndElement(writer);
    xmlTextWriterEndElement(writer);
  }
  xmlTextWriterEndDocument(writer);
  xmlTextWriterFlush(writer);
}

void LibXml2(benchmark::State& state, int indent) {
  xmlBufferPtr buffer = xmlBufferCreate();
  xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer, 0);
  xmlTextWriterSetIndent(writer, indent);
  std::int64_t size = 0;
  for (auto _ : state) {
    xmlBufferEmpty(buffer);
    LibXml2Writes(writer);
    size = xmlBufferLength(buffer);
  }
  xmlFreeTextWriter(writer);
  xmlBufferFree(buffer);
  state.SetBytesProcessed(size * static_cast<std::int64_t>(state.iterations()));
}

void LibXml2Compact(benchmark::State& state) { LibXml2(state, 0); }
void LibXml2Indented(benchmark::State& state) { LibXml2(state, 1); }

OXA_BENCH("XML written", "libxml2", LibXml2Compact);
OXA_BENCH("XML written, indented", "libxml2", LibXml2Indented);

#endif

#ifdef OXA_PEER_TINYXML2

void TinyXml2Element(tinyxml2::XMLPrinter& printer, const Element& element) {
  printer.OpenElement(element.name.c_str());
  printer.PushText(element.text.c_str());
  printer.CloseElement();
}

void TinyXml2Writes(tinyxml2::XMLPrinter& printer) {
  printer.PushHeader(false, true);
  printer.OpenElement("Log");
  for (int entry = 0; entry < iENTRIES; ++entry) {
    printer.OpenElement("LogEntry");
    printer.PushAttribute("Severity", "Error");
    for (const Element& element : s_elements) TinyXml2Element(printer, element);
    printer.OpenElement("UnwindStack");
    printer.OpenElement("Context");
    for (const Element& element : s_context) TinyXml2Element(printer, element);
    printer.CloseElement();
    printer.CloseElement();
    printer.CloseElement();
  }
  printer.CloseElement();
}

void TinyXml2(benchmark::State& state, bool compact) {
  tinyxml2::XMLPrinter printer(nullptr, compact);
  std::int64_t size = 0;
  for (auto _ : state) {
    printer.ClearBuffer();
    TinyXml2Writes(printer);
    size = static_cast<std::int64_t>(printer.CStrSize()) - 1;
  }
  state.SetBytesProcessed(size * static_cast<std::int64_t>(state.iterations()));
}

void TinyXml2Compact(benchmark::State& state) { TinyXml2(state, true); }
void TinyXml2Indented(benchmark::State& state) { TinyXml2(state, false); }

OXA_BENCH("XML written", "tinyxml2", TinyXml2Compact);
OXA_BENCH("XML written, indented", "tinyxml2", TinyXml2Indented);

#endif

#ifdef OXA_PEER_PUGIXML

void PugiAppend(pugi::xml_node node, const Element& element) {
  node.append_child(element.name.c_str()).append_child(pugi::node_pcdata).set_value(element.text.c_str());
}

void PugiBuild(pugi::xml_document& document) {
  pugi::xml_node log = document.append_child("Log");
  for (int entry = 0; entry < iENTRIES; ++entry) {
    pugi::xml_node logEntry = log.append_child("LogEntry");
    logEntry.append_attribute("Severity").set_value("Error");
    for (const Element& element : s_elements) PugiAppend(logEntry, element);
    pugi::xml_node context = logEntry.append_child("UnwindStack").append_child("Context");
    for (const Element& element : s_context) PugiAppend(context, element);
  }
}

class PugiText : public pugi::xml_writer {
 public:
  std::string text;
  void write(const void* data, std::size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }
};

void PugiXml(benchmark::State& state, unsigned format) {
  pugi::xml_document document;
  PugiBuild(document);
  PugiText out;
  for (auto _ : state) {
    out.text.clear();
    document.save(out, "  ", format, pugi::encoding_utf8);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(out.text.size() * state.iterations()));
}

void PugiXmlCompact(benchmark::State& state) { PugiXml(state, pugi::format_raw); }
void PugiXmlIndented(benchmark::State& state) { PugiXml(state, pugi::format_indent); }

OXA_BENCH("XML written", "pugixml (tree built before)", PugiXmlCompact);
OXA_BENCH("XML written, indented", "pugixml (tree built before)", PugiXmlIndented);

#endif

}  // namespace
