// An element of the stack of the machine that expressions of debug data are written for, and its arithmetic.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLEWORD_H
#define OXACORE_PLATFORM_LINUX_VARIABLEWORD_H

#include <cstdint>

namespace Oxa::Core::Platform {

/// How a word is counted with.
enum EWordKind : unsigned char {
  eWORD_ADDRESS,  ///< the untyped one of 8 bytes: it is compared and divided with its sign, and shifted without it
  eWORD_SIGNED,
  eWORD_UNSIGNED,
  eWORD_OPAQUE  ///< bits of something that isn't counted with here, such as a floating-point number
};

struct WordType {
  EWordKind m_eKind = eWORD_ADDRESS;
  unsigned char m_ucSize = 8;  ///< bytes, 8 at most
};

/// Everything here is plain data; no function allocates or fails but as it says.
struct Word {
  std::uint64_t m_uBits = 0;  ///< continued to 64 bits as the type has it
  WordType m_type;
};

/// `bits` cut to the size of `type`, and continued with the sign where the type is signed, otherwise with zeros.
Word MakeWord(std::uint64_t bits, const WordType& type) noexcept;

/// The result of an operation (DW_OP_...) on one word, or on two of one type; `left` is the one that was put on the
/// stack first. It wraps around and is of that type, but for comparisons, which give an untyped 0 or 1. False, and
/// `result` is as it was, for a division by zero, for opaque words, and for what is no such operation.
bool Calculate(unsigned atom, const Word& word, Word& result) noexcept;
bool Calculate(unsigned atom, const Word& left, const Word& right, Word& result) noexcept;

}  // namespace Oxa::Core::Platform

#endif
