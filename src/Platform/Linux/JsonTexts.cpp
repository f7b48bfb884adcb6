#include "Platform/Linux/JsonTexts.h"

#include <string.h>

#include <cstdint>

#include "Platform/Linux/Utf8.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iDEEPEST = 32;
constexpr char sESCAPES[] = "\"\\/bfnrt";
constexpr char sESCAPED[] = "\"\\/\b\f\n\r\t";

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Each function passes what it is named after, and is false if something else stands there. The text ends with a 0
// that no rule takes, so that nothing reads beyond it.
class JsonReader {
 public:
  explicit JsonReader(const std::string& json) : m_pAt(json.c_str()), m_pEnd(json.c_str() + json.size()) {}

  bool Whole(std::map<std::string, std::string>& texts) {
    PassBlanks();
    if (!Object(1, &texts)) return false;
    PassBlanks();
    return m_pAt == m_pEnd;
  }

 private:
  void PassBlanks() {
    while (*m_pAt == ' ' || *m_pAt == '\t' || *m_pAt == '\n' || *m_pAt == '\r') ++m_pAt;
  }

  bool Sign(char sign) {
    if (*m_pAt != sign) return false;
    ++m_pAt;
    return true;
  }

  bool SignAmongBlanks(char sign) {
    PassBlanks();
    if (!Sign(sign)) return false;
    PassBlanks();
    return true;
  }

  // `texts` is null inside of what isn't looked at.
  bool Object(int depth, std::map<std::string, std::string>* texts) {
    if (depth > iDEEPEST || !SignAmongBlanks('{')) return false;
    if (Sign('}')) return true;
    do {
      if (!Member(depth, texts)) return false;
    } while (SignAmongBlanks(','));
    return Sign('}');
  }

  bool Member(int depth, std::map<std::string, std::string>* texts) {
    std::string name;
    if (!Text(name) || !SignAmongBlanks(':')) return false;
    if (*m_pAt != '"') return Value(depth);
    std::string value;
    if (!Text(value)) return false;
    if (texts != nullptr) texts->emplace(name, value);
    return true;
  }

  bool Array(int depth) {
    if (depth > iDEEPEST || !SignAmongBlanks('[')) return false;
    if (Sign(']')) return true;
    do {
      if (!Value(depth)) return false;
    } while (SignAmongBlanks(','));
    return Sign(']');
  }

  bool Value(int depth) {
    std::string ignored;
    switch (*m_pAt) {
      case '{':
        return Object(depth + 1, nullptr);
      case '[':
        return Array(depth + 1);
      case '"':
        return Text(ignored);
      case 't':
        return Word("true");
      case 'f':
        return Word("false");
      case 'n':
        return Word("null");
      default:
        return Number();
    }
  }

  bool Word(const char* word) {
    const size_t length = strlen(word);
    if (strncmp(m_pAt, word, length) != 0) return false;
    m_pAt += length;
    return true;
  }

  bool Number() {
    Sign('-');
    if (!Sign('0') && !Digits()) return false;
    if (Sign('.') && !Digits()) return false;
    if (!Sign('e') && !Sign('E')) return true;
    if (!Sign('-')) Sign('+');
    return Digits();
  }

  bool Digits() {
    const char* const start = m_pAt;
    while (*m_pAt >= '0' && *m_pAt <= '9') ++m_pAt;
    return m_pAt != start;
  }

  bool Text(std::string& text) {
    if (!Sign('"')) return false;
    Utf16Joiner joiner(text);
    while (*m_pAt != '"') {
      if (static_cast<unsigned char>(*m_pAt) < ' ') return false;  // the end among them
      if (!Character(text, joiner)) return false;
    }
    joiner.Finish();
    return Sign('"');
  }

  bool Character(std::string& text, Utf16Joiner& joiner) {
    if (Word("\\u")) return CodeUnit(joiner);
    joiner.Finish();
    if (Sign('\\')) return Escape(text);
    text += *m_pAt++;
    return true;
  }

  bool CodeUnit(Utf16Joiner& joiner) {
    int unit = 0;
    for (int digit = 0; digit < 4; ++digit, ++m_pAt) {
      const int value = HexDigit(*m_pAt);
      if (value < 0) return false;
      unit = unit * 16 + value;
    }
    joiner.Add(static_cast<std::uint16_t>(unit));
    return true;
  }

  bool Escape(std::string& text) {
    if (*m_pAt == 0) return false;
    const char* const escape = strchr(sESCAPES, *m_pAt);
    if (escape == nullptr) return false;
    text += sESCAPED[escape - sESCAPES];
    ++m_pAt;
    return true;
  }

  const char* m_pAt;
  const char* const m_pEnd;
};

}  // namespace

bool ReadJsonTexts(const std::string& json, std::map<std::string, std::string>& texts) {
  std::map<std::string, std::string> found;
  if (!JsonReader(json).Whole(found)) return false;
  texts.swap(found);
  return true;
}

}  // namespace Oxa::Core::Platform
