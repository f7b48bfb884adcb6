#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <Infrastructure/OxaCore/io/IOErrors.h>

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.BinaryInputStream";

}  // namespace

void AddLock(LockSet& locks, const IMutex& mutex) {
  const boost::shared_ptr<Lock> lock(new Lock(mutex, IMutex::sINFINITE));
  locks.insert(lock);
}

BinaryInputStream::BinaryInputStream() : m_listeners(NotificationSupport::eFIRST_ADDED_FIRST) {}
BinaryInputStream::~BinaryInputStream() = default;

void BinaryInputStream::Close() {}

long long BinaryInputStream::Read(void* buffer, long long count) {
  unsigned char* const bytes = static_cast<unsigned char*>(buffer);
  long long stored = 0;
  try {
    while (stored < count) {
      const int byte = Read();
      if (byte < 0) return stored != 0 ? stored : byte;
      bytes[stored++] = static_cast<unsigned char>(byte);
    }
  } catch (IOError& error) {
    OXA_RAISE_WARNING(sLOG_NAME, IOErrorDuringRead(count, stored, error.GetData(AlertInfo::sMESSAGE)));
  }
  return stored;
}

bool BinaryInputStream::Skip(unsigned long long count) {
  for (; count != 0; --count) {
    if (Read() < 0) return false;
  }
  return true;
}

void BinaryInputStream::AcquireReadLocks(LockSet&) {}

void BinaryInputStream::InvalidateAllBufferedInput(LockSet& locks) {
  locks.clear();
  TellListeners(locks);
  AcquireReadLocks(locks);
}

void BinaryInputStream::AddListener(Listener& listener) { m_listeners.AddListener(listener); }
void BinaryInputStream::RemoveListener(Listener& listener) { m_listeners.RemoveListener(listener); }

void BinaryInputStream::TellListeners(LockSet& locks) {
  if (!m_listeners.HasListeners()) return;
  InvalidateBufferedInputEvent event(locks);
  m_listeners.Broadcast(event);
}

BinaryInputStream::Listener::~Listener() = default;

BinaryInputStream::InvalidateBufferedInputEvent::InvalidateBufferedInputEvent(LockSet& locks)
    : m_locks(&locks) {}

void BinaryInputStream::InvalidateBufferedInputEvent::Notify(NotificationListener& listener) {
  if (auto* const stacked = dynamic_cast<Listener*>(&listener)) stacked->InvalidateBufferedInput(*m_locks);
}

BinaryInputStreamFilter::BinaryInputStreamFilter(BinaryInputStream& source) : m_source(&source) {
  source.AddListener(*this);
}

BinaryInputStreamFilter::~BinaryInputStreamFilter() = default;

void BinaryInputStreamFilter::Close() { m_source->Close(); }

long long BinaryInputStreamFilter::Read(void* buffer, long long count) {
  return m_source->Read(buffer, count);
}

int BinaryInputStreamFilter::Read() { return m_source->Read(); }
bool BinaryInputStreamFilter::Skip(unsigned long long count) { return m_source->Skip(count); }
unsigned long long BinaryInputStreamFilter::AvailableBytes() { return m_source->AvailableBytes(); }

void BinaryInputStreamFilter::InvalidateBufferedInput(LockSet& locks) {
  TellListeners(locks);
  AcquireReadLocks(locks);
  DoBufferedInputInvalidation();
}

void BinaryInputStreamFilter::DoBufferedInputInvalidation() {}

}  // namespace Oxa::Core
