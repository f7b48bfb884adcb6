#ifdef OXA_PEER_POCO
#include <Poco/AsyncChannel.h>
#include <Poco/AutoPtr.h>
#include <Poco/FileChannel.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/PatternFormatter.h>

#include <cstdio>

#include "LogSupport.h"

namespace {

using namespace OxaBench;

class PocoLog {
 public:
  PocoLog(const LogFile& file, bool async) : m_sName(file.Name()) {
    const Poco::AutoPtr<Poco::Formatter> formatter(
        new Poco::PatternFormatter("[%Y-%m-%d %H:%M:%S.%i] [%p] [Bench.Channel] %t"));
    const Poco::AutoPtr<Poco::Channel> disk(new Poco::FileChannel(file.Name()));
    m_channel = new Poco::FormattingChannel(formatter, disk);
    if (async) m_channel = new Poco::AsyncChannel(m_channel);
    m_pLogger = &Poco::Logger::create(m_sName, m_channel, Poco::Message::PRIO_INFORMATION);
  }
  PocoLog(const PocoLog&) = delete;
  PocoLog& operator=(const PocoLog&) = delete;
  ~PocoLog() {
    m_channel->close();
    Poco::Logger::destroy(m_sName);
  }

  void Write(int number) {
    char text[80];
    std::snprintf(text, sizeof text, OXA_BENCH_MESSAGE, OXA_BENCH_ARGUMENTS(number));
    m_pLogger->information(text);
  }
  void WriteDisabled(int) { m_pLogger->debug("Channel"); }
  void Flush() {}

 private:
  const std::string m_sName;
  Poco::AutoPtr<Poco::Channel> m_channel;
  Poco::Logger* m_pLogger;
};

template <int Threads>
void CallersCostAsync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "poco.async" + std::to_string(Threads));
  PocoLog log(file, true);
  CallersCost(state, log, file, Threads);
}
OXA_BENCH_LOG("Log, enabled, caller's cost", "Poco async", CallersCostAsync<1>);
OXA_BENCH_LOG("Log, enabled, caller's cost, 4 threads", "Poco async", CallersCostAsync<4>);

void EndToEndSync(benchmark::State& state) {
  LogFile file(LogFolder::Path() + "poco.sync");
  PocoLog log(file, false);
  EndToEnd(state, log, file);
}
OXA_BENCH_LOG("Log, end to end, flushed file", "Poco", EndToEndSync);

}  // namespace
#endif
