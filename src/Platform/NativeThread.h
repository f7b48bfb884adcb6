// Threads of the system: start, end, kill, priority.
#ifndef OXACORE_PLATFORM_NATIVETHREAD_H
#define OXACORE_PLATFORM_NATIVETHREAD_H

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstdint>

#include "Platform/Threads.h"

namespace Oxa::Core::Platform {

/// One thread, from before its start to long after its end. Nothing has to be closed or joined: the stack of a
/// thread that has ended is given back by those that end or are killed after it; but a thread that the system took
/// behind our back keeps its stack for ever.
class NativeThread {
 public:
  using Routine = unsigned int (*)(void* argument);

  /// One that isn't started, or null without memory.
  static boost::shared_ptr<NativeThread> Create() noexcept;

  /// Runs `routine(argument)` on a new thread, with a stack of at least `stackSize` bytes, and tells its id.
  /// Gives 0 or the system's code, and nothing has happened then. Once for each object.
  static int Start(const boost::shared_ptr<NativeThread>& thread, std::uint32_t stackSize, Routine routine,
                   void* argument, unsigned long& id) noexcept;

  /// Whether a thread that was started has ended, and what it gave: the result of its routine, the code of a
  /// kill, or 0 if it ended in another way.
  bool HasEnded(unsigned int& exitCode) noexcept;

  enum class EKillEnd {
    eKILLED,  ///< this call ended the thread
    eENDED,   ///< it had ended, was about to, or was being killed by another call
    eFAILED   ///< the system failed, or the thread couldn't be reached in time; it runs on
  };
  struct KillResult {
    EKillEnd m_eEnd;
    int m_iCode;  ///< the system's error code for eFAILED, else 0
  };

  /// Ends the thread where it stands: no destructor runs, no lock is given back, but see Kill.h. Waits until it
  /// has ended, until `deadline` at most. Doesn't return to a caller that is the victim.
  KillResult Kill(unsigned int exitCode, Deadline deadline) noexcept;

  /// `priority` is one of -15, -2, -1, 0, 1, 2 and 15. What the system refuses is no failure. Nothing happens
  /// to a thread that has ended.
  void SetPriority(int priority) noexcept;

  /// From here on a kill comes too late for the calling thread. Doesn't return if one was under way.
  static void RefuseKills() noexcept;

  /// The calling thread counts as ended, although it has a few steps to go.
  static void CountAsEnded() noexcept;

  /// What the calling thread was started with; 0 if it isn't one of these.
  static std::uint32_t OwnStackSize() noexcept;

  /// Waits, until `deadline` at most, until threads that are past RefuseKills are really gone: before the code that
  /// they run in goes away. Tells whether they are.
  static bool AwaitEnding(Deadline deadline) noexcept;

  // For Create, and for the list of those that have ended.
  NativeThread() noexcept = default;
  NativeThread(const NativeThread&) = delete;
  NativeThread& operator=(const NativeThread&) = delete;

 private:
  friend class KillState;
  friend class EndedThreads;
  class Body;

  enum EState : std::uint32_t { eRUNNING, eREFUSING, eBEING_KILLED, eDYING, eENDED };

  bool Change(EState from, EState to) noexcept;
  bool AwaitBegin(Deadline deadline) noexcept;
  unsigned long StartedId(unsigned long handle) noexcept;
  KillResult AwaitKilled(Deadline deadline) noexcept;
  bool IsGone() const noexcept;
  void SetEnded(unsigned int exitCode) noexcept;
  void LeaveParty() noexcept;
  [[noreturn]] void Vanish() noexcept;

  ShortLock m_lock;  // guards the step to eENDED: before it, the system's id is this thread's
  std::atomic<std::uint32_t> m_eState{eRUNNING};
  std::atomic<std::uint32_t> m_uId{0};  // 0 until the starter or the thread knows it
  std::atomic<bool> m_bBegun{false};    // the thread has told all about itself
  std::atomic<std::uint32_t> m_uParties{
      2};  // starter and thread: the last one to leave hands it on for the join
  std::atomic<unsigned int> m_uExitCode{0};
  unsigned int m_uKillCode = 0;
  std::uint32_t m_uStackSize = 0;
  unsigned long m_ulHandle = 0;  // the system's, for the join
  Routine m_pRoutine = nullptr;
  void* m_pArgument = nullptr;
  NativeThread* m_pNextEnded = nullptr;
  boost::shared_ptr<NativeThread> m_spSelf;  // from the start to the join
};

}  // namespace Oxa::Core::Platform

#endif
