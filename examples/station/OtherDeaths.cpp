#include "OtherDeaths.h"

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Loggers.h"
#include "MachineFaults.h"
#include "StationAlerts.h"

namespace Station {

using MSWindows::InstallSEHErrorTranslator;
using Oxa::Core::AlertListener;
using Oxa::Core::AlertManager;
using Oxa::Core::Error;

namespace {

const char* const sSTEP = "Step";
constexpr int iTHREADS = 4;

void ReadChannel(int channel) { OXA_RAISE_ERROR(sSTATION_LOGGER, InstrumentLost(channel)); }

void FaultOnThread() {
  InstallSEHErrorTranslator();
  WriteThroughNull();
}

class BrokenListener : public AlertListener {
 public:
  void UncaughtFatalError(Error&, const std::string&) override { WriteThroughNull(); }
};

class LastOfAll {
 public:
  ~LastOfAll() {
    if (m_bArmed) WriteThroughNull();
  }
  bool m_bArmed = false;
};

LastOfAll s_lastOfAll;

}  // namespace

void LeaveErrorUncaught() {
  const int channel = 7;
  try {
    ReadChannel(channel);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_VARIABLE(channel), OXA_INFO(sSTEP, "reading all channels"))
}

void LeaveExceptionUncaught() { throw std::runtime_error("the probe is gone"); }

void LeaveNumberUncaught() { throw 42; }

void DieOnThread() { std::thread(FaultOnThread).join(); }

void DieOnBareThread() { std::thread(WriteThroughNull).join(); }

void DieOnThreadsAtOnce() {
  std::vector<std::thread> threads;
  threads.reserve(iTHREADS);
  for (int i = 0; i < iTHREADS; ++i) threads.emplace_back(FaultOnThread);
  for (std::thread& thread : threads) thread.join();
}

void DieWithBrokenListener() {
  BrokenListener listener;
  AlertManager::Instance()->AddAlertListener(listener);
  WriteThroughNull();
}

// Of two free blocks the one that is given out first holds, in its own bytes and veiled, where the other one is.
void BreakHeap() {
  constexpr std::size_t size = 64;
  void* const block = std::malloc(size);
  void* const other = std::malloc(size);
  volatile std::uintptr_t* volatile dangling = static_cast<std::uintptr_t*>(block);
  std::free(other);
  std::free(block);
  const std::uintptr_t nowhere = 16;
  *dangling =
      (reinterpret_cast<std::uintptr_t>(dangling) >> 12U) ^ nowhere;  // NOLINT(clang-analyzer-unix.Malloc)
  for (int i = 0; i < 3; ++i) {
    void* volatile given = std::malloc(size);
    static_cast<void>(given);
  }
}

void CallAbort() { std::abort(); }

void DieInStaticDestructor() { s_lastOfAll.m_bArmed = true; }

}  // namespace Station
