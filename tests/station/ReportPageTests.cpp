#include "ReportPage.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <iomanip>
#include <limits>
#include <locale>
#include <set>
#include <sstream>

#include "Histogram.h"
#include "PageReader.h"

namespace {

using Oxa::Core::UnitDescriptor;
using Oxa::Core::UnitDictionary;
using Oxa::Core::UnitizedValue;
using Station::Page;
using Station::PageSeries;
using StationTests::Element;
using StationTests::ReadPage;

constexpr double dNAN = std::numeric_limits<double>::quiet_NaN();
constexpr double dINFINITE = std::numeric_limits<double>::infinity();

std::string Written(const Page& page) {
  std::ostringstream out;
  Station::WritePage(out, page);
  return out.str();
}

UnitizedValue<double> Micro(double value) { return UnitizedValue<double>(value, "Microsecond"); }

PageSeries MakeSeries(const std::string& name, const std::vector<double>& samples, double tolerance) {
  PageSeries series;
  series.m_sName = name;
  series.m_samples = samples;
  series.m_tolerance = Micro(tolerance);
  return series;
}

Page PageOf(const std::vector<PageSeries>& series) {
  Page page;
  page.m_sTitle = "Title";
  page.m_sMoment = "2021-03-04 05:06:07";
  page.m_series = series;
  return page;
}

Page PageOf(const std::vector<double>& samples, double tolerance) {
  return PageOf({MakeSeries("one", samples, tolerance)});
}

// HTML takes the empty tag of any other element for one that is left open.
void ExpectSoundTag(const Element& element) {
  const std::set<std::string> mayBeEmpty{"meta", "rect", "line", "path"};
  EXPECT_TRUE(!element.m_bEmptyTag || mayBeEmpty.count(element.m_sName) == 1) << element.m_sName;
  EXPECT_TRUE(element.m_bEmptyTag || element.m_sName != "meta");
}

void ExpectSoundPicture(const Element& picture, const std::set<std::string>& ids) {
  EXPECT_EQ("img", picture.Get("role"));
  std::istringstream labels(picture.Get("aria-labelledby"));
  int count = 0;
  for (std::string label; labels >> label; ++count) EXPECT_EQ(1U, ids.count(label)) << label;
  EXPECT_EQ(2, count);
}

// What every page must be, whatever is on it.
void ExpectSound(const ReadPage& page) {
  EXPECT_TRUE(page.m_bWellFormed);
  std::set<std::string> ids;
  for (const Element& element : page.m_elements) {
    ExpectSoundTag(element);
    const std::string id = element.Get("id");
    EXPECT_TRUE(id.empty() || ids.insert(id).second) << id;
  }
  for (const Element& picture : page.All("svg"))
    if (picture.Get("class") != "arrow") ExpectSoundPicture(picture, ids);
}

TEST(ReportPage, IsADocumentOfItsOwn) {
  const std::string text = Written(PageOf({1, 2, 3}, 2));
  EXPECT_EQ(0U, text.find("<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/>"));
  EXPECT_EQ("</html>\n", text.substr(text.size() - 8));
  for (const char* const outside : {"<script", "<link", "<img", "//", "src=", "href", "url(", "@import"})
    EXPECT_EQ(std::string::npos, text.find(outside)) << outside;
  const ReadPage page(text);
  ExpectSound(page);
  EXPECT_EQ("width=device-width, initial-scale=1", page.All("meta")[2].Get("content"));
  EXPECT_EQ("light dark", page.All("meta")[3].Get("content"));
  EXPECT_EQ("Title|Histogram of one|", page.Texts("title").substr(0, 23));
  EXPECT_EQ("Title|", page.Texts("h1"));
  EXPECT_EQ("2021-03-04 05:06:07|", page.Texts("p", "moment"));
}

TEST(ReportPage, HasASchemeForTheDarkAndOneForPaper) {
  const std::string style = ReadPage(Written(Page())).Texts("style");
  EXPECT_NE(std::string::npos, style.find("@media screen and (prefers-color-scheme: dark)"));
  EXPECT_NE(std::string::npos, style.find("@media print"));
  EXPECT_EQ(std::string::npos, style.find_first_of("&<"));
}

TEST(ReportPage, HasARowPerSeries) {
  PageSeries series = MakeSeries("fast", {1.5, 2.25, 1234567}, 250);
  series.m_least = Micro(1.5);
  series.m_median = Micro(2.25);
  series.m_percentile99 = Micro(1000);
  series.m_greatest = Micro(1234567);
  series.m_verdict = Station::eFAILED;
  series.m_sReason = "too slow";
  PageSeries bare = MakeSeries("none", {}, 0.5);
  bare.m_tolerance = 0.5;
  const ReadPage page(Written(PageOf({series, bare})));
  ExpectSound(page);
  EXPECT_EQ("Series|Samples|Least|Median|99th percentile|Greatest|Tolerance|Verdict|fast|none|",
            page.Texts("th"));
  EXPECT_EQ(
      "3|1.5 \xC2\xB5sec|2.25 \xC2\xB5sec|1000 \xC2\xB5sec|1.23457e+06 \xC2\xB5sec|250 \xC2\xB5sec||"
      "0|-|-|-|-|0.5||",
      page.Texts("td"));
  EXPECT_EQ("fast|none|", page.Texts("h2"));
  EXPECT_EQ("1 of 3 samples above 250 \xC2\xB5sec|No samples|", page.Texts("p", "samples"));
  EXPECT_EQ("2021-03-04 05:06:07|1 of 3 samples above 250 \xC2\xB5sec|too slow|No samples|", page.Texts("p"));
}

TEST(ReportPage, TellsVerdictsByWords) {
  std::vector<PageSeries> all;
  for (const Station::EVerdict verdict :
       {Station::ePASSED, Station::eFAILED, Station::ePASSED, Station::eNOT_JUDGED}) {
    all.push_back(MakeSeries("a", {1}, 2));
    all.back().m_verdict = verdict;
  }
  const ReadPage page(Written(PageOf(all)));
  EXPECT_EQ("1 failed|1 not judged|2 passed|", page.Texts("li"));
  EXPECT_EQ("passed|failed|passed|not judged|passed|failed|passed|not judged|", page.Texts("span"));
  EXPECT_EQ("passed|passed|passed|passed|", page.Texts("span", "passed"));
  EXPECT_EQ("not judged|not judged|", page.Texts("span", "unjudged"));
  all.pop_back();
  EXPECT_EQ("1 failed|2 passed|", ReadPage(Written(PageOf(all))).Texts("li"));
}

TEST(ReportPage, StandsNoSeriesAndNoTexts) {
  const ReadPage page(Written(Page()));
  ExpectSound(page);
  EXPECT_EQ("||No series was measured.|", page.Texts("title") + page.Texts("p"));
  EXPECT_TRUE(page.All("table").empty());
  Page empty;
  empty.m_series.resize(1);
  empty.m_refusals.resize(1);
  ExpectSound(ReadPage(Written(empty)));
}

TEST(ReportPage, ListsRefusals) {
  Page page = PageOf({1}, 2);
  page.m_refusals = {"line 3: \xB1", "line <4>"};
  EXPECT_EQ("1 not judged|line 3: \xC2\xB1|line &lt;4&gt;|", ReadPage(Written(page)).Texts("li"));
}

TEST(ReportPage, EscapesEverything) {
  const std::string evil = "</title><script>\"'&amp;\x01\x1B\x7F\x9B\xB5\xFF";
  PageSeries series = MakeSeries(evil, {1, 2}, 1);
  series.m_sReason = evil;
  UnitDictionary dictionary;
  dictionary.AddUnit(boost::make_shared<UnitDescriptor>("Evil", evil, 1, UnitDescriptor()));
  series.m_tolerance = UnitizedValue<double>(1, "Evil", dictionary);
  Page page = PageOf({series});
  page.m_sTitle = page.m_sMoment = evil;
  page.m_refusals = {evil};
  const std::string text = Written(page);
  ExpectSound(ReadPage(text));
  const std::string harmless =
      "&lt;/title&gt;&lt;script&gt;&quot;&apos;&amp;amp;\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
      "\xC2\xB5\xC3\xBF";
  EXPECT_EQ(harmless + '|', ReadPage(text).Texts("h1"));
  EXPECT_EQ(harmless + '|', ReadPage(text).Texts("h2").substr(0, harmless.size() + 1));
  EXPECT_EQ(std::string::npos, text.find("<script"));
  EXPECT_EQ(std::string::npos, text.find_first_of("\x01\x1B\x7F"));
}

TEST(ReportPage, DrawsABarPerBinWithSamples) {
  const std::vector<double> samples{8, 1, 7, 2, 6, 3, 1, 1.5};  // 1 to 9 in eight bins, two without samples
  const ReadPage page(Written(PageOf(samples, 4)));
  const std::vector<Element> bars = page.All("rect", "bar");
  ASSERT_EQ(6U, bars.size());
  EXPECT_EQ("0.00%", bars[0].Get("x"));
  EXPECT_EQ("12.50%", bars[0].Get("width"));
  EXPECT_EQ("152.00", bars[0].Get("height"));
  EXPECT_EQ("48.00", bars[0].Get("y"));
  EXPECT_EQ("62.50%", bars[3].Get("x"));
  EXPECT_EQ("50.67", bars[3].Get("height"));
  EXPECT_NE(std::string::npos, page.Texts("title").find("|1 to 2 \xC2\xB5sec: 3|2 to 3 \xC2\xB5sec: 1|"));
  EXPECT_EQ("Most samples, 3, are in the bin from 1 to 2 \xC2\xB5sec; the tolerance is 4 \xC2\xB5sec.|",
            page.Texts("desc"));
  EXPECT_EQ("2|4|6|8|\xC2\xB5sec|", page.Texts("text", "value"));
  EXPECT_EQ("0|1|2|3|", page.Texts("text", "count"));
}

TEST(ReportPage, MarksTheToleranceOnTheAxis) {
  const ReadPage page(Written(PageOf({8, 1, 7, 2, 6, 3, 1, 1.5}, 4)));
  const std::vector<Element> lines = page.All("line", "limit");
  ASSERT_EQ(1U, lines.size());
  EXPECT_EQ("37.50%", lines[0].Get("x1"));
  EXPECT_EQ("37.50%", lines[0].Get("x2"));
  EXPECT_EQ("tolerance 4 \xC2\xB5sec|", page.Texts("text", "tolerance"));
  EXPECT_EQ("62.50%", page.All("rect", "zone")[0].Get("width"));
  EXPECT_TRUE(page.All("svg", "arrow").empty());
}

void ExpectOffTheAxis(double tolerance, const std::string& x, const std::string& kind,
                      const std::string& label) {
  const ReadPage page(Written(PageOf({50, 52, 54, 56, 60}, tolerance)));
  ExpectSound(page);
  const std::vector<Element> lines = page.All("line", "limit off");
  ASSERT_EQ(1U, lines.size()) << label;
  EXPECT_EQ(x, lines[0].Get("x1"));
  EXPECT_EQ(label + '|', page.Texts("text", kind));
  EXPECT_EQ(1U, page.All("svg", "arrow").size());
}

TEST(ReportPage, MarksAToleranceOffTheAxis) {
  ExpectOffTheAxis(0, "0.00%", "tolerance start", "tolerance 0 \xC2\xB5sec, off the axis");
  ExpectOffTheAxis(5000, "100.00%", "tolerance end", "tolerance 5000 \xC2\xB5sec, off the axis");
  ExpectOffTheAxis(dINFINITE, "100.00%", "tolerance end", "tolerance inf \xC2\xB5sec, off the axis");
}

TEST(ReportPage, DoesNotMarkWhatIsNoTolerance) {
  const ReadPage page(Written(PageOf({50, 60}, dNAN)));
  ExpectSound(page);
  EXPECT_TRUE(page.All("line", "limit").empty() && page.All("line", "limit off").empty());
  EXPECT_TRUE(page.All("rect", "zone").empty());
}

TEST(ReportPage, SaysThatThereAreNoSamples) {
  const ReadPage page(Written(PageOf(std::vector<double>(), 250)));
  ExpectSound(page);
  EXPECT_TRUE(page.All("rect", "bar").empty());
  EXPECT_NE(std::string::npos, page.Texts("text", "value").find("no samples|"));
  EXPECT_EQ("50.00%", page.All("line", "limit")[0].Get("x1"));
  EXPECT_EQ("no samples; the tolerance is 250 \xC2\xB5sec.|", page.Texts("desc"));
}

TEST(ReportPage, SaysWhatIsNotDrawn) {
  const ReadPage page(Written(PageOf({1, dNAN, 2, dINFINITE}, 3)));
  ExpectSound(page);
  EXPECT_EQ("samples per bin, 2 not drawn|", page.Texts("text", "counts-title"));
  EXPECT_EQ("1 of 4 samples above 3 \xC2\xB5sec|", page.Texts("p", "samples"));
}

TEST(ReportPage, SaysThatAnAxisIsLogarithmic) {
  EXPECT_EQ("1|10|100|1000|\xC2\xB5sec, logarithmic|",
            ReadPage(Written(PageOf({1, 10, 100, 1000}, 10))).Texts("text", "value"));
  PageSeries series = MakeSeries("a", {1, 20}, 10);
  series.m_tolerance = 10;
  EXPECT_EQ("1|2|5|10|20|logarithmic|", ReadPage(Written(PageOf({series}))).Texts("text", "value"));
}

TEST(ReportPage, TellsCloseEdgesApart) {
  const ReadPage page(Written(PageOf({1234567, 1234567.01}, dNAN)));
  EXPECT_NE(std::string::npos, page.Texts("title").find("|1234567 to 1234567.001 \xC2\xB5sec: 1|"));
}

TEST(ReportPage, StandsExtremes) {
  const double greatest = std::numeric_limits<double>::max();
  const std::vector<std::vector<double>> extremes{{5e-324},        {-1e200, 1e200},
                                                  {1e-200, 1e200}, {greatest, -greatest},
                                                  {dNAN},          std::vector<double>(100000, 7)};
  for (const std::vector<double>& samples : extremes)
    for (const double tolerance : {0.0, -1.0, greatest, dNAN, -dINFINITE})
      ExpectSound(ReadPage(Written(PageOf(samples, tolerance))));
}

class DotForGroups : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(ReportPage, IsTheSameEveryTime) {
  const Page page = PageOf({0.5, 12345.5, 1000}, 1234.5);
  const std::string expected = Written(page);
  EXPECT_EQ(expected, Written(page));
  std::ostringstream out;
  out.imbue(std::locale(std::locale(), new DotForGroups));
  out << std::hex << std::showpos << std::setprecision(2) << std::setfill('*') << std::setw(20);
  Station::WritePage(out, page);
  EXPECT_EQ(expected, out.str());
}

}  // namespace
