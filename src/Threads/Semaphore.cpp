#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Semaphore.h>

#include "Platform/Threads.h"
#include "Threads/SemaphoreTexts.h"
#include "Threads/WholeMilliseconds.h"

namespace Oxa::Core {

namespace {

constexpr char sSOME_POSTED[] = "amount > 0";

// By itself, so that the usual post has no frame.
[[gnu::noinline]] void PostSlowly(Platform::CountingSemaphore* semaphore, std::atomic<unsigned int>& refused,
                                  unsigned int amount, const CodeSite& site) {
  if (amount == 0) site.FailAssertion(sSOME_POSTED);
  if (semaphore == nullptr || semaphore->Post(amount) != 0) refused.fetch_add(amount);
}

}  // namespace

Semaphore::Semaphore(unsigned int initial) : m_hSemaphore(nullptr), m_uRefused(0) {
  int code;
  m_hSemaphore = Platform::CountingSemaphore::Create(initial, code);
  if (!OXA_ASSERT(0 != m_hSemaphore)) m_uRefused = initial;
}

Semaphore::~Semaphore() { Platform::CountingSemaphore::Destroy(m_hSemaphore); }

void Semaphore::Post(unsigned int amount) {
  static constexpr CodeSite s_site = OXA_CODE_SITE;
  if (amount > 0 && m_hSemaphore != nullptr && m_hSemaphore->PostAtOnce(amount)) return;
  PostSlowly(m_hSemaphore, m_uRefused, amount, s_site);
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
