// The alerts that only the station knows. A class of its own for each lets listeners, handlers and the limits
// on warnings tell them apart.
//
// One line of base class gives an error everything that it needs to be cloned, thrown and found by handlers.
#ifndef STATION_STATIONALERTS_H
#define STATION_STATIONALERTS_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <string>

namespace Station {

/// The plan file can't be read at all, for `reason`.
class PlanUnreadable : public Oxa::Core::ErrorClass<PlanUnreadable, Oxa::Core::IOError> {
 public:
  PlanUnreadable(const std::string& file, const std::string& reason);
};

/// Nothing can be written into the output folder, for `reason`.
class OutputUnusable : public Oxa::Core::ErrorClass<OutputUnusable, Oxa::Core::IOError> {
 public:
  OutputUnusable(const std::string& folder, const std::string& reason);
};

/// A sample could not be taken: the sample before it came so late that the time of this one had passed.
class SampleMissed : public Oxa::Core::ErrorClass<SampleMissed, Oxa::Core::HardwareError> {
 public:
  SampleMissed(unsigned long sample, const std::string& series, const Oxa::Core::Elapse& overdue);
};

/// A sample came later than its series tolerates.
class SampleLate : public Oxa::Core::Warning {
 public:
  SampleLate(unsigned long sample, const std::string& series, const Oxa::Core::Elapse& lateness,
             const Oxa::Core::Elapse& tolerance);
};

}  // namespace Station

#endif
