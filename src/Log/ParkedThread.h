// The thread of the log manager, once it has ended.
//
// The death of a Thread takes a tenth of a second. A process that ends has no use for it: the object stays where it
// is. Only where the library is taken out of a process that goes on it is destroyed.
#ifndef OXACORE_LOG_PARKEDTHREAD_H
#define OXACORE_LOG_PARKEDTHREAD_H

#include <Infrastructure/OxaCore/Thread.h>

#include <boost/shared_ptr.hpp>

namespace Oxa::Core {

/// Waits for the last steps of a thread that isn't running any more, a second at most, and takes the reference
/// over. Null does nothing. There is room for one; a second one is destroyed at once.
void ParkThread(boost::shared_ptr<Thread>& thread);

/// Destroys it, if there is one.
void DestroyParkedThread();

}  // namespace Oxa::Core

#endif
