#include "CrashKind.h"

#include <algorithm>
#include <iomanip>
#include <iterator>
#include <sstream>

#include "FloatFaults.h"
#include "MachineFaults.h"
#include "OtherDeaths.h"

namespace Station {

namespace {

constexpr int iNAME_WIDTH = 20;
constexpr bool bENDS_AFTER = true;
constexpr bool bLEAVES_NOTHING = false;

// clang-format off
const CrashKind aKINDS[] = {
    {"null-write", "writes through a null pointer: AccessViolation", WriteThroughNull},
    {"null-read", "reads through a null pointer: AccessViolation", ReadThroughNull},
    {"null-call", "calls a function that isn't there: AccessViolation, told at the call", CallNull},
    {"divide", "divides a whole number by zero: IntDivideByZero", DivideByZero},
    {"stack-overflow", "calls itself without end: StackOverflow", OverflowStack},
    {"truncated-file", "reads a mapped file beyond what is left of it: InPageError", ReadBeyondMappedFile},
#if defined(__x86_64__)
    {"illegal-instruction", "comes upon what is no instruction: IllegalInstruction", RunNoInstruction},
    {"private-instruction", "asks the processor to halt: PrivateInstruction", RunPrivateInstruction},
    {"int-overflow", "tells an overflow by the instruction for that: IntOverflow", RunOverflowInstruction},
    {"misaligned", "reads an int at an odd address, with the check for that on: DatatypeMisalignment", ReadMisaligned},
#endif
    {"float-divide", "divides by zero, with that trap on: FloatDivideByZero", DivideFloatByZero},
    {"float-invalid", "takes zero by zero, with that trap on: FloatInvalidOperation", DoInvalidFloatOperation},
    {"float-overflow", "multiplies beyond what a double holds, with that trap on: FloatOverflow", OverflowFloat},
    {"float-underflow", "divides below what a double holds, with that trap on: FloatUnderflow", UnderflowFloat},
#if defined(__x86_64__)
    {"float-denormal", "reckons with a denormal number, with that trap on: FloatDenormalOperand", UseDenormalFloat},
    {"float-stack", "takes a number from the empty stack of the x87: FloatStackCheck", PopEmptyFloatStack},
#endif
    {"error", "an error of the station's own that nobody catches, forwarded once", LeaveErrorUncaught},
    {"exception", "a std::runtime_error that nobody catches or forwards: the report has no message", LeaveExceptionUncaught},
    {"unknown", "throw 42, which nobody catches or forwards: the report has no message", LeaveNumberUncaught},
    {"thread", "a fault on a thread of the host's own that has the translator", DieOnThread},
    {"bare-thread", "a fault on a thread without translator: no error, the dump comes first", DieOnBareThread},
    {"threads", "four threads that fault at once: one report, one dump", DieOnThreadsAtOnce},
    {"listener", "a listener that is told of the death and faults itself", DieWithBrokenListener},
    {"heap", "a list of free blocks that was overwritten: the allocator faults, so a dump is all", BreakHeap},
    {"static-destructor", "a fault after the end of main", DieInStaticDestructor, bENDS_AFTER},
    {"abort", "abort() is no fault: the process ends by its signal, and leaves nothing", CallAbort, false, bLEAVES_NOTHING},
};
// clang-format on

}  // namespace

const CrashKind* FindCrashKind(const std::string& name) {
  const auto found = std::find_if(std::begin(aKINDS), std::end(aKINDS),
                                  [&](const CrashKind& kind) { return name == kind.m_sName; });
  return found == std::end(aKINDS) ? nullptr : found;
}

std::string CrashKindList() {
  std::ostringstream list;
  for (const CrashKind& kind : aKINDS) {
    list << "  " << std::left << std::setw(iNAME_WIDTH) << kind.m_sName << kind.m_sShows << '\n';
  }
  return list.str();
}

}  // namespace Station
