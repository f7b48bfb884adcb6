#include "ReportPage.h"

#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <ostream>

#include "Utf8.h"

namespace Station {

using Oxa::Core::XMLFormatter;
using Oxa::Core::XMLWriter;

namespace {

const char* const sDOCUMENT_TYPE = "<!DOCTYPE html>\n";

}  // namespace

void WritePage(std::ostream& out, const Page& page) {
  XMLWriter writer(XMLFormatter::CreateCompact());
  out << sDOCUMENT_TYPE << writer.StartTag("html") << writer.Attribute("lang", "en")
      << writer.StartTag("head") << writer.Tag("title", ToUtf8(page.m_sTitle)) << writer.EndTag()
      << writer.StartTag("body") << writer.Tag("h1", ToUtf8(page.m_sTitle))
      << writer.Tag("p", ToUtf8(page.m_sMoment));
  for (const PageSeries& series : page.m_series) out << writer.Tag("h2", ToUtf8(series.m_sName));
  out << writer.EndDoc() << '\n';
}

}  // namespace Station
