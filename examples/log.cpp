#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <iostream>

using namespace Oxa::Core;

// Takes the entries in place of the files, so that they can be seen here.
class Screen : public IOxaLogHandler {
 public:
  void OnLoggersChanged() override {}
  void HandleLogEntry(const OxaLogEntry& entry) override {
    std::cout << entry.m_sLoggerPath << ": " << entry.m_sMessage << '\n';
  }
};

int main() {
  InitializeOxaCore();
  LogManager* const manager =
      LogManager::Instance();  // null before the library is built and after its shut-down
  Screen screen;
  manager->RegisterHandler(&screen);
  const boost::shared_ptr<Logger> log = manager->GetLogger("Acme.Probe");
  log->WriteLog(eLOG_WARNING, "channel %d is %.1f K above its limit", 3, 0.4);
  log->WriteLog(eLOG_DEBUG, "not at first");
  manager->SetBufferingMode(false);  // what waits is sent now, and not lost at the end
  manager->UnregisterHandler(&screen);
  ShutdownOxaCore();
}
