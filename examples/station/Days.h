// Walks the daily log.
#ifndef STATION_DAYS_H
#define STATION_DAYS_H

#include <iosfwd>
#include <string>

namespace Station {

/// Writes a line per file of the daily log in `folder`, day by day and from the oldest to the newest: its name, the
/// number of its entries, and the moments of the first and the last; and an empty line. Gives the exit status:
/// iCANNOT_START if there is no such folder, iINCOMPLETE if no daily log lies there.
int ShowDays(std::ostream& out, const std::string& folder);

}  // namespace Station

#endif
