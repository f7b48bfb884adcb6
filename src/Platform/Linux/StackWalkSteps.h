// From a frame to its caller.
#ifndef OXACORE_PLATFORM_LINUX_STACKWALKSTEPS_H
#define OXACORE_PLATFORM_LINUX_STACKWALKSTEPS_H

#include <cstdint>

#include "Platform/Linux/StackWalkRules.h"
#include "Platform/Linux/SymbolizedProcess.h"
#include "Platform/MemoryReader.h"

namespace Oxa::Core::Platform {

/// A frame that lies on the stack.
struct NativeFrame {
  FrameRegisters m_registers;
  /// Whether it stands at its instruction: the others stand behind a call, which may be another function's.
  bool m_bExact = true;
  const AddressFacts* m_pFacts = nullptr;
  std::uint64_t m_uCfa = 0;  ///< 0: not known
};

/// Goes from frame to frame. May throw std::bad_alloc.
class StackWalkSteps {
 public:
  StackWalkSteps(SymbolizedProcess& process, const CONTEXT& context);

  /// False when there are no more.
  bool Next(NativeFrame& frame);

 private:
  bool StepByRules(NativeFrame& frame, FrameRegisters& caller);
  bool StepByGuess(NativeFrame& frame, FrameRegisters& caller);
  bool StepOverReturn(NativeFrame& frame, FrameRegisters& caller);
  bool StepByFramePointer(NativeFrame& frame, FrameRegisters& caller);

  SymbolizedProcess& m_process;
  MemoryReader m_memory;
  FrameRegisters m_next;
  bool m_bExact = true;
  bool m_bThere = true;
};

}  // namespace Oxa::Core::Platform

#endif
