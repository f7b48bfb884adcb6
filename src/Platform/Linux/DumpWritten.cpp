#include "Platform/Linux/DumpSource.h"

#if defined(__x86_64__)

#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

// The thread that asked stays in whatever the filter says: the exception speaks of it.
void FilterThreads(DumpSource& source) noexcept {
  for (DumpThread* thread = source.m_threads.begin() + 1; thread < source.m_threads.end();) {
    unsigned int none = 0;
    unsigned int flags =
        Minidump::eTHREAD_WRITE_THREAD | Minidump::eTHREAD_WRITE_STACK | Minidump::eTHREAD_WRITE_CONTEXT;
    if (source.Wants(Minidump::eINCLUDE_THREAD_CALLBACK, none) &&
        source.Wants(Minidump::eTHREAD_CALLBACK, flags) && (flags & Minidump::eTHREAD_WRITE_THREAD) != 0)
      ++thread;
    else
      source.m_threads.Remove(thread);
  }
}

void ReadMaps(DumpSource& source) noexcept {
  source.m_maps.Clear();
  const int maps = source.Open("maps");
  if (maps < 0) return;
  source.m_maps.Read(maps);
  RawCall(SYS_close, maps);
}

void WriteUnloadedModules(DumpSource& source) noexcept {
  constexpr std::uint32_t uENTRY = 24;
  const Minidump::ShortListHeader none = {sizeof none, uENTRY, 0};
  const std::uint32_t place = source.m_file.Align();
  source.m_file.AppendValue(none);
  source.m_file.AddStream(Minidump::eUNLOADED_MODULE_LIST, place);
}

// What a register holds may point at something, too.
void FollowRegisters(DumpSource& source) noexcept {
  for (DumpThread& thread : source.m_threads) {
    Minidump::Registers registers;
    source.m_threads.ReadRegisters(thread, registers);
    for (const std::uint64_t word : registers.m_general) source.m_ranges.Follow(word);
  }
  if (source.m_pRecord != nullptr) source.m_ranges.Follow(source.m_pRecord->m_uTouched);
}

void ChooseMemory(DumpSource& source) noexcept {
  const bool scan = (source.m_uContents & eDUMP_SCAN_MEMORY) != 0;
  const bool indirect = (source.m_uContents & eDUMP_WITH_INDIRECTLY_REFERENCED_MEMORY) != 0;
  if (indirect) FollowRegisters(source);
  source.m_ranges.ChooseSmallRanges(source.m_modules, scan, indirect);
}

void WriteWhatIsAskedFor(DumpSource& source) noexcept {
  if ((source.m_uContents & eDUMP_WITH_THREAD_INFO) != 0) WriteThreadInfo(source);
  if ((source.m_uContents & eDUMP_WITH_UNLOADED_MODULES) != 0) WriteUnloadedModules(source);
  if ((source.m_uContents & eDUMP_WITH_HANDLE_DATA) != 0) WriteHandles(source);
}

}  // namespace

// What says most with the fewest bytes comes first: the disk may be full after any of them.
void WriteDumpFile(DumpSource& source) noexcept {
  DumpFile& file = source.m_file;
  file.Start(source.m_iFile, source.m_uContents, static_cast<std::uint32_t>(source.m_iTime));
  FilterThreads(source);
  ReadMaps(source);
  source.m_modules.Read(source.m_maps);
  source.m_ranges.Start(file, source.m_maps, source.m_threads, source.m_iDeadline);
  WriteSystemInfo(source);
  WriteMiscInfo(source);
  WriteThreads(source);
  WriteException(source);
  file.Publish();
  ChooseMemory(source);
  WriteModules(source);
  WriteThreadNames(source);
  WriteSystemTexts(source);
  WriteLoaderState(source);
  WriteMemoryInfo(source);
  WriteWhatIsAskedFor(source);
  file.Publish();
  const int pagemap = source.Open("pagemap");
  source.m_ranges.Write(source.m_uContents, pagemap);
  if (pagemap >= 0) RawCall(SYS_close, pagemap);
}

}  // namespace Oxa::Core::Platform

#endif
