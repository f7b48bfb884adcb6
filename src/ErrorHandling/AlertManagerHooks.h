// How the raise of an alert reaches the alert manager.
#ifndef OXACORE_ERRORHANDLING_ALERTMANAGERHOOKS_H
#define OXACORE_ERRORHANDLING_ALERTMANAGERHOOKS_H

#include <Infrastructure/OxaCore/AlertManager.h>

#include "ErrorHandling/Hooks.h"

namespace Oxa::Core {

/// The entries of Hooks that are the alert manager's and the raw channel's. Each looks for the manager at
/// every call and does nothing without one.
struct AlertHooks {
  static void Connect(Hooks& hooks) noexcept;

  /// The terminate handler's own steps: the report, then the end. The thread has begun to die already.
  [[noreturn]] static void EndByTerminateHandler();

  /// What a host wants in each report; null without a manager. Allocates nothing.
  static const AlertData* FatalErrorInfo() noexcept;

 private:
  static void TellErrorRaised(Error& error);
  static void TellErrorHandled(Error& error);
  static bool SettleInPlace(Error& error);
  static bool MayWarn(const std::string& className);
  static void TellWarningRaised(Warning& warning);
};

}  // namespace Oxa::Core

#endif
