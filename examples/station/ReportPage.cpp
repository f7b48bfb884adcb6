#include "ReportPage.h"

#include <algorithm>
#include <ostream>

#include "HistogramDrawing.h"
#include "PageStyle.h"
#include "PageWriter.h"
#include "Ticks.h"

namespace Station {

using Oxa::Core::UnitizedValue;

namespace {

const char* const sDOCUMENT_TYPE = "<!DOCTYPE html>\n";
const char* const sPOLICY = "default-src 'none'; style-src 'unsafe-inline'";
const char* const sVIEWPORT = "width=device-width, initial-scale=1";
const char* const sTABLE = "All series";
const char* const sNO_SERIES = "No series was measured.";
const char* const sNO_SAMPLES = "No samples";
const char* const sREFUSALS = "Not measured";
const char* const sNO_FIGURE = "-";

const char* WordOf(EVerdict verdict) {
  switch (verdict) {
    case ePASSED:
      return "passed";
    case eFAILED:
      return "failed";
    default:
      return "not judged";
  }
}

const char* KindOf(EVerdict verdict) { return verdict == eNOT_JUDGED ? "unjudged" : WordOf(verdict); }

void WriteHead(PageWriter& writer, const std::string& title) {
  writer.Start("head");
  writer.Empty("meta", {{"charset", "utf-8"}});
  writer.Empty("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", sPOLICY}});
  writer.Empty("meta", {{"name", "viewport"}, {"content", sVIEWPORT}});
  writer.Empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  writer.Element("title", {}, title);
  writer.Start("style");
  writer.Markup(sPAGE_STYLE);
  writer.End();
  writer.End();
}

void WriteCount(PageWriter& writer, const std::vector<PageSeries>& all, EVerdict verdict) {
  const auto count = std::count_if(all.begin(), all.end(),
                                   [&](const PageSeries& series) { return series.m_verdict == verdict; });
  if (count > 0) {
    writer.Element("li", {{"class", KindOf(verdict)}}, std::to_string(count) + ' ' + WordOf(verdict));
  }
}

void WriteSummary(PageWriter& writer, const Page& page) {
  writer.Element("h1", {}, page.m_sTitle);
  writer.Element("p", {{"class", "moment"}}, page.m_sMoment);
  if (page.m_series.empty()) return writer.Element("p", {}, sNO_SERIES);
  writer.Start("ul", {{"class", "counts"}});
  for (const EVerdict verdict : {eFAILED, eNOT_JUDGED, ePASSED}) WriteCount(writer, page.m_series, verdict);
  writer.End();
}

// The roles are those that the elements have anyway, until a narrow window shows them as cards.
void WriteHeading(PageWriter& writer) {
  writer.Start("thead", {{"role", "rowgroup"}});
  writer.Start("tr", {{"role", "row"}});
  for (const char* const heading :
       {"Series", "Samples", "Least", "Median", "99th percentile", "Greatest", "Tolerance", "Verdict"}) {
    writer.Element("th", {{"role", "columnheader"}, {"scope", "col"}}, heading);
  }
  writer.End();
  writer.End();
}

void WriteCell(PageWriter& writer, const char* label, const std::string& text) {
  writer.Element("td", {{"role", "cell"}, {"data-label", label}}, text);
}

void WriteVerdict(PageWriter& writer, EVerdict verdict) {
  writer.Element("span", {{"class", KindOf(verdict)}}, WordOf(verdict));
}

void WriteRow(PageWriter& writer, const PageSeries& series) {
  const auto measured = [&](const UnitizedValue<double>& figure) {
    return series.m_samples.empty() ? sNO_FIGURE : FigureText(figure);
  };
  writer.Start("tr", {{"role", "row"}});
  writer.Element("th", {{"role", "rowheader"}, {"scope", "row"}}, series.m_sName);
  WriteCell(writer, "Samples", std::to_string(series.m_samples.size()));
  WriteCell(writer, "Least", measured(series.m_least));
  WriteCell(writer, "Median", measured(series.m_median));
  WriteCell(writer, "99th percentile", measured(series.m_percentile99));
  WriteCell(writer, "Greatest", measured(series.m_greatest));
  WriteCell(writer, "Tolerance", FigureText(series.m_tolerance));
  writer.Start("td", {{"role", "cell"}});
  WriteVerdict(writer, series.m_verdict);
  writer.End();
  writer.End();
}

void WriteTable(PageWriter& writer, const std::vector<PageSeries>& all) {
  if (all.empty()) return;
  // A table that is too wide for its window is moved within this box, by the keyboard as well.
  writer.Start("div", {{"class", "box"}, {"role", "region"}, {"aria-label", sTABLE}, {"tabindex", "0"}});
  writer.Start("table", {{"role", "table"}});
  WriteHeading(writer);
  writer.Start("tbody", {{"role", "rowgroup"}});
  for (const PageSeries& series : all) WriteRow(writer, series);
  writer.End();
  writer.End();
  writer.End();
}

// How many of the samples were too late.
std::string LateText(const PageSeries& series) {
  if (series.m_samples.empty()) return sNO_SAMPLES;
  const double tolerance = series.m_tolerance.GetValue();
  const auto late = std::count_if(series.m_samples.begin(), series.m_samples.end(),
                                  [&](double sample) { return sample > tolerance; });
  return std::to_string(late) + " of " + std::to_string(series.m_samples.size()) + " samples above " +
         FigureText(series.m_tolerance);
}

void WriteSeries(PageWriter& writer, const PageSeries& series, const std::string& id) {
  writer.Start("section", {{"class", "series"}, {"aria-labelledby", id}});
  writer.Start("div", {{"class", "title"}});
  writer.Element("h2", {{"id", id}}, series.m_sName);
  WriteVerdict(writer, series.m_verdict);
  writer.End();
  writer.Element("p", {{"class", "samples"}}, LateText(series));
  if (!series.m_sReason.empty()) writer.Element("p", {}, series.m_sReason);
  writer.Start("div", {{"class", "picture"}});
  DrawHistogram(writer, series, id);
  writer.End();
  writer.End();
}

void WriteAllSeries(PageWriter& writer, const std::vector<PageSeries>& all) {
  if (all.empty()) return;
  writer.Start("div", {{"class", "all"}});
  std::size_t number = 0;
  for (const PageSeries& series : all) WriteSeries(writer, series, 's' + std::to_string(++number));
  writer.End();
}

void WriteRefusals(PageWriter& writer, const std::vector<std::string>& refusals) {
  if (refusals.empty()) return;
  writer.Start("section", {{"class", "refusals"}});
  writer.Element("h2", {}, sREFUSALS);
  writer.Start("ul");
  for (const std::string& refusal : refusals) writer.Element("li", {}, refusal);
  writer.End();
  writer.End();
}

}  // namespace

void WritePage(std::ostream& out, const Page& page) {
  PageWriter writer(out);
  writer.Markup(sDOCUMENT_TYPE);
  writer.Start("html", {{"lang", "en"}});
  WriteHead(writer, page.m_sTitle);
  writer.Start("body");
  writer.Start("main");
  WriteSummary(writer, page);
  WriteTable(writer, page.m_series);
  WriteAllSeries(writer, page.m_series);
  WriteRefusals(writer, page.m_refusals);
  writer.End();
  writer.End();
  writer.End();
  writer.Markup("\n");
}

}  // namespace Station
