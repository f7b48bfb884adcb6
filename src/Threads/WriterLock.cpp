#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include "Threads/LockAddress.h"

namespace Oxa::Core {

WriterLock::WriterLock(const ReadersWriterMutex& mutex) : WriterLock(AddressOf(mutex)) {}

WriterLock::WriterLock(const ReadersWriterMutex* mutex) : m_rwMutex(const_cast<ReadersWriterMutex*>(mutex)) {
  if (!OXA_ASSERT(m_rwMutex != 0)) return;
  m_rwMutex->WaitWriterLock();
}

WriterLock::~WriterLock() {
  try {
    Release();
  } catch (...) {
    // A scope that ends can't hand errors on; those of ours have been told when they were raised.
  }
}

void WriterLock::Release() {
  if (m_rwMutex == nullptr) return;
  ReadersWriterMutex& mutex = *m_rwMutex;
  m_rwMutex = nullptr;
  mutex.WriterUnlock();
}

void WriterLock::Reset(const ReadersWriterMutex& mutex) {
  if (m_rwMutex == &mutex) return;
  Release();
  ReadersWriterMutex& next = const_cast<ReadersWriterMutex&>(mutex);
  next.WaitWriterLock();
  m_rwMutex = &next;
}

}  // namespace Oxa::Core
