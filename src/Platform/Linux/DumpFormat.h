// The parts of a minidump as they lie in the file: little-endian, packed to 4 bytes.
#ifndef OXACORE_PLATFORM_LINUX_DUMPFORMAT_H
#define OXACORE_PLATFORM_LINUX_DUMPFORMAT_H

#include <cstdint>

namespace Oxa::Core::Platform::Minidump {

constexpr std::uint32_t uSIGNATURE = 0x504d444d;  // "MDMP"
constexpr std::uint32_t uVERSION = 0xa793;

enum EStream : std::uint32_t {
  eTHREAD_LIST = 3,
  eMODULE_LIST = 4,
  eMEMORY_LIST = 5,
  eEXCEPTION = 6,
  eSYSTEM_INFO = 7,
  eMEMORY_64_LIST = 9,
  eHANDLE_DATA = 12,
  eUNLOADED_MODULE_LIST = 14,
  eMISC_INFO = 15,
  eMEMORY_INFO_LIST = 16,
  eTHREAD_INFO_LIST = 17,
  eTHREAD_NAMES = 24,
  eLINUX_CPU_INFO = 0x47670003,
  eLINUX_PROC_STATUS = 0x47670004,
  eLINUX_RELEASE = 0x47670005,
  eLINUX_CMD_LINE = 0x47670006,
  eLINUX_ENVIRON = 0x47670007,
  eLINUX_AUXV = 0x47670008,
  eLINUX_MAPS = 0x47670009,
  eLINUX_DSO_DEBUG = 0x4767000a,
  eLINUX_PROC_STAT = 0x4767000b
};

enum ECallback : unsigned int {
  eMODULE_CALLBACK = 0,
  eTHREAD_CALLBACK = 1,
  eINCLUDE_THREAD_CALLBACK = 3,
  eINCLUDE_MODULE_CALLBACK = 4
};

enum EModuleFlags : unsigned int {
  eMODULE_WRITE_MODULE = 0x1,
  eMODULE_WRITE_MISC_RECORD = 0x4,
  eMODULE_WRITE_CV_RECORD = 0x8,
  eMODULE_REFERENCED_BY_MEMORY = 0x10
};

enum EThreadFlags : unsigned int {
  eTHREAD_WRITE_THREAD = 0x1,
  eTHREAD_WRITE_STACK = 0x2,
  eTHREAD_WRITE_CONTEXT = 0x4
};

#pragma pack(push, 4)

struct Location {
  std::uint32_t m_uSize;
  std::uint32_t m_uPosition;
};

struct Directory {
  std::uint32_t m_uType;
  Location m_location;
};

struct Header {
  std::uint32_t m_uSignature;
  std::uint32_t m_uVersion;
  std::uint32_t m_uStreams;
  std::uint32_t m_uDirectory;
  std::uint32_t m_uChecksum;
  std::uint32_t m_uTime;
  std::uint64_t m_uContents;
};

struct SystemInfo {
  std::uint16_t m_uArchitecture;
  std::uint16_t m_uLevel;
  std::uint16_t m_uRevision;
  std::uint8_t m_uProcessors;
  std::uint8_t m_uProductType;
  std::uint32_t m_uMajor;
  std::uint32_t m_uMinor;
  std::uint32_t m_uBuild;
  std::uint32_t m_uPlatform;
  std::uint32_t m_uVersionText;
  std::uint16_t m_uSuite;
  std::uint16_t m_uReserved;
  std::uint32_t m_vendor[3];
  std::uint32_t m_uProcessorVersion;
  std::uint32_t m_uFeatures;
  std::uint32_t m_uExtendedFeatures;
};

struct MiscInfo {
  std::uint32_t m_uSize;
  std::uint32_t m_uFlags;
  std::uint32_t m_uProcess;
  std::uint32_t m_uCreated;
  std::uint32_t m_uUserTime;
  std::uint32_t m_uKernelTime;
};

struct MemoryRange {
  std::uint64_t m_uStart;
  Location m_location;
};

/// An entry of the long form, whose ranges' bytes follow one another.
struct LongRange {
  std::uint64_t m_uStart;
  std::uint64_t m_uSize;
};

struct Thread {
  std::uint32_t m_uId;
  std::uint32_t m_uSuspended;
  std::uint32_t m_uPriorityClass;
  std::uint32_t m_uPriority;
  std::uint64_t m_uEnvironment;
  MemoryRange m_stack;
  Location m_context;
};

struct ThreadName {
  std::uint32_t m_uId;
  std::uint64_t m_uName;
};

struct ThreadInfo {
  std::uint32_t m_uId;
  std::uint32_t m_uFlags;
  std::uint32_t m_uError;
  std::uint32_t m_uExitStatus;
  std::uint64_t m_uCreated;
  std::uint64_t m_uExited;
  std::uint64_t m_uKernelTime;
  std::uint64_t m_uUserTime;
  std::uint64_t m_uStart;
  std::uint64_t m_uAffinity;
};

struct Module {
  std::uint64_t m_uBase;
  std::uint32_t m_uSize;
  std::uint32_t m_uChecksum;
  std::uint32_t m_uTime;
  std::uint32_t m_uName;
  std::uint32_t m_version[13];
  Location m_codeView;
  Location m_misc;
  std::uint64_t m_reserved[2];
};

/// Of a module: this word, and its build id behind it.
constexpr std::uint32_t uBUILD_ID = 0x4270454c;

struct Exception {
  std::uint32_t m_uThread;
  std::uint32_t m_uAlignment;
  std::uint32_t m_uCode;
  std::uint32_t m_uFlags;
  std::uint64_t m_uRecord;
  std::uint64_t m_uAddress;
  std::uint32_t m_uParameters;
  std::uint32_t m_uAlignment2;
  std::uint64_t m_parameters[15];
  Location m_context;
};

struct MemoryInfo {
  std::uint64_t m_uBase;
  std::uint64_t m_uAllocation;
  std::uint32_t m_uAllocationProtection;
  std::uint32_t m_uAlignment;
  std::uint64_t m_uSize;
  std::uint32_t m_uState;
  std::uint32_t m_uProtection;
  std::uint32_t m_uType;
  std::uint32_t m_uAlignment2;
};

/// What stands before the entries of the younger lists.
struct LongListHeader {
  std::uint32_t m_uHeader;
  std::uint32_t m_uEntry;
  std::uint64_t m_uCount;
};

struct ShortListHeader {
  std::uint32_t m_uHeader;
  std::uint32_t m_uEntry;
  std::uint32_t m_uCount;
};

struct HandleListHeader {
  std::uint32_t m_uHeader;
  std::uint32_t m_uEntry;
  std::uint32_t m_uCount;
  std::uint32_t m_uReserved;
};

struct Handle {
  std::uint64_t m_uHandle;
  std::uint32_t m_uType;
  std::uint32_t m_uName;
  std::uint32_t m_uAttributes;
  std::uint32_t m_uAccess;
  std::uint32_t m_uHandles;
  std::uint32_t m_uPointers;
};

/// What the dynamic linker knows; the raw dynamic section follows.
struct LoaderState {
  std::uint32_t m_uVersion;
  std::uint32_t m_uModules;
  std::uint32_t m_uCount;
  std::uint64_t m_uBreak;
  std::uint64_t m_uLoader;
  std::uint64_t m_uDynamic;
};

struct LoaderModule {
  std::uint64_t m_uBias;
  std::uint32_t m_uName;
  std::uint64_t m_uDynamic;
};

#pragma pack(pop)

/// The registers of x86-64 as the format has them.
struct alignas(8) Registers {
  std::uint64_t m_home[6];
  std::uint32_t m_uFlags;
  std::uint32_t m_uMxcsr;
  std::uint16_t m_segments[6];  // cs ds es fs gs ss
  std::uint32_t m_uFlagsRegister;
  std::uint64_t m_debug[6];
  std::uint64_t m_general[16];  // rax rcx rdx rbx rsp rbp rsi rdi r8 ... r15
  std::uint64_t m_uPlace;
  std::uint8_t m_floating[512];  // as FXSAVE leaves it
  std::uint8_t m_vectors[416];
  std::uint64_t m_control[6];
};

enum ERegisters : std::uint32_t {
  eREGISTERS = 0x00100000,
  eREGISTERS_CONTROL = eREGISTERS | 0x1,
  eREGISTERS_INTEGER = eREGISTERS | 0x2,
  eREGISTERS_SEGMENTS = eREGISTERS | 0x4,
  eREGISTERS_FLOATING = eREGISTERS | 0x8
};

static_assert(sizeof(Header) == 32 && sizeof(Directory) == 12 && sizeof(SystemInfo) == 56);
static_assert(sizeof(MiscInfo) == 24 && sizeof(MemoryRange) == 16 && sizeof(LongRange) == 16);
static_assert(sizeof(Thread) == 48 && sizeof(ThreadName) == 12 && sizeof(ThreadInfo) == 64);
static_assert(sizeof(Module) == 108 && sizeof(Exception) == 168 && sizeof(MemoryInfo) == 48);
static_assert(sizeof(Handle) == 32 && sizeof(LoaderState) == 36 && sizeof(LoaderModule) == 20);
static_assert(sizeof(Registers) == 1232);

}  // namespace Oxa::Core::Platform::Minidump

#endif
