#include <Infrastructure/OxaCore/PathName.h>

#include <cstdint>
#include <string_view>

namespace Oxa::Core {

namespace {

constexpr std::string_view::size_type uNONE = std::string_view::npos;
constexpr char cDOT = '.';

// Which of the 256 bytes belong to a set.
class Bytes {
 public:
  constexpr explicit Bytes(std::string_view members) {
    for (const char member : members) Add(member);
  }

  constexpr Bytes& Add(char member) {
    const auto byte = static_cast<unsigned char>(member);
    m_words[byte / 64] |= std::uint64_t{1} << byte % 64;
    return *this;
  }

  constexpr bool Has(char character) const {
    const auto byte = static_cast<unsigned char>(character);
    return (m_words[byte / 64] >> byte % 64 & 1) != 0;
  }

 private:
  std::uint64_t m_words[4] = {};
};

// What isalnum knows without a locale.
constexpr Bytes s_lettersAndDigits("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");

Bytes WithLettersAndDigits(const char* others) {
  Bytes bytes = s_lettersAndDigits;
  for (; *others != 0; ++others) bytes.Add(*others);
  return bytes;
}

bool AreAll(std::string_view text, const Bytes& allowed) {
  for (const char character : text)
    if (!allowed.Has(character)) return false;
  return true;
}

bool HasTwoSideBySide(std::string_view text, const Bytes& separators) {
  bool bLast = false;
  for (const char character : text) {
    const bool bThis = separators.Has(character);
    if (bThis && bLast) return true;
    bLast = bThis;
  }
  return false;
}

}  // namespace

// The pieces between delimiters, which may be others from piece to piece: runs of delimiters are skipped before
// a piece, and the one delimiter behind it is used up with it.
class PathName::Tokens {
 public:
  Tokens(std::string_view text, std::string_view::size_type start) : m_text(text), m_uNext(start) {}

  /// The next piece; empty when none is left.
  std::string_view Next(const Bytes& delimiters) {
    while (m_uNext < m_text.size() && delimiters.Has(m_text[m_uNext])) ++m_uNext;
    const auto start = m_uNext;
    while (m_uNext < m_text.size() && !delimiters.Has(m_text[m_uNext])) ++m_uNext;
    const auto end = m_uNext;
    if (m_uNext < m_text.size()) ++m_uNext;
    return m_text.substr(start, end - start);
  }

  bool IsNextOneOf(const Bytes& characters) const {
    return m_uNext < m_text.size() && characters.Has(m_text[m_uNext]);
  }

 private:
  std::string_view m_text;
  std::string_view::size_type m_uNext;
};

bool PathName::IsValid() const {
  if (m_sText.empty()) return false;
  const std::string_view::size_type offset = IsUNC() ? 2 : 0;
  Tokens tokens(m_sText, offset);
  if (FindBaseSeparator() != uNONE && !IsBaseValid(tokens)) return false;
  if (HasTwoSideBySide(std::string_view(m_sText).substr(offset), Bytes(pathSeparators))) return false;
  return AreComponentsValid(tokens);
}

// Also passes over what behind the base is not looked at.
bool PathName::IsBaseValid(Tokens& tokens) const {
  const bool bServer = IsUNC();
  if (!bServer && m_sText.find(baseSeparator[0]) != m_sText.rfind(baseSeparator[0])) return false;
  const std::string_view base = tokens.Next(Bytes(baseSeparator));
  if (base.empty() || (!bServer && base.size() > maxBaseLength)) return false;
  // The place is counted from the start of the name where the whole path is meant: two characters of a server
  // are not looked at.
  const std::string_view::size_type untested = bServer ? 2 : 0;
  if (base.size() > untested && !AreAll(base.substr(untested), WithLettersAndDigits(legalCharacters)))
    return false;
  const Bytes separators(pathSeparators);
  if (bServer || tokens.IsNextOneOf(separators)) tokens.Next(separators);
  return true;
}

bool PathName::AreComponentsValid(Tokens& tokens) const {
  const Bytes legal = WithLettersAndDigits(legalCharacters);
  const Bytes separators(pathSeparators);
  int depth = 0;
  for (auto token = tokens.Next(separators); !token.empty(); token = tokens.Next(separators)) {
    if (maxDepth != 0 && depth++ > maxDepth) return false;
    const auto lastDot = token.rfind(cDOT);
    if (lastDot == uNONE) {
      if (token.size() > maxLeafLength) return false;
    } else if (lastDot > maxLeafLength || token.size() > maxExtLength + 2 + lastDot ||
               token.size() > maxComponentLength) {
      return false;
    }
    if (!AreAll(token, legal)) return false;
  }
  return true;
}

}  // namespace Oxa::Core
