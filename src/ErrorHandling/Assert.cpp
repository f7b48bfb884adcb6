#include <Infrastructure/OxaCore/Assert.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include "Core/LibraryState.h"
#include "ErrorHandling/Hooks.h"
#include "Platform/Storage.h"

namespace Oxa::Core {

namespace {

// Assertions can fail while the library loads, before the texts of errors are there.
void TellDebugger(const char* message, const CodeContext& context) {
  const std::string line = context.Get(CodeContext::sFILE) + "(" + context.Get(CodeContext::sLINE) +
                           "): Failed Assertion(" + message + ")\n";
  Platform::WriteToDebugger(line.c_str());
}

}  // namespace

bool AssertFailed(const std::string& message, const CodeContext& context) {
  TellDebugger(message.c_str(), context);
  return false;
}

bool LogAssertFailed(const std::string& message, const CodeContext& context) {
  AssertionFailure failure(message);
  TellDebugger(failure.what(), context);
  if (!IsLibraryUnloading()) TheHooks().logFailedAssert(failure);
  return false;
}

}  // namespace Oxa::Core
