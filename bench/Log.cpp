// Logging: what a call costs its caller, what a call that nobody listens to costs, and lines into a file.
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/System.h>

#include <boost/shared_ptr.hpp>
#include <string>

#include "LogSupport.h"

namespace {

using namespace OxaBench;
using Oxa::Core::LogManager;

class Ours {
 public:
  Ours() : m_logger(LogManager::Instance()->GetLogger("Bench.Channel")) {}
  void Write(int number) {
    m_logger->WriteLog(Oxa::Core::eLOG_INFORMATIONAL, OXA_BENCH_MESSAGE, OXA_BENCH_ARGUMENTS(number));
  }
  void WriteDisabled(int number) {
    m_logger->WriteLog(Oxa::Core::eLOG_DEBUG, OXA_BENCH_MESSAGE, OXA_BENCH_ARGUMENTS(number));
  }
  void Flush() {}

 private:
  boost::shared_ptr<Oxa::Core::Logger> m_logger;
};

// The default log of this process, away from its program.
LogFile& DefaultLog() {
  static LogFile* const file = [] {
    Oxa::Core::System::Instance()->SetProcessPath(LogFolder::Path());
    return new LogFile(LogFolder::Path() + "DefaultLog.entries", LogFolder::Path() + "DefaultLog.archive",
                       1400000);
  }();
  return *file;
}

template <int Threads>
void OursCallersCost(benchmark::State& state) {
  Ours log;
  CallersCost(state, log, DefaultLog(), Threads);
}
OXA_BENCH_LOG("Log, enabled, caller's cost", "Ours", OursCallersCost<1>);
OXA_BENCH_LOG("Log, enabled, caller's cost, 4 threads", "Ours", OursCallersCost<4>);

void OursDisabled(benchmark::State& state) {
  Ours log;
  int number = 0;
  for (auto _ : state) log.WriteDisabled(++number);
}
OXA_BENCH("Log, disabled", "Ours", OursDisabled);

void OursEndToEnd(benchmark::State& state) {
  Ours log;
  EndToEnd(state, log, DefaultLog());
}
OXA_BENCH_LOG("Log, end to end, flushed file", "Ours", OursEndToEnd);

}  // namespace
