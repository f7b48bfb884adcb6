// Places that fault. Written in assembler where a test has to know the very instruction.
#ifndef OXACORE_TESTS_FAULTS_FAULTSITES_H
#define OXACORE_TESTS_FAULTS_FAULTSITES_H

#include <cstdint>

#include "Support/FaultSite.h"

extern "C" {

// The first instruction faults.
void FaultWrite(void* place);
void FaultRead(const void* place);
double FaultDivideDouble(double one, double other);
double FaultMultiplyDouble(double one, double other);
double FaultAddDouble(double one, double other);
void FaultIllegal();
void FaultHalt();
void FaultPort();

/// Of 16 bytes that have to lie at a multiple of 16.
void FaultMisalignedVector(const void* place);

/// Through a gate that is the kernel's.
void FaultGate();

/// Its stack pointer is no address any more.
void FaultWithoutStack();

// The instruction at the label behind faults.
int FaultDivide(int one, int other);
extern const char FaultDivideAt[];
void FaultMisaligned(const void* place);
extern const char FaultMisalignedAt[];

/// Calls itself until the stack is at its end.
void FaultOverflow();
extern const char FaultOverflowAt[];

// The processor tells of these behind the instruction, at the label.
void FaultIntOverflow();
extern const char FaultIntOverflowAt[];
void FaultX87Stack();
extern const char FaultX87StackAt[];
}

namespace FaultSites {

/// Calls itself until the stack is at its end.
OXA_FAULT_SITE int Recurse(volatile int* depth);

/// A page of a file that has become shorter.
const void* PageBehindTheEnd();

/// Lets the floating-point exceptions `which` (of <cfenv>) become faults while it stands.
class FloatFaults {
 public:
  explicit FloatFaults(int which);
  /// Denormal operands have no place in <cfenv>.
  static FloatFaults ForDenormals();
  FloatFaults(const FloatFaults&) = delete;
  FloatFaults& operator=(const FloatFaults&) = delete;
  ~FloatFaults();

 private:
  struct Denormals {};
  explicit FloatFaults(Denormals);
};

}  // namespace FaultSites

#endif
