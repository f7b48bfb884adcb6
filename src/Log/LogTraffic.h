// Calls that are inside the log manager right now. It isn't destroyed under them.
#ifndef OXACORE_LOG_LOGTRAFFIC_H
#define OXACORE_LOG_LOGTRAFFIC_H

#include <Infrastructure/OxaCore/LogManager.h>

namespace Oxa::Core {

/// The log manager for the length of a call, or null. Stands on the stack of the calling thread.
class LogManagerInUse {
 public:
  LogManagerInUse() noexcept;
  LogManagerInUse(const LogManagerInUse&) = delete;
  LogManagerInUse& operator=(const LogManagerInUse&) = delete;
  ~LogManagerInUse();

  explicit operator bool() const noexcept { return m_pManager != nullptr; }
  LogManager* operator->() const noexcept { return m_pManager; }

 private:
  const bool m_bOutermost;  // of this thread
  LogManager* m_pManager;
};

/// For the manager, once Instance() is null: waits until no other thread has it in use any more, or for a second: a
/// handler may hang. A call may end the manager from within itself.
void AwaitLogCalls() noexcept;

}  // namespace Oxa::Core

#endif
