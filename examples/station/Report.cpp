#include "Report.h"

#include <Infrastructure/OxaCore/AlertManager.h>

#include <algorithm>
#include <iomanip>
#include <set>
#include <sstream>

#include "Quantity.h"
#include "ShownText.h"
#include "Utf8.h"

namespace Station {

using Oxa::Core::AlertManager;
using Oxa::Core::Elapse;
using Oxa::Core::ErrorRecord;
using Oxa::Core::SSortErrors;
using Oxa::Core::SSortWarnings;
using Oxa::Core::WarningRecord;

namespace {

const char* const sTITLE = "How late the system wakes a sleeper:\n\n";
const char* const sSERIES = "series";

constexpr int iLABEL_WIDTH = 20;
constexpr int iNAME_WIDTH = 8;
constexpr int iCOUNT_WIDTH = 8;
constexpr int iFIGURE_WIDTH = 12;

template <class T>
void WriteLine(std::ostream& out, const char* name, const T& value) {
  out << std::left << std::setw(iLABEL_WIDTH) << name << std::right << value << '\n';
}

// Lines whose first column is as wide as the longest name. In single bytes, so that widths count characters.
class Table {
 public:
  explicit Table(const std::vector<Measurement>& measurements) {
    for (const Measurement& measurement : measurements) {
      m_iNameWidth = std::max(m_iNameWidth, static_cast<int>(measurement.m_series.m_sName.size()));
    }
    WriteHeading();
    for (const Measurement& measurement : measurements) WriteRow(measurement);
  }

  std::string GetText() const { return m_text.str(); }

 private:
  void WriteFirst(const std::string& name) {
    m_text << std::left << std::setw(m_iNameWidth) << name << std::right;
  }

  template <class T>
  void WriteColumn(int width, const T& value) {
    m_text << ' ' << std::setw(width) << value;
  }

  void WriteHeading() {
    WriteFirst(sSERIES);
    WriteColumn(iCOUNT_WIDTH, "count");
    for (const char* const heading : {"least", "median", "99 %", "greatest"})
      WriteColumn(iFIGURE_WIDTH, heading);
    WriteColumn(iCOUNT_WIDTH, "too late");
    m_text << '\n';
  }

  void WriteRow(const Measurement& measurement) {
    WriteFirst(measurement.m_series.m_sName);
    WriteColumn(iCOUNT_WIDTH, measurement.m_latenesses.size());
    const Statistics& statistics = measurement.m_statistics;
    for (const Elapse& figure :
         {statistics.m_least, statistics.m_median, statistics.m_percentile99, statistics.m_greatest}) {
      if (measurement.m_latenesses.empty()) {
        WriteColumn(iFIGURE_WIDTH, '-');
      } else {
        WriteColumn(iFIGURE_WIDTH, InUnit(figure, measurement.m_series.m_sUnit));
      }
    }
    WriteColumn(iCOUNT_WIDTH, measurement.m_ulLate);
    m_text << '\n';
  }

  int m_iNameWidth = iNAME_WIDTH;
  std::ostringstream m_text;
};

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
  out << '\n' << sTITLE << ToUtf8(Table(measurements).GetText());
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

void WriteReportPlace(std::ostream& out, const std::string& file) { WriteLine(out, "Report:", Shown(file)); }

}  // namespace Station
