// A stopwatch: a mark and a difference.
#include <Infrastructure/OxaCore/PerformanceTimer.h>

#include <chrono>

#include "BenchSupport.h"

#ifdef OXA_PEER_QT
#include <QElapsedTimer>
#endif

namespace {

using namespace Oxa::Core;
using Clock = std::chrono::steady_clock;

void OursMicroseconds(benchmark::State& state) {
  PerformanceTimer timer;
  for (auto _ : state) {
    timer.Mark();
    benchmark::DoNotOptimize(timer.DiffUSec_u());
  }
}
OXA_BENCH("Timer, mark and whole microseconds", "Ours", OursMicroseconds);

void StdMicroseconds(benchmark::State& state) {
  for (auto _ : state) {
    const Clock::time_point mark = Clock::now();
    benchmark::DoNotOptimize(
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - mark).count());
  }
}
OXA_BENCH("Timer, mark and whole microseconds", "std", StdMicroseconds);

void OursMilliseconds(benchmark::State& state) {
  PerformanceTimer timer;
  for (auto _ : state) {
    timer.Mark();
    benchmark::DoNotOptimize(timer.DiffMSec_d());
  }
}
OXA_BENCH("Timer, mark and milliseconds as a double", "Ours", OursMilliseconds);

void StdMilliseconds(benchmark::State& state) {
  for (auto _ : state) {
    const Clock::time_point mark = Clock::now();
    benchmark::DoNotOptimize(std::chrono::duration<double, std::milli>(Clock::now() - mark).count());
  }
}
OXA_BENCH("Timer, mark and milliseconds as a double", "std", StdMilliseconds);

#ifdef OXA_PEER_QT
void QtMicroseconds(benchmark::State& state) {
  QElapsedTimer timer;
  for (auto _ : state) {
    timer.start();
    benchmark::DoNotOptimize(timer.nsecsElapsed() / 1000);
  }
}
OXA_BENCH("Timer, mark and whole microseconds", "Qt", QtMicroseconds);

void QtMilliseconds(benchmark::State& state) {
  QElapsedTimer timer;
  for (auto _ : state) {
    timer.start();
    benchmark::DoNotOptimize(static_cast<double>(timer.nsecsElapsed()) * 1e-6);
  }
}
OXA_BENCH("Timer, mark and milliseconds as a double", "Qt", QtMilliseconds);
#endif

}  // namespace
