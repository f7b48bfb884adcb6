#include "Platform/Linux/StackWalkRules.h"

#include <cstdlib>
#include <memory>

namespace Oxa::Core::Platform {

namespace {

constexpr int iRAX = 0;
constexpr int iRBX = 3;

std::int64_t Signed(std::uint64_t value) { return static_cast<std::int64_t>(value); }

// The operand of an operation that adds to a register, which is `number` then.
bool IsRegisterAndOffset(const Dwarf_Op& operation, unsigned& number, std::int64_t& offset) {
  if (operation.atom >= DW_OP_breg0 && operation.atom <= DW_OP_breg31) {
    number = operation.atom - DW_OP_breg0;
    offset = Signed(operation.number);
    return true;
  }
  number = static_cast<unsigned>(operation.number);
  offset = Signed(operation.number2);
  return operation.atom == DW_OP_bregx;
}

bool IsRegister(const Dwarf_Op& operation, unsigned& number) {
  if (operation.atom >= DW_OP_reg0 && operation.atom <= DW_OP_reg31) {
    number = operation.atom - DW_OP_reg0;
    return true;
  }
  number = static_cast<unsigned>(operation.number);
  return operation.atom == DW_OP_regx;
}

}  // namespace

void StackWalkRules::ReadCfa(const Dwarf_Op* operations, std::size_t count) {
  unsigned number = 0;
  std::int64_t offset = 0;
  if (count != 1 || !IsRegisterAndOffset(operations[0], number, offset)) {
    m_cfa = Rule{eEXPRESSION, 0, 0, operations, count};
  } else if (number < CONTEXT::iREGISTERS) {
    m_cfa = Rule{eREGISTER, static_cast<unsigned char>(number), offset, nullptr, 0};
  }
}

// `scratch` is where the library has put operations that it made itself: they are gone soon.
StackWalkRules::Rule StackWalkRules::ReadRule(const Dwarf_Op* operations, std::size_t count,
                                              const Dwarf_Op* scratch) {
  if (count == 0) return Rule{operations == nullptr ? eSAME : eUNDEFINED, 0, 0, nullptr, 0};
  if (operations != scratch) return Rule{eEXPRESSION, 0, 0, operations, count};
  unsigned number = 0;
  if (count == 1 && IsRegister(operations[0], number))
    return number < CONTEXT::iREGISTERS ? Rule{eREGISTER, static_cast<unsigned char>(number), 0, nullptr, 0}
                                        : Rule();
  if (operations[0].atom != DW_OP_call_frame_cfa) return Rule();
  Rule rule{eAT_OFFSET, 0, 0, nullptr, 0};
  for (std::size_t i = 1; i < count; ++i) {
    if (operations[i].atom == DW_OP_plus_uconst) rule.m_iOffset = Signed(operations[i].number);
    if (operations[i].atom == DW_OP_stack_value) rule.m_eKind = eIS_OFFSET;
  }
  return rule;
}

bool StackWalkRules::Read(const Dw& dw, Dwarf_CFI* frames, Dwarf_Addr place) {
  Dwarf_Frame* read = nullptr;
  if (dw.dwarf_cfi_addrframe(frames, place, &read) != 0) return false;
  const std::unique_ptr<Dwarf_Frame, void (*)(void*)> frame(read, std::free);
  Dwarf_Addr begin = 0;
  Dwarf_Addr end = 0;
  dw.dwarf_frame_info(frame.get(), &begin, &end, &m_bSignal);
  Dwarf_Op* operations = nullptr;
  std::size_t count = 0;
  if (dw.dwarf_frame_cfa(frame.get(), &operations, &count) != 0) return false;
  ReadCfa(operations, count);
  // An expression of the frame data outlives the frame; a register with an offset is copied.
  for (int number = 0; number < CONTEXT::iREGISTERS; ++number) {
    Dwarf_Op scratch[3];
    if (dw.dwarf_frame_register(frame.get(), number, scratch, &operations, &count) != 0) return false;
    m_rules[number] = ReadRule(operations, count, scratch);
  }
  // What functions keep without saying so: the library takes the number of rax for that of rbx.
  if (m_rules[iRAX].m_eKind == eSAME) m_rules[iRAX].m_eKind = eUNDEFINED;
  if (m_rules[iRBX].m_eKind == eUNDEFINED) m_rules[iRBX].m_eKind = eSAME;
  for (unsigned char number = 0; number < CONTEXT::iREGISTERS; ++number)
    if (m_rules[number].m_eKind != eUNDEFINED) m_defined[m_iDefined++] = number;
  return true;
}

bool StackWalkRules::FindCfa(const FrameRegisters& from, MemoryReader& memory, std::uint64_t& cfa) const {
  cfa = 0;
  if (m_cfa.m_eKind == eREGISTER) {
    if (!from.m_bKnown[m_cfa.m_uRegister]) return false;
    cfa = from.m_context.m_registers[m_cfa.m_uRegister] + static_cast<std::uint64_t>(m_cfa.m_iOffset);
    return true;
  }
  bool isValue = false;
  if (m_cfa.m_eKind != eEXPRESSION) return false;
  return Evaluate(m_cfa.m_pOperations, m_cfa.m_uOperations, from, 0, memory, cfa, isValue);
}

bool StackWalkRules::FindByExpression(const Rule& rule, const FrameRegisters& from, std::uint64_t cfa,
                                      MemoryReader& memory, std::uint64_t& value) {
  std::uint64_t result = 0;
  bool isValue = false;
  if (!Evaluate(rule.m_pOperations, rule.m_uOperations, from, cfa, memory, result, isValue)) return false;
  value = result;
  return isValue || memory.Read(result, &value, sizeof value);
}

bool StackWalkRules::FindValue(const Rule& rule, const FrameRegisters& from, std::uint64_t cfa,
                               MemoryReader& memory, std::uint64_t& value) {
  switch (rule.m_eKind) {
    case eAT_OFFSET:
      return memory.Read(cfa + static_cast<std::uint64_t>(rule.m_iOffset), &value, sizeof value);
    case eIS_OFFSET:
      value = cfa + static_cast<std::uint64_t>(rule.m_iOffset);
      return true;
    case eREGISTER:
      value = from.m_context.m_registers[rule.m_uRegister];
      return from.m_bKnown[rule.m_uRegister];
    case eEXPRESSION:
      return FindByExpression(rule, from, cfa, memory, value);
    default:
      return false;
  }
}

bool StackWalkRules::Apply(const FrameRegisters& from, MemoryReader& memory, FrameRegisters& caller,
                           std::uint64_t& cfa) const {
  if (!FindCfa(from, memory, cfa)) return false;
  for (int i = 0; i < m_iDefined; ++i) {
    const int number = m_defined[i];
    std::uint64_t value = 0;
    if (m_rules[number].m_eKind == eSAME) {
      caller.m_context.m_registers[number] = from.m_context.m_registers[number];
      caller.m_bKnown[number] = from.m_bKnown[number];
    } else if (FindValue(m_rules[number], from, cfa, memory, value)) {
      caller.Set(number, value);
    }
  }
  // The stack of the caller is where it was before the call, unless the rules know better.
  if (m_rules[CONTEXT::iSTACK].m_eKind <= eSAME) caller.Set(CONTEXT::iSTACK, cfa);
  return m_rules[CONTEXT::iPLACE].m_eKind > eSAME && caller.m_bKnown[CONTEXT::iPLACE];
}

}  // namespace Oxa::Core::Platform
