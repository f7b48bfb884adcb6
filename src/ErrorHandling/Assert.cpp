#include <Infrastructure/OxaCore/Assert.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include "Core/LibraryState.h"
#include "ErrorHandling/Hooks.h"
#include "Platform/Storage.h"

namespace Oxa::Core {

namespace {

void TellDebugger(const AssertionFailure& failure, const CodeContext& context) {
  const std::string line = context.Get(CodeContext::sFILE) + "(" + context.Get(CodeContext::sLINE) +
                           "): Failed Assertion(" + failure.what() + ")\n";
  Platform::WriteToDebugger(line.c_str());
}

}  // namespace

bool AssertFailed(const std::string& message, const CodeContext& context) {
  TellDebugger(AssertionFailure(message), context);
  return false;
}

bool LogAssertFailed(const std::string& message, const CodeContext& context) {
  AssertionFailure failure(message);
  TellDebugger(failure, context);
  if (!IsLibraryUnloading()) TheHooks().logFailedAssert(failure);
  return false;
}

}  // namespace Oxa::Core
