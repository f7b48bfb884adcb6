#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/System.h>

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

using namespace Oxa::Core;

// The text alone decides; nothing of this has to exist.
void TakeApart() {
  PathName path("C:\\data\\run.txt");
  std::cout << path.GetBase() << " | " << path.GetBranch() << " | " << path.GetLeaf() << " | "
            << path.GetExt() << '\n';
  path.SetExt("xml");
  PathName folder(path.GetBaseAndBranch());
  folder += "old";
  std::cout << path.GetLeafAndExt() << " goes to " << std::string(folder) << '\n';
}

// A name that ends in a separator is a folder.
void Use() {
  PathName folder("paths-example/runs/");
  if (!folder.CreateDirectoryA()) return;
  for (const char* name : {"run1.dat", "run2.dat", "notes.txt"}) {
    PathName file(folder);
    file += name;
    std::ofstream(static_cast<const char*>(file)) << name;
  }
  std::vector<std::string> names;
  folder.ReadDirectory(names, "run?.dat");
  for (const std::string& name : names) std::cout << name << '\n';

  for (const char* name : {"run1.dat", "run2.dat", "notes.txt"}) folder.Delete(name);
  std::cout << "removed: " << folder.Delete() << PathName("paths-example/").Delete() << '\n';
}

int main() {
  InitializeOxaCore();
  TakeApart();
  Use();
  System* const system = System::Instance();  // null before the library is built and once it is gone
  system->SetCurrentThreadName("Main");       // for alerts, logs and debuggers
  std::string process;
  std::string thread;
  system->GetProcessName(process);
  system->GetCurrentThreadName(thread);
  std::cout << process << ", thread " << thread << '\n';
  ShutdownOxaCore();
}
