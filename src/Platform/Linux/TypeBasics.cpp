#include "Platform/Linux/TypeBasics.h"

#include <dwarf.h>

namespace Oxa::Core::Platform {

namespace {

EBasicType SignedTypeOf(std::string_view name) noexcept {
  if (name == "wchar_t") return eBASIC_WCHAR;
  return name == "long int" || name == "long" ? eBASIC_LONG : eBASIC_INT;
}

EBasicType UnsignedTypeOf(std::string_view name) noexcept {
  if (name == "wchar_t") return eBASIC_WCHAR;
  return name == "long unsigned int" || name == "unsigned long" ? eBASIC_ULONG : eBASIC_UINT;
}

}  // namespace

EBasicType BasicTypeOf(unsigned encoding, std::string_view name, std::uint64_t size) noexcept {
  switch (encoding) {
    case DW_ATE_boolean:
      return eBASIC_BOOL;
    case DW_ATE_signed_char:
      return eBASIC_CHAR;
    case DW_ATE_unsigned_char:
      return name == "char" ? eBASIC_CHAR : eBASIC_UINT;
    case DW_ATE_UTF:
      return size == 1 ? eBASIC_CHAR : eBASIC_WCHAR;
    case DW_ATE_signed:
      return SignedTypeOf(name);
    case DW_ATE_unsigned:
    case DW_ATE_address:
      return UnsignedTypeOf(name);
    case DW_ATE_float:
      return eBASIC_FLOAT;
    case DW_ATE_complex_float:
      return eBASIC_COMPLEX;
    case DW_ATE_decimal_float:
    case DW_ATE_packed_decimal:
      return eBASIC_BCD;
    default:
      return eBASIC_OTHER;
  }
}

}  // namespace Oxa::Core::Platform
