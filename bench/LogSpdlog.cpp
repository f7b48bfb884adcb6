#ifdef OXA_PEER_SPDLOG
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <memory>

#include "LogSupport.h"

namespace {

using namespace OxaBench;

class Spdlog {
 public:
  explicit Spdlog(std::shared_ptr<spdlog::logger> logger) : m_logger(std::move(logger)) {}
  void Write(int number) {
    m_logger->info("Channel {:02d} reads {:8.3f} K at step {:06d}", OXA_BENCH_ARGUMENTS(number));
  }
  void WriteDisabled(int number) {
    m_logger->debug("Channel {:02d} reads {:8.3f} K at step {:06d}", OXA_BENCH_ARGUMENTS(number));
  }
  void Flush() { m_logger->flush(); }

 private:
  std::shared_ptr<spdlog::logger> m_logger;
};

template <int Threads>
void CallersCostAsync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "spdlog.async" + std::to_string(Threads));
  const auto pool = std::make_shared<spdlog::details::thread_pool>(8192, 1);
  const auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(file.Name());
  Spdlog log(std::make_shared<spdlog::async_logger>("Bench.Channel", sink, pool));
  CallersCost(state, log, file, Threads);
}
OXA_BENCH_LOG("Log, enabled, caller's cost", "spdlog async", CallersCostAsync<1>);
OXA_BENCH_LOG("Log, enabled, caller's cost, 4 threads", "spdlog async", CallersCostAsync<4>);

Spdlog Synchronous(const LogFile& file) {
  const auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(file.Name());
  const auto logger = std::make_shared<spdlog::logger>("Bench.Channel", sink);
  logger->flush_on(spdlog::level::trace);
  return Spdlog(logger);
}

void Disabled(benchmark::State& state) {
  const LogFile file(LogFolder::Path() + "spdlog.disabled");
  Spdlog log = Synchronous(file);
  int number = 0;
  for (auto _ : state) log.WriteDisabled(++number);
}
OXA_BENCH("Log, disabled", "spdlog", Disabled);

void EndToEndSync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "spdlog.sync");
  Spdlog log = Synchronous(file);
  EndToEnd(state, log, file);
}
OXA_BENCH_LOG("Log, end to end, flushed file", "spdlog sync", EndToEndSync);

}  // namespace
#endif
