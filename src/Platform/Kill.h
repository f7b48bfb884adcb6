// What makes it bearable that a thread can be ended where it stands: moments in which it isn't ended, and things
// that are put right if it is.
//
// Only threads of NativeThread are ever killed; to all others nothing here makes a difference. Everything belongs
// to the calling thread and to the scope that made it. Nothing allocates, fails or locks.
#ifndef OXACORE_PLATFORM_KILL_H
#define OXACORE_PLATFORM_KILL_H

namespace Oxa::Core::Platform {

/// Keeps a kill of this thread waiting while it stands, or until Release. A sleep in a wait of the seam counts
/// as outside when nothing but the wait itself holds. For what ends soon.
class HoldKill {
 public:
  HoldKill() noexcept { Take(); }
  HoldKill(const HoldKill&) = delete;
  HoldKill& operator=(const HoldKill&) = delete;
  ~HoldKill() {
    if (m_bHeld) Release();
  }

  /// May not return: a kill that waits is carried out here.
  void Release() noexcept;
  void Take() noexcept;

 private:
  bool m_bHeld = false;
};

/// Calls `action` with `subject` if this thread is killed while it stands. The newest comes first. What the thread
/// was doing may be half done, so an action goes by what it finds; it runs on the dying thread, may use short
/// locks and set events, and may neither allocate nor wait.
class KillCleanUp {
 public:
  using Action = void (*)(void* subject);

  KillCleanUp(Action action, void* subject) noexcept;
  KillCleanUp(const KillCleanUp&) = delete;
  KillCleanUp& operator=(const KillCleanUp&) = delete;
  ~KillCleanUp();

 private:
  friend class KillState;

  const Action m_pAction;
  void* const m_pSubject;
  KillCleanUp* m_pOuter;
};

}  // namespace Oxa::Core::Platform

#endif
