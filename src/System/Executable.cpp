#include "System/Executable.h"

#include <cstddef>

namespace Oxa::Core {

namespace {

const char* const sUNKNOWN_FOLDER = "./";
const char* const sUNKNOWN_LEAF = "Unknown";

}  // namespace

Executable SplitExecutable(const std::string& path) {
  const std::size_t leaf = path.rfind('/') + 1;  // 0 without a separator
  return {leaf == 0 ? sUNKNOWN_FOLDER : path.substr(0, leaf),
          leaf == path.size() ? sUNKNOWN_LEAF : path.substr(leaf)};
}

}  // namespace Oxa::Core
