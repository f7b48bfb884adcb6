// An element of the stack of the machine that expressions of debug data are written for, and its arithmetic.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLEWORD_H
#define OXACORE_PLATFORM_LINUX_VARIABLEWORD_H

#include <cstdint>

namespace Oxa::Core::Platform {

enum EWordKind : unsigned char {
  eWORD_ADDRESS,  ///< the untyped one of 8 bytes: it is compared and divided with its sign, and shifted without it
  eWORD_SIGNED,
  eWORD_UNSIGNED,
  eWORD_OPAQUE  ///< bits of something that isn't counted with here, such as a floating-point number
};

struct WordType {
  EWordKind m_eKind = eWORD_ADDRESS;
  unsigned char m_ucSize = 8;
};

struct Word {
  std::uint64_t m_uBits = 0;  ///< continued to 64 bits as the type has it
  WordType m_type;
};

/// `bits` cut to the size of `type`, and continued.
Word MakeWord(std::uint64_t bits, const WordType& type) noexcept;

/// The result of an operation (DW_OP_...) on one or two words of one type; false if there is none.
bool Calculate(unsigned atom, const Word& word, Word& result) noexcept;
bool Calculate(unsigned atom, const Word& left, const Word& right, Word& result) noexcept;

}  // namespace Oxa::Core::Platform

#endif
