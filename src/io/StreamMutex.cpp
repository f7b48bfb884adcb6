#include <Infrastructure/OxaCore/io/StreamMutex.h>

#include "io/StreamPassage.h"

namespace Oxa::Core {

StreamMutex::StreamMutex() {
  static_assert(sizeof(Platform::LockBias) <= sizeof m_room, "the room in the header is too small");
  static_assert(alignof(Platform::LockBias) <= alignof(void*), "the room in the header is not aligned");
  ::new (static_cast<void*>(m_room)) Platform::LockBias;
}

StreamMutex::~StreamMutex() = default;

// With a limit the lock is taken by the TryLock below, or not at all: where a raise returns, this comes back without
// it, and may not speak for who has it.
void StreamMutex::Lock(const Elapse& timeout) {
  Mutex::Lock(timeout);
  if (timeout.GetRawTimerTicks() == sINFINITE.GetRawTimerTicks()) Bias().Taken();
}

bool StreamMutex::TryLock(const Elapse& timeout) {
  const bool locked = Mutex::TryLock(timeout);
  if (locked) Bias().Taken();
  return locked;
}

}  // namespace Oxa::Core
