#include <Infrastructure/OxaCore/RaiseSite.h>

#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <utility>

#include "ErrorHandling/PlaceTables.h"
#include "Platform/Faults.h"
#include "Platform/Storage.h"

namespace Oxa::Core {

void PlaceDetail::LetCancellationPass() { Platform::LetCancellationPass(); }

CodeContext CodeSite::MakeContext() const { return MakeContext({}); }

CodeContext CodeSite::MakeContext(std::initializer_list<PlaceDetail> details) const {
  try {
    const PlaceTable table = TableOf(CodePlace{m_pFile, m_iLine, m_pBuildTime, m_pSignature});
    if (details.size() == 0) return CodeContext::Sharing(table, AlertData());
    AlertData context = table ? *table : AlertData();
    AlertData variables;
    for (const PlaceDetail& detail : details) {
      (detail.m_bVariable ? variables : context)[detail.m_pName] = detail.m_sValue;
    }
    return CodeContext(std::move(context), std::move(variables));
  } catch (...) {
    Platform::LetCancellationPass();
    return CodeContext(AlertData(), AlertData());
  }
}

bool CodeSite::Announce(Error& error, LogName logName, bool inPlace) const {
  error.PushContext(MakeContext());
  return error.Announce(logName.Get(), inPlace);
}

void CodeSite::Raise(LogName logName, Error& error, bool inPlace) const {
  if (Announce(error, logName, inPlace)) error.Throw();
}

void CodeSite::Raise(LogName logName, Error&& error, bool inPlace) const { Raise(logName, error, inPlace); }

void CodeSite::Raise(LogName logName, Warning& warning) const {
  warning.RaiseWarning(MakeContext(), logName.Get());
}

void CodeSite::Forward(Error& error, std::initializer_list<PlaceDetail> details) const {
  Pass(error, details);
  throw;
}

void CodeSite::Pass(Error& error, std::initializer_list<PlaceDetail> details) const {
  error.PushContext(MakeContext(details));
  error.OnRethrow();
}

void CodeSite::Forward(const std::exception& exception, std::initializer_list<PlaceDetail> details,
                       LogName logName) const {
  StdException(exception).RaiseError(MakeContext(details), logName.Get(), false);
}

void CodeSite::ForwardUnknown(std::initializer_list<PlaceDetail> details, LogName logName) const {
  Platform::LetCancellationPass();
  UnknownError(std::string()).RaiseError(MakeContext(details), logName.Get(), false);
}

bool CodeSite::FailAssertion(const char* condition) const {
  try {
    return AssertFailed(condition, MakeContext());
  } catch (...) {
    Platform::LetCancellationPass();
    Platform::WriteToDebugger(condition);
    return false;
  }
}

}  // namespace Oxa::Core
