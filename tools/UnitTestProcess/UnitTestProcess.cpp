// UnitTestProcess.exe -t TASK -p1 NAME [-p2 GATE]: does with the ProcessMutex NAME what has to come from another
// process than the one that tests it.
//
//   ProcessMutex            tries to lock it, without waiting. Status 0 if it was free, and it is free again; 1 if
//                           somebody else has it.
//   ProcessMutexHeld        locks it, then the ProcessMutex GATE, and gives both back. Who holds GATE so decides how
//                           long NAME is held here.
//   ProcessMutexAbandoned   locks it and ends with it.
//
// The status is 0 if all went well, 1 if a lock couldn't be had, 2, with the usage on standard error, for arguments
// that are none of this. No wait lasts longer than 60 seconds: nothing of it stays where its parent died.
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/ProcessMutex.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

using Oxa::Core::Elapse;
using Oxa::Core::Error;
using Oxa::Core::ProcessMutex;

namespace {

constexpr int iDONE = 0;
constexpr int iNOT_LOCKED = 1;
constexpr int iWRONG_CALL = 2;
constexpr long long iLIMIT_SECONDS = 60;

constexpr char sUSAGE[] =
    "usage: UnitTestProcess.exe -t ProcessMutex -p1 NAME\n"
    "       UnitTestProcess.exe -t ProcessMutexHeld -p1 NAME -p2 GATE\n"
    "       UnitTestProcess.exe -t ProcessMutexAbandoned -p1 NAME\n";

Elapse Limit() { return Elapse(iLIMIT_SECONDS, Elapse::Seconds); }

int Try(const std::string& name) {
  ProcessMutex mutex(name);
  if (!mutex.TryLock(Elapse(0))) return iNOT_LOCKED;
  mutex.Unlock();
  return iDONE;
}

int Hold(const std::string& name, const std::string& gateName) {
  ProcessMutex mutex(name);
  ProcessMutex gate(gateName);
  const Oxa::Core::Lock held(mutex, Limit());
  const Oxa::Core::Lock opened(gate, Limit());
  return iDONE;
}

int Abandon(const std::string& name) {
  ProcessMutex mutex(name);
  mutex.Lock(Limit());
  return iDONE;
}

int Refuse() {
  std::cerr << sUSAGE;
  return iWRONG_CALL;
}

int Run(const std::vector<std::string>& arguments) {
  const bool gated = arguments.size() == 6 && arguments[4] == "-p2";
  if (!gated && arguments.size() != 4) return Refuse();
  if (arguments[0] != "-t" || arguments[2] != "-p1") return Refuse();
  const std::string& task = arguments[1];
  const std::string& name = arguments[3];
  if (gated) return task == "ProcessMutexHeld" ? Hold(name, arguments[5]) : Refuse();
  if (task == "ProcessMutex") return Try(name);
  return task == "ProcessMutexAbandoned" ? Abandon(name) : Refuse();
}

}  // namespace

int main(int count, char** arguments) {
  int status = iNOT_LOCKED;
  try {
    status = Run(std::vector<std::string>(arguments + 1, arguments + count));
  } catch (Error& error) {
    std::cerr << error.GetData(Oxa::Core::AlertInfo::sMESSAGE) << '\n';
  }
  ShutdownOxaCore();
  return status;
}
