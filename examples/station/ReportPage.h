// The report as a page for a browser: one file that needs nothing else.
#ifndef STATION_REPORTPAGE_H
#define STATION_REPORTPAGE_H

#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <iosfwd>
#include <string>
#include <vector>

namespace Station {

enum EVerdict { ePASSED, eFAILED, eNOT_JUDGED };

/// What the page shows of one series, in the unit of its tolerance. Texts are in the single-byte code page that
/// ToUtf8 knows and may hold anything.
struct PageSeries {
  std::string m_sName;
  std::vector<double> m_samples;  ///< in any order; what isn't finite is counted but can't be drawn
  Oxa::Core::UnitizedValue<double> m_least;  ///< this and the next three aren't shown if there are no samples
  Oxa::Core::UnitizedValue<double> m_median;
  Oxa::Core::UnitizedValue<double> m_percentile99;
  Oxa::Core::UnitizedValue<double> m_greatest;
  Oxa::Core::UnitizedValue<double> m_tolerance;  ///< a sample greater than this is too late
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
