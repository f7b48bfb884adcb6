#include <cstring>

#include "Platform/Files.h"

namespace Oxa::Core::Platform {

namespace {

// `end` has no "*".
bool EndsIn(const char* name, const char* end) noexcept {
  if (*end == 0) return true;
  const std::size_t nameLength = std::strlen(name);
  const std::size_t endLength = std::strlen(end);
  if (nameLength < endLength) return false;
  name += nameLength - endLength;
  while (*end != 0 && (*end == '?' || *end == *name)) {
    ++end;
    ++name;
  }
  return *end == 0;
}

}  // namespace

// On a mismatch only the last "*" has to take in one more character: whatever an earlier one could take in, the
// last can take in as well. And behind the last "*" of the pattern there is one place only that is left for the
// rest: the end of the name.
bool MatchesPattern(const char* name, const char* pattern) noexcept {
  const char* behindStar = nullptr;
  const char* retryAt = nullptr;
  while (true) {
    if (*pattern == '*') {
      behindStar = ++pattern;
      if (std::strchr(pattern, '*') == nullptr) return EndsIn(name, pattern);
      retryAt = name;
    } else if (*name == 0) {
      return *pattern == 0;
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
}

}  // namespace Oxa::Core::Platform
