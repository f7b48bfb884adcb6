#include <Infrastructure/OxaCore/Assert.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <cstdlib>

#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "Platform/Faults.h"
#include "Platform/Storage.h"

namespace Oxa::Core {

namespace {

// Assertions can fail while the library loads, before the texts of errors are there.
// Reports as far as memory allows: an assertion never throws.
void TellDebugger(const std::string& message, const CodeContext& context) {
  try {
    const long line = std::strtol(context.Get(CodeContext::sLINE).c_str(), nullptr, 10);
    const std::string report = context.Get(CodeContext::sFILE) + "(" + std::to_string(line) +
                               "): Failed Assertion(" + message + ")\n";
    Platform::WriteToDebugger(report.c_str());
  } catch (...) {
    Platform::LetCancellationPass();
    Platform::WriteToDebugger(message.c_str());
  }
}

void TellLog(const std::string& message) {
  try {
    AssertionFailure failure(message);
    const AlertInFlight flight;
    if (flight.MayProceed()) TheHooks().logFailedAssert(failure);
  } catch (...) {
    Platform::LetCancellationPass();
  }
}

}  // namespace

bool AssertFailed(const std::string& message, const CodeContext& context) {
  TellDebugger(message, context);
  return false;
}

bool LogAssertFailed(const std::string& message, const CodeContext& context) {
  TellDebugger(message, context);
  TellLog(message);
  return false;
}

}  // namespace Oxa::Core
