#include "Platform/Linux/DumpPages.h"

#if defined(__x86_64__)

#include <sys/ioctl.h>

#include <algorithm>

#include "Platform/Linux/DumpFile.h"
#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

// In memory, or swapped out of it.
constexpr std::uint64_t uTOUCHED = 3ULL << 62U;

// Asks the table for runs of pages of some kinds: newer systems know it, and older headers don't. It goes over
// terabytes of nothing at once.
struct ScanRequest {
  std::uint64_t m_uSize;
  std::uint64_t m_uFlags;
  std::uint64_t m_uStart;
  std::uint64_t m_uEnd;
  std::uint64_t m_uReached;
  std::uint64_t m_uRuns;
  std::uint64_t m_uMostRuns;
  std::uint64_t m_uMostPages;
  std::uint64_t m_uInverted;
  std::uint64_t m_uAll;
  std::uint64_t m_uAny;
  std::uint64_t m_uReturned;
};
constexpr unsigned long ulSCAN = _IOWR('f', 16, ScanRequest);
constexpr std::uint64_t uPRESENT_OR_SWAPPED = 3U << 3U;

}  // namespace

void DumpPages::Start(int pagemap, std::uint64_t start, std::uint64_t end) noexcept {
  m_iPagemap = pagemap;
  m_bScans = pagemap >= 0;
  m_uAt = start;
  m_uEnd = end;
  m_uRun = 0;
  m_uRuns = 0;
  m_bPending = false;
}

bool DumpPages::Next(Run& run, std::int64_t deadline) noexcept {
  if (m_bPending)
    run = m_pending;
  else if (!Take(run, deadline))
    return false;
  while ((m_bPending = Take(m_pending, deadline)) && m_pending.m_uStart == run.m_uEnd)
    run.m_uEnd = m_pending.m_uEnd;
  return true;
}

bool DumpPages::Take(Run& run, std::int64_t deadline) noexcept {
  while (m_uRun == m_uRuns) {
    if (m_uAt >= m_uEnd || DumpClock() > deadline) return false;
    Fill();
  }
  run = m_runs[m_uRun++];
  return true;
}

void DumpPages::Fill() noexcept {
  m_uRun = 0;
  m_uRuns = 0;
  if (m_bScans && Scan()) return;
  m_bScans = false;
  const std::size_t pages = std::min<std::uint64_t>(uPAGES, (m_uEnd - m_uAt) / uDUMP_PAGE);
  if (!ReadTable(pages) && !ReadResidence(pages)) m_runs[m_uRuns++] = {m_uAt, m_uAt + pages * uDUMP_PAGE, 0};
  m_uAt += pages * uDUMP_PAGE;
}

bool DumpPages::Scan() noexcept {
  ScanRequest request = {};
  request.m_uSize = sizeof request;
  request.m_uStart = m_uAt;
  request.m_uEnd = m_uEnd;
  request.m_uRuns = reinterpret_cast<std::uint64_t>(m_runs);
  request.m_uMostRuns = uRUNS;
  request.m_uAny = uPRESENT_OR_SWAPPED;
  request.m_uReturned = uPRESENT_OR_SWAPPED;
  const long runs = RawCall(SYS_ioctl, m_iPagemap, static_cast<long>(ulSCAN), RawArgument(&request));
  if (runs < 0 || request.m_uReached <= m_uAt) return false;
  m_uRuns = static_cast<std::size_t>(runs);
  m_uAt = request.m_uReached;
  return true;
}

bool DumpPages::ReadTable(std::size_t pages) noexcept {
  if (m_iPagemap < 0) return false;
  const long size = static_cast<long>(pages * sizeof m_table[0]);
  const std::uint64_t position = m_uAt / uDUMP_PAGE * sizeof m_table[0];
  if (RawCall(SYS_pread64, m_iPagemap, RawArgument(m_table), size, static_cast<long>(position)) != size)
    return false;
  for (std::size_t i = 0; i < pages; ++i)
    if ((m_table[i] & uTOUCHED) != 0) AddPage(m_uAt + i * uDUMP_PAGE);
  return true;
}

bool DumpPages::ReadResidence(std::size_t pages) noexcept {
  const long size = static_cast<long>(pages * uDUMP_PAGE);
  if (RawCall(SYS_mincore, static_cast<long>(m_uAt), size, RawArgument(m_residence)) != 0) return false;
  for (std::size_t i = 0; i < pages; ++i)
    if ((m_residence[i] & 1U) != 0) AddPage(m_uAt + i * uDUMP_PAGE);
  return true;
}

void DumpPages::AddPage(std::uint64_t page) noexcept {
  if (m_uRuns > 0 && m_runs[m_uRuns - 1].m_uEnd == page)
    m_runs[m_uRuns - 1].m_uEnd += uDUMP_PAGE;
  else
    m_runs[m_uRuns++] = {page, page + uDUMP_PAGE, 0};
}

}  // namespace Oxa::Core::Platform

#endif
