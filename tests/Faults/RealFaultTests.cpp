// Faults as the machine makes them: each class that this system can tell, with its exact message.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <fenv.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <limits>
#include <string>

#include "FaultSites.h"

namespace {

using namespace MSWindows;
using FaultSites::FloatFaults;
using Oxa::Core::AlertInfo;
using Oxa::Core::Error;
using Oxa::Core::OSError;

template <class Address>
std::string Hex(Address address) {
  char text[32];
  std::snprintf(text, sizeof(text), "%#lx", reinterpret_cast<unsigned long>(address));
  return text;
}

template <class Address>
std::string Hex32(Address address) {
  char text[32];
  std::snprintf(text, sizeof(text), "%#x", static_cast<unsigned>(reinterpret_cast<unsigned long>(address)));
  return text;
}

// The message of the Fault that `site` ends with; what else happens is told.
template <class Fault, class Site>
std::string MessageOf(const Site& site) {
  try {
    site();
  } catch (Fault& fault) {
    EXPECT_STREQ(typeid(Fault).name(), typeid(fault).name());
    EXPECT_EQ("OS.Windows", fault.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ("OperatingSystem", fault.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ(AlertInfo::eCRITICAL, fault.GetSeverity());
    return fault.what();
  } catch (Error& error) {
    return std::string("another error: ") + typeid(error).name() + ", " + error.what();
  }
  return "no error";
}

TEST(RealFault, ANullWriteTellsItsAddress) {
  EXPECT_EQ("Illegal write to virtual address 0 from " + Hex(&FaultWrite),
            MessageOf<AccessViolation>([] { FaultWrite(nullptr); }));
}

TEST(RealFault, AReadTellsItsAddress) {
  EXPECT_EQ("Illegal read from virtual address 0x1230 from " + Hex(&FaultRead),
            MessageOf<AccessViolation>([] { FaultRead(reinterpret_cast<void*>(0x1230)); }));
}

TEST(RealFault, IsCaughtByItsBaseClassesToo) {
  EXPECT_THROW(FaultWrite(nullptr), SEHError);
  EXPECT_THROW(FaultWrite(nullptr), OSError);
  EXPECT_THROW(FaultWrite(nullptr), Error);
  EXPECT_THROW(FaultWrite(nullptr), std::exception);
}

TEST(RealFault, AWriteToWhatCanOnlyBeRead) {
  static const int constant = 7;
  void* const place = const_cast<int*>(&constant);
  EXPECT_EQ("Illegal write to virtual address " + Hex(place) + " from " + Hex(&FaultWrite),
            MessageOf<AccessViolation>([place] { FaultWrite(place); }));
}

// The processor doesn't tell which one.
TEST(RealFault, AnAddressThatCanBeNoneIsAnAccessViolation) {
  EXPECT_EQ("Illegal read from virtual address 0 from " + Hex(&FaultRead),
            MessageOf<AccessViolation>([] { FaultRead(reinterpret_cast<void*>(0xDEADBEEFDEADBEEF)); }));
}

// Nor here: the processor has one number for all that it doesn't like of an address.
TEST(RealFault, AMisalignedVectorIsToldAsAReadFromNull) {
  alignas(16) static const char data[32] = {};
  EXPECT_EQ("Illegal read from virtual address 0 from " + Hex(&FaultMisalignedVector),
            MessageOf<AccessViolation>([] { FaultMisalignedVector(data); }));
}

// The number that goes with it is none of a page.
TEST(RealFault, AGateOfTheKernelIsToldAsAReadFromNull) {
  EXPECT_EQ("Illegal read from virtual address 0 from " + Hex(&FaultGate),
            MessageOf<AccessViolation>([] { FaultGate(); }));
}

TEST(RealFault, ACallThroughNullIsCaughtByTheCaller) {
  void (*volatile nowhere)() = nullptr;
  EXPECT_EQ("Illegal read from virtual address 0 from 0",
            MessageOf<AccessViolation>([&nowhere] { nowhere(); }));
}

TEST(RealFault, ACallOfWhatIsNoCode) {
  static int data = 0;
  void (*volatile nowhere)() = reinterpret_cast<void (*)()>(&data);
  EXPECT_EQ("Illegal read from virtual address " + Hex(&data) + " from " + Hex(&data),
            MessageOf<AccessViolation>([&nowhere] { nowhere(); }));
}

TEST(RealFault, AnIntegerIsDividedByZero) {
  EXPECT_EQ("Integer divide by zero attempted at " + Hex32(FaultDivideAt),
            MessageOf<IntDivideByZero>([] { FaultDivide(1, 0); }));
}

// The system has one code for both.
TEST(RealFault, AQuotientThatIsTooLargeIsADivisionByZero) {
  EXPECT_EQ("Integer divide by zero attempted at " + Hex32(FaultDivideAt),
            MessageOf<IntDivideByZero>([] { FaultDivide(INT_MIN, -1); }));
}

TEST(RealFault, AnIntegerOverflowIsToldBehindTheInstruction) {
  EXPECT_EQ("Integer overflow due to operation at " + Hex32(FaultIntOverflowAt),
            MessageOf<IntOverflow>([] { FaultIntOverflow(); }));
}

TEST(RealFault, AFloatIsDividedByZero) {
  const FloatFaults faults(FE_DIVBYZERO);
  EXPECT_EQ("Floating point divide by zero attempted at " + Hex32(&FaultDivideDouble),
            MessageOf<FloatDivideByZero>([] { FaultDivideDouble(1.0, 0.0); }));
}

TEST(RealFault, AnInvalidOperationOfFloats) {
  const FloatFaults faults(FE_INVALID);
  EXPECT_EQ("Invalid floating point operation attempted at " + Hex32(&FaultDivideDouble),
            MessageOf<FloatInvalidOperation>([] { FaultDivideDouble(0.0, 0.0); }));
}

TEST(RealFault, AFloatOverflows) {
  const FloatFaults faults(FE_OVERFLOW);
  EXPECT_EQ("Exceeded maximum exponent for float operation at " + Hex32(&FaultMultiplyDouble),
            MessageOf<FloatOverflow>([] { FaultMultiplyDouble(1e300, 1e300); }));
}

TEST(RealFault, AFloatUnderflows) {
  const FloatFaults faults(FE_UNDERFLOW);
  EXPECT_EQ("Result below minimum exponent for float operation at " + Hex32(&FaultMultiplyDouble),
            MessageOf<FloatUnderflow>([] { FaultMultiplyDouble(1e-300, 1e-300); }));
}

TEST(RealFault, AnOperandIsDenormal) {
  const FloatFaults faults = FloatFaults::ForDenormals();
  EXPECT_EQ("One of the operands in a floating-point operation from " + Hex32(&FaultAddDouble) +
                " is too small to represent as a standard floating-point value",
            MessageOf<FloatDenormalOperand>(
                [] { FaultAddDouble(std::numeric_limits<double>::denorm_min(), 1.0); }));
}

TEST(RealFault, AnInexactResultHasNoClass) {
  const FloatFaults faults(FE_INEXACT);
  EXPECT_EQ("Unknown", [] {
    try {
      FaultDivideDouble(1.0, 3.0);
    } catch (Oxa::Core::UnknownError& error) {
      return error.GetData(AlertInfo::sCATEGORY);
    }
    return std::string("nothing was thrown");
  }());
}

TEST(RealFault, TheFloatingPointMaskOutlivesAFault) {
  const FloatFaults faults(FE_DIVBYZERO | FE_INVALID);
  for (int i = 0; i < 3; ++i) EXPECT_THROW(FaultDivideDouble(1.0, 0.0), FloatDivideByZero);
  EXPECT_EQ(FE_DIVBYZERO | FE_INVALID, ::fegetexcept());
}

TEST(RealFault, TheStackOfTheX87UnitOverflows) {
  const FloatFaults faults(FE_INVALID);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ("Stack overflowed or underflowed due to operation at " + Hex32(FaultX87StackAt),
              MessageOf<FloatStackCheck>([] { FaultX87Stack(); }));
    volatile long double third = 1.0L;
    third = third / 4.0L;
    EXPECT_EQ(0.25L, third);
  }
}

TEST(RealFault, AStackOverflowTellsTheInstruction) {
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ("Stack overflow detected at " + Hex32(FaultOverflowAt),
              MessageOf<StackOverflow>([] { FaultOverflow(); }));
}

TEST(RealFault, AnIllegalInstruction) {
  EXPECT_EQ("Attempted to execute an illegal instruction from " + Hex32(&FaultIllegal),
            MessageOf<IllegalInstruction>([] { FaultIllegal(); }));
}

TEST(RealFault, InstructionsOfTheKernel) {
  EXPECT_EQ("Attempted to execute instruction not allowed in current machine mode from " + Hex32(&FaultHalt),
            MessageOf<PrivateInstruction>([] { FaultHalt(); }));
  EXPECT_EQ("Attempted to execute instruction not allowed in current machine mode from " + Hex32(&FaultPort),
            MessageOf<PrivateInstruction>([] { FaultPort(); }));
}

TEST(RealFault, MisalignedDataWhereTheProcessorChecks) {
  static const int data[2] = {1, 2};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ("Attempted to access misaligned data from " + Hex32(FaultMisalignedAt),
              MessageOf<DatatypeMisalignment>([] { FaultMisaligned(data); }));
  }
}

TEST(RealFault, APageOfAFileThatBecameShorter) {
  const void* const page = FaultSites::PageBehindTheEnd();
  EXPECT_EQ("Attempted to access unreachable page from " + Hex32(&FaultRead),
            MessageOf<InPageError>([page] { FaultRead(page); }));
}

}  // namespace
