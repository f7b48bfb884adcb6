// The report as a page for a browser: one file that needs nothing else.
#ifndef STATION_REPORTPAGE_H
#define STATION_REPORTPAGE_H

#include <iosfwd>
#include <string>
#include <vector>

namespace Station {

enum EVerdict { ePASSED, eFAILED, eNOT_JUDGED };

/// What the page shows of one series. Texts are in the single-byte code page that ToUtf8 knows and may hold
/// anything; all figures are in the unit of `m_sUnit`.
struct PageSeries {
  std::string m_sName;
  std::string m_sUnit;            ///< abbreviation of the unit, such as "\xB5sec"; may be empty
  std::vector<double> m_samples;  ///< in any order; what isn't finite is counted but can't be drawn
  double m_dLeast = 0;            ///< this and the next three aren't shown if there are no samples
  double m_dMedian = 0;
  double m_dPercentile99 = 0;
  double m_dGreatest = 0;
  double m_dTolerance = 0;  ///< a sample greater than this is too late
  EVerdict m_verdict = eNOT_JUDGED;
  std::string m_sReason;  ///< why it failed or wasn't judged; may be empty
};

/// A whole page. Texts as above.
struct Page {
  std::string m_sTitle;
  std::string m_sMoment;  ///< when the run began, as the reader shall see it
  std::vector<PageSeries> m_series;
  std::vector<std::string> m_refusals;  ///< the lines of the plan that weren't measured, and why
};

/// Writes `page` as HTML in UTF-8 that is well-formed XML as well. The same page gives the same bytes; formatting
/// and locale of `out` play no part and stay as they are.
void WritePage(std::ostream& out, const Page& page);

}  // namespace Station

#endif
