// Deaths that are more than one faulting instruction: what nobody catches, threads, and broken surroundings.
#ifndef STATION_OTHERDEATHS_H
#define STATION_OTHERDEATHS_H

namespace Station {

void LeaveErrorUncaught();
void LeaveExceptionUncaught();
void LeaveNumberUncaught();
void DieOnThread();
void DieOnBareThread();
void DieOnThreadsAtOnce();
void DieWithBrokenListener();
void BreakHeap();
void CallAbort();

/// Returns: an object of this file dies after main, and faults then.
void DieInStaticDestructor();

}  // namespace Station

#endif
