// Expressions of frame data: a small machine with a stack.
#include "Platform/Linux/StackWalkRules.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iSTACK_DEPTH = 32;

class Machine {
 public:
  Machine(const FrameRegisters& from, std::uint64_t cfa, MemoryReader& memory)
      : m_from(from), m_uCfa(cfa), m_memory(memory) {}

  bool Run(const Dwarf_Op* operations, std::size_t count) {
    for (std::size_t i = 0; i < count && m_bGood; ++i) Step(operations[i]);
    return m_bGood && m_iDepth > 0;
  }

  std::uint64_t Result() const { return m_stack[m_iDepth - 1]; }
  bool IsValue() const { return m_bValue; }

 private:
  void Push(std::uint64_t value) {
    m_bGood = m_bGood && m_iDepth < iSTACK_DEPTH;
    if (m_bGood) m_stack[m_iDepth++] = value;
  }

  std::uint64_t Pop() {
    m_bGood = m_bGood && m_iDepth > 0;
    return m_bGood ? m_stack[--m_iDepth] : 0;
  }

  std::uint64_t Peek(int below) {
    m_bGood = m_bGood && m_iDepth > below;
    return m_bGood ? m_stack[m_iDepth - 1 - below] : 0;
  }

  void PushRegister(std::uint64_t number, std::uint64_t offset) {
    m_bGood = m_bGood && number < CONTEXT::iREGISTERS && m_from.m_bKnown[number];
    if (m_bGood) Push(m_from.m_context.m_registers[number] + offset);
  }

  void Dereference(std::uint64_t size) {
    std::uint64_t value = 0;
    m_bGood = m_bGood && size > 0 && size <= sizeof value && m_memory.Read(Pop(), &value, size);
    Push(value);
  }

  void Step(const Dwarf_Op& operation) {
    const std::uint8_t atom = operation.atom;
    if (atom >= DW_OP_lit0 && atom <= DW_OP_lit31) return Push(atom - DW_OP_lit0);
    if (atom >= DW_OP_breg0 && atom <= DW_OP_breg31)
      return PushRegister(atom - DW_OP_breg0, operation.number);
    if (atom >= DW_OP_const1u && atom <= DW_OP_consts) return Push(operation.number);
    if (!StepOne(operation)) StepTwo(atom);
  }

  // What takes at most one value; false for anything else.
  bool StepOne(const Dwarf_Op& operation) {
    switch (operation.atom) {
      case DW_OP_addr:
        return Push(operation.number), true;
      case DW_OP_bregx:
        return PushRegister(operation.number, operation.number2), true;
      case DW_OP_call_frame_cfa:
        return Push(m_uCfa), true;
      case DW_OP_plus_uconst:
        return Push(Pop() + operation.number), true;
      case DW_OP_deref:
        return Dereference(sizeof(std::uint64_t)), true;
      case DW_OP_deref_size:
        return Dereference(operation.number), true;
      case DW_OP_dup:
        return Push(Peek(0)), true;
      case DW_OP_over:
        return Push(Peek(1)), true;
      case DW_OP_drop:
        return Pop(), true;
      case DW_OP_neg:
        return Push(0 - Pop()), true;
      case DW_OP_not:
        return Push(~Pop()), true;
      case DW_OP_nop:
        return true;
      case DW_OP_stack_value:
        return m_bValue = true;
      default:
        return false;
    }
  }

  void StepTwo(std::uint8_t atom) {
    const std::uint64_t right = Pop();
    const std::uint64_t left = Pop();
    const auto signedRight = static_cast<std::int64_t>(right);
    const auto signedLeft = static_cast<std::int64_t>(left);
    switch (atom) {
      case DW_OP_plus:
        return Push(left + right);
      case DW_OP_minus:
        return Push(left - right);
      case DW_OP_mul:
        return Push(left * right);
      case DW_OP_and:
        return Push(left & right);
      case DW_OP_or:
        return Push(left | right);
      case DW_OP_xor:
        return Push(left ^ right);
      case DW_OP_shl:
        return Push(right < 64 ? left << right : 0);
      case DW_OP_shr:
        return Push(right < 64 ? left >> right : 0);
      case DW_OP_eq:
        return Push(left == right ? 1 : 0);
      case DW_OP_ne:
        return Push(left != right ? 1 : 0);
      case DW_OP_ge:
        return Push(signedLeft >= signedRight ? 1 : 0);
      case DW_OP_gt:
        return Push(signedLeft > signedRight ? 1 : 0);
      case DW_OP_le:
        return Push(signedLeft <= signedRight ? 1 : 0);
      case DW_OP_lt:
        return Push(signedLeft < signedRight ? 1 : 0);
      case DW_OP_swap:
        Push(right);
        return Push(left);
      default:
        m_bGood = false;  // no frame data of this processor has it
    }
  }

  const FrameRegisters& m_from;
  const std::uint64_t m_uCfa;
  MemoryReader& m_memory;
  std::uint64_t m_stack[iSTACK_DEPTH] = {};
  int m_iDepth = 0;
  bool m_bGood = true;
  bool m_bValue = false;
};

}  // namespace

bool Evaluate(const Dwarf_Op* operations, std::size_t count, const FrameRegisters& from, std::uint64_t cfa,
              MemoryReader& memory, std::uint64_t& result, bool& isValue) {
  Machine machine(from, cfa, memory);
  if (!machine.Run(operations, count)) return false;
  result = machine.Result();
  isValue = machine.IsValue();
  return true;
}

}  // namespace Oxa::Core::Platform
