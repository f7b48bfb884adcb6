// Those who are told of a death, or have to write it down, and fail at it.
#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/LogManager.h>

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <iterator>
#include <list>
#include <string>

#include "Troubles.h"
#include "Ways.h"

using namespace Oxa::Core;

namespace Deaths {

namespace {

using Deed = void (*)();

void Fault() { *g_pNull = 1; }
void RaiseAnError() { OXA_RAISE_ERROR("Deaths.Witness", LogicError("bad witness")); }
void ThrowANumber() { throw 42; }
void Terminate() { std::terminate(); }
void Exit() { std::exit(3); }
void FaultInMalloc() { FindWay("malloc-locked")(); }
void OverflowTheStack() { FindWay("stack-overflow")(); }
void Hang() {
  for (;;) ::pause();
}

// Hears of the death itself, when the report is written.
class Witness : public AlertListener {
 public:
  explicit Witness(Deed deed) : m_deed(deed) { AlertManager::Instance()->AddAlertListener(*this); }
  void UncaughtFatalError(Error&, const std::string&) override { m_deed(); }

 private:
  const Deed m_deed;
};

// Hears of every raise, and so of those that its own deed leads to.
class Hearer : public AlertListener {
 public:
  explicit Hearer(Deed deed) : m_deed(deed) { AlertManager::Instance()->AddAlertListener(*this); }
  void ErrorRaised(Error&) override { m_deed(); }
  void WarningRaised(Warning&) override { m_deed(); }

 private:
  const Deed m_deed;
};

// Fails at every entry, with the locks of the log held.
class Service : public IOxaLogService {
 public:
  explicit Service(Deed deed) : m_deed(deed) { LogManager::Instance()->InstallLogService(*this); }
  void WriteLogEntry(const OxaLogEntry&) override { m_deed(); }
  void RegisterHandler(IOxaLogHandler*) override {}
  void UnregisterHandler(IOxaLogHandler*) override {}
  void RegisterLogger(IOxaLogger*) override {}
  void UnregisterLogger(IOxaLogger*) override {}
  void EnumLoggers(const std::string&, std::list<std::string>&) override {}
  void SetSeverityFilters(const std::string&, unsigned int) override {}
  unsigned int GetSeverityFilters(const std::string&) override { return uDEFAULT_LOG_FILTERS; }
  int GetNumHandlers() override { return 1; }
  bool Exists(const std::string&) override { return true; }

 private:
  const Deed m_deed;
};

// They live to the very end.
template <class Which, Deed deed>
void Install() {
  static Which* const installed = new Which(deed);
  (void)installed;
}

template <Deed deed>
void AtTheExit() {
  std::atexit(deed);
}

constexpr NamedTrouble sTROUBLES[] = {
    {"witness-fault", &Install<Witness, &Fault>},
    {"witness-error", &Install<Witness, &RaiseAnError>},
    {"witness-number", &Install<Witness, &ThrowANumber>},
    {"witness-terminate", &Install<Witness, &Terminate>},
    {"witness-exit", &Install<Witness, &Exit>},
    {"witness-malloc", &Install<Witness, &FaultInMalloc>},
    {"witness-overflow", &Install<Witness, &OverflowTheStack>},
    {"witness-hang", &Install<Witness, &Hang>},
    {"hearer-fault", &Install<Hearer, &Fault>},
    {"hearer-error", &Install<Hearer, &RaiseAnError>},
    {"log-fault", &Install<Service, &Fault>},
    {"log-error", &Install<Service, &RaiseAnError>},
    {"log-malloc", &Install<Service, &FaultInMalloc>},
    {"log-terminate", &Install<Service, &Terminate>},
    {"log-hang", &Install<Service, &Hang>},
    {"exit-fault", &AtTheExit<&Fault>},
    {"exit-terminate", &AtTheExit<&Terminate>},
    {"exit-hang", &AtTheExit<&Hang>},
};

}  // namespace

Troubles TroublesOfWitnesses() { return {sTROUBLES, std::size(sTROUBLES)}; }

}  // namespace Deaths
