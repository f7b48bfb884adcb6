#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <cstdlib>
#include <iostream>

using namespace Oxa::Core;

// Hears last of all where the report and the dump lie. They are there by then.
class Farewell : public AlertListener {
 public:
  void UncaughtFatalError(Error& error, const std::string& folder) override {
    std::cout << error.what() << "\nThe report lies in " << folder << std::endl;
  }
};

// Null where nobody has set that variable; and nobody has.
char FirstLetter() { return *std::getenv("ACME_PROBE_NAME"); }

int main(int count, char** arguments) {
  InitializeOxaCore();
  AlertManager* const manager = AlertManager::Instance();
  if (count > 1) manager->SetFatalErrorBasePath(arguments[1]);  // beside the program otherwise
  manager->AddFatalErrorInfo("Instrument", "Probe 3");          // one element of the report
  manager->SetDumpPolicy(eDUMP_NORMAL);                         // the smallest dump
  Farewell farewell;
  manager->AddAlertListener(farewell);
  std::cout << FirstLetter() << '\n';  // nobody catches this
  ShutdownOxaCore();
}
