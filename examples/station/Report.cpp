#include "Report.h"

#include <Infrastructure/OxaCore/AlertManager.h>

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <set>
#include <sstream>

#include "Quantity.h"
#include "ShownText.h"
#include "Ticks.h"
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
const char* const sNO_FIGURE = "-";
constexpr int iLABEL_WIDTH = 20;

template <class T>
void WriteLine(std::ostream& out, const char* name, const T& value) {
  out << std::left << std::setw(iLABEL_WIDTH) << name << std::right << value << '\n';
}

using Row = std::vector<std::string>;

Row RowOf(const Measurement& measurement) {
  const Statistics& statistics = measurement.m_statistics;
  Row row{measurement.m_series.m_sName, std::to_string(measurement.m_latenesses.size())};
  for (const Elapse& figure :
       {statistics.m_least, statistics.m_median, statistics.m_percentile99, statistics.m_greatest}) {
    const bool isKnown = !measurement.m_latenesses.empty();
    row.push_back(isKnown ? FigureText(InUnit(figure, measurement.m_series.m_sUnit)) : sNO_FIGURE);
  }
  row.push_back(std::to_string(measurement.m_ulLate));
  return row;
}

// Columns as wide as the longest text in them. In single bytes, so that widths count characters.
class Table {
 public:
  void Add(const Row& row) {
    for (std::size_t i = 0; i < row.size(); ++i) m_widths[i] = std::max(m_widths[i], row[i].size());
    m_rows.push_back(row);
  }

  std::string GetText() const {
    std::ostringstream text;
    for (const Row& row : m_rows) {
      for (std::size_t i = 0; i < row.size(); ++i) {
        text << (i == 0 ? std::left : std::right) << std::setw(static_cast<int>(m_widths[i])) << row[i]
             << (i + 1 < row.size() ? ' ' : '\n');
      }
    }
    return text.str();
  }

 private:
  std::vector<std::size_t> m_widths{8, 8, 12, 12, 12, 12, 8};
  std::vector<Row> m_rows;
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
  Table table;
  table.Add({"series", "count", "least", "median", "99 %", "greatest", "too late"});
  for (const Measurement& measurement : measurements) table.Add(RowOf(measurement));
  out << '\n' << sTITLE << ToUtf8(table.GetText());
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
