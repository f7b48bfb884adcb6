#include "StationAlerts.h"

#include <Infrastructure/OxaCore/AlertMessage.h>

#include "ShownText.h"

namespace Station {

using Oxa::Core::AlertMessage;
using Oxa::Core::Elapse;

const char* const SampleMissed::sSERIES = "Series";

namespace {

const char* const sPLAN_UNREADABLE = "The plan \"%1%\" can't be read: %2%";
const char* const sSAMPLE_MISSED = "Sample %1% of series \"%2%\" was missed: it was due %3% ago";
const char* const sINSTRUMENT_LOST = "Channel %1% of the instrument is lost";
const char* const sSAMPLE_LATE = "Sample %1% of series \"%2%\" came %3% late; up to %4% are tolerated";
const char* const sSAMPLE_LOST = "Sample %1% of series \"%2%\" was lost: nobody collected it in time";
const char* const sRECORDING_IMPOSSIBLE = "Nothing can be recorded in \"%1%\": %2%";
const char* const sRECORDING_UNREADABLE = "The recording \"%1%\" can't be read: %2%";
const char* const sRECORDING_DAMAGED = "The recording \"%1%\" can't be read beyond its %2% samples: %3%";
const char* const sREPORT_IMPOSSIBLE = "The report \"%1%\" can't be written: %2%";
const char* const sSAMPLE_NOT_RECORDED = "Sample %1% of series \"%2%\" is not in the recording";

}  // namespace

PlanUnreadable::PlanUnreadable(const std::string& file, const std::string& reason)
    : ErrorClass(AlertMessage(sPLAN_UNREADABLE, Shown(file), reason)) {}

SampleMissed::SampleMissed(unsigned long sample, const std::string& series, const Elapse& overdue)
    : ErrorClass(AlertMessage(sSAMPLE_MISSED, sample, series, overdue)) {
  SetData(sSERIES, series);
}

InstrumentLost::InstrumentLost(int channel) : ErrorClass(AlertMessage(sINSTRUMENT_LOST, channel)) {}

SampleLate::SampleLate(unsigned long sample, const std::string& series, const Elapse& lateness,
                       const Elapse& tolerance)
    : Warning(AlertMessage(sSAMPLE_LATE, sample, series, lateness, tolerance)) {}

SampleLost::SampleLost(unsigned long sample, const std::string& series)
    : Warning(AlertMessage(sSAMPLE_LOST, sample, series)) {}

SampleNotRecorded::SampleNotRecorded(unsigned long sample, const std::string& series)
    : Warning(AlertMessage(sSAMPLE_NOT_RECORDED, sample, series)) {}

RecordingImpossible::RecordingImpossible(const std::string& file, const std::string& reason)
    : ErrorClass(AlertMessage(sRECORDING_IMPOSSIBLE, Shown(file), reason)) {}

RecordingUnreadable::RecordingUnreadable(const std::string& file, const std::string& reason)
    : ErrorClass(AlertMessage(sRECORDING_UNREADABLE, Shown(file), reason)) {}

RecordingDamaged::RecordingDamaged(const std::string& file, unsigned long long samples,
                                   const std::string& reason)
    : ErrorClass(AlertMessage(sRECORDING_DAMAGED, Shown(file), samples, reason)) {}

ReportImpossible::ReportImpossible(const std::string& file, const std::string& reason)
    : ErrorClass(AlertMessage(sREPORT_IMPOSSIBLE, Shown(file), reason)) {}

}  // namespace Station
