// Measures a whole plan, all of its series at once.
#ifndef STATION_MEASUREALL_H
#define STATION_MEASUREALL_H

#include <functional>
#include <vector>

#include "Clock.h"
#include "Measurement.h"
#include "Plan.h"
#include "Progress.h"

namespace Station {

class DailyLog;
class Recorder;

/// One measurement per series of the plan, in its order, with all statistics. Each series has a thread of its
/// own; the calling one collects. Once `wantsToEnd` says so all of them are stopped, and what was measured until
/// then is given. The recorder and the daily log, if there are any, receive their share.
std::vector<Measurement> MeasureAll(const Plan& plan, Clock& clock, Progress& progress,
                                    const std::function<bool()>& wantsToEnd, Recorder* recorder = nullptr,
                                    DailyLog* daily = nullptr);

}  // namespace Station

#endif
