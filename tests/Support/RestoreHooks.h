// Puts the hooks of the library back that a test has exchanged.
#ifndef OXACORE_TESTS_SUPPORT_RESTOREHOOKS_H
#define OXACORE_TESTS_SUPPORT_RESTOREHOOKS_H

#include "ErrorHandling/Hooks.h"

namespace TestSupport {

/// All but translateFaults, which no test exchanges: the log's thread reads it as it begins, perhaps just now.
inline void RestoreHooks(const Oxa::Core::Hooks& before) {
  Oxa::Core::Hooks& hooks = Oxa::Core::TheHooks();
  hooks.addCircumstances = before.addCircumstances;
  hooks.markCircumstances = before.markCircumstances;
  hooks.walkStack = before.walkStack;
  hooks.errorRaised = before.errorRaised;
  hooks.errorHandled = before.errorHandled;
  hooks.settleInPlace = before.settleInPlace;
  hooks.mayWarn = before.mayWarn;
  hooks.warningRaised = before.warningRaised;
  hooks.writeAlert = before.writeAlert;
  hooks.writeAlertDocument = before.writeAlertDocument;
  hooks.logFailedAssert = before.logFailedAssert;
  hooks.logThreadError = before.logThreadError;
  hooks.logErrorRaised = before.logErrorRaised;
  hooks.stopBuffering = before.stopBuffering;
  hooks.endUncaught = before.endUncaught;
  hooks.useFaultAdapter = before.useFaultAdapter;
  hooks.releaseFaultAdapter = before.releaseFaultAdapter;
}

}  // namespace TestSupport

#endif
