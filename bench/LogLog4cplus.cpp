#ifdef OXA_PEER_LOG4CPLUS
#include <log4cplus/asyncappender.h>
#include <log4cplus/configurator.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <ios>
#include <memory>

#include "LogSupport.h"

namespace {

using namespace OxaBench;

class Log4cplus {
 public:
  Log4cplus(const LogFile& file, bool async) : m_logger(log4cplus::Logger::getInstance(file.Name())) {
    static log4cplus::Initializer* const initializer = new log4cplus::Initializer;
    static_cast<void>(initializer);
    log4cplus::SharedAppenderPtr appender(new log4cplus::FileAppender(file.Name(), std::ios_base::app));
    appender->setLayout(
        std::make_unique<log4cplus::PatternLayout>("[%D{%Y-%m-%d %H:%M:%S.%q}] [%p] [Bench.Channel] %m%n"));
    if (async) appender = log4cplus::SharedAppenderPtr(new log4cplus::AsyncAppender(appender, 8192));
    m_logger.setAdditivity(false);
    m_logger.setLogLevel(log4cplus::INFO_LOG_LEVEL);
    m_logger.addAppender(appender);
  }
  Log4cplus(const Log4cplus&) = delete;
  Log4cplus& operator=(const Log4cplus&) = delete;
  ~Log4cplus() { m_logger.removeAllAppenders(); }

  void Write(int number) { LOG4CPLUS_INFO_FMT(m_logger, OXA_BENCH_MESSAGE, OXA_BENCH_ARGUMENTS(number)); }
  void WriteDisabled(int number) {
    LOG4CPLUS_DEBUG_FMT(m_logger, OXA_BENCH_MESSAGE, OXA_BENCH_ARGUMENTS(number));
  }
  void Flush() {}

 private:
  log4cplus::Logger m_logger;
};

template <int Threads>
void CallersCostAsync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "log4cplus.async" + std::to_string(Threads));
  Log4cplus log(file, true);
  CallersCost(state, log, file, Threads);
}
OXA_BENCH_LOG("Log, enabled, caller's cost", "log4cplus async", CallersCostAsync<1>);
OXA_BENCH_LOG("Log, enabled, caller's cost, 4 threads", "log4cplus async", CallersCostAsync<4>);

void Disabled(benchmark::State& state) {
  const LogFile file(LogFolder::Path() + "log4cplus.disabled");
  Log4cplus log(file, false);
  int number = 0;
  for (auto _ : state) log.WriteDisabled(++number);
}
OXA_BENCH("Log, disabled", "log4cplus", Disabled);

void EndToEndSync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "log4cplus.sync");
  Log4cplus log(file, false);
  EndToEnd(state, log, file);
}
OXA_BENCH_LOG("Log, end to end, flushed file", "log4cplus", EndToEndSync);

}  // namespace
#endif
