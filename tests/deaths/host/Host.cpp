// Dies: DeathHost KIND PLACE [name=value]...
//   base=FOLDER   below which the fatal error folder goes
//   policy=0..3   of the dump
//   reports=N     how many fatal errors are reported
//   end=signal    by the signal of the fault, after the report
//   threads=N     that die at once
//   around=NAME   what the system withholds
//   trouble=NAME  what else is wrong
// A host that is still there after its death says so and gives 7; 77 if the machine won't give that trouble, 99 if
// there is no such kind, place or trouble.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "Options.h"
#include "Places.h"
#include "Troubles.h"
#include "Ways.h"

using namespace Oxa::Core;
using namespace Deaths;

namespace {

constexpr int iWENT_ON = 7;
constexpr int iUNKNOWN = 99;

void SetUpReports() {
  AlertManager* const manager = AlertManager::Instance();
  if (const char* const base = Option("base")) manager->SetFatalErrorBasePath(base);
  if (Option("policy") != nullptr)
    manager->SetDumpPolicy(static_cast<EDumpPolicy>(NumberOption("policy", 1)));
  AlertManager::SetMaxFatalErrorReports(NumberOption("reports", 1));
  AlertManager::SetEndBySignal(IsOption("end", "signal"));
  manager->AddFatalErrorInfo("DeathKind", Kind());
  // With it the first words still fit into one page, the report doesn't.
  if (IsOption("around", "one-page")) manager->AddFatalErrorInfo("Ballast", std::string(3000, 'b'));
}

// What the dying thread does where another one is to hold a lock: it is made before that, as making a thread takes
// locks as well.
void DieWithoutALock() {
  Bring(TroublesOfLocks(), Option("trouble"));
  FindWay(Kind())();
}

// Before every static constructor of the host; the library is there already.
[[gnu::constructor(101)]] void Begin(int count, char** arguments, char**) {
  KeepOptions(count, arguments);
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  const Way way = FindWay(Kind());
  if (way == nullptr) return;
  if (const char* const trouble = Option("around")) {
    if (!Bring(TroublesAround(), trouble)) ::_exit(iUNKNOWN);
  }
  SetUpReports();
  DieEarly(Place(), way);
}

}  // namespace

int main() {
  Way way = FindWay(Kind());
  if (way == nullptr) return iUNKNOWN;
  if (IsInitialised(Place())) Oxa::Core::Initialize();
  if (const char* const trouble = Option("trouble")) {
    if (!Bring(TroublesOfWitnesses(), trouble)) way = &DieWithoutALock;
  }
  if (!DieAt(Place(), way, NumberOption("threads", 1))) return iUNKNOWN;
  std::puts("went on");
  return iWENT_ON;
}
