// Judges the series of a run, each by its test.
#ifndef STATION_VERDICTS_H
#define STATION_VERDICTS_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <iosfwd>
#include <vector>

#include "Measurement.h"

namespace Station {

/// The results of the tests, one per series, in the order of the plan.
using Verdicts = std::vector<Oxa::Core::Test::Result>;

/// Judges `measurements`, whose statistics are there, in a suite of tests. Writes each verdict as soon as it is given,
/// and then how many series have passed; nothing if there are none. The log of each series gets its verdict, too.
Verdicts Judge(std::ostream& out, const std::vector<Measurement>& measurements);

/// Whether there are some, and all are good.
bool HaveAllPassed(const Verdicts& verdicts);

}  // namespace Station

#endif
