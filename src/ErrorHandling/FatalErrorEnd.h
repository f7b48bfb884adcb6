// How the threads of a dying process get out of each other's way.
//
// Several may die at once. Each leaves its record, as far as the limit for reports allows; then one ends the process,
// and the others stand still, so that nobody's record is cut off by another one's exit. Whoever hangs, the watch over
// the dying process ends it. Nothing here allocates or locks.
#ifndef OXACORE_ERRORHANDLING_FATALERROREND_H
#define OXACORE_ERRORHANDLING_FATALERROREND_H

namespace Oxa::Core {

/// The calling thread begins to die. From now on the process has ten seconds. Once more on the same thread is all
/// right: a fault on the way.
void BeginDying() noexcept;

/// For a child that was forked off: those who were dying are in the parent only, and nobody is to wait for them. Its
/// own death has an end, and a watch over that; but as the count of records isn't begun anew, it leaves none beyond the
/// limit that its parent's death has used up.
void ForgetDeathsOfParent() noexcept;

/// What ends the process where the host wants a signal for that: that of the first who says so.
void DieBySignal(int signal) noexcept;

/// The calling thread has left its record. Waits for the others that are dying, and ends the process: by the signal, or
/// by ExitAfterFatalError(status).
[[noreturn]] void FinishDying(int status);

/// For the unloading of the library, at its beginning: where other threads are dying, waits until they have left their
/// records. Where one of them ends the process already, the calling thread stands still from here on.
void AwaitDyingThreads() noexcept;

/// The same at its end, and then ends the process in the name of those for whom there was a wait: with status -1, not
/// with the one that the exit began with.
void FinishForTheDying();

}  // namespace Oxa::Core

#endif
