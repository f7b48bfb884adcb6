#include <Infrastructure/OxaCore/Chrono.h>
#include <Infrastructure/OxaCore/Filesystem.h>
#include <Infrastructure/OxaCore/JournalLogHandler.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/StreamLogHandler.h>

#include <chrono>
#include <filesystem>
#include <iostream>

using namespace Oxa::Core;
using namespace std::chrono_literals;

void TellTimes() {
  const Elapse span = ToElapse(90s + 250us);
  std::cout << span.ToString() << ", " << ToDuration<std::chrono::minutes>(span).count() << " min\n";
  const Time moment = ToTime(std::chrono::system_clock::from_time_t(1000000000));
  std::cout << std::chrono::system_clock::to_time_t(ToTimePoint<std::chrono::system_clock::duration>(moment))
            << '\n';
}

void TellPaths() {
  const std::filesystem::path path = ToPath(PathName("data\\2011\\run.txt"));
  std::cout << path.parent_path().native() << ", " << ToPathName(path).GetLeaf() << '\n';
}

int main() {
  InitializeOxaCore();
  TellTimes();
  TellPaths();
  LogManager* const manager = LogManager::Instance();
  StreamLogHandler screen(std::cout);  // in colour on a terminal
  JournalLogHandler journal("interop");
  manager->RegisterHandler(&screen);
  manager->RegisterHandler(&journal);
  manager->GetLogger("Acme.Probe")->WriteLog(eLOG_WARNING, "channel %d is above its limit", 3);
  manager->SetBufferingMode(false);  // what waits is sent now
  manager->UnregisterHandler(&journal);
  manager->UnregisterHandler(&screen);
  ShutdownOxaCore();
}
