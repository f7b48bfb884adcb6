#include "Core/Life.h"

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Singleton.h>

#include <iostream>
#include <limits>
#include <locale>

#include "Core/LibraryGlobals.h"
#include "Core/LibraryState.h"
#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/ContextTexts.h"
#include "ErrorHandling/FatalErrorEnd.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/MicrosoftDebugHelpLife.h"
#include "ErrorHandling/PlaceTables.h"
#include "Log/ParkedThread.h"
#include "Platform/Faults.h"
#include "Platform/Machine.h"
#include "Platform/NativeThread.h"
#include "Platform/Storage.h"

namespace Oxa::Core {

namespace {

const char* const sSTARTED_UP = "Error handling started up via initial throw...";
const char* const sMISSED_SHUTDOWN =
    "Calling Oxa::Core::Shutdown from OxaCore.dll unload.  This may result in "
    "false memory leak reporting.  To avoid this call Oxa::Core::Shutdown when "
    "the application is exiting but not from an ::atexit() handler (e.g. from"
    "ExitInstance)";

constexpr long long llPATIENCE_MS = 1000;

// Initialize and Shutdown run on one thread each, by contract.
bool s_bFirstInitialize = true;
bool s_bShutDown = false;

unsigned long s_ulLoadedBy = 0;  // the process that loaded the library

// Exists for the first throw only.
class StartupError : public Error {
 public:
  StartupError() : Error(eERROR) { AppendInheritance(typeid(StartupError)); }
  using Error::CreateCallStack;
};

void ThrowOnce() {
  try {
    StartupError error;
    // Loads whatever call stacks need now rather than in the first real failure.
    error.CreateCallStack();
    throw StartupError(error);
  } catch (StartupError&) {
    std::cout << sSTARTED_UP << std::endl;
    s_bFirstInitialize = false;
  }
}

void DestroySingletons() {
  try {
    SingletonRegistry::DestroyAllSingletons();
  } catch (...) {
    Platform::LetCancellationPass();
    // One bad destructor must not keep the other steps of the shut-down from running.
  }
}

// A child that was forked off has the manager without its thread, and maybe with its locks held: it is left alone.
void EndLog() {
  if (!LoadedByThisProcess()) return;
  if (LogManager* const manager = LogManager::Instance()) manager->Shutdown();
  if (ManagedGlobals* const globals = LibraryGlobals()) globals->Remove<LogManager>("LogManager");
}

// The standard library fills the character tables of its first locale when they are first asked for, without a
// lock. The messages of alerts are formatted on any thread: the tables are to be there before any thread is.
void FillCharacterTables() {
  using Characters = std::ctype<char>;
  const Characters& characters = std::use_facet<Characters>(std::locale::classic());
  for (int code = 0; code <= std::numeric_limits<unsigned char>::max(); ++code) {
    const char character = static_cast<char>(code);
    characters.widen(character);
    characters.narrow(character, '\0');
  }
}

}  // namespace

void BeginLife() {
  s_ulLoadedBy = Platform::ProcessId();
  FillCharacterTables();
  ConnectHooks();
}

bool LoadedByThisProcess() noexcept { return Platform::ProcessId() == s_ulLoadedBy; }

void Initialize() {
  if (s_bFirstInitialize) ThrowOnce();
  TheHooks().useFaultAdapter();
}

void Shutdown() {
  if (s_bShutDown) return;
  DestroySingletons();
  EndLog();
  s_bShutDown = true;
}

void UnloadRoutine() {
  // The report of a thread that is dying just now would be cut short by the flag.
  if (LoadedByThisProcess()) AwaitDyingThreads();
  SetLibraryUnloading();
  // A child that was forked off ends alone: the shut-down is its parent's.
  if (!LoadedByThisProcess()) return Platform::RemoveFaultHandling();
  if (!s_bShutDown) {
    Platform::WriteToDebugger(sMISSED_SHUTDOWN);
    Shutdown();
  }
  // Where an error ends the process, other threads run on and may fault until it is gone: those leave their record,
  // too, or at least end by the filter. Only code that is about to be unmapped has to let go of the signals even then.
  if (!GoesByFatalError()) TheHooks().releaseFaultAdapter();
  AwaitAlertsInFlight();
  ForgetPlaceTables();
  ForgetContextTexts();
  MSWindows::DebugHelpLife::End();
  if (ManagedGlobals* const globals = LibraryGlobals()) globals->DestroyAll();
  if (Platform::IsBeingUnmapped()) DestroyParkedThread();
  // Threads that have done their work may still be on their last steps in the library's code.
  Platform::NativeThread::AwaitEnding(Platform::Deadline::InMilliseconds(llPATIENCE_MS));
  FinishForTheDying();
  // However often the adapter is still in use: nothing may lead into code that is gone.
  if (!GoesByFatalError()) Platform::RemoveFaultHandling();
}

}  // namespace Oxa::Core

void InitializeOxaCore() { Oxa::Core::Initialize(); }

void ShutdownOxaCore() { Oxa::Core::Shutdown(); }

bool IsOxaCoreDebug() {
#if defined(OXACORE_DEBUG)
  return true;
#else
  return false;
#endif
}
