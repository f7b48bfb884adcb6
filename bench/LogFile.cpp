// What one entry of the default log costs: its text, and its way to the disk with the lock between processes and
// the test of the length that go with each.
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "Log/LogEntryText.h"

namespace {

using namespace Oxa::Core;

OxaLogEntry TypicalEntry() {
  OxaLogEntry entry;
  entry.m_eSeverity = eLOG_INFORMATIONAL;
  entry.m_sMessage = "Sample 4711 of series Clock took 12.5 us, limit 20 us";
  entry.m_sLoggerPath = "Station.Clock.Sampler";
  entry.m_sForm = "plain";
  return entry;
}

void OursText(benchmark::State& state) {
  const OxaLogEntry entry = TypicalEntry();
  std::string text;
  for (auto _ : state) {
    LogEntryText(entry, text);
    benchmark::DoNotOptimize(text.data());
  }
}
OXA_BENCH("Log entry as text", "Ours", OursText);

void WriterText(benchmark::State& state) {
  const OxaLogEntry entry = TypicalEntry();
  for (auto _ : state) {
    std::ostringstream out;
    XMLWriter writer;
    out << writer.StartTag("LogEntry") << writer.Attribute("Severity", "Informational")
        << writer.Tag("TimeStamp", entry.m_time.ToString()) << writer.Tag("LogName", entry.m_sLoggerPath)
        << writer.Tag("Message", entry.m_sMessage) << writer.EndAllTags();
    benchmark::DoNotOptimize(out.str().data());
  }
}
OXA_BENCH("Log entry as text", "XMLWriter", WriterText);

}  // namespace
