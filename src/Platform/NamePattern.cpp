#include "Platform/Files.h"

namespace Oxa::Core::Platform {

// On a mismatch only the last "*" has to take in one more character: whatever an earlier one could take in, the
// last can take in as well.
bool MatchesPattern(const char* name, const char* pattern) noexcept {
  const char* behindStar = nullptr;
  const char* retryAt = nullptr;
  while (*name != 0) {
    if (*pattern == '*') {
      behindStar = ++pattern;
      retryAt = name;
    } else if (*pattern == '?' || *pattern == *name) {
      ++pattern;
      ++name;
    } else if (behindStar != nullptr) {
      pattern = behindStar;
      name = ++retryAt;
    } else {
      return false;
    }
  }
  while (*pattern == '*') ++pattern;
  return *pattern == 0;
}

}  // namespace Oxa::Core::Platform
