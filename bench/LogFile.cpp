// What one entry of the default log costs: its text, and its way to the disk with the lock between processes and
// the test of the length that go with each.
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <boost/make_shared.hpp>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "Log/DefaultLogEntriesFile.h"
#include "Log/LogEntryText.h"
#include "Log/LogFileMutex.h"
#include "XML/PrettyPrintFormatter.h"

#include "Platform/Files.h"

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
  for (auto _ : state) {
    const BriefLogEntryText text(entry);
    benchmark::DoNotOptimize(text.Get().data());
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

// An alert on its way into the log: what a raise has told of it, as XML, comes into its entry laid out anew.
OxaLogEntry AlertEntry() {
  OxaLogEntry entry = TypicalEntry();
  entry.m_sForm = "xml";
  try {
    OXA_RAISE_ERROR("Bench.Alert", LogicError("Read of 1024 bytes failed: the other end is gone"));
  } catch (Error& error) {
    std::ostringstream text;
    XMLWriter writer;
    error.ToXML(writer, text, "Error Raised");
    entry.m_sMessage = text.str();
  }
  return entry;
}

// Lays nothing out anew.
class CopyingFormatter : public PrettyPrintFormatter {
 public:
  void FormatMarkup(std::ostream& os, const String& markup) override {
    os.write(markup.data(), static_cast<std::streamsize>(markup.size()));
  }
};

void OursAlert(benchmark::State& state) {
  const OxaLogEntry entry = AlertEntry();
  for (auto _ : state) {
    const BriefLogEntryText text(entry);
    benchmark::DoNotOptimize(text.Get().data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(entry.m_sMessage.size()) * state.iterations());
}
OXA_BENCH("Alert's log entry as text", "Ours", OursAlert);

void CopiedAlert(benchmark::State& state) {
  const OxaLogEntry entry = AlertEntry();
  for (auto _ : state) {
    std::ostringstream out;
    XMLWriter writer(boost::make_shared<CopyingFormatter>());
    out << writer.StartTag("LogEntry") << writer.Attribute("Severity", "Informational")
        << writer.Tag("TimeStamp", entry.m_time.ToString()) << writer.Tag("LogName", entry.m_sLoggerPath)
        << writer.Markup(entry.m_sMessage) << writer.EndAllTags();
    benchmark::DoNotOptimize(out.str().append("\n").append(sLOG_ENTRY_SEPARATOR).data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(entry.m_sMessage.size()) * state.iterations());
}
OXA_BENCH("Alert's log entry as text", "copied through", CopiedAlert);

// Without the parse: the same alert written part by part onto the same layout.
void WrittenAlert(benchmark::State& state) {
  try {
    OXA_RAISE_ERROR("Bench.Alert", LogicError("Read of 1024 bytes failed: the other end is gone"));
  } catch (Error& error) {
    for (auto _ : state) {
      std::ostringstream text;
      XMLWriter writer;
      error.ToXML(writer, text, "Error Raised");
      benchmark::DoNotOptimize(text.str().data());
    }
  }
}
OXA_BENCH("Alert's log entry as text", "the alert's own writing", WrittenAlert);

/// A folder for the log, and what a thread keeps that logs all its life. It is always the same folder, since the
/// lock that belongs to it stays on the machine.
class LogFolder {
 public:
  LogFolder() : m_sPath((std::filesystem::temp_directory_path() / "oxacore-bench").string()) {
    std::filesystem::remove_all(m_sPath);
    std::filesystem::create_directory(m_sPath);
    System::Instance()->SetProcessPath(m_sPath + '/');
  }
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;
  ~LogFolder() { std::filesystem::remove_all(m_sPath); }

  std::string File() const { return m_sPath + "/DefaultLog.entries"; }

 private:
  std::string m_sPath;
  const Platform::FileLimitGuard m_guard;
};

void OursWrite(benchmark::State& state) {
  const LogFolder folder;
  const std::string text = LogEntryText(TypicalEntry());
  DefaultLogEntriesFile file;
  for (auto _ : state) file.Write(text);
}
OXA_BENCH("Log entry to disk", "Ours", OursWrite);

// What can't be left out: the call of the system that appends.
void BareAppend(benchmark::State& state) {
  const LogFolder folder;
  const std::string text = LogEntryText(TypicalEntry());
  int code = 0;
  Platform::FileHandle file = Platform::FileHandle::OpenForAppend(folder.File().c_str(), code);
  std::size_t written = 0;
  std::size_t length = 0;
  for (auto _ : state) {
    file.Write(text.data(), text.size(), written);
    length += written;
    if (length > 1400000) length = static_cast<std::size_t>(file.Truncate(0));
  }
}
OXA_BENCH("Log entry to disk", "bare append", BareAppend);

void BareLength(benchmark::State& state) {
  const LogFolder folder;
  int code = 0;
  Platform::FileHandle file = Platform::FileHandle::OpenForAppend(folder.File().c_str(), code);
  std::uint64_t length = 0;
  for (auto _ : state) benchmark::DoNotOptimize(file.SeekToEnd(length));
}
OXA_BENCH("Log entry to disk", "bare length", BareLength);

void BareLock(benchmark::State& state) {
  const LogFolder folder;
  const boost::shared_ptr<LogFileMutex> mutex(new LogFileMutex(folder.File()));
  for (auto _ : state) const LogFileLock lock(mutex);
}
OXA_BENCH("Log entry to disk", "bare lock", BareLock);

void OursTextAndWrite(benchmark::State& state) {
  const LogFolder folder;
  const OxaLogEntry entry = TypicalEntry();
  DefaultLogEntriesFile file;
  for (auto _ : state) file.Write(BriefLogEntryText(entry).Get());
}
OXA_BENCH("Log entry as text and to disk", "Ours", OursTextAndWrite);

}  // namespace
