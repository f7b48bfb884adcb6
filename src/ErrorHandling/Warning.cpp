#include <Infrastructure/OxaCore/Warning.h>

#include <typeinfo>

#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "Platform/Symbols.h"

namespace Oxa::Core {

namespace {

const char* const sWARNING_DURING_SHUTDOWN = "Warning During OxaCore Shutdown";

}  // namespace

Warning::Warning() = default;

Warning::Warning(const std::string& message) {
  SetSeverity(eWARNING);
  if (!message.empty()) StoreText(sMESSAGE, message);
}

Warning::~Warning() = default;

std::string Warning::XMLElementName() { return "Warning"; }

void Warning::RaiseWarning(const CodeContext& context, const std::string& logName) {
  PushContext(context);
  StoreText(sLOG_NAME, logName);
  const AlertInFlight flight;
  if (!flight.MayProceed()) {
    TheHooks().writeAlert(*this, sWARNING_DURING_SHUTDOWN);
  } else if (flight.NeverEnds()) {
    TheHooks().writeAlert(*this, sLISTENERS_NEVER_END);
  } else if (TheHooks().mayWarn(Platform::DecoratedName(typeid(*this)))) {
    TheHooks().warningRaised(*this);
  }
}

ErrorSlicedOnThrow::ErrorSlicedOnThrow(const std::string& className)
    : Warning(AlertMessage("%1% sliced to Oxa::Core::Error in Error base class Throw() method", className)) {}
ErrorSlicedOnThrow::~ErrorSlicedOnThrow() = default;

}  // namespace Oxa::Core
