// Times as quantities: a number with the unit that the plan asks for.
#ifndef STATION_QUANTITY_H
#define STATION_QUANTITY_H

#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <boost/shared_ptr.hpp>
#include <string>

#include "PlanLine.h"

namespace Station {

using Quantity = Oxa::Core::UnitizedValue<double>;

/// No longer time, forth or back, is a quantity, whose way from an Elapse is by a count of nanoseconds: that can hold a
/// little more.
constexpr long long llMOST_SECONDS = 9000000000;

/// The unit of times that goes by `name`, main or alternate; null if there is none. Raises nothing.
boost::shared_ptr<Oxa::Core::UnitDescriptor> FindTimeUnit(const std::string& name);

/// `elapse`, of llMOST_SECONDS at most, in the unit of times with the main name `unit`. Equal times give equal
/// numbers, and a longer time a larger one.
Quantity InUnit(const Oxa::Core::Elapse& elapse, const std::string& unit);

/// What the series tolerates, in the unit of its plan.
Quantity Tolerance(const Series& series);

}  // namespace Station

#endif
