#include "Platform/Linux/DumpSource.h"

#if defined(__x86_64__)

#include <cpuid.h>
#include <fcntl.h>
#include <link.h>
#include <sched.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <time.h>

#include "Platform/Linux/DumpText.h"
#include "Platform/Linux/RawCall.h"
#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint16_t uARCHITECTURE = 9;   // x86-64
constexpr std::uint32_t uPLATFORM = 0x8201;  // Linux
constexpr std::uint32_t uHAS_PROCESS = 0x1;  // of the miscellaneous: the id is there
constexpr std::uint32_t uHAS_TIMES = 0x2;    // and the times are
constexpr std::uint64_t uTICKS = 100;        // of the system's figures, in a second
constexpr std::uint64_t uMOST_TEXT = 8U << 20U;

// Family and model, as the format wants them, from what the processor tells.
void FillProcessor(Minidump::SystemInfo& info) noexcept {
  unsigned int a = 0;
  unsigned int b = 0;
  unsigned int c = 0;
  unsigned int d = 0;
  if (__get_cpuid(0, &a, &info.m_vendor[0], &info.m_vendor[2], &info.m_vendor[1]) == 0) return;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0) return;
  info.m_uProcessorVersion = a;
  info.m_uFeatures = d;
  const unsigned int family = (a >> 8U) & 0xfU;
  const unsigned int model = ((a >> 4U) & 0xfU) | ((a >> 12U) & 0xf0U);
  info.m_uLevel = static_cast<std::uint16_t>(family == 0xf ? family + ((a >> 20U) & 0xffU) : family);
  info.m_uRevision = static_cast<std::uint16_t>(model << 8U | (a & 0xfU));
  if (__get_cpuid(0x80000001U, &a, &b, &c, &d) != 0) info.m_uExtendedFeatures = d;
}

std::uint8_t CountProcessors() noexcept {
  unsigned char set[1024] = {};
  const long size = RawCall(SYS_sched_getaffinity, 0, sizeof set, RawArgument(set));
  int count = 0;
  for (long i = 0; i < size; ++i) count += __builtin_popcount(set[i]);
  return static_cast<std::uint8_t>(count > 255 ? 255 : count);
}

// "6.1.0-28-amd64"
void FillVersion(const char* release, Minidump::SystemInfo& info) noexcept {
  std::uint32_t* const parts[3] = {&info.m_uMajor, &info.m_uMinor, &info.m_uBuild};
  for (std::uint32_t* const part : parts) {
    *part = static_cast<std::uint32_t>(TakeNumber(release, 10));
    if (*release == '.') ++release;
  }
}

// When the process began, in seconds of the day's clock; 0 where nobody tells. Its name may have blanks and brackets.
std::int64_t StartOfProcess(const DumpSource& source) noexcept {
  constexpr int iWORDS_TO_START = 20;
  char text[1024] = {};
  const int handle = source.Open("stat");
  if (handle < 0) return 0;
  RawCall(SYS_read, handle, RawArgument(text), sizeof text - 1);
  RawCall(SYS_close, handle);
  const char* const behindName = strrchr(text, ')');
  if (behindName == nullptr) return 0;
  const char* at = SkipWords(behindName, iWORDS_TO_START);
  const std::int64_t started = static_cast<std::int64_t>(TakeNumber(at, 10) / uTICKS);
  timespec sinceBoot = {};
  RawCall(SYS_clock_gettime, CLOCK_BOOTTIME, RawArgument(&sinceBoot));
  return source.m_iTime - sinceBoot.tv_sec + started;
}

void WriteSystemText(DumpSource& source, std::uint32_t type, const char* name) noexcept {
  const int handle = source.Open(name);
  if (handle < 0) return;
  const std::uint32_t place = source.m_file.Align();
  if (source.m_file.AppendContent(handle, uMOST_TEXT) > 0) source.m_file.AddStream(type, place);
  RawCall(SYS_close, handle);
}

std::uint64_t FindDynamicSection(std::uint64_t& bytes) noexcept {
  bytes = 0;
  const std::uint64_t table = getauxval(AT_PHDR);
  const std::uint64_t count = getauxval(AT_PHNUM);
  std::uint64_t bias = 0;
  ElfW(Phdr) segment;
  for (std::uint64_t i = 0; i < count; ++i) {
    if (!ReadSafely(table + i * sizeof segment, &segment, sizeof segment)) return 0;
    if (segment.p_type == PT_PHDR) bias = table - segment.p_vaddr;
    if (segment.p_type != PT_DYNAMIC) continue;
    bytes = segment.p_memsz;
    return bias + segment.p_vaddr;
  }
  return 0;
}

}  // namespace

void WriteSystemInfo(DumpSource& source) noexcept {
  utsname names = {};
  RawCall(SYS_uname, RawArgument(&names));
  Minidump::SystemInfo info = {};
  info.m_uArchitecture = uARCHITECTURE;
  info.m_uPlatform = uPLATFORM;
  info.m_uProductType = 1;
  info.m_uProcessors = CountProcessors();
  FillProcessor(info);
  FillVersion(names.release, info);
  DumpText version;
  version << names.sysname << " " << names.release << " " << names.version << " " << names.machine;
  info.m_uVersionText = source.m_file.AppendText(version.Get());
  const std::uint32_t place = source.m_file.Align();
  source.m_file.AppendValue(info);
  source.m_file.AddStream(Minidump::eSYSTEM_INFO, place);
}

void WriteMiscInfo(DumpSource& source) noexcept {
  Minidump::MiscInfo info = {};
  info.m_uSize = sizeof info;
  info.m_uFlags = uHAS_PROCESS | uHAS_TIMES;
  info.m_uProcess = static_cast<std::uint32_t>(source.m_iProcess);
  info.m_uCreated = static_cast<std::uint32_t>(StartOfProcess(source));
  info.m_uUserTime = static_cast<std::uint32_t>(source.m_iUserSeconds);
  info.m_uKernelTime = static_cast<std::uint32_t>(source.m_iKernelSeconds);
  const std::uint32_t place = source.m_file.Align();
  source.m_file.AppendValue(info);
  source.m_file.AddStream(Minidump::eMISC_INFO, place);
}

void WriteSystemTexts(DumpSource& source) noexcept {
  WriteSystemText(source, Minidump::eLINUX_CPU_INFO, "/proc/cpuinfo");
  WriteSystemText(source, Minidump::eLINUX_PROC_STATUS, "status");
  WriteSystemText(source, Minidump::eLINUX_RELEASE, "/etc/os-release");
  WriteSystemText(source, Minidump::eLINUX_CMD_LINE, "cmdline");
  WriteSystemText(source, Minidump::eLINUX_ENVIRON, "environ");
  WriteSystemText(source, Minidump::eLINUX_AUXV, "auxv");
  WriteSystemText(source, Minidump::eLINUX_MAPS, "maps");
  WriteSystemText(source, Minidump::eLINUX_PROC_STAT, "stat");
}

// The list of the dynamic linker, as a debugger of a living process would walk it, and the program's dynamic section.
void WriteLoaderState(DumpSource& source) noexcept {
  constexpr std::uint32_t uMOST = 1024;
  static Minidump::LoaderModule modules[uMOST];
  DumpFile& file = source.m_file;
  const DumpLoader loader = FindDumpLoader();
  Minidump::LoaderState state = {};
  DumpLoaderEntry entry{};
  for (std::uint64_t at = loader.m_uFirst; state.m_uCount < uMOST && ReadLoaderEntry(at, entry);
       at = entry.m_uNext) {
    ReadDumpText(entry.m_uName, DumpFile::Scratch(), DumpFile::uSCRATCH);
    modules[state.m_uCount++] = {entry.m_uBias, file.AppendText(DumpFile::Scratch()), entry.m_uDynamic};
  }
  state.m_uVersion = 1;
  state.m_uModules = file.Align();
  file.Append(modules, state.m_uCount * sizeof modules[0]);
  state.m_uLoader = loader.m_uLoader;
  std::uint64_t bytes = 0;
  state.m_uDynamic = FindDynamicSection(bytes);
  const std::uint32_t place = file.Align();
  file.AppendValue(state);
  if (state.m_uDynamic != 0) file.AppendMemory(state.m_uDynamic, bytes);
  file.AddStream(Minidump::eLINUX_DSO_DEBUG, place);
}

}  // namespace Oxa::Core::Platform

#endif
