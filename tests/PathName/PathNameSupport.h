// What the tests of path names share.
#ifndef OXACORE_TESTS_PATHNAME_PATHNAMESUPPORT_H
#define OXACORE_TESTS_PATHNAME_PATHNAMESUPPORT_H

#include <Infrastructure/OxaCore/PathName.h>

#include <random>
#include <string>

namespace PathNameTests {

using Oxa::Core::PathName;

inline std::string Text(const PathName& path) { return static_cast<const std::string&>(path); }

/// Shows what only derived classes see.
class OpenPathName : public PathName {
 public:
  using PathName::InitParams;
  using PathName::InitSeparators;
  using PathName::IsPathSeparator;
  using PathName::operator=;
  using PathName::PathName;
  using PathName::SetNT;
  using PathName::SetUNIX;

  using PathName::baseSeparator;
  using PathName::defaultSeparator;
  using PathName::extensionSeparator;
  using PathName::legalCharacters;
  using PathName::maxBaseLength;
  using PathName::maxComponentLength;
  using PathName::maxDepth;
  using PathName::maxExtLength;
  using PathName::maxLeafLength;
  using PathName::pathSeparators;
};

/// Texts of a few characters, so that all that means something meets everything else.
class RandomTexts {
 public:
  explicit RandomTexts(unsigned seed) : m_engine(seed) {}

  std::string Next() {
    static const std::string sALPHABET = "aB1:/\\\\./\\:. |*\xe4";
    std::string text;
    if (Roll(4) == 0) text = "\\\\";
    if (Roll(4) == 0) text = "C:";
    for (unsigned length = Roll(14); length > 0; --length)
      text += Roll(3) != 0 ? sALPHABET[Roll(12)] : sALPHABET[Roll(static_cast<unsigned>(sALPHABET.size()))];
    return text;
  }

  unsigned Roll(unsigned sides) { return std::uniform_int_distribution<unsigned>(0, sides - 1)(m_engine); }

 private:
  std::mt19937 m_engine;
};

}  // namespace PathNameTests

#endif
