#include "StationAlerts.h"

#include <Infrastructure/OxaCore/AlertMessage.h>

#include "ShownText.h"

namespace Station {

using Oxa::Core::AlertMessage;
using Oxa::Core::Elapse;

namespace {

const char* const sPLAN_UNREADABLE = "The plan \"%1%\" can't be read: %2%";
const char* const sOUTPUT_UNUSABLE = "The output folder \"%1%\" can't be used: %2%";
const char* const sSAMPLE_MISSED = "Sample %1% of series \"%2%\" was missed: it was due %3% ago";
const char* const sSAMPLE_LATE = "Sample %1% of series \"%2%\" came %3% late; up to %4% are tolerated";

}  // namespace

PlanUnreadable::PlanUnreadable(const std::string& file, const std::string& reason)
    : ErrorClass(AlertMessage(sPLAN_UNREADABLE, Shown(file), reason)) {}

OutputUnusable::OutputUnusable(const std::string& folder, const std::string& reason)
    : ErrorClass(AlertMessage(sOUTPUT_UNUSABLE, Shown(folder), reason)) {}

SampleMissed::SampleMissed(unsigned long sample, const std::string& series, const Elapse& overdue)
    : ErrorClass(AlertMessage(sSAMPLE_MISSED, sample, series, overdue)) {}

SampleLate::SampleLate(unsigned long sample, const std::string& series, const Elapse& lateness,
                       const Elapse& tolerance)
    : Warning(AlertMessage(sSAMPLE_LATE, sample, series, lateness, tolerance)) {}

}  // namespace Station
