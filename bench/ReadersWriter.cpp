// A lock for many readers or one writer: a free read lock and its return, the same by two threads at once, a
// free write lock, and a reader that becomes the writer.
//
// Qt's lock is taken in its recursive form, as ours is. The standard's lock is neither recursive nor can it
// be upgraded; it stands here for scale.

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include "BenchSupport.h"

#include <shared_mutex>

#ifdef OXA_PEER_QT
#include <QReadWriteLock>
#endif
#ifdef OXA_PEER_BOOST
#include <boost/thread/shared_mutex.hpp>
#endif

namespace {

template <class Mutex, void (*Lock)(Mutex&), void (*Unlock)(Mutex&)>
void Pair(benchmark::State& state, Mutex& mutex) {
  if (state.threads() > 1) OxaBench::PinThisThread(static_cast<unsigned>(state.thread_index()));
  for (auto _ : state) {
    Lock(mutex);
    Unlock(mutex);
  }
  OxaBench::UnpinThisThread();
}

using Oxa::Core::ReadersWriterMutex;

ReadersWriterMutex& OurMutex() {
  static ReadersWriterMutex mutex;
  return mutex;
}

void Read(ReadersWriterMutex& mutex) { mutex.WaitReaderLock(); }
void Unread(ReadersWriterMutex& mutex) { mutex.ReaderUnlock(); }
void Write(ReadersWriterMutex& mutex) { mutex.WaitWriterLock(); }
void Unwrite(ReadersWriterMutex& mutex) { mutex.WriterUnlock(); }
void Upgrade(ReadersWriterMutex& mutex) {
  mutex.WaitReaderLock();
  mutex.WaitWriterLock();
}
void Downgrade(ReadersWriterMutex& mutex) {
  mutex.WriterUnlock();
  mutex.ReaderUnlock();
}

void OursRead(benchmark::State& state) { Pair<ReadersWriterMutex, Read, Unread>(state, OurMutex()); }
void OursWrite(benchmark::State& state) { Pair<ReadersWriterMutex, Write, Unwrite>(state, OurMutex()); }
void OursUpgrade(benchmark::State& state) { Pair<ReadersWriterMutex, Upgrade, Downgrade>(state, OurMutex()); }

OXA_BENCH("Reader pair, free", "Ours", OursRead);
OXA_BENCH("Reader pair, free", "Ours", OursRead)->Threads(2);
OXA_BENCH("Writer pair, free", "Ours", OursWrite);
OXA_BENCH("Reader becomes writer", "Ours", OursUpgrade);

#ifdef OXA_PEER_QT
QReadWriteLock& QtMutex() {
  static QReadWriteLock mutex(QReadWriteLock::Recursive);
  return mutex;
}

void Read(QReadWriteLock& mutex) { mutex.lockForRead(); }
void Write(QReadWriteLock& mutex) { mutex.lockForWrite(); }
void Unlock(QReadWriteLock& mutex) { mutex.unlock(); }

void QtRead(benchmark::State& state) { Pair<QReadWriteLock, Read, Unlock>(state, QtMutex()); }
void QtWrite(benchmark::State& state) { Pair<QReadWriteLock, Write, Unlock>(state, QtMutex()); }

OXA_BENCH("Reader pair, free", "Qt", QtRead);
OXA_BENCH("Reader pair, free", "Qt", QtRead)->Threads(2);
OXA_BENCH("Writer pair, free", "Qt", QtWrite);
#endif

#ifdef OXA_PEER_BOOST
boost::upgrade_mutex& BoostMutex() {
  static boost::upgrade_mutex mutex;
  return mutex;
}

void Read(boost::upgrade_mutex& mutex) { mutex.lock_shared(); }
void Unread(boost::upgrade_mutex& mutex) { mutex.unlock_shared(); }
void Write(boost::upgrade_mutex& mutex) { mutex.lock(); }
void Unwrite(boost::upgrade_mutex& mutex) { mutex.unlock(); }
void Upgrade(boost::upgrade_mutex& mutex) {
  mutex.lock_upgrade();
  mutex.unlock_upgrade_and_lock();
}
void Downgrade(boost::upgrade_mutex& mutex) {
  mutex.unlock_and_lock_upgrade();
  mutex.unlock_upgrade();
}

void BoostRead(benchmark::State& state) { Pair<boost::upgrade_mutex, Read, Unread>(state, BoostMutex()); }
void BoostWrite(benchmark::State& state) { Pair<boost::upgrade_mutex, Write, Unwrite>(state, BoostMutex()); }
void BoostUpgrade(benchmark::State& state) {
  Pair<boost::upgrade_mutex, Upgrade, Downgrade>(state, BoostMutex());
}

OXA_BENCH("Reader pair, free", "boost", BoostRead);
OXA_BENCH("Reader pair, free", "boost", BoostRead)->Threads(2);
OXA_BENCH("Writer pair, free", "boost", BoostWrite);
OXA_BENCH("Reader becomes writer", "boost", BoostUpgrade);
#endif

std::shared_mutex& StdMutex() {
  static std::shared_mutex mutex;
  return mutex;
}

void Read(std::shared_mutex& mutex) { mutex.lock_shared(); }
void Unread(std::shared_mutex& mutex) { mutex.unlock_shared(); }
void Write(std::shared_mutex& mutex) { mutex.lock(); }
void Unwrite(std::shared_mutex& mutex) { mutex.unlock(); }

void StdRead(benchmark::State& state) { Pair<std::shared_mutex, Read, Unread>(state, StdMutex()); }
void StdWrite(benchmark::State& state) { Pair<std::shared_mutex, Write, Unwrite>(state, StdMutex()); }

OXA_BENCH("Reader pair, free", "std", StdRead);
OXA_BENCH("Reader pair, free", "std", StdRead)->Threads(2);
OXA_BENCH("Writer pair, free", "std", StdWrite);

}  // namespace
