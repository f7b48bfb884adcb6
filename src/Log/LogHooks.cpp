#include "Log/LogHooks.h"

#include "Log/LogTraffic.h"

namespace Oxa::Core {

namespace {

const char* const sTHREAD_LOG_NAME = "Oxa.Core.Thread";

void LogThreadError(const std::string& text) {
  const LogManagerInUse manager;
  if (!manager) return;
  const boost::shared_ptr<Logger> logger = manager->GetLogger(sTHREAD_LOG_NAME);
  if (logger) logger->WriteLog(eLOG_ERROR, "%s", text.c_str());
}

void LogErrorRaised(Error& error) {
  const LogManagerInUse manager;
  if (manager) manager->ErrorRaised(error);
}

void LogFailedAssert(AssertionFailure& failure) { LogErrorRaised(failure); }

void StopBuffering() {
  const LogManagerInUse manager;
  if (manager) manager->SetBufferingMode(false);
}

}  // namespace

void ConnectLog(Hooks& hooks) noexcept {
  hooks.logThreadError = &LogThreadError;
  hooks.logErrorRaised = &LogErrorRaised;
  hooks.logFailedAssert = &LogFailedAssert;
  hooks.stopBuffering = &StopBuffering;
}

}  // namespace Oxa::Core
