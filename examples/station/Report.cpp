#include "Report.h"

#include <Infrastructure/OxaCore/AlertManager.h>

#include <iomanip>
#include <ostream>
#include <set>

#include "Loggers.h"
#include "ShownText.h"

namespace Station {

using Oxa::Core::AlertManager;
using Oxa::Core::Elapse;
using Oxa::Core::ErrorRecord;
using Oxa::Core::SSortErrors;
using Oxa::Core::SSortWarnings;
using Oxa::Core::WarningRecord;

namespace {

const char* const sTITLE = "How late the system wakes a sleeper, in microseconds:\n\n";

constexpr int iNAME_WIDTH = 20;
constexpr int iWIDTH = 10;

void WriteFirstColumn(std::ostream& out, const std::string& text) {
  out << std::left << std::setw(iNAME_WIDTH) << text << std::right;
}

template <class T>
void WriteColumn(std::ostream& out, const T& value) {
  out << std::setw(iWIDTH) << value;
}

template <class T>
void WriteLine(std::ostream& out, const char* name, const T& value) {
  WriteFirstColumn(out, name);
  out << value << '\n';
}

void WriteHeading(std::ostream& out) {
  WriteFirstColumn(out, "series");
  for (const char* const heading : {"count", "least", "median", "99 %", "greatest", "too late"}) {
    WriteColumn(out, heading);
  }
  out << '\n';
}

void WriteRow(std::ostream& out, const Measurement& measurement) {
  WriteFirstColumn(out, measurement.m_series.m_sName);
  WriteColumn(out, measurement.m_latenesses.size());
  const Statistics& statistics = measurement.m_statistics;
  for (const Elapse& figure :
       {statistics.m_least, statistics.m_median, statistics.m_percentile99, statistics.m_greatest}) {
    if (measurement.m_latenesses.empty()) {
      WriteColumn(out, '-');
    } else {
      WriteColumn(out, MicroSeconds(figure));
    }
  }
  WriteColumn(out, measurement.m_ulLate);
  out << '\n';
}

void WriteWarnings(std::ostream& out) {
  std::set<WarningRecord, SSortWarnings> records;
  AlertManager::Instance()->GetRaisedWarningRecords(records);
  unsigned long raised = 0;
  unsigned long silenced = 0;
  for (const WarningRecord& record : records) {
    raised += record.GetRaisedCount();
    silenced += record.GetSilencedCount();
  }
  WriteLine(out, "Warnings raised:", raised);
  WriteLine(out, "Warnings silenced:", silenced);
}

void WriteErrors(std::ostream& out) {
  std::set<ErrorRecord, SSortErrors> records;
  AlertManager::Instance()->GetRaisedErrorRecords(records);
  unsigned long raised = 0;
  for (const ErrorRecord& record : records) raised += record.GetRaisedCount();
  WriteLine(out, "Errors survived:", raised);
}

}  // namespace

void WriteTable(std::ostream& out, const std::vector<Measurement>& measurements) {
  out << '\n' << sTITLE << std::fixed << std::setprecision(1);
  WriteHeading(out);
  for (const Measurement& measurement : measurements) WriteRow(out, measurement);
}

void WriteAlertCounts(std::ostream& out, const Plan& plan, const std::vector<Measurement>& measurements) {
  unsigned long retries = 0;
  for (const Measurement& measurement : measurements) retries += measurement.m_ulRetries;
  out << '\n';
  WriteLine(out, "Lines refused:", plan.m_refusals.size());
  WriteLine(out, "Samples retried:", retries);
  WriteErrors(out);
  WriteWarnings(out);
}

void WriteLogPlace(std::ostream& out, const std::string& document) {
  WriteLine(out, "Log:", Shown(document));
}

}  // namespace Station
