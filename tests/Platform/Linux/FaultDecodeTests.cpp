// How the kernel's words on a fault are read, and the tables that compilers write for exceptions.
#include "Platform/Linux/FaultDecode.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <initializer_list>
#include <set>
#include <vector>

#include "Platform/Linux/FaultTables.h"

using namespace Oxa::Core::Platform;

namespace {

bool IsPrivileged(std::initializer_list<unsigned char> bytes) {
  return IsPrivilegedInstruction(std::vector<unsigned char>(bytes).data(), bytes.size());
}

TEST(FaultDecode, InstructionsOfTheKernelAreKnownByTheirBytes) {
  EXPECT_TRUE(IsPrivileged({0xF4}));              // hlt
  EXPECT_TRUE(IsPrivileged({0xFA}));              // cli
  EXPECT_TRUE(IsPrivileged({0xFB}));              // sti
  EXPECT_TRUE(IsPrivileged({0xE4, 0x80}));        // in
  EXPECT_TRUE(IsPrivileged({0xEF}));              // out
  EXPECT_TRUE(IsPrivileged({0xF3, 0x6C}));        // rep ins
  EXPECT_TRUE(IsPrivileged({0x66, 0x48, 0x6F}));  // outs
  EXPECT_TRUE(IsPrivileged({0x0F, 0x30}));        // wrmsr
  EXPECT_TRUE(IsPrivileged({0x0F, 0x32}));        // rdmsr
  EXPECT_TRUE(IsPrivileged({0x0F, 0x20, 0xC0}));  // mov from cr0
  EXPECT_TRUE(IsPrivileged({0x0F, 0x01, 0x10}));  // lgdt
  EXPECT_TRUE(IsPrivileged({0x0F, 0x01, 0xF8}));  // swapgs
  EXPECT_TRUE(IsPrivileged({0x0F, 0x00, 0xD0}));  // lldt
  EXPECT_TRUE(IsPrivileged({0x0F, 0x09}));        // wbinvd
}

TEST(FaultDecode, OfTheSecondTableTheseAreTheKernels) {
  const std::set<unsigned> privileged = {0x06, 0x07, 0x08, 0x09, 0x20, 0x21, 0x22,
                                         0x23, 0x30, 0x31, 0x32, 0x33, 0x35};
  for (unsigned byte = 2; byte < 256; ++byte)
    EXPECT_EQ(privileged.count(byte) != 0, IsPrivileged({0x0F, static_cast<unsigned char>(byte), 0xC0}))
        << byte;
}

// A byte that is a prefix, or begins the second table, says nothing by itself.
TEST(FaultDecode, OfTheFirstTableTheseAreTheKernels) {
  const std::set<unsigned> privileged = {0x6C, 0x6D, 0x6E, 0x6F, 0xE4, 0xE5, 0xE6, 0xE7,
                                         0xEC, 0xED, 0xEE, 0xEF, 0xF4, 0xFA, 0xFB};
  for (unsigned byte = 0; byte < 256; ++byte)
    EXPECT_EQ(privileged.count(byte) != 0, IsPrivileged({static_cast<unsigned char>(byte), 0x90, 0x90}))
        << byte;
}

TEST(FaultDecode, OfTheSystemsGroupTheseAreTheKernels) {
  for (unsigned modifier = 0; modifier < 256; ++modifier) {
    const unsigned row = modifier / 8 * 8;
    const bool privileged =
        modifier < 0xC8 || row == 0xD8 || row == 0xE0 || row == 0xF0 || modifier == 0xD1 || modifier == 0xF8;
    EXPECT_EQ(privileged, IsPrivileged({0x0F, 0x01, static_cast<unsigned char>(modifier)})) << modifier;
  }
}

TEST(FaultDecode, OthersAreNot) {
  EXPECT_FALSE(IsPrivileged({0x8B, 0x07}));        // mov
  EXPECT_FALSE(IsPrivileged({0x0F, 0x28, 0x07}));  // movaps
  EXPECT_FALSE(IsPrivileged({0x0F, 0x00, 0xE0}));  // verr
  EXPECT_FALSE(IsPrivileged({0x0F, 0x01, 0xD0}));  // xgetbv
  EXPECT_FALSE(IsPrivileged({0xCD, 0x80}));        // int
  EXPECT_FALSE(IsPrivileged({0x66, 0x66}));        // cut off
  EXPECT_FALSE(IsPrivileged({0x0F}));
  EXPECT_FALSE(IsPrivileged({}));
}

TEST(FaultDecode, SentSignalsAreNoFaults) {
  siginfo_t signal = {};
  signal.si_signo = SIGSEGV;
  for (const int code : {SI_USER, SI_QUEUE, SI_TKILL}) {
    signal.si_code = code;
    EXPECT_FALSE(IsFault(signal));
  }
  signal.si_code = SI_KERNEL;
  EXPECT_TRUE(IsFault(signal));
  signal.si_code = SEGV_MAPERR;
  EXPECT_TRUE(IsFault(signal));
  signal.si_signo = SIGBUS;
  signal.si_code = BUS_MCEERR_AO;  // memory that nobody has used
  EXPECT_FALSE(IsFault(signal));
}

unsigned CodeOf(int number, int code, greg_t trap = 0) {
  siginfo_t signal = {};
  signal.si_signo = number;
  signal.si_code = code;
  ucontext_t context = {};
  context.uc_mcontext.gregs[REG_TRAPNO] = trap;
  context.uc_mcontext.gregs[REG_RSP] = 0x7fff00000000;
  _EXCEPTION_RECORD record = {};
  DecodeFault(record, signal, context, {0, 0});
  return record.m_uCode;
}

// Those that no test can bring about here.
TEST(FaultDecode, EachCodeOfTheSystemHasItsNumber) {
  EXPECT_EQ(eARRAY_BOUNDS_EXCEEDED, CodeOf(SIGSEGV, SEGV_BNDERR, 5));
  EXPECT_EQ(eARRAY_BOUNDS_EXCEEDED, CodeOf(SIGFPE, FPE_FLTSUB));
  EXPECT_EQ(eINT_OVERFLOW, CodeOf(SIGFPE, FPE_INTOVF));
  EXPECT_EQ(eFLT_INEXACT_RESULT, CodeOf(SIGFPE, FPE_FLTRES));
  EXPECT_EQ(eFLT_INVALID_OPERATION, CodeOf(SIGFPE, FPE_FLTINV, 16));
  EXPECT_EQ(eFLT_UNDERFLOW, CodeOf(SIGFPE, FPE_FLTUND));
  EXPECT_EQ(0u, CodeOf(SIGFPE, 99));
  EXPECT_EQ(eIN_PAGE_ERROR, CodeOf(SIGBUS, BUS_OBJERR));
  EXPECT_EQ(eIN_PAGE_ERROR, CodeOf(SIGBUS, BUS_MCEERR_AR));
  EXPECT_EQ(eACCESS_VIOLATION, CodeOf(SIGBUS, SI_KERNEL, 12));
  EXPECT_EQ(eACCESS_VIOLATION, CodeOf(SIGSEGV, SEGV_PKUERR, 14));
  EXPECT_EQ(ePRIV_INSTRUCTION, CodeOf(SIGILL, ILL_PRVOPC));
  EXPECT_EQ(ePRIV_INSTRUCTION, CodeOf(SIGILL, ILL_PRVREG));
  EXPECT_EQ(eILLEGAL_INSTRUCTION, CodeOf(SIGILL, ILL_ILLTRP));
}

constexpr greg_t iX87 = 16;
constexpr greg_t iVECTORS = 19;
constexpr unsigned uDENORMAL = 0x02;
constexpr unsigned uSTACK = 0x40;

// Flags of both units and what they mask, as the kernel leaves them.
unsigned CodeOfFloat(int code, greg_t trap, unsigned flags, unsigned masks, unsigned control) {
  _libc_fpstate state = {};
  state.swd = static_cast<std::uint16_t>(flags);
  state.cwd = static_cast<std::uint16_t>(masks);
  state.mxcsr = control;
  siginfo_t signal = {};
  signal.si_signo = SIGFPE;
  signal.si_code = code;
  ucontext_t context = {};
  context.uc_mcontext.gregs[REG_TRAPNO] = trap;
  context.uc_mcontext.fpregs = &state;
  _EXCEPTION_RECORD record = {};
  DecodeFault(record, signal, context, {0, 0});
  return record.m_uCode;
}

TEST(FaultDecode, ADenormalOperandIsToldByTheUnitThatMetIt) {
  EXPECT_EQ(eFLT_DENORMAL_OPERAND, CodeOfFloat(FPE_FLTUND, iX87, uDENORMAL, 0, 0));
  EXPECT_EQ(eFLT_UNDERFLOW, CodeOfFloat(FPE_FLTUND, iX87, uDENORMAL, uDENORMAL, 0)) << "masked";
  EXPECT_EQ(eFLT_UNDERFLOW, CodeOfFloat(FPE_FLTUND, iX87, 0, 0, uDENORMAL)) << "the other unit's";
  EXPECT_EQ(eFLT_DENORMAL_OPERAND, CodeOfFloat(FPE_FLTUND, iVECTORS, 0, 0, uDENORMAL));
  EXPECT_EQ(eFLT_UNDERFLOW, CodeOfFloat(FPE_FLTUND, iVECTORS, 0, 0, uDENORMAL | uDENORMAL << 7)) << "masked";
  EXPECT_EQ(eFLT_UNDERFLOW, CodeOfFloat(FPE_FLTUND, iVECTORS, uDENORMAL, 0, 0)) << "the other unit's";
}

TEST(FaultDecode, OnlyTheX87UnitHasAStackThatOverflows) {
  EXPECT_EQ(eFLT_STACK_CHECK, CodeOfFloat(FPE_FLTINV, iX87, uSTACK, 0, 0));
  EXPECT_EQ(eFLT_INVALID_OPERATION, CodeOfFloat(FPE_FLTINV, iX87, 0, 0, 0));
  EXPECT_EQ(eFLT_INVALID_OPERATION, CodeOfFloat(FPE_FLTINV, iVECTORS, uSTACK, 0, 0));
}

TEST(FaultDecode, OnlyMemoryIsTouched) {
  constexpr greg_t iPAGE_FAULT = 14;
  constexpr greg_t iWRITE = 2;
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
    siginfo_t signal = {};
    signal.si_signo = number;
    signal.si_code = 1;
    signal.si_addr = reinterpret_cast<void*>(0x1234);
    ucontext_t context = {};
    context.uc_mcontext.gregs[REG_TRAPNO] = iPAGE_FAULT;
    context.uc_mcontext.gregs[REG_ERR] = iWRITE;
    context.uc_mcontext.gregs[REG_RIP] = 0x5678;
    _EXCEPTION_RECORD record = {};
    DecodeFault(record, signal, context, {0, 0});
    const bool memory = number == SIGSEGV || number == SIGBUS;
    EXPECT_EQ(memory ? 0x1234u : 0u, record.m_uTouched) << number;
    EXPECT_EQ(memory, record.m_bWrite) << number;
    EXPECT_EQ(0x5678u, record.m_uPlace) << number;
    EXPECT_EQ(number, record.m_signal.si_signo);
  }
}

TEST(FaultTables, AnEntryCoversItsInstructions) {
  // No start of landing pads, no types, entries of variable length: [16, 24) and [32, 33).
  const unsigned char table[] = {0xFF, 0xFF, 0x01, 8, 16, 8, 0, 0, 32, 1, 64, 1};
  EXPECT_FALSE(CoversPlace(table, 1000, 1000));
  EXPECT_FALSE(CoversPlace(table, 1000, 1015));
  EXPECT_TRUE(CoversPlace(table, 1000, 1016));
  EXPECT_TRUE(CoversPlace(table, 1000, 1023));
  EXPECT_FALSE(CoversPlace(table, 1000, 1024));
  EXPECT_TRUE(CoversPlace(table, 1000, 1032));
  EXPECT_FALSE(CoversPlace(table, 1000, 1033));
  EXPECT_FALSE(CoversPlace(table, 1000, 5000));
}

TEST(FaultTables, NumbersOfFixedLengthAreReadToo) {
  // A base of landing pads, types behind 200 bytes, entries of four bytes each: [256, 512).
  const unsigned char table[] = {0x03, 1, 0, 0, 0, 0x9B, 0xC8, 0x01, 0x03, 13, 0, 1,
                                 0,    0, 0, 1, 0, 0,    9,    0,    0,    0,  0};
  EXPECT_FALSE(CoversPlace(table, 0, 255));
  EXPECT_TRUE(CoversPlace(table, 0, 256));
  EXPECT_TRUE(CoversPlace(table, 0, 511));
  EXPECT_FALSE(CoversPlace(table, 0, 512));
}

TEST(FaultTables, NumbersMayHaveTwoBytesOrEight) {
  // Entries of the same content: [256, 512).
  const unsigned char two[] = {0xFF, 0xFF, 0x02, 7, 0, 1, 0, 1, 9, 0, 0};
  const unsigned char eight[] = {0xFF, 0xFF, 0x04, 25, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0,
                                 0,    0,    0,    0,  0, 9, 0, 0, 0, 0, 0, 0, 0, 0};
  for (const unsigned char* const table : {two, eight}) {
    EXPECT_FALSE(CoversPlace(table, 0, 255));
    EXPECT_TRUE(CoversPlace(table, 0, 256));
    EXPECT_TRUE(CoversPlace(table, 0, 511));
    EXPECT_FALSE(CoversPlace(table, 0, 512));
  }
}

TEST(FaultTables, ATableWithoutEntriesCoversNothing) {
  const unsigned char table[] = {0xFF, 0xFF, 0x01, 0};
  EXPECT_FALSE(CoversPlace(table, 0, 0));
}

}  // namespace
