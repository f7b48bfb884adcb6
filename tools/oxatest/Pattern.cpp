#include "Pattern.h"

#include <cstddef>

namespace OxaTest {

// Goes back to the last "*" only: what stood for less before that one needn't stand for more.
bool Matches(const std::string& pattern, const std::string& text) {
  std::size_t at = 0;
  std::size_t i = 0;
  std::size_t star = std::string::npos;  // the last one, and where in the text what it stands for ends
  std::size_t starEnd = 0;
  while (i < text.size()) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      starEnd = i;
    } else if (at < pattern.size() && (pattern[at] == '?' || pattern[at] == text[i])) {
      ++at;
      ++i;
    } else if (star != std::string::npos) {
      at = star + 1;
      i = ++starEnd;
    } else {
      return false;
    }
  }
  while (at < pattern.size() && pattern[at] == '*') ++at;
  return at == pattern.size();
}

}  // namespace OxaTest
