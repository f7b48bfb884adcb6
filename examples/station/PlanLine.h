// Reads one line of a plan into a series, and what a series is.
#ifndef STATION_PLANLINE_H
#define STATION_PLANLINE_H

#include <Infrastructure/OxaCore/Time.h>

#include <optional>
#include <string>

namespace Station {

/// The main name of the unit in which a time is shown if nobody has asked for another one.
inline constexpr const char* sUSUAL_UNIT = "Microsecond";

/// Samples of one kind, to be taken one after the other.
struct Series {
  std::string m_sName;
  Oxa::Core::Elapse m_interval;       ///< from one sample to the next
  unsigned long m_ulCount = 0;        ///< how many samples are wanted
  Oxa::Core::Elapse m_tolerance;      ///< a sample that comes later than this is worth a warning
  unsigned long m_ulLine = 0;         ///< where the plan has it
  std::string m_sUnit = sUSUAL_UNIT;  ///< main name of the unit in which the plan gives the tolerance
};

/// The series in `text`, line `line` of a plan; nothing for a line that is blank or only a comment. What
/// follows a '#' is a comment. The last field, the tolerance, may hold blanks. Raises InvalidParameter for a line that
/// can't be read, as PlanField.h tells; for a missing field without a value.
std::optional<Series> ReadLine(unsigned long line, const std::string& text);

}  // namespace Station

#endif
