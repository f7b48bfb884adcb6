// The texts at the end: the table of what was measured, and what became of warnings and errors.
#ifndef STATION_REPORT_H
#define STATION_REPORT_H

#include <iosfwd>
#include <string>
#include <vector>

#include "Measurement.h"
#include "Plan.h"

namespace Station {

/// Per series the number of samples, and the least, median, 99th percentile and greatest lateness, in the unit of the
/// series.
void WriteTable(std::ostream& out, const std::vector<Measurement>& measurements);

/// How many lines of the plan were refused, and how many alerts there were, by the alert manager's records.
void WriteAlertCounts(std::ostream& out, const Plan& plan, const std::vector<Measurement>& measurements);

/// Where the log can be read, and the page.
void WriteLogPlace(std::ostream& out, const std::string& document);
void WriteReportPlace(std::ostream& out, const std::string& file);

}  // namespace Station

#endif
