#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/System.h>

#include "OneLine.h"

using namespace Oxa::Core;

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  InitializeOxaCore();
  System::Instance()->SetProcessPath(std::string(argv[1]) + "/");
  // What waits in the queue at the end is gone: this line is to be on the disk when the call returns.
  LogManager::Instance()->SetBufferingMode(false);
  LogManager::Instance()->GetLogger("Bench.Channel")->WriteLog(eLOG_INFORMATIONAL, "%s", OxaBench::sONE_LINE);
  OxaBench::TellPeak(argc, argv);
  ShutdownOxaCore();
  return 0;
}
