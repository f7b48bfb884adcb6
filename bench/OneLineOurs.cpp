#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/System.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

#include "OneLine.h"

using namespace Oxa::Core;

namespace {

// What waits in the queue at the end is gone: the line is to be on the disk before.
void AwaitContent(const std::string& name) {
  std::error_code code;
  for (std::uintmax_t size = 0; size == 0 || code; size = std::filesystem::file_size(name, code))
    std::this_thread::sleep_for(std::chrono::microseconds(50));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  InitializeOxaCore();
  const std::string folder = std::string(argv[1]) + "/";
  System::Instance()->SetProcessPath(folder);
  LogManager::Instance()->GetLogger("Bench.Channel")->WriteLog(eLOG_INFORMATIONAL, "%s", OxaBench::sONE_LINE);
  AwaitContent(folder + "DefaultLog.entries");
  OxaBench::TellPeak(argc, argv);
  ShutdownOxaCore();
  return 0;
}
