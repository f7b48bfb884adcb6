// What a report of this process's death will tell besides the error.
#ifndef STATION_REPORTNOTES_H
#define STATION_REPORTNOTES_H

#include <string>

#include "Plan.h"

namespace Station {

/// Notes what the station is doing, by which plan, and which series that has: the entries "Doing", "Plan" and
/// "Series" of every fatal report from now on. For one thread, before others are at work.
void NoteForReport(const std::string& doing, const Plan& plan);

}  // namespace Station

#endif
