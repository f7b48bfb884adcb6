#include "HistogramDrawing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <locale>
#include <sstream>

#include "Histogram.h"
#include "Ticks.h"

namespace Station {

namespace {

const char* const sCOUNT_TITLE = "samples per bin";
const char* const sNOT_DRAWN = " not drawn";
const char* const sNO_SAMPLES = "no samples";
const char* const sLOGARITHMIC = "logarithmic";
const char* const sOFF_THE_AXIS = ", off the axis";

// From the top, in pixels.
constexpr double dHEIGHT = 252;
constexpr double dCOUNT_TITLE = 12;
constexpr double dTOLERANCE_LABEL = 34;
constexpr double dTOLERANCE_TOP = 40;
constexpr double dPLOT_TOP = 48;
constexpr double dPLOT_BOTTOM = 200;
constexpr double dLABEL = 218;
constexpr double dTITLE = 242;
constexpr double dLEAST_BAR = 2;  // a bin with one sample in a million is to be seen as well

constexpr int iDIGITS = 6;
constexpr int iALL_DIGITS = 15;
constexpr int iMOST_TICKS = 5;
constexpr int iMOST_COUNTS = 4;

std::string Fixed(double value) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(2);
  text << std::fixed << value;
  return text.str();
}

std::string Percent(double part) { return Fixed(part * 100) + '%'; }

std::string WithUnit(const std::string& figure, const std::string& unit) {
  return unit.empty() ? figure : figure + ' ' + unit;
}

std::string AxisTitle(const Histogram& histogram, const std::string& unit) {
  if (!histogram.m_bLogarithmic) return unit;
  return unit.empty() ? sLOGARITHMIC : unit + ", " + sLOGARITHMIC;
}

// One picture while it is drawn.
class Drawing {
 public:
  Drawing(PageWriter& writer, const PageSeries& series)
      : m_rWriter(writer),
        m_rSeries(series),
        m_sUnit(series.m_tolerance.GetUnits()->GetAbbreviation()),
        m_histogram(MakeHistogram(series.m_samples, series.m_tolerance.GetValue())),
        m_uMost(*std::max_element(m_histogram.m_counts.begin(), m_histogram.m_counts.end())) {}

  void Draw(const std::string& id);

 private:
  void DrawDescription(const std::string& id);
  void DrawZone(double position);
  void DrawCounts();
  void DrawBars();
  void DrawBar(std::size_t bin);
  void DrawValues();
  void DrawTolerance(double position);
  void DrawArrow(double position);
  void DrawText(const char* kind, const std::string& x, double y, const std::string& text);
  void DrawLine(const char* kind, const std::string& x1, double y1, const std::string& x2, double y2);

  double HeightOf(double count) const {
    return (dPLOT_BOTTOM - dPLOT_TOP) * count / static_cast<double>(std::max<std::size_t>(m_uMost, 1));
  }
  std::string BinText(std::size_t bin) const;

  PageWriter& m_rWriter;
  const PageSeries& m_rSeries;
  const std::string m_sUnit;
  const Histogram m_histogram;
  const std::size_t m_uMost;  // how many samples the fullest bin has
};

// With more digits than figures have elsewhere, if they are needed to tell the edges apart.
std::string Drawing::BinText(std::size_t bin) const {
  const double from = m_histogram.m_edges[bin];
  const double to = m_histogram.m_edges[bin + 1];
  const int digits = FigureText(from) == FigureText(to) ? iALL_DIGITS : iDIGITS;
  return FigureText(from, digits) + " to " + WithUnit(FigureText(to, digits), m_sUnit);
}

void Drawing::DrawText(const char* kind, const std::string& x, double y, const std::string& text) {
  m_rWriter.Element("text", {{"class", kind}, {"x", x}, {"y", Fixed(y)}}, text);
}

void Drawing::DrawLine(const char* kind, const std::string& x1, double y1, const std::string& x2, double y2) {
  m_rWriter.Empty("line", {{"class", kind}, {"x1", x1}, {"y1", Fixed(y1)}, {"x2", x2}, {"y2", Fixed(y2)}});
}

// What a screen reader says instead of the picture.
void Drawing::DrawDescription(const std::string& id) {
  m_rWriter.Element("title", {{"id", id + "t"}}, "Histogram of " + m_rSeries.m_sName);
  std::string text = sNO_SAMPLES;
  if (m_uMost > 0) {
    const auto fullest = std::find(m_histogram.m_counts.begin(), m_histogram.m_counts.end(), m_uMost);
    text = "Most samples, " + std::to_string(m_uMost) + ", are in the bin from " +
           BinText(static_cast<std::size_t>(fullest - m_histogram.m_counts.begin()));
  }
  m_rWriter.Element("desc", {{"id", id + "d"}},
                    text + "; the tolerance is " + FigureText(m_rSeries.m_tolerance) + '.');
}

// Everything to the right of the tolerance is too late.
void Drawing::DrawZone(double position) {
  if (!(position < 1)) return;
  const double from = std::max(0.0, position);
  m_rWriter.Empty("rect", {{"class", "zone"},
                           {"x", Percent(from)},
                           {"y", Fixed(dPLOT_TOP)},
                           {"width", Percent(1 - from)},
                           {"height", Fixed(dPLOT_BOTTOM - dPLOT_TOP)}});
}

void Drawing::DrawCounts() {
  const std::size_t leftOut = m_histogram.m_uLeftOut;
  DrawText("counts-title", "0", dCOUNT_TITLE,
           leftOut == 0 ? sCOUNT_TITLE : sCOUNT_TITLE + (", " + std::to_string(leftOut)) + sNOT_DRAWN);
  for (const Tick& tick : CountTicks(static_cast<double>(m_uMost), iMOST_COUNTS)) {
    const double y = dPLOT_BOTTOM - HeightOf(tick.m_dValue);
    DrawLine("grid", "0", y, "100%", y);
    DrawText("count", "-6", y + 4, tick.m_sLabel);
  }
}

void Drawing::DrawBar(std::size_t bin) {
  const auto count = m_histogram.m_counts[bin];
  const double width = 1 / static_cast<double>(m_histogram.m_counts.size());
  const double height = std::max(dLEAST_BAR, HeightOf(static_cast<double>(count)));
  m_rWriter.Start("rect", {{"class", "bar"},
                           {"x", Percent(static_cast<double>(bin) * width)},
                           {"y", Fixed(dPLOT_BOTTOM - height)},
                           {"width", Percent(width)},
                           {"height", Fixed(height)}});
  m_rWriter.Element("title", {}, BinText(bin) + ": " + std::to_string(count));
  m_rWriter.End();
}

void Drawing::DrawBars() {
  for (std::size_t bin = 0; bin < m_histogram.m_counts.size(); ++bin)
    if (m_histogram.m_counts[bin] > 0) DrawBar(bin);
  if (m_uMost == 0) DrawText("value", "25%", (dPLOT_TOP + dPLOT_BOTTOM) / 2, sNO_SAMPLES);
}

void Drawing::DrawValues() {
  const double low = m_histogram.m_edges.front();
  const double high = m_histogram.m_edges.back();
  DrawLine("axis", "0", dPLOT_BOTTOM, "100%", dPLOT_BOTTOM);
  for (const Tick& tick :
       m_histogram.m_bLogarithmic ? LogarithmicTicks(low, high) : LinearTicks(low, high, iMOST_TICKS)) {
    const std::string x = Percent(m_histogram.Position(tick.m_dValue));
    DrawLine("axis", x, dPLOT_BOTTOM, x, dPLOT_BOTTOM + 5);
    DrawText("value", x, dLABEL, tick.m_sLabel);
  }
  DrawText("value", "50%", dTITLE, AxisTitle(m_histogram, m_sUnit));
}

// Points out of the picture, to where the tolerance would be.
void Drawing::DrawArrow(double position) {
  m_rWriter.Start("svg", {{"class", "arrow"}, {"x", position < 0 ? "0" : "100%"}, {"y", Fixed(dPLOT_TOP)}});
  m_rWriter.Empty("path", {{"d", position < 0 ? "M-3 4l-9 6 9 6z" : "M3 4l9 6-9 6z"}});
  m_rWriter.End();
}

void Drawing::DrawTolerance(double position) {
  if (std::isnan(position)) return;
  const bool isOnAxis = position >= 0 && position <= 1;
  const double shown = std::clamp(position, 0.0, 1.0);
  const char* const side = shown < 1.0 / 3   ? "tolerance start"
                           : shown > 2.0 / 3 ? "tolerance end"
                                             : "tolerance";
  std::string label = "tolerance " + FigureText(m_rSeries.m_tolerance);
  if (!isOnAxis) label += sOFF_THE_AXIS;
  DrawText(side, Percent(shown), dTOLERANCE_LABEL, label);
  DrawLine(isOnAxis ? "limit" : "limit off", Percent(shown), dTOLERANCE_TOP, Percent(shown), dPLOT_BOTTOM);
  if (!isOnAxis) DrawArrow(position);
}

void Drawing::Draw(const std::string& id) {
  m_rWriter.Start("svg", {{"role", "img"},
                          {"aria-labelledby", id + "t " + id + "d"},
                          {"width", "100%"},
                          {"height", Fixed(dHEIGHT)}});
  const double tolerance = m_histogram.Position(m_rSeries.m_tolerance.GetValue());
  DrawDescription(id);
  DrawZone(tolerance);
  DrawCounts();
  DrawBars();
  DrawValues();
  DrawTolerance(tolerance);
  m_rWriter.End();
}

}  // namespace

void DrawHistogram(PageWriter& writer, const PageSeries& series, const std::string& id) {
  Drawing(writer, series).Draw(id);
}

}  // namespace Station
