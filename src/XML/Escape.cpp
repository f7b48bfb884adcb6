#include "XML/Escape.h"

#include <cstddef>

namespace Oxa::Core {

namespace {

struct Replacement {
  unsigned char m_ucSize = 0;  // 0: the character stands for itself
  char m_text[7] = {};
};

struct ReplacementTable {
  constexpr ReplacementTable() {
    Set('<', "&lt;");
    Set('>', "&gt;");
    Set('&', "&amp;");
    Set('\'', "&apos;");
    Set('"', "&quot;");
  }

  constexpr void Set(char c, const char* text) {
    Replacement& entry = m_entries[static_cast<unsigned char>(c)];
    for (; text[entry.m_ucSize] != 0; ++entry.m_ucSize) entry.m_text[entry.m_ucSize] = text[entry.m_ucSize];
  }

  const Replacement& operator[](char c) const { return m_entries[static_cast<unsigned char>(c)]; }

  Replacement m_entries[256] = {};
};

constexpr ReplacementTable s_replacements;

// First character at or behind `at` that has a replacement, or `end`.
const char* SkipPlain(const char* at, const char* end) {
  for (; end - at >= 4; at += 4) {
    const int found = s_replacements[at[0]].m_ucSize | s_replacements[at[1]].m_ucSize |
                      s_replacements[at[2]].m_ucSize | s_replacements[at[3]].m_ucSize;
    if (found != 0) break;
  }
  while (at != end && s_replacements[*at].m_ucSize == 0) ++at;
  return at;
}

// Hands plain stretches and replacements, in turn, to `put`.
template <class Put>
void EscapeFrom(const char* at, const char* end, const Put& put) {
  while (at != end) {
    const char* special = SkipPlain(at, end);
    if (special != at) put(at, static_cast<std::size_t>(special - at));
    if (special == end) return;
    const Replacement& replacement = s_replacements[*special];
    put(replacement.m_text, replacement.m_ucSize);
    at = special + 1;
  }
}

}  // namespace

const std::string& EscapeInto(const std::string& text, std::string& buffer) {
  const char* const end = text.data() + text.size();
  const char* const special = SkipPlain(text.data(), end);
  if (special == end) return text;
  buffer.assign(text.data(), special);
  EscapeFrom(special, end, [&](const char* piece, std::size_t size) { buffer.append(piece, size); });
  return buffer;
}

void PutEscaped(TextOutput& out, const std::string& text) {
  EscapeFrom(text.data(), text.data() + text.size(),
             [&](const char* piece, std::size_t size) { out.Put(piece, size); });
}

}  // namespace Oxa::Core
