#include "Platform/Linux/DumpRanges.h"

#if defined(__x86_64__)

#include <algorithm>

#include "Platform/Linux/DumpPages.h"
#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t uRED_ZONE = 128;     // below the stack pointer, and in use all the same
constexpr std::uint64_t uGUARD = 1U << 20U;  // so far off its stack an overflowing thread can be
constexpr std::uint64_t uFIRST_STACK = 1U << 20U;
constexpr std::uint64_t uOTHER_STACK = 256U << 10U;
constexpr std::uint64_t uALL_STACKS = 64U << 20U;
constexpr std::uint64_t uUNKNOWN_STACK = 64U << 10U;  // where no mapping tells its end
constexpr std::uint64_t uCODE = 128;                  // on both sides of a thread's place
constexpr std::uint64_t uPOINTED_BEFORE = 64;
constexpr std::uint64_t uPOINTED = 448;
constexpr std::uint64_t uGRAIN = 16;

}  // namespace

void DumpRanges::Start(DumpFile& file, const DumpMaps& maps, DumpThreads& threads,
                       std::int64_t deadline) noexcept {
  m_pFile = &file;
  m_pMaps = &maps;
  m_pThreads = &threads;
  m_iBegin = DumpClock();
  m_iDeadline = deadline;
  m_uStacks = 0;
  m_uSmall = 0;
}

void DumpRanges::ChooseStacks() noexcept {
  std::uint64_t left = uALL_STACKS;
  for (DumpThread& thread : *m_pThreads) {
    ChooseStack(thread);
    const std::uint64_t most = thread.m_eState == DumpThread::eCALLER ? uFIRST_STACK : uOTHER_STACK;
    thread.m_uStackSize = std::min({thread.m_uStackSize, most, left});
    left -= thread.m_uStackSize;
  }
  SortStacks();
}

// A thread whose pointer is off its stack has overflown it: what lies above is its stack.
void DumpRanges::ChooseStack(DumpThread& thread) noexcept {
  thread.m_uStackStart = 0;
  thread.m_uStackSize = 0;
  if (thread.m_uStack < uRED_ZONE) return;
  const std::uint64_t start = (thread.m_uStack - uRED_ZONE) / uGRAIN * uGRAIN;
  if (m_pMaps->Count() == 0) {
    thread.m_uStackStart = start;
    thread.m_uStackSize = uUNKNOWN_STACK;
    return;
  }
  const DumpMapping* mapping = m_pMaps->FindNext(start);
  while (mapping != m_pMaps->end() && mapping != nullptr && !mapping->MayBeRead()) ++mapping;
  if (mapping == nullptr || mapping == m_pMaps->end()) return;
  if (mapping->m_uStart > start + uGUARD) return;
  thread.m_uStackStart = std::max(start, mapping->m_uStart);
  thread.m_uStackSize = mapping->m_uEnd - thread.m_uStackStart;
}

void DumpRanges::SortStacks() noexcept {
  for (const DumpThread& thread : *m_pThreads)
    if (thread.m_uStackSize > 0)
      m_stacks[m_uStacks++] = {thread.m_uStackStart, thread.m_uStackStart + thread.m_uStackSize};
  std::sort(m_stacks, m_stacks + m_uStacks,
            [](const Range& one, const Range& other) { return one.m_uEnd < other.m_uEnd; });
}

const DumpRanges::Range* DumpRanges::StackBehind(std::uint64_t address) const noexcept {
  const Range* const end = m_stacks + m_uStacks;
  const Range* const found = std::upper_bound(
      m_stacks, end, address, [](std::uint64_t place, const Range& range) { return place < range.m_uEnd; });
  return found == end ? nullptr : found;
}

void DumpRanges::ChooseSmallRanges(DumpModules& modules, bool scan, bool indirect) noexcept {
  for (const DumpThread& thread : *m_pThreads) {
    AddAround(thread.m_uPlace, uCODE, uCODE);
    if (scan) modules.Reference(thread.m_uPlace);
  }
  if (indirect) {
    for (std::size_t i = 0; i < m_uStacks; ++i)
      ForWords(m_stacks[i].m_uStart, m_stacks[i].m_uEnd, [this](std::uint64_t word) { Follow(word); });
  }
  MergeSmall();
  if (scan) ScanForModules(modules);
}

void DumpRanges::Follow(std::uint64_t word) noexcept {
  const DumpMapping* const mapping = m_pMaps->Find(word);
  if (mapping == nullptr || !mapping->MayBeRead() || !mapping->Has(DumpMapping::eWRITABLE)) return;
  const Range* const stack = StackBehind(word);
  if (stack == nullptr || stack->m_uStart > word) AddAround(word, uPOINTED_BEFORE, uPOINTED);
}

void DumpRanges::AddAround(std::uint64_t address, std::uint64_t before, std::uint64_t behind) noexcept {
  const DumpMapping* const mapping = m_pMaps->Find(address);
  if (mapping == nullptr || !mapping->MayBeRead()) return;
  const std::uint64_t start = address < before ? 0 : (address - before) / uGRAIN * uGRAIN;
  const std::uint64_t end = (address + behind) / uGRAIN * uGRAIN;
  AddSmall(std::max(start, mapping->m_uStart), std::min(end, mapping->m_uEnd));
}

void DumpRanges::AddSmall(std::uint64_t start, std::uint64_t end) noexcept {
  if (m_uSmall == uSMALL) MergeSmall();
  if (m_uSmall < uSMALL && start < end) m_small[m_uSmall++] = {start, end};
}

void DumpRanges::MergeSmall() noexcept {
  if (m_uSmall == 0) return;
  std::sort(m_small, m_small + m_uSmall,
            [](const Range& one, const Range& other) { return one.m_uStart < other.m_uStart; });
  std::size_t last = 0;
  for (std::size_t i = 1; i < m_uSmall; ++i) {
    if (m_small[i].m_uStart <= m_small[last].m_uEnd)
      m_small[last].m_uEnd = std::max(m_small[last].m_uEnd, m_small[i].m_uEnd);
    else
      m_small[++last] = m_small[i];
  }
  m_uSmall = last + 1;
}

// Page by page, since any of them may be gone.
template <class Action>
void DumpRanges::ForWords(std::uint64_t start, std::uint64_t end, const Action& action) noexcept {
  constexpr std::uint64_t uWORD = sizeof(std::uint64_t);
  std::uint64_t* const words = reinterpret_cast<std::uint64_t*>(DumpFile::Scratch());
  start = (start + uWORD - 1) / uWORD * uWORD;
  while (start + uWORD <= end && DumpClock() < m_iDeadline) {
    const std::uint64_t stop = std::min(end / uWORD * uWORD, start / uDUMP_PAGE * uDUMP_PAGE + uDUMP_PAGE);
    const std::size_t count = (stop - start) / uWORD;
    if (ReadSafely(start, words, count * uWORD))
      for (std::size_t i = 0; i < count; ++i) action(words[i]);
    start = stop;
  }
}

void DumpRanges::ScanForModules(DumpModules& modules) noexcept {
  const auto reference = [&modules](std::uint64_t word) { modules.Reference(word); };
  for (std::size_t i = 0; i < m_uStacks; ++i) ForWords(m_stacks[i].m_uStart, m_stacks[i].m_uEnd, reference);
  for (std::size_t i = 0; i < m_uSmall; ++i) ForWords(m_small[i].m_uStart, m_small[i].m_uEnd, reference);
}

}  // namespace Oxa::Core::Platform

#endif
