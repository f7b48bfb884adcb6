// Shows what a recording holds.
#ifndef STATION_REPLAY_H
#define STATION_REPLAY_H

#include <string>

namespace Station {

/// Writes the table and the verdicts of the samples in `file` to standard output, the same that the run showed, the
/// page to `report`, if that isn't empty, and an empty line. What is wrong with the recording goes to standard error,
/// in front of the table of what could be read. Gives the exit status.
int Replay(const std::string& file, const std::string& report);

}  // namespace Station

#endif
