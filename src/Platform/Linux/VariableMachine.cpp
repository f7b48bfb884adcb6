#include "Platform/Linux/VariableMachine.h"

#include <algorithm>
#include <cstring>

#include "Platform/Linux/VariableCallSite.h"
#include "Platform/Linux/VariableRegisters.h"

namespace Oxa::Core::Platform {

namespace {

bool IsBetween(unsigned atom, unsigned first, unsigned last) noexcept {
  return atom >= first && atom <= last;
}

// Operations that had numbers of their own before they were given those of the standard.
unsigned Standard(unsigned atom) noexcept {
  switch (atom) {
    case DW_OP_GNU_push_tls_address:
      return DW_OP_form_tls_address;
    case DW_OP_GNU_implicit_pointer:
      return DW_OP_implicit_pointer;
    case DW_OP_GNU_entry_value:
      return DW_OP_entry_value;
    case DW_OP_GNU_const_type:
      return DW_OP_const_type;
    case DW_OP_GNU_regval_type:
      return DW_OP_regval_type;
    case DW_OP_GNU_deref_type:
      return DW_OP_deref_type;
    case DW_OP_GNU_convert:
      return DW_OP_convert;
    case DW_OP_GNU_reinterpret:
      return DW_OP_reinterpret;
    case DW_OP_GNU_addr_index:
      return DW_OP_addrx;
    case DW_OP_GNU_const_index:
      return DW_OP_constx;
    default:
      return atom;
  }
}

}  // namespace

ExpressionMachine::ExpressionMachine(ExpressionScene& scene, Dwarf_Attribute& attribute) noexcept
    : m_scene(scene), m_attribute(attribute) {
  ++m_scene.m_iDepth;
}

ExpressionMachine::~ExpressionMachine() { --m_scene.m_iDepth; }

bool ExpressionMachine::Push(const Word& word) noexcept {
  if (m_iWords == iWORDS) return false;
  m_words[m_iWords++] = word;
  m_bEmpty = false;
  return true;
}

bool ExpressionMachine::Pop(Word& word) noexcept {
  if (m_iWords == 0) return false;
  word = m_words[--m_iWords];
  return true;
}

bool ExpressionMachine::Run(const Dwarf_Op* operations, std::size_t count) {
  if (m_scene.m_iDepth > iDEPTH || count > uOPERATIONS) return false;
  m_pOperations = operations;
  m_uOperations = count;
  for (m_uNext = 0; m_uNext < count;) {
    if (++m_scene.m_iSteps > iSTEPS) return false;
    const Dwarf_Op& operation = operations[m_uNext++];
    if (!Step(operation)) return false;
  }
  return count > 0;
}

// NOLINTNEXTLINE(readability-function-cognitive-complexity): one table
bool ExpressionMachine::Step(const Dwarf_Op& operation) {
  const unsigned atom = Standard(operation.atom);
  if (IsBetween(atom, DW_OP_breg0, DW_OP_breg31)) return PushRegister(atom - DW_OP_breg0, operation.number);
  if (IsBetween(atom, DW_OP_reg0, DW_OP_reg31)) return NameRegister(atom - DW_OP_reg0);
  switch (atom) {
    case DW_OP_nop:
    case DW_OP_GNU_uninit:
      return true;
    case DW_OP_addr:
    case DW_OP_addrx:
    case DW_OP_constx:
      return PushAddress(operation);
    case DW_OP_regx:
      return NameRegister(operation.number);
    case DW_OP_bregx:
      return PushRegister(static_cast<unsigned>(operation.number), operation.number2);
    case DW_OP_fbreg:
      return PushFrameBase(operation.number);
    case DW_OP_call_frame_cfa:
      return m_scene.m_frame.m_bCfaKnown && Push({m_scene.m_frame.m_cfa, {}});
    case DW_OP_form_tls_address:
      return PushThreadLocal();
    case DW_OP_entry_value:
      return PushEntryValue(operation);
    case DW_OP_skip:
    case DW_OP_bra:
      return Jump(operation);
    case DW_OP_piece:
      return Piece(operation.number);
    case DW_OP_stack_value:
      m_eFound = eFOUND_VALUE;
      return m_iWords > 0;
    case DW_OP_implicit_value:
      m_eFound = eFOUND_BLOCK;
      m_bEmpty = false;
      return m_scene.m_dw.dwarf_getlocation_implicit_value &&
             m_scene.m_dw.dwarf_getlocation_implicit_value(&m_attribute, &operation, &m_block) == 0;
    case DW_OP_const_type:
    case DW_OP_regval_type:
    case DW_OP_deref_type:
    case DW_OP_convert:
    case DW_OP_reinterpret:
      return Typed(operation);
    default:
      return Literal(operation) || StackOperation(operation);
  }
}

bool ExpressionMachine::Literal(const Dwarf_Op& operation) {
  const unsigned atom = operation.atom;
  if (IsBetween(atom, DW_OP_lit0, DW_OP_lit31)) return Push({atom - DW_OP_lit0, {}});
  if (IsBetween(atom, DW_OP_const1u, DW_OP_consts)) return Push({operation.number, {}});
  return false;
}

bool ExpressionMachine::PushAddress(const Dwarf_Op& operation) {
  const Dwarf_Addr bias = m_scene.m_frame.m_bias;
  if (operation.atom == DW_OP_addr) return Push({operation.number + bias, {}});
  return PushIndexed(operation);
}

// Addresses that the expression holds no more of than their number in a table.
bool ExpressionMachine::PushIndexed(const Dwarf_Op& operation) {
  const Dw& dw = m_scene.m_dw;
  Dwarf_Attribute indexed{};
  if (!dw.dwarf_getlocation_attr || dw.dwarf_getlocation_attr(&m_attribute, &operation, &indexed) != 0)
    return false;
  Dwarf_Addr address = 0;
  Dwarf_Word number = 0;
  if (Standard(operation.atom) == DW_OP_constx)
    return dw.dwarf_formudata && dw.dwarf_formudata(&indexed, &number) == 0 && Push({number, {}});
  return dw.dwarf_formaddr && dw.dwarf_formaddr(&indexed, &address) == 0 &&
         Push({address + m_scene.m_frame.m_bias, {}});
}

bool ExpressionMachine::PushRegister(unsigned number, std::uint64_t offset) noexcept {
  std::uint64_t value = 0;
  return ReadRegister(number, value) && Push({value + offset, {}});
}

bool ExpressionMachine::ReadRegister(std::uint64_t number, std::uint64_t& value) const noexcept {
  return ReadRegisterOf(m_scene.m_frame, number, value);
}

bool ExpressionMachine::PushFrameBase(std::uint64_t offset) {
  std::uint64_t base = 0;
  return FrameBase(m_scene, base) && Push({base + offset, {}});
}

bool ExpressionMachine::PushPicked(std::uint64_t depth) noexcept {
  if (depth >= static_cast<std::uint64_t>(m_iWords)) return false;
  return Push(m_words[m_iWords - 1 - static_cast<int>(depth)]);
}

bool ExpressionMachine::PushThreadLocal() noexcept {
  Word offset;
  std::uint64_t address = 0;
  return Pop(offset) && ThreadLocalAddress(m_scene.m_frame, offset.m_uBits, address) && Push({address, {}});
}

bool ExpressionMachine::PushEntryValue(const Dwarf_Op& operation) {
  const Dw& dw = m_scene.m_dw;
  Dwarf_Attribute inner{};
  Dwarf_Op* operations = nullptr;
  std::size_t count = 0;
  if (!dw.dwarf_getlocation_attr || !dw.dwarf_getlocation) return false;
  if (dw.dwarf_getlocation_attr(&m_attribute, &operation, &inner) != 0) return false;
  if (dw.dwarf_getlocation(&inner, &operations, &count) != 0 || count != 1) return false;
  if (!IsBetween(operations->atom, DW_OP_reg0, DW_OP_reg31)) return false;
  std::uint64_t value = 0;
  return ValueOnEntry(m_scene, operations->atom - DW_OP_reg0, value) && Push({value, {}});
}

bool ExpressionMachine::StackOperation(const Dwarf_Op& operation) {
  Word word;
  switch (operation.atom) {
    case DW_OP_dup:
      return PushPicked(0);
    case DW_OP_over:
      return PushPicked(1);
    case DW_OP_pick:
      return PushPicked(operation.number);
    case DW_OP_drop:
      return Pop(word);
    case DW_OP_swap:
      if (m_iWords < 2) return false;
      std::swap(m_words[m_iWords - 1], m_words[m_iWords - 2]);
      return true;
    case DW_OP_rot:
      return Rotate();
    case DW_OP_deref:
      return Load(8, {});
    case DW_OP_deref_size:
      return Load(operation.number, {});
    case DW_OP_plus_uconst:
      return Pop(word) && Push(MakeWord(word.m_uBits + operation.number, word.m_type));
    default:
      return Unary(operation) || Binary(operation.atom);
  }
}

bool ExpressionMachine::Rotate() noexcept {
  if (m_iWords < 3) return false;
  Word* const top = m_words + m_iWords;
  std::rotate(top - 3, top - 1, top);
  return true;
}

bool ExpressionMachine::Unary(const Dwarf_Op& operation) {
  return m_iWords > 0 && Calculate(operation.atom, m_words[m_iWords - 1], m_words[m_iWords - 1]);
}

bool ExpressionMachine::Binary(unsigned atom) {
  if (m_iWords < 2) return false;
  Word result;
  if (!Calculate(atom, m_words[m_iWords - 2], m_words[m_iWords - 1], result)) return false;
  m_words[--m_iWords - 1] = result;
  return true;
}

bool ExpressionMachine::Load(std::uint64_t size, const WordType& type) {
  Word address;
  std::uint64_t value = 0;
  if (size == 0 || size > sizeof value || !Pop(address)) return false;
  return m_scene.m_memory.Read(address.m_uBits, &value, size) && Push(MakeWord(value, type));
}

bool ExpressionMachine::Jump(const Dwarf_Op& operation) {
  Word word;
  if (operation.atom == DW_OP_bra) {
    if (!Pop(word)) return false;
    if (word.m_uBits == 0) return true;
  }
  const auto behind = static_cast<std::int64_t>(operation.offset) + 3;
  const std::int64_t target = behind + static_cast<std::int16_t>(operation.number);
  for (m_uNext = 0; m_uNext < m_uOperations; ++m_uNext)
    if (static_cast<std::int64_t>(m_pOperations[m_uNext].offset) == target) return true;
  // Behind the last one is a place as well.
  return target > static_cast<std::int64_t>(m_pOperations[m_uOperations - 1].offset);
}

bool ExpressionMachine::NameRegister(std::uint64_t number) noexcept {
  m_eFound = eFOUND_REGISTER;
  m_uRegister = number;
  m_bEmpty = false;
  return true;
}

bool ExpressionMachine::Typed(const Dwarf_Op& operation) {
  WordType type;
  if (!TypeOfOperation(operation, type)) return false;
  switch (Standard(operation.atom)) {
    case DW_OP_const_type:
      return Constant(operation, type);
    case DW_OP_deref_type:
      return operation.number == type.m_ucSize && Load(operation.number, type);
    case DW_OP_regval_type: {
      std::uint64_t value = 0;
      return ReadRegister(operation.number, value) && Push(MakeWord(value, type));
    }
    default:
      return Convert(operation, type);
  }
}

bool ExpressionMachine::Constant(const Dwarf_Op& operation, const WordType& type) {
  const Dw& dw = m_scene.m_dw;
  Dwarf_Attribute held{};
  Dwarf_Block block{};
  if (!dw.dwarf_getlocation_attr || !dw.dwarf_formblock) return false;
  if (dw.dwarf_getlocation_attr(&m_attribute, &operation, &held) != 0) return false;
  if (dw.dwarf_formblock(&held, &block) != 0 || block.length == 0 || block.length > 8 ||
      block.length != type.m_ucSize)
    return false;
  std::uint64_t value = 0;
  std::memcpy(&value, block.data, block.length);
  return Push(MakeWord(value, type));
}

bool ExpressionMachine::Convert(const Dwarf_Op& operation, const WordType& type) {
  Word word;
  if (!Pop(word)) return false;
  const bool counted = type.m_eKind != eWORD_OPAQUE && word.m_type.m_eKind != eWORD_OPAQUE;
  const bool sameSize = type.m_ucSize == word.m_type.m_ucSize;
  if (!counted && !(Standard(operation.atom) == DW_OP_reinterpret && sameSize)) return false;
  return Push(MakeWord(word.m_uBits, type));
}

bool ExpressionMachine::TypeOfOperation(const Dwarf_Op& operation, WordType& type) {
  const unsigned atom = Standard(operation.atom);
  if ((atom == DW_OP_convert || atom == DW_OP_reinterpret) && operation.number == 0) return true;
  const Dw& dw = m_scene.m_dw;
  Dwarf_Die die{};
  if (!dw.dwarf_getlocation_die || dw.dwarf_getlocation_die(&m_attribute, &operation, &die) != 0)
    return false;
  return TypeOfWord(dw, die, type);
}

bool ExpressionMachine::Piece(std::uint64_t size) {
  static constexpr std::uint64_t uMOST = 1U << 16;
  if (size > uMOST || m_pieces.m_bytes.size() + size > uMOST) return false;
  m_bPieces = true;
  AppendFound(m_pieces, size);
  m_iWords = 0;
  m_bEmpty = true;
  m_eFound = eFOUND_ON_STACK;
  return true;
}

namespace {

void Append(Location& location, const void* bytes, std::uint64_t size, bool known) {
  const unsigned char* const from = static_cast<const unsigned char*>(bytes);
  if (known)
    location.m_bytes.insert(location.m_bytes.end(), from, from + size);
  else
    location.m_bytes.resize(location.m_bytes.size() + size);
  location.m_known.resize(location.m_bytes.size(), known ? 1 : 0);
}

// A number of 8 bytes is all that there is; what goes beyond isn't known.
void AppendNumber(Location& location, std::uint64_t number, std::uint64_t size, bool known) {
  const std::uint64_t here = std::min<std::uint64_t>(size, sizeof number);
  Append(location, &number, here, known);
  Append(location, nullptr, size - here, false);
}

}  // namespace

// What was found since the last piece, as bytes.
void ExpressionMachine::AppendFound(Location& location, std::uint64_t size) {
  std::uint64_t number = 0;
  if (m_bEmpty) return Append(location, nullptr, size, false);
  switch (m_eFound) {
    case eFOUND_REGISTER: {
      const bool known = ReadRegister(m_uRegister, number);
      return AppendNumber(location, number, size, known);
    }
    case eFOUND_VALUE:
      return AppendNumber(location, m_iWords > 0 ? m_words[m_iWords - 1].m_uBits : 0, size, m_iWords > 0);
    case eFOUND_BLOCK: {
      const std::uint64_t here = std::min<std::uint64_t>(size, m_block.length);
      Append(location, m_block.data, here, true);
      return Append(location, nullptr, size - here, false);
    }
    default:
      return AppendMemory(location, size);
  }
}

void ExpressionMachine::AppendMemory(Location& location, std::uint64_t size) {
  std::vector<unsigned char> bytes(size);
  const bool known = m_iWords > 0 && m_scene.m_memory.Read(m_words[m_iWords - 1].m_uBits, bytes.data(), size);
  Append(location, bytes.data(), size, known);
}

Location ExpressionMachine::Result(std::uint64_t size) {
  static constexpr std::uint64_t uMOST = 1U << 16;
  Location found;
  if (m_bPieces) {
    found = std::move(m_pieces);
    found.m_ePlace = eVALUE_IN_BYTES;
  } else if (m_eFound == eFOUND_ON_STACK && m_iWords > 0) {
    found.m_ePlace = eVALUE_IN_MEMORY;
    found.m_uAddress = m_words[m_iWords - 1].m_uBits;
  } else if (!m_bEmpty && size <= uMOST) {
    found.m_ePlace = eVALUE_IN_BYTES;
    AppendFound(found, size);
  }
  const bool nothing = std::find(found.m_known.begin(), found.m_known.end(), 1) == found.m_known.end();
  if (found.m_ePlace == eVALUE_IN_BYTES && nothing) found.m_ePlace = eVALUE_NOWHERE;
  return found;
}

bool ExpressionMachine::Number(std::uint64_t& number) const noexcept {
  if (m_bPieces || m_eFound == eFOUND_BLOCK) return false;
  if (m_eFound == eFOUND_REGISTER) return ReadRegister(m_uRegister, number);
  if (m_iWords == 0) return false;
  number = m_words[m_iWords - 1].m_uBits;
  return true;
}

}  // namespace Oxa::Core::Platform
