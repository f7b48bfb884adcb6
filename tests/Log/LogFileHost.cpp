// LogFileHost FOLDER WRITER SIZE TOGETHER: a process that writes numbered entries to the default log of that folder,
// as many as FOLDER/WRITER.progress allows and up to TOGETHER at once, until it is killed or its parent has ended.
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include <Infrastructure/OxaCore/System.h>

#include "Log/DefaultLogDocument.h"
#include "Log/DefaultLogEntriesFile.h"
#include "Log/LogProgress.h"
#include "Log/LogTexts.h"

namespace {

using namespace Oxa::Core;

std::int64_t Now() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

void Write(DefaultLogEntriesFile& file, const LogRun& entries, LogTests::LogProgress& progress) {
  std::size_t done = 0;
  const std::int64_t start = Now();
  file.Write(entries, done);
  const std::int64_t took = Now() - start;
  if (took > progress.m_llLongest) progress.m_llLongest = took;
  progress.m_ullFailed += entries.Count() - done;
  progress.m_ullFlushed += entries.Count();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 5) return 2;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::string folder = arguments[1];
  const std::string writer = arguments[2];
  const std::size_t size = std::strtoul(arguments[3], nullptr, 10);
  const std::size_t together = std::strtoul(arguments[4], nullptr, 10);
  System::Instance()->SetProcessPath(folder);
  LogTests::LogProgress& progress = LogTests::MapProgress(folder + writer + ".progress");
  CreateDefaultLogDocument();
  DefaultLogEntriesFile file;
  OxaLogEntry entry;
  entry.m_eSeverity = eLOG_WARNING;
  entry.m_sLoggerPath = "Oxa.Test";
  LogTexts texts;
  for (std::uint64_t number = 0;;) {
    while (number >= progress.m_ullAllowed) ::usleep(100);
    texts.Clear();
    for (; texts.Run().Count() < together && number < progress.m_ullAllowed; ++number) {
      entry.m_time = Time();
      entry.m_sMessage = LogTests::NumberedMessage(writer, number, size);
      texts.Add(entry);
    }
    Write(file, texts.Run(), progress);
  }
}
