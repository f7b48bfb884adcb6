#include <Infrastructure/OxaCore/AlertMessage.h>

#include <iostream>

#include "Platform/Faults.h"

namespace Oxa::Core {

std::string AlertMessageFailed() {
  Platform::LetCancellationPass();
  try {
    std::cerr << "Failed to construct alert due to exception!" << std::endl;
    return "Failed to construct alert message due to exception.";
  } catch (...) {
    Platform::LetCancellationPass();
    return {};
  }
}

}  // namespace Oxa::Core
