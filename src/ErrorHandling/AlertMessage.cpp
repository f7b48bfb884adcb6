#include <Infrastructure/OxaCore/AlertMessage.h>

#include <iostream>

namespace Oxa::Core {

std::string AlertMessageFailed() noexcept {
  try {
    std::cerr << "Failed to construct alert due to exception!" << std::endl;
    return "Failed to construct alert message due to exception.";
  } catch (...) {
    return {};
  }
}

}  // namespace Oxa::Core
