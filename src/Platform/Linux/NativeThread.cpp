#include "Platform/NativeThread.h"

#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <boost/make_shared.hpp>

#include "Platform/Kill.h"
#include "Platform/Linux/EndedThreads.h"
#include "Platform/Linux/FaultStacks.h"
#include "Platform/Linux/Futex.h"
#include "Platform/Linux/KillSignal.h"
#include "Platform/Linux/KillState.h"
#include "Platform/Linux/ThreadIds.h"

namespace Oxa::Core::Platform {

namespace {

// Address space only, until it is touched.
#if defined(__SANITIZE_THREAD__)
constexpr std::size_t uLEAST_STACK = 2u << 20;  // the sanitizer keeps most of a megabyte of it for itself
#else
constexpr std::size_t uLEAST_STACK = 1u << 20;
#endif
constexpr long long iLOOK_EVERY = 50 * 1000000;  // nanoseconds
constexpr long long iWAIT_A_MOMENT = 100000;
constexpr std::uint32_t uHELD_FOR_EVER = 1u << 30;

// How the next thread is to be made.
class Attributes {
 public:
  Attributes() noexcept { pthread_attr_init(&m_attributes); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { pthread_attr_destroy(&m_attributes); }

  int SetStackSize(std::uint32_t size) noexcept {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t wanted = std::max<std::size_t>(size, uLEAST_STACK);
    return pthread_attr_setstacksize(&m_attributes, (wanted + page - 1) / page * page);
  }

  // A host may block all signals before it makes threads; a kill is to get through.
  int LetThrough(int signal) noexcept {
    sigset_t mask;
    if (signal == 0 || pthread_sigmask(SIG_SETMASK, nullptr, &mask) != 0 || sigismember(&mask, signal) != 1)
      return 0;
    sigdelset(&mask, signal);
    return pthread_attr_setsigmask_np(&m_attributes, &mask);
  }

  const pthread_attr_t* Get() const noexcept { return &m_attributes; }

 private:
  pthread_attr_t m_attributes;
};

// What keys hold for a thread is dropped at its end, and the system relies on that when it uses the thread's memory
// for another: after an end without destructors the next thread would find the data of the dead one.
void ForgetDataOfKeys() noexcept {
  for (pthread_key_t key = 0; key != PTHREAD_KEYS_MAX; ++key) pthread_setspecific(key, nullptr);
}

// The system library knows it before the thread runs, but tells it only in the number of the thread's clock. 0 for a
// thread that has ended.
std::uint32_t IdOf(pthread_t handle) noexcept {
  clockid_t clock;
  if (pthread_getcpuclockid(handle, &clock) != 0) return 0;
  const int id = ~(clock >> 3);
  return id > 0 ? static_cast<std::uint32_t>(id) : 0;
}

void WaitAMoment() noexcept {
  const std::uint32_t word = 0;
  FutexWait(&word, 0, Deadline::In(iWAIT_A_MOMENT));
}

Deadline NextLook(Deadline deadline) noexcept {
  if (deadline.IsNever()) return Deadline::In(iLOOK_EVERY);
  return Deadline::In(std::clamp(deadline.NanosecondsLeft(), iWAIT_A_MOMENT, iLOOK_EVERY));
}

}  // namespace

void KillState::CarryOut() noexcept {
  m_bPending = false;
  if (m_pThread == nullptr || !m_pThread->Change(NativeThread::eBEING_KILLED, NativeThread::eDYING)) return;
  m_uHolds = uHELD_FOR_EVER;
  for (KillCleanUp* cleanUp = m_pInnermost; cleanUp != nullptr; cleanUp = cleanUp->m_pOuter)
    cleanUp->m_pAction(cleanUp->m_pSubject);
  m_pThread->Vanish();
}

// The road of a thread, whatever it leaves by: its end, or an exit that unwinds.
class NativeThread::Body {
 public:
  static void* Run(void* argument) {
    Body body(*static_cast<NativeThread*>(argument));
    body.m_uExitCode = body.m_self.m_pRoutine(body.m_self.m_pArgument);
    return nullptr;
  }

 private:
  explicit Body(NativeThread& self) noexcept : m_self(self) {
    t_kill.SetThread(&self);
    KnownThreadId() = IdOf(pthread_self());
    self.m_ulHandle = static_cast<unsigned long>(pthread_self());
    self.m_uId.store(static_cast<std::uint32_t>(CurrentThreadId()));
    self.m_bBegun.store(true, std::memory_order_release);
  }
  ~Body() {
    RefuseKills();
    EndedThreads::JoinGone();
    m_self.SetEnded(m_uExitCode);
    m_self.LeaveParty();
  }

  NativeThread& m_self;
  unsigned int m_uExitCode = 0;
};

boost::shared_ptr<NativeThread> NativeThread::Create() noexcept {
  try {
    return boost::make_shared<NativeThread>();
  } catch (...) {
    return boost::shared_ptr<NativeThread>();
  }
}

int NativeThread::Start(const boost::shared_ptr<NativeThread>& thread, std::uint32_t stackSize,
                        Routine routine, void* argument, unsigned long& id) noexcept {
  const HoldKill hold;
  Attributes attributes;
  if (const int code = attributes.SetStackSize(stackSize)) return code;
  if (const int code = attributes.LetThrough(KillSignal())) return code;
  thread->m_uStackSize = stackSize;
  thread->m_pRoutine = routine;
  thread->m_pArgument = argument;
  thread->m_spSelf = thread;
  pthread_t handle;
  const int code = pthread_create(&handle, attributes.Get(), &Body::Run, thread.get());
  if (code != 0) {
    thread->m_spSelf.reset();
    return code;
  }
  id = thread->StartedId(static_cast<unsigned long>(handle));
  thread->LeaveParty();
  return 0;
}

// Much cheaper than to wait for the thread. One that has ended meanwhile has left its id.
unsigned long NativeThread::StartedId(unsigned long handle) noexcept {
  if (m_uId.load() == 0) {
    if (const std::uint32_t id = IdOf(static_cast<pthread_t>(handle))) m_uId.store(id);
  }
  if (m_uId.load() == 0) AwaitBegin(Deadline::Never());
  return m_uId.load();
}

bool NativeThread::AwaitBegin(Deadline deadline) noexcept {
  while (!m_bBegun.load(std::memory_order_acquire)) {
    if (deadline.HasPassed()) return false;
    WaitAMoment();
  }
  return true;
}

bool NativeThread::Change(EState from, EState to) noexcept {
  std::uint32_t expected = from;
  return m_eState.compare_exchange_strong(expected, to);
}

// The system ended it behind our back if it is gone without having said so. Such a thread is never joined: nobody has
// dropped what keys hold for it, and the next thread would get that with the memory.
bool NativeThread::HasEnded(unsigned int& exitCode) noexcept {
  if (IsGone() && !Change(eRUNNING, eENDED)) Change(eREFUSING, eENDED);
  exitCode = m_uExitCode.load();
  return m_eState.load() == eENDED;
}

bool NativeThread::IsGone() const noexcept {
  return m_bBegun.load(std::memory_order_acquire) && m_eState.load() != eENDED && ThreadIsGone(m_uId.load());
}

void NativeThread::SetEnded(unsigned int exitCode) noexcept {
  const ShortGuard guard(m_lock);
  if (m_eState.load() == eENDED) return;
  m_uExitCode.store(exitCode);
  m_eState.store(eENDED);
}

// Until both have left, the starter may use the system's handle, and nobody may join.
void NativeThread::LeaveParty() noexcept {
  if (m_uParties.fetch_sub(1) == 1) EndedThreads::Add(*this);
}

void NativeThread::Vanish() noexcept {
  AbandonAlternateStack();
  ForgetDataOfKeys();
  EndedThreads::Expect();
  SetEnded(m_uKillCode);
  FutexWake(&m_eState, INT_MAX);
  LeaveParty();
  while (true) syscall(SYS_exit, 0);
}

NativeThread::KillResult NativeThread::Kill(unsigned int exitCode, Deadline deadline) noexcept {
  const int signal = CheckedKillSignal();
  if (signal == 0) return {EKillEnd::eFAILED, EAGAIN};
  if (!AwaitBegin(deadline)) return {EKillEnd::eFAILED, ETIMEDOUT};
  unsigned int ignored;
  if (HasEnded(ignored)) return {EKillEnd::eENDED, 0};
  {
    const ShortGuard guard(m_lock);
    if (m_eState.load() == eRUNNING) m_uKillCode = exitCode;
    if (!Change(eRUNNING, eBEING_KILLED)) return {EKillEnd::eENDED, 0};
  }
  syscall(SYS_tgkill, getpid(), static_cast<pid_t>(m_uId.load()), signal);
  return AwaitKilled(deadline);
}

// A kill that doesn't reach its victim in time is taken back.
NativeThread::KillResult NativeThread::AwaitKilled(Deadline deadline) noexcept {
  std::uint32_t state;
  while ((state = m_eState.load()) != eENDED) {
    if (ThreadIsGone(m_uId.load()) && Change(eBEING_KILLED, eENDED)) return {EKillEnd::eENDED, 0};
    if (state == eBEING_KILLED && deadline.HasPassed() && Change(eBEING_KILLED, eRUNNING))
      return {EKillEnd::eFAILED, ETIMEDOUT};
    FutexWait(&m_eState, state, NextLook(deadline));
  }
  // Locks that it held count as abandoned from the moment when the system knows it no more.
  while (!ThreadIsGone(m_uId.load()) && !deadline.HasPassed()) WaitAMoment();
  EndedThreads::JoinGone();
  return {EKillEnd::eKILLED, 0};
}

void NativeThread::RefuseKills() noexcept {
  NativeThread* const self = t_kill.Thread();
  if (self == nullptr) return;
  while (!self->Change(eRUNNING, eREFUSING)) {
    if (self->m_eState.load() == eREFUSING || self->m_eState.load() == eENDED) return;
    t_kill.CarryOut();  // comes back if the killer has given up in this moment
  }
  EndedThreads::Expect();
}

void NativeThread::CountAsEnded() noexcept {
  RefuseKills();
  if (t_kill.Thread() != nullptr) t_kill.Thread()->SetEnded(0);
}

std::uint32_t NativeThread::OwnStackSize() noexcept {
  return t_kill.Thread() != nullptr ? t_kill.Thread()->m_uStackSize : 0;
}

bool NativeThread::AwaitEnding(Deadline deadline) noexcept {
  const NativeThread* const self = t_kill.Thread();
  const unsigned int own = self != nullptr && self->m_eState.load() != eRUNNING ? 1 : 0;
  while (true) {
    EndedThreads::JoinGone();
    if (EndedThreads::Count() <= own) return true;
    if (deadline.HasPassed()) return false;
    WaitAMoment();
  }
}

}  // namespace Oxa::Core::Platform
