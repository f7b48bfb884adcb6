#include "Platform/Linux/DumpSource.h"

#if defined(__x86_64__)

#include <errno.h>
#include <fcntl.h>
#include <string.h>

#include "Platform/Linux/DumpText.h"
#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint32_t uREQUESTED = 0xffffffff;  // in the place of a signal: nothing happened
constexpr std::uint32_t uCOMMITTED = 0x1000;
constexpr std::uint32_t uRESERVED = 0x2000;
constexpr std::uint32_t uPRIVATE = 0x20000;
constexpr std::uint32_t uMAPPED = 0x40000;
constexpr std::uint32_t uIMAGE = 0x1000000;
constexpr std::uint64_t uTICK = 100000;  // of the system's figures, in units of 100 ns
constexpr std::size_t uBUILD_ID_RECORD = sizeof(std::uint32_t) + DumpModule::uBUILD_ID;

std::uint32_t Narrow(std::uint64_t value) noexcept { return static_cast<std::uint32_t>(value); }

Minidump::Location WriteBuildId(DumpFile& file, const DumpModule& module) noexcept {
  if (module.m_uBuildIdSize == 0 || (module.m_uFlags & Minidump::eMODULE_WRITE_CV_RECORD) == 0) return {};
  static_assert(uBUILD_ID_RECORD == 68);
  const std::uint32_t place = file.Align();
  file.AppendValue(Minidump::uBUILD_ID);
  file.Append(module.m_buildId, module.m_uBuildIdSize);
  return {static_cast<std::uint32_t>(sizeof Minidump::uBUILD_ID) + module.m_uBuildIdSize, place};
}

void ReadTaskFile(const DumpSource& source, int thread, const char* leaf, char* to,
                  std::size_t size) noexcept {
  memset(to, 0, size);
  DumpText name;
  name << static_cast<std::uint64_t>(thread) << leaf;
  const long handle = RawCall(SYS_openat, source.m_iTasks, RawArgument(name.Get()), O_RDONLY | O_CLOEXEC);
  if (handle < 0) return;
  RawCall(SYS_read, handle, RawArgument(to), static_cast<long>(size - 1));
  RawCall(SYS_close, handle);
}

// Page protection in the numbers of the format.
std::uint32_t ProtectionOf(const DumpMapping& mapping) noexcept {
  static const std::uint32_t protections[8] = {0x01, 0x02, 0x04, 0x04, 0x10, 0x20, 0x40, 0x40};
  return protections[mapping.m_uFlags & 7U];
}

std::uint32_t TypeOf(const DumpMapping& mapping) noexcept {
  if (mapping.Has(DumpMapping::eSHARED)) return uMAPPED;
  return mapping.Has(DumpMapping::eFILE) ? uIMAGE : uPRIVATE;
}

// A list that has its entries behind a count of 4 bytes.
std::uint32_t StartList(DumpFile& file, std::size_t count) noexcept {
  const std::uint32_t place = file.Align();
  file.AppendValue(Narrow(count));
  return place;
}

}  // namespace

int DumpSource::Open(const char* name) const noexcept {
  return static_cast<int>(RawCall(SYS_openat, m_iFolder, RawArgument(name), O_RDONLY | O_CLOEXEC));
}

bool DumpSource::Wants(unsigned int callback, unsigned int& flags) const noexcept {
  return m_pFilter == nullptr || m_pFilter(callback, flags, m_pParameter);
}

void WriteModules(DumpSource& source) noexcept {
  DumpFile& file = source.m_file;
  static Minidump::Module entries[2048];
  std::size_t count = 0;
  for (DumpModule& module : source.m_modules) {
    unsigned int none = 0;
    module.m_bLeftOut = !source.Wants(Minidump::eINCLUDE_MODULE_CALLBACK, none) ||
                        !source.Wants(Minidump::eMODULE_CALLBACK, module.m_uFlags) ||
                        (module.m_uFlags & Minidump::eMODULE_WRITE_MODULE) == 0;
    if (module.m_bLeftOut) continue;
    Minidump::Module& entry = entries[count++];
    entry = {};
    entry.m_uBase = module.m_uBase;
    entry.m_uSize = Narrow(module.m_uEnd - module.m_uBase);
    entry.m_uName = file.AppendText(module.m_sName);
    entry.m_codeView = WriteBuildId(file, module);
  }
  const std::uint32_t place = StartList(file, count);
  file.Append(entries, count * sizeof entries[0]);
  file.AddStream(Minidump::eMODULE_LIST, place);
}

// Registers first, then the list: it tells where they lie.
void WriteThreads(DumpSource& source) noexcept {
  DumpFile& file = source.m_file;
  const std::uint32_t registersPlace = file.Align();
  for (DumpThread& thread : source.m_threads) {
    Minidump::Registers registers;
    source.m_threads.ReadRegisters(thread, registers);
    file.AppendValue(registers);
  }
  source.m_ranges.ChooseStacks();
  const std::uint32_t place = StartList(file, source.m_threads.Count());
  std::uint32_t next = registersPlace;
  for (DumpThread& thread : source.m_threads) {
    Minidump::Thread entry = {};
    entry.m_uId = static_cast<std::uint32_t>(thread.m_iId);
    entry.m_uEnvironment = thread.m_uStorage;
    entry.m_context = {sizeof(Minidump::Registers), next};
    thread.m_uEntry = file.Position();
    file.AppendValue(entry);
    next += Narrow(sizeof(Minidump::Registers));
  }
  file.AddStream(Minidump::eTHREAD_LIST, place);
}

void WriteThreadNames(DumpSource& source) noexcept {
  DumpFile& file = source.m_file;
  const std::uint32_t place = StartList(file, source.m_threads.Count());
  const Minidump::ThreadName empty = {};
  for (std::size_t i = 0; i < source.m_threads.Count(); ++i) file.AppendValue(empty);
  file.AddStream(Minidump::eTHREAD_NAMES, place);
  std::uint64_t entryPlace = place + sizeof(std::uint32_t);
  for (const DumpThread& thread : source.m_threads) {
    char name[64];
    ReadTaskFile(source, thread.m_iId, "/comm", name, sizeof name);
    name[strcspn(name, "\n")] = 0;
    const Minidump::ThreadName entry = {static_cast<std::uint32_t>(thread.m_iId), file.AppendText(name)};
    file.Patch(entryPlace, &entry, sizeof entry);
    entryPlace += sizeof entry;
  }
}

// Times of the processor that each thread has used.
void WriteThreadInfo(DumpSource& source) noexcept {
  constexpr int iWORDS_TO_TIMES = 12;
  DumpFile& file = source.m_file;
  const std::uint32_t place = file.Align();
  const Minidump::ShortListHeader header = {sizeof header, sizeof(Minidump::ThreadInfo),
                                            Narrow(source.m_threads.Count())};
  file.AppendValue(header);
  for (const DumpThread& thread : source.m_threads) {
    char text[1024];
    ReadTaskFile(source, thread.m_iId, "/stat", text, sizeof text);
    const char* const behindName = strrchr(text, ')');
    const char* at = behindName == nullptr ? "" : SkipWords(behindName, iWORDS_TO_TIMES);
    Minidump::ThreadInfo info = {};
    info.m_uId = static_cast<std::uint32_t>(thread.m_iId);
    info.m_uUserTime = TakeNumber(at, 10) * uTICK;
    at = SkipWords(at, 1);
    info.m_uKernelTime = TakeNumber(at, 10) * uTICK;
    file.AppendValue(info);
  }
  file.AddStream(Minidump::eTHREAD_INFO_LIST, place);
}

void WriteException(DumpSource& source) noexcept {
  DumpFile& file = source.m_file;
  Minidump::Registers registers;
  DumpThread& caller = *source.m_threads.begin();
  source.m_threads.ReadRegisters(caller, registers);
  const std::uint32_t registersPlace = file.Align();
  file.AppendValue(registers);
  Minidump::Exception exception = {};
  exception.m_uThread = static_cast<std::uint32_t>(caller.m_iId);
  exception.m_uCode = uREQUESTED;
  exception.m_uAddress = caller.m_uPlace;
  if (const _EXCEPTION_RECORD* const record = source.m_pRecord; record != nullptr) {
    exception.m_uCode = static_cast<std::uint32_t>(record->m_signal.si_signo);
    exception.m_uFlags = static_cast<std::uint32_t>(record->m_signal.si_code);
    exception.m_uParameters = 3;
    exception.m_parameters[0] = record->m_bWrite ? 1 : 0;
    exception.m_parameters[1] = record->m_uTouched;
    exception.m_parameters[2] = record->m_uCode;
  }
  exception.m_context = {sizeof registers, registersPlace};
  const std::uint32_t place = file.Align();
  file.AppendValue(exception);
  file.AddStream(Minidump::eEXCEPTION, place);
}

void WriteMemoryInfo(DumpSource& source) noexcept {
  DumpFile& file = source.m_file;
  const std::uint32_t place = file.Align();
  const Minidump::LongListHeader header = {sizeof header, sizeof(Minidump::MemoryInfo),
                                           source.m_maps.Count()};
  file.AppendValue(header);
  for (const DumpMapping& mapping : source.m_maps) {
    Minidump::MemoryInfo info = {};
    info.m_uBase = mapping.m_uStart;
    info.m_uAllocation = mapping.m_uStart;
    info.m_uSize = mapping.Size();
    info.m_uProtection = ProtectionOf(mapping);
    info.m_uAllocationProtection = info.m_uProtection;
    info.m_uState = (mapping.m_uFlags & 7U) != 0 ? uCOMMITTED : uRESERVED;
    info.m_uType = TypeOf(mapping);
    file.AppendValue(info);
  }
  file.AddStream(Minidump::eMEMORY_INFO_LIST, place);
}

}  // namespace Oxa::Core::Platform

#endif
