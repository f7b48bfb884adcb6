// One thread posts and takes: what a counted resource costs while there is enough of it.
#include <Infrastructure/OxaCore/Semaphore.h>

#include <semaphore.h>

#include "BenchSupport.h"

#ifdef OXA_PEER_QT
#include <QSemaphore>
#endif

namespace {

void OursPair(benchmark::State& state) {
  Oxa::Core::Semaphore semaphore(1);
  for (auto _ : state) {
    semaphore.Wait();
    semaphore.Post(1);
  }
}
OXA_BENCH("Semaphore pair, free", "Ours", OursPair);

void PosixPair(benchmark::State& state) {
  sem_t semaphore;
  sem_init(&semaphore, 0, 1);
  for (auto _ : state) {
    sem_wait(&semaphore);
    sem_post(&semaphore);
  }
  sem_destroy(&semaphore);
}
OXA_BENCH("Semaphore pair, free", "POSIX", PosixPair);

#ifdef OXA_PEER_QT
void QtPair(benchmark::State& state) {
  QSemaphore semaphore(1);
  for (auto _ : state) {
    semaphore.acquire();
    semaphore.release();
  }
}
OXA_BENCH("Semaphore pair, free", "Qt", QtPair);
#endif

}  // namespace
