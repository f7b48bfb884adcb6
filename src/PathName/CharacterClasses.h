// What each of the 256 bytes means in a name.
#ifndef OXACORE_PATHNAME_CHARACTERCLASSES_H
#define OXACORE_PATHNAME_CHARACTERCLASSES_H

#include <cstddef>
#include <string_view>

namespace Oxa::Core {

inline constexpr char sNT_LEGAL_CHARACTERS[] = " _~!#%&()@`'^$.-";
inline constexpr char sNT_PATH_SEPARATORS[] = "/\\";

class CharacterClasses {
 public:
  /// Letters and digits, as isalnum knows them without a locale, are legal in any case. What separates is
  /// nothing else.
  constexpr CharacterClasses(std::string_view legal, std::string_view separators) {
    for (unsigned char& flags : m_flags) flags = uILLEGAL;
    Set("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", uLEGAL);
    Set(legal, uLEGAL);
    Set(separators, uSEPARATOR);
  }

  constexpr bool IsLegal(char character) const { return Of(character) == uLEGAL; }
  constexpr bool IsSeparator(char character) const { return Of(character) == uSEPARATOR; }

  /// Whether there is nothing but legal characters and single separators.
  bool AreComponents(std::string_view text) const {
    unsigned int before = 0;
    unsigned int wrong = 0;
#pragma GCC unroll 8
    for (const char character : text) {  // without a branch that could be guessed wrong
      const unsigned int flags = Of(character);
      wrong |= flags & (before | uILLEGAL);
      before = flags;
    }
    return wrong == 0;
  }

 private:
  static constexpr unsigned char uLEGAL = 0;
  static constexpr unsigned char uILLEGAL = 1;
  static constexpr unsigned char uSEPARATOR = 2;

  constexpr void Set(std::string_view characters, unsigned char flags) {
    for (const char character : characters) m_flags[static_cast<unsigned char>(character)] = flags;
  }

  constexpr unsigned char Of(char character) const { return m_flags[static_cast<unsigned char>(character)]; }

  unsigned char m_flags[256] = {};
};

inline constexpr CharacterClasses g_classesOfNT(sNT_LEGAL_CHARACTERS, sNT_PATH_SEPARATORS);

}  // namespace Oxa::Core

#endif
