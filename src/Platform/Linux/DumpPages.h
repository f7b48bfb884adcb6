// Which pages of a region a process has ever touched.
#ifndef OXACORE_PLATFORM_LINUX_DUMPPAGES_H
#define OXACORE_PLATFORM_LINUX_DUMPPAGES_H

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

constexpr std::uint64_t uDUMP_PAGE = 4096;

/// The touched runs of a region, one after the other. Static storage; allocates nothing.
class DumpPages {
 public:
  struct Run {
    std::uint64_t m_uStart;
    std::uint64_t m_uEnd;
    std::uint64_t m_uKinds;  // what the system has to say of it
  };

  /// `pagemap` is the system's own table as an open file, -1 for none. Where nothing can be told a page counts as
  /// touched.
  void Start(int pagemap, std::uint64_t start, std::uint64_t end) noexcept;

  /// The next run; false if there are no more, or `deadline` has passed. Runs that touch each other come as one.
  bool Next(Run& run, std::int64_t deadline) noexcept;

 private:
  static constexpr std::size_t uPAGES = 2048;  // looked at in one go
  static constexpr std::size_t uRUNS = uPAGES / 2;

  bool Take(Run& run, std::int64_t deadline) noexcept;
  void Fill() noexcept;
  bool Scan() noexcept;
  bool ReadTable(std::size_t pages) noexcept;
  bool ReadResidence(std::size_t pages) noexcept;
  void AddPage(std::uint64_t page) noexcept;

  int m_iPagemap;
  bool m_bScans;
  std::uint64_t m_uAt;
  std::uint64_t m_uEnd;
  std::size_t m_uRun;
  std::size_t m_uRuns;
  bool m_bPending;
  Run m_pending;
  Run m_runs[uRUNS];
  std::uint64_t m_table[uPAGES];
  unsigned char m_residence[uPAGES];
};

}  // namespace Oxa::Core::Platform

#endif
