// DailyLogHost FOLDER PROGRESS MAXFILES: a process that writes numbered lines into daily files of some hundred bytes,
// from the number on that PROGRESS holds, until as many are written as that allows, or it is killed, or its parent
// has ended.
#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include <signal.h>
#include <sys/prctl.h>

#include <cstdlib>
#include <string>

#include "Log/LogProgress.h"

int main(int count, char** arguments) {
  if (count != 4) return 2;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  LogTests::LogProgress& progress = LogTests::MapProgress(arguments[2]);
  Oxa::Core::WrappingFileStream stream;
  stream.Initialize(arguments[1], -1, std::atoi(arguments[3]), 300, "Run");
  while (progress.m_ullFlushed < progress.m_ullAllowed) {
    stream.Write("line " + std::to_string(progress.m_ullFlushed) + '\n');
    ++progress.m_ullFlushed;
  }
}
