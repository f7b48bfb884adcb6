// What the system does to a thread behind the program's back: cancellation, and faults of the machine.
#ifndef OXACORE_PLATFORM_FAULTS_H
#define OXACORE_PLATFORM_FAULTS_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

/// For a `catch (...)` clause: goes on with the cancellation of this thread if that is what is being caught.
/// Returns for every other exception, which stays the one that is being handled.
void LetCancellationPass();

/// Keeps the cancellation of this thread waiting while it stands: for calls out of functions that nothing may
/// leave.
class HoldCancellation {
 public:
  HoldCancellation() noexcept;
  HoldCancellation(const HoldCancellation&) = delete;
  HoldCancellation& operator=(const HoldCancellation&) = delete;
  ~HoldCancellation();

 private:
  int m_iBefore = 0;
};

/// What the adapter has to know of a fault.
struct FaultFacts {
  unsigned int m_uCode;      ///< one of the numbers below
  std::uint64_t m_uPlace;    ///< the faulting instruction
  bool m_bWrite;             ///< of a memory fault: it tried to write
  std::uint64_t m_uTouched;  ///< of a memory fault: the address it touched
};

/// The numbers of faults are the same on every system.
enum EFaultCode : unsigned int {
  eDATATYPE_MISALIGNMENT = 0x80000002U,
  eACCESS_VIOLATION = 0xC0000005U,
  eIN_PAGE_ERROR = 0xC0000006U,
  eILLEGAL_INSTRUCTION = 0xC000001DU,
  eNONCONTINUABLE_EXCEPTION = 0xC0000025U,
  eARRAY_BOUNDS_EXCEEDED = 0xC000008CU,
  eFLT_DENORMAL_OPERAND = 0xC000008DU,
  eFLT_DIVIDE_BY_ZERO = 0xC000008EU,
  eFLT_INEXACT_RESULT = 0xC000008FU,
  eFLT_INVALID_OPERATION = 0xC0000090U,
  eFLT_OVERFLOW = 0xC0000091U,
  eFLT_STACK_CHECK = 0xC0000092U,
  eFLT_UNDERFLOW = 0xC0000093U,
  eINT_DIVIDE_BY_ZERO = 0xC0000094U,
  eINT_OVERFLOW = 0xC0000095U,
  ePRIV_INSTRUCTION = 0xC0000096U,
  eSTACK_OVERFLOW = 0xC00000FDU
};

/// Reads what `pointers` stand for. Allocates nothing.
FaultFacts FactsOf(const _EXCEPTION_POINTERS& pointers) noexcept;

/// Called on the faulting thread, with its stack still standing, as if the faulting instruction had called it: it
/// may throw, and the exception travels up from there. Where it returns, the last chance follows.
using FaultTranslator = void (*)(unsigned int code, _EXCEPTION_POINTERS* pointers);

/// Called on a thread that faulted and has no translator, or whose fault can't be translated, on a stack with room
/// to work. Not expected to return; if it does, the system's default action follows.
using LastChance = long (*)(_EXCEPTION_POINTERS* pointers);

/// Sets the translator of the calling thread, null for none, and gives the one before. The first that isn't null
/// gives the thread what it needs to survive an overflow of its stack; a thread that can't have that goes without.
FaultTranslator SetFaultTranslator(FaultTranslator translator) noexcept;
FaultTranslator CurrentFaultTranslator() noexcept;

/// Sets the last chance of the process, null for none, and gives the one before. The first that isn't null takes the
/// signals of faults; null gives them back to whoever had them before.
LastChance SetLastChance(LastChance filter) noexcept;

/// Takes everything of the library out of the system's hands: handlers of signals (a host's earlier ones come back,
/// later ones stay), stacks of threads. For the unload, whatever is still in use.
void RemoveFaultHandling() noexcept;

/// Forgets pending floating-point exceptions of the calling thread, so that they don't fault again.
void ClearFloatingPointState() noexcept;

/// Copies as memcpy does, from or to memory that belongs to somebody else. Compilers take it for granted that memcpy
/// throws nothing, and leave out what a fault in it would have to clean up; here they expect it.
void CopyBytes(void* to, const void* from, std::size_t count);

/// The error mode of the process: a word that is stored, and gives the one before.
unsigned int SetErrorMode(unsigned int mode) noexcept;

/// Calls `action` and gives true; a fault within cuts it short and gives false, whatever the translator is. What the
/// action held then stays held and what it owned leaks: for reading data that may be damaged. Nests. `action` must
/// not throw. Guards only against the faults whose signals come here: between the first last chance and its end (see
/// SetLastChance), and unless the host has taken a signal for itself or the thread blocks it. Otherwise a fault is what
/// it would be without the guard.
bool CallGuarded(void (*action)(void*), void* argument) noexcept;

/// Calls `action` on a new stack of `size` bytes, which is given back when it returns; on the current one where
/// there is none to be had. Allocates nothing from the heap. Nothing may be thrown out of `action`. Stack walks go
/// on behind it.
void CallOnNewStack(std::size_t size, void (*action)(void*), void* argument) noexcept;

/// The same on the current stack if that is known to have `size` bytes left.
void CallWithRoom(std::size_t size, void (*action)(void*), void* argument) noexcept;

/// The upper end of the stack that the caller runs on: all from the caller's frame up to there can be read. 0 where it
/// isn't known.
std::uintptr_t EndOfStack() noexcept;

}  // namespace Oxa::Core::Platform

#endif
