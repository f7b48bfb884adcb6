#include "Platform/Faults.h"

#include <cxxabi.h>
#include <pthread.h>

#include <atomic>
#include <cstring>

#include "Platform/Linux/FaultContext.h"

namespace Oxa::Core::Platform {

namespace {

std::atomic<unsigned int> s_uErrorMode{0};

}  // namespace

// The runtime binds the reference of a cancellation to null, which only the sanitizer minds.
__attribute__((no_sanitize("undefined"))) void LetCancellationPass() {
  try {
    throw;
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    // An ordinary exception: the caller deals with it.
  }
}

HoldCancellation::HoldCancellation() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_iBefore); }

HoldCancellation::~HoldCancellation() { pthread_setcancelstate(m_iBefore, nullptr); }

FaultFacts FactsOf(const _EXCEPTION_POINTERS& pointers) noexcept {
  const _EXCEPTION_RECORD& record = *pointers.ExceptionRecord;
  return {record.m_uCode, record.m_uPlace, record.m_bWrite, record.m_uTouched};
}

void CopyBytes(void* to, const void* from, std::size_t count) { std::memcpy(to, from, count); }

unsigned int SetErrorMode(unsigned int mode) noexcept { return s_uErrorMode.exchange(mode); }

}  // namespace Oxa::Core::Platform
