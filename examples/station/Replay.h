// Shows what a recording holds.
#ifndef STATION_REPLAY_H
#define STATION_REPLAY_H

#include <string>

namespace Station {

/// Writes the table of the samples in `file` to standard output, the same that the run showed, and an empty line. What is wrong with
/// the recording goes to standard error, in front of the table of what could be read. Gives the exit status.
int Replay(const std::string& file);

}  // namespace Station

#endif
