// Reads a time with its unit out of a plan.
#ifndef STATION_PLANTIME_H
#define STATION_PLANTIME_H

#include <Infrastructure/OxaCore/Time.h>

#include <string>

namespace Station {

/// A time, and the main name of the unit in which the plan gives it.
struct PlanTime {
  Oxa::Core::Elapse m_elapse;
  std::string m_sUnit;
};

/// Reads a number and a unit, with or without blanks between them, as in "250us" or "0.25 Milliseconds": any unit of
/// times that the dictionary of quantities knows, by any of its names. Parts of a nanosecond don't count; parts of
/// 100 ns are rounded up.
///
/// Gives what is wrong with `text`; empty if nothing is, and `time` is set then. That several units go by the name has
/// been an error of the dictionary, which is survived here; nothing else is raised.
std::string ReadTime(const std::string& text, PlanTime& time);

}  // namespace Station

#endif
