#include "Platform/Linux/VariableWord.h"

#include <dwarf.h>

namespace Oxa::Core::Platform {

namespace {

std::int64_t Signed(std::uint64_t bits) noexcept { return static_cast<std::int64_t>(bits); }

unsigned BitsOf(const WordType& type) noexcept { return type.m_ucSize * 8U; }

// Of the lower bits alone: what a word without its sign is.
std::uint64_t Bare(const Word& word) noexcept {
  const unsigned bits = BitsOf(word.m_type);
  return bits >= 64 ? word.m_uBits : word.m_uBits & ((std::uint64_t(1) << bits) - 1);
}

bool HasSign(const WordType& type) noexcept { return type.m_eKind != eWORD_UNSIGNED; }

bool Divide(const Word& left, const Word& right, std::uint64_t& result) noexcept {
  if (right.m_uBits == 0) return false;
  if (!HasSign(left.m_type))
    result = left.m_uBits / right.m_uBits;
  else if (Signed(right.m_uBits) == -1)
    result = 0 - left.m_uBits;
  else
    result = static_cast<std::uint64_t>(Signed(left.m_uBits) / Signed(right.m_uBits));
  return true;
}

bool Remainder(const Word& left, const Word& right, std::uint64_t& result) noexcept {
  if (right.m_uBits == 0) return false;
  if (left.m_type.m_eKind != eWORD_SIGNED)
    result = left.m_uBits % right.m_uBits;
  else
    result = Signed(right.m_uBits) == -1
                 ? 0
                 : static_cast<std::uint64_t>(Signed(left.m_uBits) % Signed(right.m_uBits));
  return true;
}

std::uint64_t Shifted(unsigned atom, const Word& left, std::uint64_t by) noexcept {
  const bool out = by >= BitsOf(left.m_type);
  if (atom == DW_OP_shl) return out ? 0 : left.m_uBits << by;
  if (atom == DW_OP_shr) return out ? 0 : Bare(left) >> by;
  return static_cast<std::uint64_t>(Signed(left.m_uBits) >> (by >= 64 ? 63 : by));
}

bool IsLess(const Word& left, const Word& right) noexcept {
  return HasSign(left.m_type) ? Signed(left.m_uBits) < Signed(right.m_uBits) : left.m_uBits < right.m_uBits;
}

bool Compare(unsigned atom, const Word& left, const Word& right, bool& result) noexcept {
  switch (atom) {
    case DW_OP_eq:
      result = left.m_uBits == right.m_uBits;
      return true;
    case DW_OP_ne:
      result = left.m_uBits != right.m_uBits;
      return true;
    case DW_OP_lt:
      result = IsLess(left, right);
      return true;
    case DW_OP_ge:
      result = !IsLess(left, right);
      return true;
    case DW_OP_gt:
      result = IsLess(right, left);
      return true;
    case DW_OP_le:
      result = !IsLess(right, left);
      return true;
    default:
      return false;
  }
}

bool Combine(unsigned atom, const Word& left, const Word& right, std::uint64_t& result) noexcept {
  const std::uint64_t a = left.m_uBits;
  const std::uint64_t b = right.m_uBits;
  switch (atom) {
    case DW_OP_plus:
      result = a + b;
      return true;
    case DW_OP_minus:
      result = a - b;
      return true;
    case DW_OP_mul:
      result = a * b;
      return true;
    case DW_OP_and:
      result = a & b;
      return true;
    case DW_OP_or:
      result = a | b;
      return true;
    case DW_OP_xor:
      result = a ^ b;
      return true;
    case DW_OP_div:
      return Divide(left, right, result);
    case DW_OP_mod:
      return Remainder(left, right, result);
    case DW_OP_shl:
    case DW_OP_shr:
    case DW_OP_shra:
      result = Shifted(atom, left, b);
      return true;
    default:
      return false;
  }
}

}  // namespace

Word MakeWord(std::uint64_t bits, const WordType& type) noexcept {
  Word word{bits, type};
  const unsigned width = BitsOf(type);
  if (width >= 64) return word;
  word.m_uBits = Bare(word);
  const bool negative = type.m_eKind == eWORD_SIGNED && width > 0 && (word.m_uBits >> (width - 1) & 1) != 0;
  if (negative) word.m_uBits |= ~std::uint64_t(0) << width;
  return word;
}

bool Calculate(unsigned atom, const Word& word, Word& result) noexcept {
  if (word.m_type.m_eKind == eWORD_OPAQUE) return false;
  const std::uint64_t bits = word.m_uBits;
  const std::uint64_t negated = 0 - bits;
  switch (atom) {
    case DW_OP_neg:
      result = MakeWord(negated, word.m_type);
      return true;
    case DW_OP_not:
      result = MakeWord(~bits, word.m_type);
      return true;
    case DW_OP_abs:
      result = MakeWord(HasSign(word.m_type) && Signed(bits) < 0 ? negated : bits, word.m_type);
      return true;
    default:
      return false;
  }
}

bool Calculate(unsigned atom, const Word& left, const Word& right, Word& result) noexcept {
  if (left.m_type.m_eKind == eWORD_OPAQUE || right.m_type.m_eKind == eWORD_OPAQUE) return false;
  bool holds = false;
  if (Compare(atom, left, right, holds)) {
    result = Word{holds ? std::uint64_t(1) : 0, WordType()};
    return true;
  }
  std::uint64_t bits = 0;
  if (!Combine(atom, left, right, bits)) return false;
  result = MakeWord(bits, left.m_type);
  return true;
}

}  // namespace Oxa::Core::Platform
