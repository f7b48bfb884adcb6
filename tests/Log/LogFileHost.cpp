// LogFileHost FOLDER WRITER SIZE: a process that writes numbered entries to the default log of that folder, as
// many as FOLDER/WRITER.progress allows, until it is killed or its parent has ended.
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include <Infrastructure/OxaCore/System.h>

#include "Log/DefaultLogDocument.h"
#include "Log/DefaultLogEntriesFile.h"
#include "Log/LogEntryText.h"
#include "Log/LogProgress.h"

namespace {

using namespace Oxa::Core;

std::int64_t Now() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

void Write(DefaultLogEntriesFile& file, const OxaLogEntry& entry, LogTests::LogProgress& progress) {
  const std::string text = LogEntryText(entry);
  const std::int64_t start = Now();
  const bool written = file.Write(text);
  const std::int64_t took = Now() - start;
  if (took > progress.m_llLongest) progress.m_llLongest = took;
  if (!written) ++progress.m_ullFailed;
  ++progress.m_ullFlushed;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::string folder = arguments[1];
  const std::string writer = arguments[2];
  const std::size_t size = std::strtoul(arguments[3], nullptr, 10);
  System::Instance()->SetProcessPath(folder);
  LogTests::LogProgress& progress = LogTests::MapProgress(folder + writer + ".progress");
  CreateDefaultLogDocument();
  DefaultLogEntriesFile file;
  OxaLogEntry entry;
  entry.m_eSeverity = eLOG_WARNING;
  entry.m_sLoggerPath = "Oxa.Test";
  for (std::uint64_t number = 0;; ++number) {
    while (number >= progress.m_ullAllowed) ::usleep(100);
    entry.m_time = Time();
    entry.m_sMessage = LogTests::NumberedMessage(writer, number, size);
    Write(file, entry, progress);
  }
}
