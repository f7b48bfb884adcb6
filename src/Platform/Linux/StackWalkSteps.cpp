#include "Platform/Linux/StackWalkSteps.h"

#include <algorithm>
#include <iterator>

#include "Platform/Faults.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t uWORD = sizeof(std::uint64_t);
constexpr std::uint64_t uMAX_FRAME = 1024 * 1024;  // bytes of a frame that is only guessed

}  // namespace

StackWalkSteps::StackWalkSteps(SymbolizedProcess& process, const CONTEXT& context) : m_process(process) {
  m_next.m_context = context;
  std::fill(std::begin(m_next.m_bKnown), std::end(m_next.m_bKnown), true);
  m_memory.Trust(reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)), EndOfStack());
}

bool StackWalkSteps::Next(NativeFrame& frame) {
  if (!m_bThere) return false;
  frame.m_registers = m_next;
  frame.m_bExact = m_bExact;
  frame.m_uCfa = 0;
  const std::uint64_t place = m_next.Place();
  frame.m_pFacts = &m_process.GetFacts(m_bExact || place == 0 ? place : place - 1);
  m_next = FrameRegisters();
  m_bThere = frame.m_pFacts->m_bHasRules ? StepByRules(frame, m_next) : StepByGuess(frame, m_next);
  m_bExact = frame.m_pFacts->m_bHasRules && frame.m_pFacts->m_rules.IsSignal();
  m_bThere = m_bThere && m_next.Place() != 0;
  return true;
}

bool StackWalkSteps::StepByRules(NativeFrame& frame, FrameRegisters& caller) {
  return frame.m_pFacts->m_rules.Apply(frame.m_registers, m_memory, caller, frame.m_uCfa);
}

// No rules: a call to where no code is has left its return address on the stack; other code may keep frame pointers.
bool StackWalkSteps::StepByGuess(NativeFrame& frame, FrameRegisters& caller) {
  if (!frame.m_bExact || m_process.IsCode(frame.m_registers.Place()))
    return StepByFramePointer(frame, caller);
  return StepOverReturn(frame, caller) || StepByFramePointer(frame, caller);
}

bool StackWalkSteps::StepOverReturn(NativeFrame& frame, FrameRegisters& caller) {
  std::uint64_t behindCall = 0;
  const std::uint64_t stack = frame.m_registers.Stack();
  if (!m_memory.Read(stack, &behindCall, uWORD) || !m_process.IsCode(behindCall)) return false;
  caller = frame.m_registers;
  caller.Set(CONTEXT::iPLACE, behindCall);
  caller.Set(CONTEXT::iSTACK, stack + uWORD);
  frame.m_uCfa = stack + uWORD;
  return true;
}

bool StackWalkSteps::StepByFramePointer(NativeFrame& frame, FrameRegisters& caller) {
  std::uint64_t saved[2] = {};  // the caller's frame pointer and the return address
  const std::uint64_t pointer = frame.m_registers.m_context.m_registers[CONTEXT::iFRAME];
  const std::uint64_t stack = frame.m_registers.Stack();
  if (!frame.m_registers.m_bKnown[CONTEXT::iFRAME] || pointer % uWORD != 0) return false;
  if (pointer < stack || pointer - stack > uMAX_FRAME) return false;
  if (!m_memory.Read(pointer, saved, sizeof saved) || !m_process.IsCode(saved[1])) return false;
  caller.Set(CONTEXT::iFRAME, saved[0]);
  caller.Set(CONTEXT::iPLACE, saved[1]);
  caller.Set(CONTEXT::iSTACK, pointer + sizeof saved);
  frame.m_uCfa = pointer + sizeof saved;
  return true;
}

}  // namespace Oxa::Core::Platform
