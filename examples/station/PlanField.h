// Reads the single fields of a line of a plan.
//
// Failures: each function raises an InvalidParameter that names the field and shows its text with the reason.
// Where that raise returns, because the process is about to end, the result is 0 or empty.
#ifndef STATION_PLANFIELD_H
#define STATION_PLANFIELD_H

#include <Infrastructure/OxaCore/Time.h>

#include <cstddef>
#include <string>

#include "PlanTime.h"

namespace Station {

/// The names of the fields, as messages show them.
inline constexpr const char* sNAME_FIELD = "name";
inline constexpr const char* sINTERVAL_FIELD = "interval";
inline constexpr const char* sCOUNT_FIELD = "count";
inline constexpr const char* sTOLERANCE_FIELD = "tolerance";

/// What the fields of a plan can hold at most.
constexpr std::size_t uLONGEST_NAME = 20;
constexpr long long llLARGEST_COUNT = 1000000;
constexpr long long llLONGEST_INTERVAL = 10;  ///< in seconds

/// Up to 20 letters, digits, '-', '_' and '.'; gives `text`.
std::string ReadName(const std::string& text);

/// More than 0 and at most 10 s, as ReadTime takes it.
Oxa::Core::Elapse ReadInterval(const std::string& text);

/// 1 to 1000000.
unsigned long ReadCount(const std::string& text);

/// 0 or more, as ReadTime takes it.
PlanTime ReadTolerance(const std::string& text);

}  // namespace Station

#endif
