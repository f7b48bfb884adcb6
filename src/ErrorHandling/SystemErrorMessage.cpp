#include "ErrorHandling/SystemErrorMessage.h"

#include <climits>

#include "Platform/Machine.h"

namespace Oxa::Core {

namespace {

const char* const g_pNO_TEXT = "Failed to retrieve error message for code ";

}  // namespace

std::string SystemErrorMessage(unsigned long code) {
  std::string text;
  if (code <= INT_MAX && Platform::SystemErrorText(static_cast<int>(code), text)) return text;
  return g_pNO_TEXT + std::to_string(code) + ".";
}

}  // namespace Oxa::Core
