// Which pages were touched: by the system's table, by a table of ours, and where there is none.
#include "Platform/Linux/DumpPages.h"

#include <gmock/gmock.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Dump/OpenFile.h"
#include "Platform/Linux/DumpFile.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core::Platform;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using TestSupport::OpenFile;
using TestSupport::TemporaryFolder;
using Runs = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

constexpr std::int64_t iSECOND = 1000000000;

DumpPages s_pages;

// In pages from `first` on.
Runs RunsIn(int table, std::uint64_t first, std::uint64_t end, std::uint64_t base = 0) {
  Runs runs;
  DumpPages::Run run{};
  s_pages.Start(table, base + first * uDUMP_PAGE, base + end * uDUMP_PAGE);
  while (s_pages.Next(run, DumpClock() + 100 * iSECOND))
    runs.emplace_back((run.m_uStart - base) / uDUMP_PAGE, (run.m_uEnd - base) / uDUMP_PAGE);
  return runs;
}

// A table in the system's form, of which the pages from the lowest address on are made.
class Table {
 public:
  static constexpr std::uint64_t uPRESENT = 1ULL << 63U;
  static constexpr std::uint64_t uSWAPPED = 1ULL << 62U;
  static constexpr std::uint64_t uOTHER = ~(uPRESENT | uSWAPPED);  // marks that say nothing of that

  explicit Table(std::size_t pages) : m_entries(pages, uOTHER) {}
  std::uint64_t& operator[](std::size_t page) { return m_entries[page]; }
  Runs In(std::uint64_t first, std::uint64_t end) const {
    const TemporaryFolder folder;
    const std::string bytes(reinterpret_cast<const char*>(m_entries.data()), m_entries.size() * 8);
    return RunsIn(OpenFile(folder.Write("pagemap", bytes)).Get(), first, end);
  }

 private:
  std::vector<std::uint64_t> m_entries;
};

TEST(DumpPages, ATableTellsThoseInMemoryAndThoseSwappedOut) {
  Table table(20);
  table[4] = table[9] = table[10] = table[19] = Table::uPRESENT;
  table[11] = Table::uSWAPPED;
  table[15] = Table::uSWAPPED | Table::uOTHER;
  EXPECT_THAT(table.In(0, 20), ElementsAre(Pair(4, 5), Pair(9, 12), Pair(15, 16), Pair(19, 20)));
  EXPECT_THAT(table.In(10, 15), ElementsAre(Pair(10, 12)));
  EXPECT_THAT(table.In(12, 15), IsEmpty());
}

// The table is read by 2048 pages.
TEST(DumpPages, RunsThatTouchEachOtherComeAsOneHoweverTheyAreRead) {
  Table table(6000);
  for (std::size_t page = 2047; page < 4200; ++page) table[page] = Table::uPRESENT;
  table[5999] = Table::uPRESENT;
  EXPECT_THAT(table.In(0, 6000), ElementsAre(Pair(2047, 4200), Pair(5999, 6000)));
}

TEST(DumpPages, EveryOtherPage) {
  Table table(4096);
  Runs expected;
  for (std::size_t page = 0; page < 4096; page += 2) {
    table[page] = Table::uPRESENT;
    expected.emplace_back(page, page + 1);
  }
  EXPECT_EQ(table.In(0, 4096), expected);
}

TEST(DumpPages, WhereNothingCanBeToldAPageCountsAsTouched) {
  EXPECT_THAT(Table(10).In(5, 15), ElementsAre(Pair(5, 15))) << "the table ends before";
  EXPECT_THAT(RunsIn(-1, 1, 5000), ElementsAre(Pair(1, 5000))) << "nothing is mapped there";
}

TEST(DumpPages, AreThoseOfThisProcess) {
  constexpr std::size_t uSIZE = 16 * uDUMP_PAGE;
  void* const memory = ::mmap(nullptr, uSIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  ::madvise(memory, uSIZE, MADV_NOHUGEPAGE);
  char* const bytes = static_cast<char*>(memory);
  for (const std::size_t page : {3, 4, 9}) bytes[page * uDUMP_PAGE] = 1;
  const OpenFile table("/proc/self/pagemap");
  for (const int handle :
       {table.Get(), -1})  // by the system's table, and by what it says of one's own memory
    EXPECT_THAT(RunsIn(handle, 0, 16, reinterpret_cast<std::uint64_t>(memory)),
                ElementsAre(Pair(3, 5), Pair(9, 10)))
        << handle;
  ::munmap(memory, uSIZE);
}

TEST(DumpPages, AreNoneWhenTheTimeIsOver) {
  DumpPages::Run run{};
  s_pages.Start(-1, uDUMP_PAGE, 10 * uDUMP_PAGE);
  EXPECT_FALSE(s_pages.Next(run, DumpClock() - 1));
  EXPECT_TRUE(s_pages.Next(run, DumpClock() + 100 * iSECOND));
}

}  // namespace
