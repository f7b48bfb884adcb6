// The lock of a stream that is called byte by byte.
//
// Thread safety: that of Mutex: any thread may use any operation, only the owner may unlock. It stands where the lock
// of its stream stands in the order of locks (BinaryStreams.h), and takes no other.
// Failures: those of Mutex (Lock.h).
//
//   StreamMutex m_mutex;  // guards m_buffer
//   ...
//   const Lock lock(m_mutex);
#ifndef INFRASTRUCTURE_OXACORE_IO_STREAMMUTEX_H
#define INFRASTRUCTURE_OXACORE_IO_STREAMMUTEX_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>

namespace Oxa::Core {

namespace Platform {
class LockBias;
}

/// A Mutex, with the same contract in all. Between stream and lock there is more: a thread that calls the stream over
/// and over, with nobody between, passes the lock for what touches only the buffer, and that excludes whoever holds
/// the lock just as well. For a stream that changes hands at every call it is a plain Mutex.
///
/// Who takes it while a thread passes waits until that one is through: a few instructions, or as long as the system
/// keeps that thread from running. A time limit doesn't cut that wait short.
class OXACORE_API StreamMutex : public Mutex {
 public:
  StreamMutex();
  ~StreamMutex() override;

  /// As those of Mutex.
  void Lock(const Elapse& timeout = sINFINITE) override;
  bool TryLock(const Elapse& timeout = sNO_WAIT) override;

 private:
  friend class StreamPassage;

  Platform::LockBias& Bias();

  alignas(void*) unsigned char m_room[88];  ///< for the system's part, as in Mutex
};

}  // namespace Oxa::Core

#endif
