#include <Infrastructure/OxaCore/SystemTools.h>

#include "ErrorHandling/SystemErrorMessage.h"

std::string MSWindows::GetWindowsErrorMessage(unsigned long code) {
  return Oxa::Core::SystemErrorMessage(code);
}
