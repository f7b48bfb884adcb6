// ProcessMutexHost COMMAND NAME: another process that uses a process mutex.
//   try    exit status 0 if TryLock() succeeds, 1 if not; unlocks what it got
//   leave  locks and ends
//   die    locks and is killed
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/ProcessMutex.h>

#include <csignal>
#include <string>

int main(int count, char** arguments) {
  if (count != 3) return 100;
  const std::string command = arguments[1];
  Oxa::Core::ProcessMutex mutex(arguments[2]);
  int status = 0;
  if (command == "try") {
    status = mutex.TryLock() ? 0 : 1;
    if (status == 0) mutex.Unlock();
  } else {
    mutex.Lock();
  }
  if (command == "die") std::raise(SIGKILL);
  ShutdownOxaCore();
  return status;
}
