// What one entry of the default log costs: its text, and its way to the disk with the lock between processes and
// the test of the length that go with each.
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "Log/DefaultLogEntriesFile.h"
#include "Log/LogEntryText.h"
#include "Log/LogFileMutex.h"

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
