// RecordForEver FILE REPORT
// Records samples as fast as they go, sample i with a lateness of 3 * i ticks, and keeps writing to REPORT how many
// of them are flushed, as 8 bytes. For being killed.
#include <Infrastructure/OxaCore/OxaCore.h>
#include <fcntl.h>
#include <unistd.h>

#include "Recorder.h"

namespace {

// Fills whatever a plan allows, and then waits for the end.
void Record(const char* file, int report) {
  constexpr unsigned long ulCOUNT = 1000000;
  Station::Recorder recorder(file, Station::ReadPlan("p", "a 100ns 1000000 0s"));
  for (unsigned long sent = 0;;) {
    const unsigned long long flushed = recorder.GetFlushed();
    if (::pwrite(report, &flushed, sizeof flushed, 0) != sizeof flushed) return;
    for (int i = 0; i < 100 && sent < ulCOUNT && sent - flushed < 50000; ++i) {
      ++sent;
      recorder.Keep(
          {0, sent, Oxa::Core::Elapse(3 * static_cast<long long>(sent), Oxa::Core::Elapse::TimerTicks)});
    }
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 3) return 2;
  InitializeOxaCore();
  Record(arguments[1], ::open(arguments[2], O_WRONLY | O_CREAT, 0600));
  ShutdownOxaCore();
  return 1;
}
