#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Lock.h>

namespace Oxa::Core {

namespace {

// A reference that came from a null pointer is a mistake worth telling, but a compiler that sees a reference
// takes the address for good and drops the test. So it passes through memory that it may not look through.
IMutex* AddressOf(const IMutex& mutex) {
  IMutex* const volatile address = const_cast<IMutex*>(&mutex);
  return address;
}

}  // namespace

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
