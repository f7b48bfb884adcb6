// Lets the user end the program early (Ctrl-C, or a request to terminate) without losing what was measured.
#ifndef STATION_INTERRUPTION_H
#define STATION_INTERRUPTION_H

namespace Station {

/// From now on the first interruption is only remembered; a second one ends the program at once.
void HeedInterruptions();

/// Whether there has been one.
bool IsInterrupted();

/// 128 plus the number of the signal, as shells have it; 0 if there has been no interruption.
int InterruptionStatus();

}  // namespace Station

#endif
