#include "Threads/WaitFailures.h"

#include <Infrastructure/OxaCore/Error.h>

#include <string>

#include "ErrorHandling/SystemErrorMessage.h"

namespace Oxa::Core {

namespace {

std::string MessageFor(const Platform::WaitResult& result, const WaitTexts& texts) {
  switch (result.m_eEnd) {
    case Platform::EWaitEnd::eABANDONED:
      return texts.m_pAbandoned;
    case Platform::EWaitEnd::eTIMEOUT:
      return texts.m_pTimedOut;
    case Platform::EWaitEnd::eFAILED:
      return SystemErrorMessage(static_cast<unsigned long>(result.m_iCode));
    default:
      return texts.m_pOther;
  }
}

}  // namespace

bool Succeeded(const Platform::WaitResult& result, const WaitTexts& texts, const CodeSite& site) {
  if (result.m_eEnd == Platform::EWaitEnd::eSIGNALLED) return true;
  if (result.m_eEnd == Platform::EWaitEnd::eTIMEOUT && texts.m_pTimedOut == nullptr) return false;
  if (result.m_eEnd == Platform::EWaitEnd::eIO_COMPLETION && texts.m_pWarnOfInterruption != nullptr) {
    texts.m_pWarnOfInterruption(site);
  } else {
    site.Raise(texts.m_pLogName, OSError(MessageFor(result, texts)), false);
  }
  return false;
}

}  // namespace Oxa::Core
