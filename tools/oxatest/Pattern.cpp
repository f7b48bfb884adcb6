#include "Pattern.h"

#include <cstddef>

namespace OxaTest {

namespace {

// How much of the pattern stands for one character that is `c`; 0 if what is there doesn't.
std::size_t StandsFor(const std::string& pattern, std::size_t at, char c) {
  if (at >= pattern.size()) return 0;
  const char next = at + 1 < pattern.size() ? pattern[at + 1] : '\0';
  const bool escape = pattern[at] == '\\' && (next == '*' || next == '?' || next == '\\');
  if (escape) return next == c ? 2 : 0;
  return pattern[at] == '?' || pattern[at] == c ? 1 : 0;
}

}  // namespace

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
    } else if (const std::size_t size = StandsFor(pattern, at, text[i])) {
      at += size;
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
