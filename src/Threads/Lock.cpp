#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Lock.h>

#include "Threads/LockAddress.h"

namespace Oxa::Core {

Lock::Lock(const IMutex& mutex, const Elapse& timeout) : m_Mutex(AddressOf(mutex)) {
  if (!OXA_ASSERT(m_Mutex != 0)) return;
  m_Mutex->Lock(timeout);
}

Lock::~Lock() {
  try {
    Release();
  } catch (...) {
    // A destructor can't tell; whoever has to know releases by hand.
  }
}

void Lock::Release() {
  IMutex* const held = m_Mutex;
  m_Mutex = nullptr;
  if (held != nullptr) held->Unlock();
}

}  // namespace Oxa::Core
