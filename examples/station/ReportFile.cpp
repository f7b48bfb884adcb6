#include "ReportFile.h"

#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/Time.h>

#include <cerrno>
#include <cstddef>
#include <system_error>

#include "Loggers.h"
#include "Quantity.h"
#include "Report.h"
#include "ReportPage.h"
#include "ShownText.h"
#include "Station.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::Test;
using Oxa::Core::Time;

namespace {

const char* const sTITLE = "How late the system wakes a sleeper";
const char* const sNOT_WRITTEN = "the report isn't whole: ";

PageSeries ToPage(const Measurement& measurement) {
  const Series& series = measurement.m_series;
  const Statistics& statistics = measurement.m_statistics;
  const auto shown = [&](const Elapse& elapse) { return InUnit(elapse, series.m_sUnit); };
  PageSeries page;
  page.m_sName = series.m_sName;
  for (const Elapse& lateness : measurement.m_latenesses)
    page.m_samples.push_back(shown(lateness).GetValue());
  page.m_least = shown(statistics.m_least);
  page.m_median = shown(statistics.m_median);
  page.m_percentile99 = shown(statistics.m_percentile99);
  page.m_greatest = shown(statistics.m_greatest);
  page.m_tolerance = Tolerance(series);
  return page;
}

void AddVerdict(PageSeries& page, const Test::Result& verdict) {
  page.m_verdict = verdict.GetType() == Test::Result::ePASSED ? ePASSED : eFAILED;
  page.m_sReason = verdict.GetText();
}

}  // namespace

ReportFile::ReportFile(const std::string& file) : m_sFile(file), m_sMoment(Time().ToString()) {
  if (file.empty()) return;
  m_stream.open(file, std::ios::binary);
  if (m_stream.good()) return;
  OXA_RAISE_ERROR(sSTATION_LOGGER, ReportImpossible(file, std::generic_category().message(errno)));
}

bool ReportFile::Write(std::ostream& out, const std::vector<Measurement>& measurements,
                       const Verdicts& verdicts, const std::vector<std::string>& refusals) {
  if (m_sFile.empty()) return true;
  Page page{sTITLE, m_sMoment, {}, refusals};
  for (const Measurement& measurement : measurements) page.m_series.push_back(ToPage(measurement));
  for (std::size_t i = 0; i < verdicts.size(); ++i) AddVerdict(page.m_series[i], verdicts[i]);
  WritePage(m_stream, page);
  m_stream.close();
  if (m_stream.good()) {
    WriteReportPlace(out, m_sFile);
  } else {
    Complain(sNOT_WRITTEN + ('"' + Shown(m_sFile) + '"'));
  }
  return m_stream.good();
}

}  // namespace Station
