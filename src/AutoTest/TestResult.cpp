#include <Infrastructure/OxaCore/AutoTest.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.Test";

// Without the raised mark: the error is handled when the run has recorded it, not when its result dies.
boost::shared_ptr<Error> CopyOf(const Error& error) {
  try {
    return const_cast<Error&>(error).CloneUnraised();
  } catch (...) {
    Platform::LetCancellationPass();
    return boost::shared_ptr<Error>();
  }
}

}  // namespace

Test::Result::Result(const std::string& testName, const Error& error)
    : m_testName(testName),
      m_eType(eERROR),
      m_text(error.GetData(AlertInfo::sMESSAGE)),
      m_spFailure(CopyOf(error)) {}

Test::Result::Result(const std::string& testName, const Failure& failure)
    : Result(testName, static_cast<const Error&>(failure)) {
  m_eType = eFAILED;
}

Test::Result::Result(const std::string& testName, EType type, const std::string& text)
    : m_testName(testName), m_eType(type), m_text(text) {}

Test::Result RaiseNullPointer(const std::string& testName, const std::string& variable) {
  OXA_RAISE_ERROR(sLOG_NAME, NullPointer(variable));
  return Test::Result(testName, NullPointer(variable));
}

}  // namespace Oxa::Core
