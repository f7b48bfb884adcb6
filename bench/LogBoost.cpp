#ifdef OXA_PEER_BOOSTLOG
#include <boost/core/null_deleter.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks.hpp>
#include <boost/log/sources/logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/log/utility/setup/common_attributes.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <cstdio>
#include <fstream>

#include "LogSupport.h"

namespace {

using namespace OxaBench;
namespace logging = boost::log;
namespace sinks = boost::log::sinks;

using Backend = sinks::text_ostream_backend;

template <class Sink>
class BoostLog {
 public:
  explicit BoostLog(const LogFile& file) {
    const auto backend = boost::make_shared<Backend>();
    backend->add_stream(boost::make_shared<std::ofstream>(file.Name()));
    backend->auto_flush(true);
    m_sink = boost::make_shared<Sink>(backend);
    m_sink->set_formatter(logging::expressions::stream
                          << "["
                          << logging::expressions::format_date_time<boost::posix_time::ptime>(
                                 "TimeStamp", "%Y-%m-%d %H:%M:%S.%f")
                          << "] [info] [Bench.Channel] " << logging::expressions::smessage);
    logging::core::get()->add_global_attribute("TimeStamp", logging::attributes::local_clock());
    logging::core::get()->add_sink(m_sink);
  }
  BoostLog(const BoostLog&) = delete;
  BoostLog& operator=(const BoostLog&) = delete;
  ~BoostLog() {
    logging::core::get()->remove_sink(m_sink);
    Stop(*m_sink);
  }

  void Write(int number) {
    char text[80];
    std::snprintf(text, sizeof text, OXA_BENCH_MESSAGE, OXA_BENCH_ARGUMENTS(number));
    BOOST_LOG(m_logger) << text;
  }
  void Flush() { m_sink->flush(); }

 private:
  static void Stop(sinks::asynchronous_sink<Backend>& sink) { sink.stop(); }
  static void Stop(sinks::synchronous_sink<Backend>&) {}

  boost::shared_ptr<Sink> m_sink;
  logging::sources::logger_mt m_logger;
};

template <int Threads>
void CallersCostAsync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "boost.async" + std::to_string(Threads));
  BoostLog<sinks::asynchronous_sink<Backend>> log(file);
  CallersCost(state, log, file, Threads);
}
OXA_BENCH_LOG("Log, enabled, caller's cost", "Boost.Log async", CallersCostAsync<1>);
OXA_BENCH_LOG("Log, enabled, caller's cost, 4 threads", "Boost.Log async", CallersCostAsync<4>);

void EndToEndSync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "boost.sync");
  BoostLog<sinks::synchronous_sink<Backend>> log(file);
  EndToEnd(state, log, file);
}
OXA_BENCH_LOG("Log, end to end, flushed file", "Boost.Log", EndToEndSync);

}  // namespace
#endif
