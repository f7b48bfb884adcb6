// Where a death happens: on which thread, at which time of the process's life, within which call.
#ifndef OXACORE_TESTS_DEATHS_PLACES_H
#define OXACORE_TESTS_DEATHS_PLACES_H

#include "Ways.h"

namespace Deaths {

/// In static constructors. Does nothing if the place is a later one.
void DieEarly(const char* place, Way way);

/// In main, or wherever main leads; `threads` at once where the place is a thread. Gives whether there is such a
/// place. Returns if the death is one of those that come at the exit, or if it was survived.
bool DieAt(const char* place, Way way, int threads);

/// Whether the place is one where the library is to be initialised first.
bool IsInitialised(const char* place);

}  // namespace Deaths

#endif
