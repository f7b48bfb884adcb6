#include "Platform/Linux/DumpRanges.h"

#if defined(__x86_64__)

#include <algorithm>
#include <cstddef>

#include "Platform/Dump.h"
#include "Platform/Linux/DumpPages.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t uHUGE = 4ULL << 30U;  // regions that come after all others
constexpr std::uint64_t uMOST_LISTED = 1ULL << 20U;
constexpr std::uint64_t uSHORT_HEADER = 4;
constexpr std::uint64_t uLONG_HEADER = 16;
constexpr std::uint64_t uPUBLISH_EVERY = 64;

DumpPages s_pages;

}  // namespace

// First all entries, then the memory: where it lies in the file is only known when they have all been counted.
void DumpRanges::Write(unsigned int contents, int pagemap) noexcept {
  m_bLong = (contents & (eDUMP_WITH_FULL_MEMORY | eDUMP_WITH_PRIVATE_READ_WRITE_MEMORY)) != 0;
  m_uList = m_pFile->Align();
  m_uListed = 0;
  const std::uint64_t header[2] = {};
  m_pFile->Append(header, m_bLong ? uLONG_HEADER : uSHORT_HEADER);
  for (const DumpThread& thread : *m_pThreads)
    if (thread.m_uStackSize > 0) List(thread.m_uStackStart, thread.m_uStackSize);
  const bool whole = (contents & eDUMP_WITH_FULL_MEMORY) != 0;
  for (std::size_t i = 0; i < m_uSmall && !whole; ++i)
    ListWithoutStacks(m_small[i].m_uStart, m_small[i].m_uEnd);
  ListRegions(contents, pagemap);
  WriteListed();
}

bool DumpRanges::IsWanted(const DumpMapping& mapping, unsigned int contents) const noexcept {
  if (!mapping.MayBeRead()) return false;
  if ((contents & eDUMP_WITH_FULL_MEMORY) != 0) return true;
  if (!mapping.Has(DumpMapping::eWRITABLE) || mapping.Has(DumpMapping::eSHARED)) return false;
  if ((contents & eDUMP_WITH_PRIVATE_READ_WRITE_MEMORY) != 0) return true;
  return (contents & eDUMP_WITH_DATA_SEGS) != 0 && mapping.Has(DumpMapping::eFILE);
}

// Address space that is reserved by the gigabyte takes long to look through: what is of common size comes first.
void DumpRanges::ListRegions(unsigned int contents, int pagemap) noexcept {
  for (const bool huge : {false, true})
    for (const DumpMapping& mapping : *m_pMaps)
      if ((mapping.Size() > uHUGE) == huge && IsWanted(mapping, contents)) ListTouched(mapping, pagemap);
}

void DumpRanges::ListTouched(const DumpMapping& mapping, int pagemap) noexcept {
  // Half of the time that is left is for the memory itself.
  const std::int64_t deadline = m_iBegin + (m_iDeadline - m_iBegin) / 2;
  DumpPages::Run run{};
  s_pages.Start(pagemap, mapping.m_uStart, mapping.m_uEnd);
  while (s_pages.Next(run, deadline)) ListWithoutStacks(run.m_uStart, run.m_uEnd);
}

void DumpRanges::ListWithoutStacks(std::uint64_t start, std::uint64_t end) noexcept {
  while (start < end) {
    const Range* const stack = StackBehind(start);
    const std::uint64_t stop = stack == nullptr ? end : std::min(end, stack->m_uStart);
    if (start < stop) List(start, stop - start);
    start = stop == end ? end : stack->m_uEnd;
  }
}

void DumpRanges::List(std::uint64_t start, std::uint64_t size) noexcept {
  if (m_uListed == uMOST_LISTED) return;
  const Minidump::LongRange entry = {start, size};
  m_pFile->AppendValue(entry);
  ++m_uListed;
}

void DumpRanges::WriteListed() noexcept {
  const std::uint64_t first = m_pFile->Align();
  if (m_bLong) m_pFile->Patch(m_uList + sizeof(std::uint64_t), &first, sizeof first);
  DumpThread* thread = NextWithStack(m_pThreads->begin());
  std::uint64_t done = 0;
  while (done < m_uListed && DumpClock() < m_iDeadline && WriteListed(done, thread)) {
    if (thread != m_pThreads->end()) thread = NextWithStack(thread + 1);
    if (++done % uPUBLISH_EVERY == 0) PublishList(done);
  }
  PublishList(done);
}

DumpThread* DumpRanges::NextWithStack(DumpThread* thread) noexcept {
  return std::find_if(thread, m_pThreads->end(),
                      [](const DumpThread& other) { return other.m_uStackSize > 0; });
}

// Writes the memory of an entry, which is the stack of `thread` unless there are no more, and puts in the entry what
// there was to write. False if nothing more can be written.
bool DumpRanges::WriteListed(std::uint64_t index, const DumpThread* thread) noexcept {
  Minidump::LongRange entry = {};
  const std::uint64_t place = m_uList + (m_bLong ? uLONG_HEADER : uSHORT_HEADER) + index * sizeof entry;
  if (m_pFile->HasFailed() || !m_pFile->ReadBack(place, &entry, sizeof entry)) return false;
  const std::uint64_t position = m_pFile->Position();
  const std::uint64_t size = m_pFile->AppendMemory(entry.m_uStart, entry.m_uSize);
  const Minidump::MemoryRange range = {
      entry.m_uStart, {static_cast<std::uint32_t>(size), static_cast<std::uint32_t>(position)}};
  if (thread != m_pThreads->end())
    m_pFile->Patch(thread->m_uEntry + offsetof(Minidump::Thread, m_stack), &range, sizeof range);
  if (!m_bLong) {
    m_pFile->Patch(place, &range, sizeof range);
  } else if (size != entry.m_uSize) {
    entry.m_uSize = size;
    m_pFile->Patch(place, &entry, sizeof entry);
  }
  return true;
}

void DumpRanges::PublishList(std::uint64_t count) noexcept {
  const std::uint64_t header = m_bLong ? uLONG_HEADER : uSHORT_HEADER;
  m_pFile->Patch(m_uList, &count, m_bLong ? sizeof count : sizeof(std::uint32_t));
  m_pFile->AddStream(m_bLong ? Minidump::eMEMORY_64_LIST : Minidump::eMEMORY_LIST, m_uList,
                     header + count * sizeof(Minidump::LongRange));
  m_pFile->Publish();
}

}  // namespace Oxa::Core::Platform

#endif
