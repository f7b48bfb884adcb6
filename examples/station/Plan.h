// Reads a whole plan: one series a line.
#ifndef STATION_PLAN_H
#define STATION_PLAN_H

#include <cstddef>
#include <string>
#include <vector>

#include "PlanLine.h"

namespace Station {

/// More than that a plan can't hold: each series will have a thread of its own.
constexpr std::size_t uMOST_SERIES = 16;

/// What is to be measured, and what of the plan could not be read.
struct Plan {
  std::vector<Series> m_series;
  std::vector<std::string> m_refusals;  ///< per refused line its place and what is wrong with it
  std::string m_sName;                  ///< what it is called
};

/// Reads the plan in `text`, which is in UTF-8 or in the single bytes of units, up to uMOST_SERIES. A line that can't
/// be read is refused, and the next one is read: each refusal has been an InvalidParameter, forwarded from the field to
/// the line to the plan. `name` is what refusals call the plan.
Plan ReadPlan(const std::string& name, const std::string& text);

/// The text of the file `file`. Raises PlanUnreadable if there is none, if it is a folder, or if it is longer
/// than 64 KiB; empty where that returns.
std::string ReadPlanFile(const std::string& file);

/// The plans that are built into the program, and what they are called: one to see something, and one to pass.
extern const char* const sDEFAULT_PLAN_NAME;
extern const char* const sTEST_PLAN_NAME;
std::string DefaultPlan();
std::string TestPlan();

}  // namespace Station

#endif
