#include <sched.h>
#include <sys/resource.h>

#include "Platform/NativeThread.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iIDLE = -15;
constexpr int iTIME_CRITICAL = 15;

// -2 to 2. An unprivileged process may only go down.
int Niceness(int priority) noexcept { return -5 * priority; }

void SetPolicy(pid_t thread, int policy, int priority) noexcept {
  sched_param parameters = {};
  parameters.sched_priority = priority;
  sched_setscheduler(thread, policy, &parameters);
}

}  // namespace

void NativeThread::SetPriority(int priority) noexcept {
  const ShortGuard guard(m_lock);
  const pid_t thread = static_cast<pid_t>(m_uId.load(std::memory_order_acquire));
  if (thread == 0 || m_eState.load() == eENDED) return;
  if (priority == iIDLE) return SetPolicy(thread, SCHED_IDLE, 0);
  if (priority == iTIME_CRITICAL) return SetPolicy(thread, SCHED_RR, 1);
  SetPolicy(thread, SCHED_OTHER, 0);
  setpriority(PRIO_PROCESS, static_cast<id_t>(thread), Niceness(priority));
}

}  // namespace Oxa::Core::Platform
