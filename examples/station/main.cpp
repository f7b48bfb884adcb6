// The station: measures how late the system wakes a sleeper, and shows how a host lives with OxaCore.
//
// Read on in Station.cpp (the run), Plan.cpp (bad input is raised, forwarded, survived), MeasureAll.cpp (threads,
// and a queue between them), Sampler.cpp (a failure is settled in place), Collector.cpp (warnings and their
// limit, messages for the log), SampleSender.cpp and Recorder.cpp (streams: typed values through a pipe into a
// file), RecordingReader.cpp (and back, from a file that may be anything), DailyLog.cpp and Days.cpp (a log of the
// host's own), LogFolder.cpp and LogOpening.cpp (where the log goes, and what goes into it), Crash.cpp (how to die).
#include <Infrastructure/OxaCore/OxaCore.h>

#include <iostream>

#include "CommandLine.h"
#include "CrashKind.h"
#include "LogFolder.h"
#include "Station.h"

namespace {

using Station::Complain;
using Station::iCANNOT_START;

int Serve(const Station::CommandLine& commandLine) {
  if (!commandLine.m_sMistake.empty()) {
    Complain(commandLine.m_sMistake + "\nTry station --help.");
    return iCANNOT_START;
  }
  if (commandLine.m_bHelp) {
    std::cout << Station::sHELP << std::flush;
    return 0;
  }
  if (commandLine.m_eCommand == Station::eCRASH && commandLine.m_sOperand.empty()) {
    std::cout << Station::CrashKindList() << std::flush;
    return 0;
  }
  const std::string reason = Station::SendLogTo(commandLine.m_sLogFolder);
  if (!reason.empty()) {
    Complain(reason);
    return iCANNOT_START;
  }
  InitializeOxaCore();  // the first error of a process is slow, so let that be over before the measuring
  return Station::Run(commandLine);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int status = Serve(Station::ReadCommandLine({arguments + 1, arguments + argumentCount}));
  ShutdownOxaCore();  // on every way out: the library complains if it is unloaded without
  return status;
}
