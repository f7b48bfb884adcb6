// Which memory is chosen and how it gets into the list, for threads and mappings that are made up.
#include "Platform/Linux/DumpRanges.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <sys/mman.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Dump/DumpReader.h"
#include "Dump/OpenFile.h"
#include "Platform/Dump.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core::Platform;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using TestSupport::DumpReader;
using TestSupport::OpenFile;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

constexpr std::uint64_t uPAGE = 4096;
constexpr std::uint64_t uKILOBYTE = 1024;
constexpr std::uint64_t uMEGABYTE = uKILOBYTE * uKILOBYTE;

std::string Line(std::uint64_t start, std::uint64_t end, const std::string& rights = "rw-p") {
  char range[64];
  std::snprintf(range, sizeof range, "%llx-%llx ", static_cast<unsigned long long>(start),
                static_cast<unsigned long long>(end));
  return range + rights + " 00000000 00:00 0\n";
}

class DumpRangesTests : public testing::Test {
 protected:
  void SetUp() override {
    s_threads.Clear();
    s_threads.AddCaller(1, m_context);
  }

  void Map(const std::string& text) const { s_maps.Read(OpenFile(m_folder.Write("maps", text)).Get()); }

  // Beside the caller.
  void AddThreads(int count) const {
    const std::string tasks = m_folder.File("tasks");
    std::filesystem::create_directory(tasks);
    for (int i = 0; i < count; ++i) std::filesystem::create_directory(tasks + '/' + std::to_string(i + 2));
    s_threads.AddFrom(OpenFile(tasks).Get(), 0);
  }
  static DumpThread& Thread(std::size_t number) { return s_threads.begin()[number]; }

  // The threads have entries in the file, as those that are written have.
  void Start() {
    s_file.Start(m_file.Get(), 0, 0);
    for (DumpThread& thread : s_threads) {
      thread.m_uEntry = s_file.Position();
      s_file.AppendValue(Minidump::Thread{});
    }
    s_ranges.Start(s_file, s_maps, s_threads, DumpClock() + 100 * 1000000000LL);
    s_ranges.ChooseStacks();
  }

  DumpReader Write(unsigned contents = 0) const {
    s_ranges.Write(contents, -1);
    return DumpReader(ReadFile(m_folder.File("dump")));
  }

  const TemporaryFolder m_folder;
  const OpenFile m_file{m_folder.File("dump"), O_RDWR | O_CREAT};
  CONTEXT m_context = {};
  static DumpMaps s_maps;
  static DumpThreads s_threads;
  static DumpModules s_modules;
  static DumpFile s_file;
  static DumpRanges s_ranges;
};
DumpMaps DumpRangesTests::s_maps;
DumpThreads DumpRangesTests::s_threads;
DumpModules DumpRangesTests::s_modules;
DumpFile DumpRangesTests::s_file;
DumpRanges DumpRangesTests::s_ranges;

// --- Stacks

class DumpStacks : public DumpRangesTests {
 protected:
  using Stack = std::pair<std::uint64_t, std::uint64_t>;
  Stack StackAt(std::uint64_t pointer) {
    Thread(0).m_uStack = pointer;
    Start();
    return {Thread(0).m_uStackStart, Thread(0).m_uStackSize};
  }
};

TEST_F(DumpStacks, OfTheCallerAMegabyteAndOfOthersAQuarterOfOne) {
  Map(Line(0x10000000, 0x20000000));
  AddThreads(1);
  Thread(1).m_uStack = 0x10005000;
  EXPECT_EQ(StackAt(0x10001008), Stack(0x10000f80, uMEGABYTE));
  EXPECT_EQ(Thread(1).m_uStackStart, 0x10004f80U);
  EXPECT_EQ(Thread(1).m_uStackSize, 256 * uKILOBYTE);
}

TEST_F(DumpStacks, TogetherSixtyFourMegabytes) {
  constexpr int iOTHERS = 300;
  constexpr int iWHOLE = 63 * 4;
  Map(Line(0x10000000, 0x20000000));
  AddThreads(iOTHERS);
  for (DumpThread& thread : s_threads) thread.m_uStack = 0x10001000;
  Start();
  EXPECT_EQ(Thread(0).m_uStackSize, uMEGABYTE);
  for (std::size_t i = 1; i <= iOTHERS; ++i)
    ASSERT_EQ(Thread(i).m_uStackSize, i <= iWHOLE ? 256 * uKILOBYTE : 0) << i;
}

TEST_F(DumpStacks, EndWithTheirMapping) {
  Map(Line(0x10000000, 0x20000000) + Line(0x20000000, 0x30000000));
  EXPECT_EQ(StackAt(0x1ffff000), Stack(0x1fffef80, 0x1080));
}

TEST_F(DumpStacks, ThatOverflewBeginBehindTheirEnd) {
  Map(Line(0x10000000, 0x10001000, "---p") + Line(0x10001000, 0x10080000));
  EXPECT_EQ(StackAt(0x10000800), Stack(0x10001000, 0x7f000));
}

TEST_F(DumpStacks, ThatOverflewByMoreThanAMegabyteAreNone) {
  Map(Line(0x10100000, 0x10200000));
  EXPECT_EQ(StackAt(0x10000080), Stack(0x10100000, uMEGABYTE));
  EXPECT_EQ(StackAt(0x1000007f), Stack(0, 0));
  EXPECT_EQ(StackAt(0x10300000), Stack(0, 0));
}

TEST_F(DumpStacks, AreNoneWhereNothingCanBeRead) {
  Map(Line(0x10000000, 0x10100000, "---p") + Line(0x10100000, 0x10200000, "-w-p"));
  EXPECT_EQ(StackAt(0x10000800), Stack(0, 0));
}

TEST_F(DumpStacks, WithoutAnyMappingKnownAreSixtyFourKilobytes) {
  Map("");
  EXPECT_EQ(StackAt(0x10000800), Stack(0x10000780, 64 * uKILOBYTE));
  EXPECT_EQ(StackAt(0), Stack(0, 0));
  EXPECT_EQ(StackAt(127), Stack(0, 0));
}

// --- Memory. It is there, since it is written; what is said of it is made up.

class DumpChoice : public DumpRangesTests {
 protected:
  static constexpr std::size_t uPAGES = 32;

  DumpChoice()
      : m_uBase(reinterpret_cast<std::uint64_t>(
            ::mmap(nullptr, uPAGES * uPAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    std::memset(At(0), 0, uPAGES * uPAGE);
  }
  ~DumpChoice() override { ::munmap(At(0), uPAGES * uPAGE); }

  void* At(std::uint64_t offset) const { return reinterpret_cast<void*>(m_uBase + offset); }
  std::string Pages(std::uint64_t first, std::uint64_t end, const std::string& rights = "rw-p") const {
    return Line(m_uBase + first * uPAGE, m_uBase + end * uPAGE, rights);
  }
  void Put(std::uint64_t offset, std::uint64_t word) const { std::memcpy(At(offset), &word, sizeof word); }

  // Offsets and sizes of what is in the list.
  std::vector<std::pair<std::uint64_t, std::uint64_t>> Ranges(const DumpReader& dump) const {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;
    for (const DumpReader::Range& range : dump.Ranges())
      ranges.emplace_back(range.m_uStart - m_uBase, range.m_uSize);
    return ranges;
  }
  void Choose() { s_ranges.ChooseSmallRanges(s_modules, false, true); }

  const std::uint64_t m_uBase;
};

TEST_F(DumpChoice, WhatIsPointedAtHasHalfAKilobyteAroundIt) {
  Map(Pages(0, 8));
  Start();
  s_ranges.Follow(m_uBase + 0x1008);
  s_ranges.Follow(m_uBase + 8 * uPAGE);
  Choose();
  EXPECT_THAT(Ranges(Write()), ElementsAre(Pair(0xfc0, 0x200)));
}

TEST_F(DumpChoice, WhatIsPointedAtEndsWithItsMapping) {
  Map(Pages(4, 8));
  Start();
  s_ranges.Follow(m_uBase + 0x4008);
  s_ranges.Follow(m_uBase + 0x8000 - 8);
  Choose();
  EXPECT_THAT(Ranges(Write()), ElementsAre(Pair(0x4000, 0x1c0), Pair(0x8000 - 80, 80)));
}

TEST_F(DumpChoice, CodeIsThereAroundPlacesAndIsNotFollowed) {
  Map(Pages(0, 8, "r-xp") + Pages(8, 9, "---p"));
  Thread(0).m_uPlace = m_uBase + 0x1000;
  Start();
  s_ranges.Follow(m_uBase + 0x3000);
  s_ranges.Follow(m_uBase + 0x8000);
  Choose();
  EXPECT_THAT(Ranges(Write()), ElementsAre(Pair(0x1000 - 128, 256)));
}

TEST_F(DumpChoice, WhatOverlapsIsThereOnce) {
  Map(Pages(0, 8));
  Thread(0).m_uPlace = m_uBase + 0x10c0;  // all of its code within what is pointed at
  Start();
  s_ranges.Follow(m_uBase + 0x1000);
  s_ranges.Follow(m_uBase + 0x2000);
  s_ranges.Follow(m_uBase + 0x2100);
  Choose();
  EXPECT_THAT(Ranges(Write()), ElementsAre(Pair(0xfc0, 0x200), Pair(0x1fc0, 0x300)));
}

TEST_F(DumpChoice, WhatIsInAStackIsThereWithIt) {
  Map(Pages(0, 8));
  Thread(0).m_uStack = m_uBase + 0x3080;
  Start();
  s_ranges.Follow(m_uBase + 0x2ff0);
  s_ranges.Follow(m_uBase + 0x3000);
  s_ranges.Follow(m_uBase + 0x5000);
  Choose();
  EXPECT_THAT(Ranges(Write()), ElementsAre(Pair(0x3000, 0x5000), Pair(0x2fb0, 0x50)));
}

TEST_F(DumpChoice, ThatMuchPointsAtOnePlaceLosesNoOther) {
  Map(Pages(0, 8));
  Start();
  for (int i = 0; i < 3 * 16384; ++i) s_ranges.Follow(m_uBase + 0x1000);
  s_ranges.Follow(m_uBase + 0x3000);
  Choose();
  EXPECT_THAT(Ranges(Write()), ElementsAre(Pair(0xfc0, 0x200), Pair(0x2fc0, 0x200)));
}

TEST_F(DumpChoice, BehindAPageThatIsGoneStacksAreReadOn) {
  Map(Pages(0, 8) + Pages(10, 13));
  Put(12 * uPAGE + 8, m_uBase + 0x1000);
  Thread(0).m_uStack = m_uBase + 10 * uPAGE + 128;
  ::mprotect(At(11 * uPAGE), uPAGE, PROT_NONE);
  Start();
  Choose();
  EXPECT_THAT(Ranges(Write()), ElementsAre(Pair(10 * uPAGE, uPAGE), Pair(0xfc0, 0x200)));
}

// Nothing can be told of the first mapping, since a part of it is gone.
TEST_F(DumpChoice, TheLongListHasWhatCouldBeRead) {
  Map(Pages(0, 4) + Pages(6, 8));
  Put(uPAGE + 8, 0x1111);
  Put(7 * uPAGE + 8, 0x7777);
  ::munmap(At(2 * uPAGE), uPAGE);
  Start();
  const DumpReader dump = Write(eDUMP_WITH_PRIVATE_READ_WRITE_MEMORY);
  EXPECT_THAT(Ranges(dump), ElementsAre(Pair(0, 2 * uPAGE), Pair(6 * uPAGE, 2 * uPAGE)));
  EXPECT_EQ(dump.Memory<std::uint64_t>(m_uBase + uPAGE + 8), 0x1111U);
  EXPECT_EQ(dump.Memory<std::uint64_t>(m_uBase + 7 * uPAGE + 8), 0x7777U);
}

TEST_F(DumpChoice, ThreadsWithoutAStackHaveNone) {
  Map(Pages(0, 2) + Pages(4, 6));
  AddThreads(2);
  Thread(0).m_uStack = m_uBase + 0x80;
  Thread(2).m_uStack = m_uBase + 4 * uPAGE + 0x80;
  Start();
  const DumpReader dump = Write();
  constexpr std::uint64_t uSTACK = offsetof(Minidump::Thread, m_stack);
  const std::uint64_t starts[] = {m_uBase, 0, m_uBase + 4 * uPAGE};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(dump.At<std::uint64_t>(Thread(i).m_uEntry + uSTACK), starts[i]) << i;
    EXPECT_EQ(dump.At<std::uint32_t>(Thread(i).m_uEntry + uSTACK + 8), i == 1 ? 0 : 2 * uPAGE) << i;
  }
}

TEST_F(DumpChoice, RegionsOfManyGigabytesComeLast) {
  constexpr std::uint64_t uHUGE = (4ULL << 30U) + uPAGE;
  void* const memory =
      ::mmap(nullptr, uHUGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) GTEST_SKIP() << "the system has no address space for that";
  ::madvise(memory, uHUGE, MADV_NOHUGEPAGE);
  static_cast<char*>(memory)[5 * uPAGE] = 1;
  const auto start = reinterpret_cast<std::uint64_t>(memory);
  Map(Line(start, start + uHUGE) + Pages(0, 2));
  Start();
  const DumpReader dump = Write(eDUMP_WITH_FULL_MEMORY);
  EXPECT_THAT(Ranges(dump), ElementsAre(Pair(0, 2 * uPAGE), Pair(start + 5 * uPAGE - m_uBase, uPAGE)));
  ::munmap(memory, uHUGE);
}

// --- Modules that memory points at

class DumpReferences : public DumpRangesTests {
 protected:
  void SetUp() override {
    DumpRangesTests::SetUp();
    Map(ReadFile("/proc/self/maps"));
    s_modules.Read(s_maps);
  }
  // Those that are marked.
  static std::vector<std::uint64_t> Referenced() {
    std::vector<std::uint64_t> bases;
    for (const DumpModule& module : s_modules)
      if ((module.m_uFlags & Minidump::eMODULE_REFERENCED_BY_MEMORY) != 0) bases.push_back(module.m_uBase);
    return bases;
  }

  void* const m_pFunction = ::dlsym(RTLD_NEXT, "getpid");
  const std::uint64_t m_uFunction = reinterpret_cast<std::uint64_t>(m_pFunction);
  std::uint64_t Base() const {
    Dl_info info = {};
    ::dladdr(m_pFunction, &info);
    return reinterpret_cast<std::uint64_t>(info.dli_fbase);
  }
};

TEST_F(DumpReferences, ByThePlaceOfAThread) {
  Thread(0).m_uPlace = m_uFunction;
  Start();
  s_ranges.ChooseSmallRanges(s_modules, false, false);
  EXPECT_THAT(Referenced(), IsEmpty());
  s_ranges.ChooseSmallRanges(s_modules, true, false);
  EXPECT_THAT(Referenced(), ElementsAre(Base()));
}

TEST_F(DumpReferences, ByWhatIsPointedAt) {
  alignas(1024) static std::uint64_t s_memory[128];
  s_memory[64] = m_uFunction;
  Start();
  s_ranges.Follow(reinterpret_cast<std::uint64_t>(&s_memory[60]));
  s_ranges.ChooseSmallRanges(s_modules, true, true);
  EXPECT_THAT(Referenced(), ElementsAre(Base()));
}

}  // namespace
