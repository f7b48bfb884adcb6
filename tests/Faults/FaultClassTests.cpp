// What the translator makes of each code, by records that are made up: every row of the table, whether this system
// can produce the fault or not.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include <fenv.h>
#include <gtest/gtest.h>

#include <string>

#include "Platform/Linux/FaultContext.h"

namespace {

using namespace MSWindows;
using Oxa::Core::AlertInfo;
using Oxa::Core::CodeContext;
using Oxa::Core::Error;
using Oxa::Core::UnknownError;

constexpr std::uint64_t uPLACE = 0x123456789abcdef0;
constexpr std::uint64_t uTOUCHED = 0x7edcba9876543210;

struct MadeUp {
  explicit MadeUp(unsigned code) {
    m_record.m_uCode = code;
    m_record.m_uPlace = uPLACE;
    m_record.m_uTouched = uTOUCHED;
    m_context.m_registers[CONTEXT::iPLACE] = uPLACE;
    m_pointers = {&m_record, &m_context};
  }
  _EXCEPTION_RECORD m_record = {};
  CONTEXT m_context = {};
  _EXCEPTION_POINTERS m_pointers = {};
};

// Everything but class and message is the same for all.
void ExpectOfAll(Error& error, const std::string& name) {
  EXPECT_EQ("OS.Windows", error.GetData(AlertInfo::sLOG_NAME));
  EXPECT_EQ("OperatingSystem", error.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ(AlertInfo::eCRITICAL, error.GetSeverity());
  EXPECT_EQ("N3Oxa4Core5ErrorE=>N3Oxa4Core7OSErrorE=>N9MSWindows8SEHErrorE=>" + name,
            error.GetData(Error::sINHERITANCE));
  ASSERT_NE(nullptr, error.GetUnwindStack());
  ASSERT_EQ(1U, error.GetUnwindStack()->size());
  EXPECT_EQ("MSWindows::SEH_To_OXA_Translator",
            error.GetUnwindStack()->front().GetContextInfo().at(CodeContext::sFUNCTION));
}

template <class Fault>
std::string Translated(unsigned code, bool write = false) {
  MadeUp fault(code);
  fault.m_record.m_bWrite = write;
  try {
    SEH_To_OXA_Translator(code, &fault.m_pointers);
  } catch (SEHError& error) {
    EXPECT_STREQ(typeid(Fault).name(), typeid(error).name());
    EXPECT_EQ(&fault.m_record, error.GetExceptionPointers().ExceptionRecord);
    ExpectOfAll(error, typeid(Fault).name());
    return error.what();
  }
  return "nothing was raised";
}

TEST(FaultClass, AnAccessViolationTellsWholeAddressesAndWhatWasTried) {
  EXPECT_EQ("Illegal read from virtual address 0x7edcba9876543210 from 0x123456789abcdef0",
            Translated<AccessViolation>(0xC0000005));
  EXPECT_EQ("Illegal write to virtual address 0x7edcba9876543210 from 0x123456789abcdef0",
            Translated<AccessViolation>(0xC0000005, true));
}

TEST(FaultClass, ArrayBoundsExceeded) {
  EXPECT_EQ("Attempted to access out of bounds array element from 0x9abcdef0",
            Translated<ArrayBoundsExceeded>(0xC000008C));
}

TEST(FaultClass, DatatypeMisalignment) {
  EXPECT_EQ("Attempted to access misaligned data from 0x9abcdef0",
            Translated<DatatypeMisalignment>(0x80000002));
}

TEST(FaultClass, FloatDenormalOperand) {
  EXPECT_EQ(
      "One of the operands in a floating-point operation from 0x9abcdef0 is too small to represent as a "
      "standard "
      "floating-point value",
      Translated<FloatDenormalOperand>(0xC000008D));
}

TEST(FaultClass, FloatDivideByZero) {
  EXPECT_EQ("Floating point divide by zero attempted at 0x9abcdef0",
            Translated<FloatDivideByZero>(0xC000008E));
}

TEST(FaultClass, FloatInvalidOperation) {
  EXPECT_EQ("Invalid floating point operation attempted at 0x9abcdef0",
            Translated<FloatInvalidOperation>(0xC0000090));
}

TEST(FaultClass, FloatOverflow) {
  EXPECT_EQ("Exceeded maximum exponent for float operation at 0x9abcdef0",
            Translated<FloatOverflow>(0xC0000091));
}

TEST(FaultClass, FloatStackCheck) {
  EXPECT_EQ("Stack overflowed or underflowed due to operation at 0x9abcdef0",
            Translated<FloatStackCheck>(0xC0000092));
}

TEST(FaultClass, FloatUnderflow) {
  EXPECT_EQ("Result below minimum exponent for float operation at 0x9abcdef0",
            Translated<FloatUnderflow>(0xC0000093));
}

TEST(FaultClass, IllegalInstruction) {
  EXPECT_EQ("Attempted to execute an illegal instruction from 0x9abcdef0",
            Translated<IllegalInstruction>(0xC000001D));
}

TEST(FaultClass, InPageError) {
  EXPECT_EQ("Attempted to access unreachable page from 0x9abcdef0", Translated<InPageError>(0xC0000006));
}

TEST(FaultClass, IntDivideByZero) {
  EXPECT_EQ("Integer divide by zero attempted at 0x9abcdef0", Translated<IntDivideByZero>(0xC0000094));
}

TEST(FaultClass, IntOverflow) {
  EXPECT_EQ("Integer overflow due to operation at 0x9abcdef0", Translated<IntOverflow>(0xC0000095));
}

TEST(FaultClass, PrivateInstruction) {
  EXPECT_EQ("Attempted to execute instruction not allowed in current machine mode from 0x9abcdef0",
            Translated<PrivateInstruction>(0xC0000096));
}

TEST(FaultClass, StackOverflow) {
  EXPECT_EQ("Stack overflow detected at 0x9abcdef0", Translated<StackOverflow>(0xC00000FD));
}

TEST(FaultClass, AddressZeroIsPrintedWithoutAPrefix) {
  MadeUp fault(0xC0000005);
  fault.m_record.m_uTouched = 0;
  EXPECT_STREQ("Illegal read from virtual address 0 from 0x123456789abcdef0",
               AccessViolation(fault.m_pointers).what());
}

// An inexact result, and what no class stands for.
TEST(FaultClass, AnyOtherCodeIsAnUnknownErrorWithoutAMessage) {
  for (const unsigned code : {0xC000008FU, 0x80000003U, 0U}) {
    MadeUp fault(code);
    try {
      SEH_To_OXA_Translator(code, &fault.m_pointers);
      FAIL();
    } catch (UnknownError& error) {
      EXPECT_STREQ("No Message", error.what());
      EXPECT_EQ("OS.Windows", error.GetData(AlertInfo::sLOG_NAME));
      EXPECT_EQ("Unknown", error.GetData(AlertInfo::sCATEGORY));
    }
  }
}

int FlagsBehind(unsigned code) {
  MadeUp fault(code);
  ::feclearexcept(FE_ALL_EXCEPT);
  ::feraiseexcept(FE_DIVBYZERO | FE_OVERFLOW);
  try {
    SEH_To_OXA_Translator(code, &fault.m_pointers);
  } catch (Error&) {
  }
  return ::fetestexcept(FE_DIVBYZERO | FE_OVERFLOW);
}

TEST(FaultClass, FiveFloatingPointFaultsAreForgottenByTheUnit) {
  for (const unsigned code : {0xC000008EU, 0xC0000090U, 0xC0000091U, 0xC0000092U, 0xC0000093U})
    EXPECT_EQ(0, FlagsBehind(code)) << std::hex << code;
}

TEST(FaultClass, TheDenormalOperandIsNotForgotten) {
  EXPECT_EQ(FE_DIVBYZERO | FE_OVERFLOW, FlagsBehind(0xC000008D));
  ::feclearexcept(FE_ALL_EXCEPT);
}

TEST(FaultClass, ClonesAndCopiesAreOfTheClass) {
  MadeUp fault(0xC0000005);
  AccessViolation error(fault.m_pointers);
  const boost::shared_ptr<Error> clone = error.Clone();
  EXPECT_NE(nullptr, dynamic_cast<AccessViolation*>(clone.get()));
  EXPECT_STREQ(error.what(), clone->what());
  const boost::shared_ptr<Error> common = SEHError(fault.m_pointers).Clone();
  EXPECT_EQ(typeid(SEHError), typeid(*common));
  EXPECT_STREQ("No Message", common->what());
}

// The conversion into the text of the system belongs to the same header.
TEST(FaultClass, TextsOfTheSystemAreAtHand) {
  EXPECT_EQ("Failed to retrieve error message for code 4294967295.", GetWindowsErrorMessage(0xFFFFFFFF));
}

}  // namespace
