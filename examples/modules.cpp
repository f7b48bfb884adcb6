#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/ModuleVersionInfo.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/SystemLibrary.h>
#include <Infrastructure/OxaCore/SystemProcesses.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

using namespace Oxa::Core;

// Calls a function of a library that this program wasn't linked with.
void Calculate() {
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName("libm.so.6"));
  if (!library || !library->HasFunction("cbrt")) return;
  std::cout << "the cube root of 27 is " << library->GetFunction<double(double)>("cbrt")(27) << '\n';
  try {
    library->GetFunction<double(double)>("cube_root");
  } catch (const NoSuchFunction& error) {
    std::cout << error.what() << '\n';
  }
}

// Tells which version of the library this program runs with.
void TellVersion() {
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName("libOxaCore.so.2"));
  if (!library) return;
  const boost::shared_ptr<ModuleVersionInfo> info = ModuleVersionInfo::Create(library->GetModuleHandleA());
  std::string product = "OxaCore";
  std::string version = "unknown";
  if (info) {
    info->Get(ModuleVersionInfo::sPRODUCT_NAME, product);
    info->Get(ModuleVersionInfo::sFILE_VERSION, version);
  }
  std::cout << product << ' ' << version << '\n';
}

// Looks who has the C library loaded, which is nearly everybody.
void TellUsers() {
  const SystemProcesses processes;
  const SystemProcesses::ModuleInfo* module = processes.GetModuleInfo("libc.so.6");
  if (module == nullptr) return;
  std::vector<unsigned int> pids;
  module->GetLoadingPIDs(pids);
  const bool mine = std::find(pids.begin(), pids.end(), System::Instance()->GetProcessId()) != pids.end();
  std::cout << module->GetName() << " is loaded here: " << (mine ? "yes" : "no") << '\n';
}

int main() {
  InitializeOxaCore();
  Calculate();
  TellVersion();
  TellUsers();
  ShutdownOxaCore();
}
