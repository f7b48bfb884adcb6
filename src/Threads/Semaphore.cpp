#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Semaphore.h>

#include "Platform/Threads.h"
#include "Threads/SemaphoreTexts.h"
#include "Threads/WholeMilliseconds.h"

namespace Oxa::Core {

Semaphore::Semaphore(unsigned int initial) : m_hSemaphore(nullptr), m_uRefused(0) {
  int code;
  m_hSemaphore = Platform::CountingSemaphore::Create(initial, code);
  if (!OXA_ASSERT(0 != m_hSemaphore)) m_uRefused = initial;
}

Semaphore::~Semaphore() { Platform::CountingSemaphore::Destroy(m_hSemaphore); }

void Semaphore::Post(unsigned int amount) {
  OXA_ASSERT(amount > 0);
  if (m_hSemaphore == nullptr || m_hSemaphore->Post(amount) != 0) m_uRefused.fetch_add(amount);
}

void Semaphore::Wait() {
  if (m_hSemaphore != nullptr && m_hSemaphore->TryTake()) return;
  Succeeded(WaitBy(Platform::Deadline::Never()), g_semaphoreWaitTexts, OXA_CODE_SITE);
}

bool Semaphore::TimedWait(const Elapse& timeout) {
  if (m_hSemaphore != nullptr && m_hSemaphore->TryTake()) return true;
  return Succeeded(WaitBy(WholeMilliseconds(timeout)), g_semaphoreTimedWaitTexts, OXA_CODE_SITE);
}

Platform::WaitResult Semaphore::WaitBy(Platform::Deadline deadline) {
  return m_hSemaphore != nullptr ? m_hSemaphore->Wait(deadline) : Platform::NothingToWaitFor();
}

// A wait in a fixed place of the line; null waits without limit.
bool Semaphore::WaitInTurn(const Elapse* timeout, void (*inLine)(void* subject), void* subject) {
  const Platform::Deadline deadline =
      timeout != nullptr ? WholeMilliseconds(*timeout) : Platform::Deadline::Never();
  if (m_hSemaphore == nullptr) inLine(subject);
  const Platform::WaitResult result = m_hSemaphore != nullptr
                                          ? m_hSemaphore->WaitInTurn(deadline, inLine, subject)
                                          : Platform::NothingToWaitFor();
  if (timeout == nullptr) return Succeeded(result, g_semaphoreWaitTexts, OXA_CODE_SITE);
  return Succeeded(result, g_semaphoreTimedWaitTexts, OXA_CODE_SITE);
}

bool Semaphore::TryWait() { return TimedWait(Elapse(0, Elapse::Seconds)); }

unsigned int Semaphore::TryWaitForSome(unsigned int most) {
  return m_hSemaphore != nullptr ? m_hSemaphore->TryTakeSome(most) : 0;
}

unsigned int Semaphore::GetCount() const {
  return (m_hSemaphore != nullptr ? m_hSemaphore->Value() : 0) + m_uRefused.load();
}

}  // namespace Oxa::Core
