// Loggers that are peers in one respect only: what a call costs that nobody listens to.
#include "LogSupport.h"

#ifdef OXA_PEER_GLOG
#include <glog/logging.h>
#endif
#ifdef OXA_PEER_QT
#include <QLoggingCategory>
#endif

namespace {

#ifdef OXA_PEER_GLOG
void Glog(benchmark::State& state) {
  int number = 0;
  for (auto _ : state) {
    VLOG(2) << "Channel " << ++number;
    benchmark::ClobberMemory();
  }
}
OXA_BENCH("Log, disabled", "glog", Glog);
#endif

#ifdef OXA_PEER_QT
Q_LOGGING_CATEGORY(category, "bench.channel", QtInfoMsg)

void Qt(benchmark::State& state) {
  int number = 0;
  for (auto _ : state) {
    ++number;
    qCDebug(category, OXA_BENCH_MESSAGE, OXA_BENCH_ARGUMENTS(number));
    benchmark::ClobberMemory();
  }
}
OXA_BENCH("Log, disabled", "Qt", Qt);
#endif

}  // namespace
