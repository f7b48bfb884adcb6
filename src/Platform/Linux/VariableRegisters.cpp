#include "Platform/Linux/VariableRegisters.h"

#include <link.h>

#include <cstring>

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t uFIRST_WIDE = 17;  // xmm0
constexpr std::uint64_t uWIDE = 16;

bool ReadWide(const ucontext_t& full, std::uint64_t number, std::uint64_t& value) noexcept {
  const _libc_fpstate* const floating = full.uc_mcontext.fpregs;
  if (!floating) return false;
  std::memcpy(&value, &floating->_xmm[number - uFIRST_WIDE], sizeof value);
  return true;
}

struct ThreadBlock {
  std::uint64_t bias;
  const void* block;
};

int FindThreadBlock(dl_phdr_info* info, std::size_t size, void* wanted) {
  ThreadBlock& search = *static_cast<ThreadBlock*>(wanted);
  if (info->dlpi_addr != search.bias) return 0;
  if (size >= offsetof(dl_phdr_info, dlpi_tls_data) + sizeof(void*)) search.block = info->dlpi_tls_data;
  return 1;
}

bool ReadFrameBase(ExpressionScene& scene, std::uint64_t& base) {
  const Dw& dw = scene.m_dw;
  Dwarf_Die function =
      scene.m_frame.m_subprogram.addr ? scene.m_frame.m_subprogram : scene.m_frame.m_function;
  Dwarf_Attribute attribute{};
  if (!dw.dwarf_attr || !dw.dwarf_attr(&function, DW_AT_frame_base, &attribute)) return false;
  return NumberOf(scene, attribute, base);
}

}  // namespace

bool ReadRegisterOf(const FrameView& frame, std::uint64_t number, std::uint64_t& value) noexcept {
  const CONTEXT& registers = frame.m_registers;
  if (number < CONTEXT::iREGISTERS) {
    value = registers.m_registers[number];
    return frame.m_bKnown[number];
  }
  const bool wide = number >= uFIRST_WIDE && number < uFIRST_WIDE + uWIDE;
  return wide && registers.m_pFull && ReadWide(*registers.m_pFull, number, value);
}

bool FrameBase(ExpressionScene& scene, std::uint64_t& base) {
  if (!scene.m_bBaseTried) {
    scene.m_bBaseTried = true;  // before it is looked for: damaged data counts it from itself
    scene.m_bBaseKnown = ReadFrameBase(scene, scene.m_uBase);
  }
  base = scene.m_uBase;
  return scene.m_bBaseKnown;
}

bool ThreadLocalAddress(const FrameView& frame, std::uint64_t offset, std::uint64_t& address) noexcept {
  ThreadBlock search{frame.m_bias, nullptr};
  ::dl_iterate_phdr(&FindThreadBlock, &search);
  address = reinterpret_cast<std::uintptr_t>(search.block) + offset;
  return search.block != nullptr;
}

bool TypeOfWord(const Dw& dw, Dwarf_Die& type, WordType& result) noexcept {
  Dwarf_Attribute attribute{};
  Dwarf_Word encoding = 0;
  if (!dw.dwarf_attr || !dw.dwarf_formudata || !dw.dwarf_bytesize) return false;
  if (!dw.dwarf_attr(&type, DW_AT_encoding, &attribute)) return false;
  if (dw.dwarf_formudata(&attribute, &encoding) != 0) return false;
  const int size = dw.dwarf_bytesize(&type);
  if (size < 1 || size > 8) return false;
  result.m_ucSize = static_cast<unsigned char>(size);
  const bool isSigned = encoding == DW_ATE_signed || encoding == DW_ATE_signed_char;
  const bool isUnsigned = encoding == DW_ATE_unsigned || encoding == DW_ATE_unsigned_char ||
                          encoding == DW_ATE_boolean || encoding == DW_ATE_address || encoding == DW_ATE_UTF;
  result.m_eKind = isSigned ? eWORD_SIGNED : isUnsigned ? eWORD_UNSIGNED : eWORD_OPAQUE;
  return true;
}

}  // namespace Oxa::Core::Platform
