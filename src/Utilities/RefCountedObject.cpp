#include <Infrastructure/OxaCore/RefCountedObject.h>

#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/Time.h>

namespace Oxa::Core {

// One atomic number stands where a mutex around a number would: each operation is one step either way, and
// here Release has nothing left to touch (a mutex to unlock) once an owner may see 0 and delete the object.
RefCountedObject::RefCountedObject() : m_refCount(0) {}

RefCountedObject::~RefCountedObject() { OXA_ASSERT(m_refCount == 0); }

int RefCountedObject::AddRef() { return m_refCount.fetch_add(1, std::memory_order_relaxed) + 1; }

int RefCountedObject::Release() {
  const std::int32_t left = m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  // Tested on our copy: the object may be gone by now.
  if (left < 0) OXA_CODE_SITE.FailAssertion("m_refCount >= 0");
  return left;
}

int RefCountedObject::GetRefCount() const { return m_refCount.load(std::memory_order_acquire); }

bool RefCountedObject::PollForZeroRefCount(const Elapse& timeout, const Elapse& pollInterval) {
  const Time deadline(timeout);
  bool waiting = true;
  while (waiting) {
    waiting = GetRefCount() > 0 && deadline.TimeLeft() > Elapse();
    OxaSleep(pollInterval, false);
  }
  return GetRefCount() == 0;
}

}  // namespace Oxa::Core
