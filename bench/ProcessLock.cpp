// One process locks and unlocks what nobody else wants, by a name that all processes share. Ours and "flock" know
// when an owner died with the lock; boost's waits for ever then, and Poco's and Qt's just come free.
#include <Infrastructure/OxaCore/ProcessMutex.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <string>

#include "BenchSupport.h"

#ifdef OXA_PEER_QT
#include <QSharedMemory>
#include <QSystemSemaphore>
#endif
#ifdef OXA_PEER_POCO
#include <Poco/NamedMutex.h>
#endif
#ifdef OXA_PEER_BOOST
#include <boost/interprocess/sync/named_recursive_mutex.hpp>
#endif

namespace {

std::string Name() { return "OxaBench" + std::to_string(::getpid()); }

void OursPair(benchmark::State& state) {
  Oxa::Core::ProcessMutex mutex(Name());
  for (auto _ : state) {
    mutex.Lock();
    mutex.Unlock();
  }
  ::unlink(("/dev/shm/oxacore.lock.Global%5C" + Name()).c_str());
}
OXA_BENCH("Named process lock pair, free", "Ours", OursPair);

void FlockPair(benchmark::State& state) {
  const std::string name = "/tmp/" + Name();
  const int file = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  for (auto _ : state) {
    ::flock(file, LOCK_EX);
    ::flock(file, LOCK_UN);
  }
  ::close(file);
  ::unlink(name.c_str());
}
OXA_BENCH("Named process lock pair, free", "flock", FlockPair);

#ifdef OXA_PEER_POCO
void PocoPair(benchmark::State& state) {
  Poco::NamedMutex mutex(Name());
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
OXA_BENCH("Named process lock pair, free", "Poco", PocoPair);
#endif

#ifdef OXA_PEER_QT
void QtPair(benchmark::State& state) {
  QSystemSemaphore semaphore(QString::fromStdString(Name()), 1, QSystemSemaphore::Create);
  for (auto _ : state) {
    semaphore.acquire();
    semaphore.release();
  }
}
OXA_BENCH("Named process lock pair, free", "Qt", QtPair);

void QtSharedMemoryPair(benchmark::State& state) {
  QSharedMemory memory(QString::fromStdString(Name()));
  if (!memory.create(1)) state.SkipWithError("no shared memory");
  for (auto _ : state) {
    memory.lock();
    memory.unlock();
  }
}
OXA_BENCH("Named process lock pair, free", "Qt shared memory", QtSharedMemoryPair);
#endif

#ifdef OXA_PEER_BOOST
void BoostPair(benchmark::State& state) {
  namespace Interprocess = boost::interprocess;
  Interprocess::named_recursive_mutex mutex(Interprocess::open_or_create, Name().c_str());
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
  Interprocess::named_recursive_mutex::remove(Name().c_str());
}
OXA_BENCH("Named process lock pair, free", "boost", BoostPair);
#endif

}  // namespace
