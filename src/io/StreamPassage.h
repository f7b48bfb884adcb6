// Passing a stream's lock without taking it.
#ifndef OXACORE_IO_STREAMPASSAGE_H
#define OXACORE_IO_STREAMPASSAGE_H

#include <Infrastructure/OxaCore/io/StreamMutex.h>

#include <new>

#include "Platform/LockBias.h"

namespace Oxa::Core {

inline Platform::LockBias& StreamMutex::Bias() {
  return *std::launder(reinterpret_cast<Platform::LockBias*>(m_room));
}

/// Tries to pass, for the length of a scope; for what touches the buffer and calls nobody. Whoever doesn't get
/// through ends the scope and takes the lock.
class StreamPassage {
 public:
  explicit StreamPassage(StreamMutex& mutex) : m_passage(mutex.Bias()) {}

  explicit operator bool() const { return static_cast<bool>(m_passage); }

  /// Does `step` on the way through, if the thread gets through; false if not, or if `step` says so. `step` touches
  /// nothing but what belongs to the stream, so that it can't fault.
  template <class Step>
  static bool Pass(StreamMutex& mutex, const Step& step) {
    return mutex.Bias().Pass(step);
  }

 private:
  const Platform::LockBias::Passage m_passage;
};

}  // namespace Oxa::Core

#endif
