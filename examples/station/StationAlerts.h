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

/// A sample could not be taken: the sample before it came so late that the time of this one had passed.
class SampleMissed : public Oxa::Core::ErrorClass<SampleMissed, Oxa::Core::HardwareError> {
 public:
  /// "Series": the key of the name of the series in the error's data, for handlers.
  static const char* const sSERIES;

  SampleMissed(unsigned long sample, const std::string& series, const Oxa::Core::Elapse& overdue);
};

/// Channel `channel` of the instrument doesn't answer any more.
class InstrumentLost : public Oxa::Core::ErrorClass<InstrumentLost, Oxa::Core::HardwareError> {
 public:
  explicit InstrumentLost(int channel);
};

/// Nothing can be recorded in `file`, for `reason`.
class RecordingImpossible : public Oxa::Core::ErrorClass<RecordingImpossible, Oxa::Core::IOError> {
 public:
  RecordingImpossible(const std::string& file, const std::string& reason);
};

/// `file` can't be read as a recording at all, for `reason`.
class RecordingUnreadable : public Oxa::Core::ErrorClass<RecordingUnreadable, Oxa::Core::IOError> {
 public:
  RecordingUnreadable(const std::string& file, const std::string& reason);
};

/// The recording in `file` can't be read beyond its first `samples` samples, for `reason`.
class RecordingDamaged : public Oxa::Core::ErrorClass<RecordingDamaged, Oxa::Core::IOError> {
 public:
  RecordingDamaged(const std::string& file, unsigned long long samples, const std::string& reason);
};

/// The report can't be written to `file`, for `reason`.
class ReportImpossible : public Oxa::Core::ErrorClass<ReportImpossible, Oxa::Core::IOError> {
 public:
  ReportImpossible(const std::string& file, const std::string& reason);
};

/// A sample came later than its series tolerates.
class SampleLate : public Oxa::Core::Warning {
 public:
  SampleLate(unsigned long sample, const std::string& series, const Oxa::Core::Elapse& lateness,
             const Oxa::Core::Elapse& tolerance);
};

/// A sample was taken, but there was no room for it among those that wait to be collected.
class SampleLost : public Oxa::Core::Warning {
 public:
  SampleLost(unsigned long sample, const std::string& series);
};

/// A sample was taken, but there was no room for it among those that wait to be recorded, or the recording has
/// ended.
class SampleNotRecorded : public Oxa::Core::Warning {
 public:
  SampleNotRecorded(unsigned long sample, const std::string& series);
};

}  // namespace Station

#endif
