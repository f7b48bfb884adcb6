#include "ErrorHandling/FatalErrorPath.h"

#include <Infrastructure/OxaCore/FatalErrorWarnings.h>

#include <atomic>
#include <cstring>

#include "Core/LibraryState.h"
#include "System/ProcessPath.h"
#include "System/PublishedText.h"
#include "Time/MonthNames.h"

#include "Platform/Clock.h"
#include "Platform/Faults.h"
#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.CreateFatalErrorPath";
const char* const sFOLDER = "FatalError_";
const char* const sWORKING_FOLDER = "./";
const char* const sSEPARATORS = "/\\";

constexpr std::size_t uMAX_BASE = 4096;
constexpr std::size_t uMAX_FULL_PATH = 260;
constexpr unsigned uMOST_YIELDS = 1000;

PublishedText<uMAX_BASE> s_base;

// A name that stays what it was when it was first asked for.
class KeptName {
 public:
  constexpr KeptName() = default;

  template <class Compose>
  void Get(FatalErrorName& name, const Compose& compose) noexcept {
    int state = eEMPTY;
    if (m_eState.compare_exchange_strong(state, eBEING_COMPOSED)) {
      compose(m_name);
      m_eState.store(eREADY);
    }
    // Composing takes microseconds; but whoever was at it may have been ended.
    for (unsigned yields = 0; m_eState.load() != eREADY && yields < uMOST_YIELDS; ++yields) {
      Platform::SleepMilliseconds(0);
    }
    if (m_eState.load() == eREADY) {
      name = m_name;
    } else {
      compose(name);
    }
  }

 private:
  enum EState : int { eEMPTY, eBEING_COMPOSED, eREADY };

  std::atomic<int> m_eState{eEMPTY};
  FatalErrorName m_name;
};

KeptName s_wanted;
KeptName s_fallback;

struct LocalTime {
  long long m_llTicks;
  Platform::DateTime m_time;
  bool m_bKnown;

  static void Find(void* argument) {
    LocalTime& local = *static_cast<LocalTime*>(argument);
    local.m_bKnown = Platform::TicksToLocal(local.m_llTicks, local.m_time) == 0;
  }
};

// The environment, which has a word in what is local, may be in ruins.
Platform::DateTime LocalNow() noexcept {
  LocalTime local = {Platform::NowTicks(), {}, false};
  if (!Platform::CallGuarded(&LocalTime::Find, &local) || !local.m_bKnown)
    Platform::TicksToUtc(local.m_llTicks, local.m_time);
  return local.m_time;
}

template <class... Numbers>
void AddNumbers(FatalErrorName& name, const char* between, int first, Numbers... others) noexcept {
  name.AddNumber(static_cast<unsigned>(first));
  (name.Add(between).AddNumber(static_cast<unsigned>(others)), ...);
}

// "FatalError_2014114_82811/" below `base`.
void ComposeFirstForm(FatalErrorName& name, const char* base) noexcept {
  const Platform::DateTime now = LocalNow();
  name.Clear();
  name.Add(base).Add(sFOLDER);
  AddNumbers(name, "", now.m_iYear, now.m_iMonth, now.m_iDay);
  name.Add("_");
  AddNumbers(name, "", now.m_iHour, now.m_iMinute, now.m_iSecond);
  name.Add("/");
}

// "FatalError_14-Jan-2014_8-28-11/" below `base`.
void ComposeSecondForm(FatalErrorName& name, const char* base) noexcept {
  const Platform::DateTime now = LocalNow();
  name.Clear();
  name.Add(base).Add(sFOLDER).AddNumber(static_cast<unsigned>(now.m_iDay));
  name.Add("-").Add(AbbreviationOfMonth(now.m_iMonth)).Add("-").AddNumber(static_cast<unsigned>(now.m_iYear));
  name.Add("_");
  AddNumbers(name, "-", now.m_iHour, now.m_iMinute, now.m_iSecond);
  name.Add("/");
}

bool IsOrBecomesFolder(const char* name) noexcept {
  const auto isFolder = [name] {
    Platform::FileStatus status;
    Platform::Status(name, status);
    return status.m_bDirectory;
  };
  // Another thread that dies may have made it meanwhile.
  return isFolder() || Platform::MakeDirectory(name) == 0 || isFolder();
}

// Where the folders begin that can be made: behind a drive or server, and behind the separator that comes first.
const char* FirstFolder(const char* path) noexcept {
  if (std::strncmp(path, "\\\\", 2) == 0) path += 2 + std::strcspn(path + 2, sSEPARATORS);
  if (path[0] != 0 && path[1] == ':') path += 2;
  return path[0] != 0 ? path + 1 : path;
}

}  // namespace

bool MakeFoldersOf(const char* path) noexcept {
  const char* end = FirstFolder(path);
  for (end += std::strcspn(end, sSEPARATORS); *end != 0; end += 1 + std::strcspn(end + 1, sSEPARATORS)) {
    FatalErrorName folder;
    folder.Add(path, static_cast<std::size_t>(end - path));
    if (!IsOrBecomesFolder(folder.Get())) return false;
  }
  return true;
}

void SetFatalErrorBase(const std::string& basePath) noexcept { s_base.Set(basePath); }

void MakeFatalErrorFolder(FatalErrorFolder& folder) noexcept {
  folder.m_eOutcome = FatalErrorFolder::eNONE;
  folder.m_fallback.Clear();
  const bool unloading = IsLibraryUnloading();
  if (unloading) {
    ComposeFirstForm(folder.m_wanted, sWORKING_FOLDER);
  } else {
    s_wanted.Get(folder.m_wanted, [](FatalErrorName& name) { ComposeFirstForm(name, s_base.Get()); });
  }
  if (MakeFoldersOf(folder.m_wanted.Get())) {
    folder.m_eOutcome = FatalErrorFolder::eMADE;
  } else if (!unloading) {
    s_fallback.Get(folder.m_fallback,
                   [](FatalErrorName& name) { ComposeSecondForm(name, PlainProcessPath()); });
    if (MakeFoldersOf(folder.m_fallback.Get())) folder.m_eOutcome = FatalErrorFolder::eFALLBACK;
  }
}

bool TellFatalErrorFolder(const FatalErrorFolder& folder, std::string& path) {
  path = folder.m_wanted.Get();
  if (folder.m_eOutcome == FatalErrorFolder::eMADE) return true;
  OXA_RAISE_WARNING(sLOG_NAME, CreateFatalErrorPathFailed(path));
  if (folder.m_fallback.Size() == 0) return false;
  path = folder.m_fallback.Get();
  if (folder.m_eOutcome != FatalErrorFolder::eFALLBACK) return false;
  OXA_RAISE_WARNING(sLOG_NAME, FallbackFatalErrorPath(path));
  return true;
}

bool CreateFatalErrorPath(std::string& path) {
  FatalErrorFolder folder;
  MakeFatalErrorFolder(folder);
  return TellFatalErrorFolder(folder, path);
}

void WorkingFolder(FatalErrorName& path) noexcept {
  char text[uMAX_FULL_PATH];
  path.Clear();
  path.Add(Platform::FullPath(sWORKING_FOLDER, text, sizeof text) == 0 ? text : sWORKING_FOLDER);
}

}  // namespace Oxa::Core
