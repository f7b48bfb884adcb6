// Which memory a dump has, by its contents.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <sys/mman.h>

#include <cstring>

#include "Dump/DumpScene.h"
#include "ErrorHandling/MicrosoftDebugHelpDump.h"
#include "Platform/Linux/FaultContext.h"

// Memory that was freed stays in the process under the address sanitizer, and comes into the dumps: old dumps in it.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=1"; }

namespace {

using namespace TestSupport;
using namespace Oxa::Core;

constexpr std::uint64_t uPAGE = 4096;
constexpr std::uint64_t uMEGABYTE = 1 << 20;

std::uint64_t s_variable = 0xabadcafe12345678ULL;

// Pages of the process's own, of which one has been touched.
class Sparse {
 public:
  explicit Sparse(std::uint64_t size, int protection = PROT_READ | PROT_WRITE, int kind = MAP_PRIVATE)
      : m_uSize(size),
        m_pStart(static_cast<char*>(
            ::mmap(nullptr, size, PROT_READ | PROT_WRITE, kind | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {
    std::memset(m_pStart + uTOUCHED, 0x77, uPAGE);
    ::mprotect(m_pStart, size, protection);
  }
  Sparse(const Sparse&) = delete;
  Sparse& operator=(const Sparse&) = delete;
  ~Sparse() { ::munmap(m_pStart, m_uSize); }

  std::uint64_t Touched() const { return AddressOf(m_pStart) + uTOUCHED; }

  /// The bytes of it that a dump has.
  std::uint64_t In(const DumpReader& dump) const {
    std::uint64_t bytes = 0;
    const std::uint64_t start = AddressOf(m_pStart);
    for (const DumpReader::Range& range : dump.Ranges())
      if (range.m_uStart < start + m_uSize && range.m_uStart + range.m_uSize > start) bytes += range.m_uSize;
    return bytes;
  }

 private:
  static constexpr std::uint64_t uTOUCHED = 5 * uPAGE;
  std::uint64_t m_uSize;
  char* m_pStart;
};

TEST(DumpMemory, TheSmallestHasStacksAndNoHeap) {
  const KnownThread thread("known", 7);
  const DumpReader dump = DumpNow(0);
  EXPECT_EQ(dump.Memory<std::uint64_t>(thread.Mark()), KnownThread::uMARK + 7);
  EXPECT_FALSE(dump.HasMemory(thread.Behind()));
  EXPECT_FALSE(dump.HasMemory(AddressOf(&s_variable)));
}

TEST(DumpMemory, TheCodeAroundThePlaceOfAThreadIsAlwaysThere) {
  const KnownThread known("known");
  const DumpReader dump = DumpNow(0);
  EXPECT_TRUE(dump.HasMemory(dump.ThreadOf(known.Id()).m_registers.m_uPlace - 112, 224));
  for (const DumpReader::Thread& thread : dump.Threads())
    EXPECT_TRUE(dump.HasMemory(thread.m_registers.m_uPlace, 16));
}

TEST(DumpMemory, ReferencedMemoryIsWhatStacksPointAt) {
  const KnownThread thread("known", 7);
  const std::unique_ptr<std::uint64_t[]> hidden(new std::uint64_t[4096]);
  hidden[2048] = 3;
  const DumpReader dump = DumpNow(uPOLICY_1);
  EXPECT_EQ(dump.Memory<std::uint64_t>(thread.Mark()), KnownThread::uMARK + 7);
  EXPECT_EQ(dump.Memory<std::uint64_t>(thread.Behind()), KnownThread::uBEHIND + 7);
  EXPECT_FALSE(dump.HasMemory(AddressOf(&hidden[2048])));
}

TEST(DumpMemory, WhatLiesAroundReferencedMemoryIsThereToo) {
  const Sparse memory(uMEGABYTE);
  const volatile std::uint64_t pointer = memory.Touched() + 1024;
  const DumpReader dump = DumpNow(uPOLICY_1);
  EXPECT_TRUE(dump.HasMemory(pointer - 64, 512));
}

TEST(DumpMemory, WhatRegistersAndTheFaultPointAtIsReferencedToo) {
  const Sparse first(uMEGABYTE);
  const Sparse second(uMEGABYTE);
  const Sparse readable(uMEGABYTE, PROT_READ);
  CONTEXT context = {};
  _EXCEPTION_RECORD record = {};
  // Complemented on the stack of this thread, which is left out: its pointer is nowhere.
  const volatile std::uint64_t hidden[] = {~first.Touched(), ~second.Touched(), ~readable.Touched()};
  context.m_registers[3] = ~hidden[0] + 100;
  context.m_registers[12] = ~hidden[2];
  record.m_uTouched = ~hidden[1] + 200;
  const _EXCEPTION_POINTERS pointers = {&record, &context};
  const DumpReader dump = DumpNow(uPOLICY_1, &pointers);
  EXPECT_EQ(first.In(dump), 512U);
  EXPECT_TRUE(dump.HasMemory(first.Touched() + 100, 400));
  EXPECT_EQ(second.In(dump), 512U);
  EXPECT_TRUE(dump.HasMemory(second.Touched() + 200, 400));
  EXPECT_EQ(readable.In(dump), 0U) << "what can't be written is in its file";
}

TEST(DumpMemory, DataOfModulesAloneIsNoHeap) {
  const KnownThread thread("known", 7);
  const Sparse writable(uMEGABYTE);
  const DumpReader dump = DumpNow(Platform::eDUMP_WITH_DATA_SEGS);
  EXPECT_EQ(dump.Memory(s_variable), s_variable);
  EXPECT_EQ(dump.Memory<std::uint64_t>(thread.Mark()), KnownThread::uMARK + 7);
  EXPECT_FALSE(dump.HasMemory(thread.Behind()));
  EXPECT_EQ(writable.In(dump), 0U);
}

TEST(DumpMemory, PrivateMemoryIsAllThatTheProcessCanWrite) {
  const KnownThread thread("known", 7);
  const Sparse writable(64 * uMEGABYTE);
  const Sparse readable(uMEGABYTE, PROT_READ);
  const Sparse shared(uMEGABYTE, PROT_READ | PROT_WRITE, MAP_SHARED);
  const DumpReader dump = DumpNow(uPOLICY_2);
  EXPECT_EQ(dump.Memory<std::uint64_t>(thread.Mark()), KnownThread::uMARK + 7);
  EXPECT_EQ(dump.Memory<std::uint64_t>(thread.Behind()), KnownThread::uBEHIND + 7);
  EXPECT_EQ(dump.Memory(s_variable), s_variable);
  EXPECT_EQ(dump.Memory<std::uint8_t>(writable.Touched()), 0x77);
  EXPECT_EQ(readable.In(dump), 0U);
  EXPECT_EQ(shared.In(dump), 0U);
}

TEST(DumpMemory, FullMemoryIsAllThatCanBeRead) {
  const KnownThread thread("known", 7);
  const Sparse readable(uMEGABYTE, PROT_READ);
  const Sparse shared(uMEGABYTE, PROT_READ | PROT_WRITE, MAP_SHARED);
  const Sparse forbidden(uMEGABYTE, PROT_NONE);
  const DumpReader dump = DumpNow(uPOLICY_3);
  EXPECT_EQ(dump.Memory<std::uint64_t>(thread.Behind()), KnownThread::uBEHIND + 7);
  EXPECT_EQ(dump.Memory(s_variable), s_variable);
  EXPECT_EQ(dump.Memory<std::uint8_t>(readable.Touched()), 0x77);
  EXPECT_EQ(dump.Memory<std::uint8_t>(shared.Touched()), 0x77);
  EXPECT_EQ(forbidden.In(dump), 0U);
  const auto code = reinterpret_cast<const unsigned char*>(&DumpContentsOf);
  EXPECT_EQ(dump.Memory<std::uint8_t>(AddressOf(code)), *code);
}

// A page more or less the system may have thought of itself.
TEST(DumpMemory, PagesThatWereNeverTouchedAreLeftOut) {
  const Sparse sparse(64 * uMEGABYTE);
  for (const unsigned contents : {uPOLICY_2, uPOLICY_3}) {
    const DumpReader dump = DumpNow(contents);
    EXPECT_GE(sparse.In(dump), uPAGE);
    EXPECT_LT(sparse.In(dump), 8 * uMEGABYTE);  // a huge page and its neighbours
  }
}

TEST(DumpMemory, ABigHeapIsInTheBigDumpsOnly) {
  constexpr std::uint64_t uHEAP = 16 * uMEGABYTE;
  const std::unique_ptr<unsigned char[]> heap(new unsigned char[uHEAP]);
  for (std::uint64_t i = 0; i < uHEAP; ++i) heap[i] = static_cast<unsigned char>(i / uPAGE);
  EXPECT_LT(DumpNow(0).Size(), uMEGABYTE);
  EXPECT_LT(DumpNow(uPOLICY_1).Size(), 8 * uMEGABYTE);
  for (const unsigned contents : {uPOLICY_2, uPOLICY_3}) {
    const DumpReader dump = DumpNow(contents);
    EXPECT_GE(dump.Size(), uHEAP);
    ASSERT_TRUE(dump.HasMemory(AddressOf(&heap[0]), uHEAP));
    for (const std::uint64_t at : {std::uint64_t{0}, 5 * uPAGE + 17, uHEAP - 1})
      EXPECT_EQ(dump.Memory(heap[at]), heap[at]);
  }
}

TEST(DumpMemory, RangesDontOverlap) {
  const KnownThread thread("known", 7);
  for (const unsigned contents : {0U, uPOLICY_1, uPOLICY_2, uPOLICY_3}) {
    std::map<std::uint64_t, std::uint64_t> ranges;
    for (const DumpReader::Range& range : DumpNow(contents).Ranges()) {
      EXPECT_GT(range.m_uSize, 0U);
      EXPECT_TRUE(ranges.emplace(range.m_uStart, range.m_uStart + range.m_uSize).second);
    }
    std::uint64_t end = 0;
    for (const auto& range : ranges) {
      EXPECT_GE(range.first, end) << contents;
      end = range.second;
    }
  }
}

// --- The filter

// Plain words only: nothing may be allocated where it runs.
struct Seen {
  bool m_callbacks[32] = {};
  int m_iReferenced = 0;
  int m_iModules = 0;
  unsigned m_uRefused = ~0U;
};

bool Look(unsigned callback, unsigned& flags, void* parameter) {
  Seen& seen = *static_cast<Seen*>(parameter);
  if (callback < 32) seen.m_callbacks[callback] = true;
  if (callback == 0) {
    ++seen.m_iModules;
    if ((flags & 0x10U) != 0) ++seen.m_iReferenced;
  }
  return callback != seen.m_uRefused;
}

TEST(DumpFilter, IsAskedForThreadsAndModules) {
  const KnownThread thread("known");
  Seen seen;
  const DumpReader dump = DumpNow(0, nullptr, &Look, &seen);
  for (unsigned i = 0; i < 32; ++i) EXPECT_EQ(seen.m_callbacks[i], i == 0 || i == 1 || i == 3 || i == 4) << i;
  EXPECT_EQ(static_cast<std::size_t>(seen.m_iModules), dump.Modules().size());
  EXPECT_EQ(seen.m_iReferenced, 0);
}

TEST(DumpFilter, LeavesOutWhatItRefuses) {
  const KnownThread thread("known");
  for (const unsigned refused : {0U, 4U}) {
    Seen seen;
    seen.m_uRefused = refused;
    const DumpReader dump = DumpNow(0, nullptr, &Look, &seen);
    EXPECT_TRUE(dump.Modules().empty());
    EXPECT_GT(dump.Threads().size(), 1U);
  }
  for (const unsigned refused : {1U, 3U}) {
    Seen seen;
    seen.m_uRefused = refused;
    const DumpReader dump = DumpNow(0, nullptr, &Look, &seen);
    EXPECT_FALSE(dump.Modules().empty());
    EXPECT_EQ(dump.Threads().size(), 1U) << "the one that asks stays in";
  }
}

// Takes the flag away from everything of one kind.
struct Denied {
  unsigned m_uCallback;
  unsigned m_uFlag;
};

bool Deny(unsigned callback, unsigned& flags, void* parameter) {
  const Denied& denied = *static_cast<const Denied*>(parameter);
  if (callback == denied.m_uCallback) flags &= ~denied.m_uFlag;
  return true;
}

TEST(DumpFilter, LeavesOutWhatItTakesTheFlagsOf) {
  const KnownThread thread("known");
  Denied threads = {1, 0x1};
  EXPECT_EQ(DumpNow(0, nullptr, &Deny, &threads).Threads().size(), 1U);
  Denied modules = {0, 0x1};
  EXPECT_TRUE(DumpNow(0, nullptr, &Deny, &modules).Modules().empty());
  Denied buildIds = {0, 0x8};
  const std::vector<DumpReader::Module> without = DumpNow(0, nullptr, &Deny, &buildIds).Modules();
  EXPECT_GT(without.size(), 3U);
  for (const DumpReader::Module& module : without) EXPECT_EQ(module.m_sBuildId, "") << module.m_sName;
}

TEST(DumpFilter, ScanningTellsWhichModulesAreReferenced) {
  Seen seen;
  DumpNow(uPOLICY_1, nullptr, &Look, &seen);
  EXPECT_GT(seen.m_iReferenced, 0);
}

// --- The policies

std::set<std::string> NamesIn(const DumpReader& dump) {
  std::set<std::string> names;
  for (const DumpReader::Module& module : dump.Modules())
    names.insert(std::filesystem::path(module.m_sName).filename().string());
  return names;
}

DumpReader DumpBy(int policy) {
  const TemporaryFolder folder;
  const std::string name = folder.File("by.dmp");
  EXPECT_EQ(WriteDumpByPolicy(name.c_str(), nullptr, static_cast<EDumpPolicy>(policy)), 0);
  return ReadDump(name);
}

TEST(DumpPolicy, EachHasItsContents) {
  EXPECT_EQ(DumpContentsOf(eDUMP_NORMAL), 0U);
  EXPECT_EQ(DumpContentsOf(eDUMP_REFERENCED_MEMORY), 0x10U | 0x40U);
  EXPECT_EQ(DumpContentsOf(eDUMP_PRIVATE_MEMORY), 0x1U | 0x4U | 0x20U | 0x200U | 0x800U | 0x1000U);
  EXPECT_EQ(DumpContentsOf(eDUMP_FULL_MEMORY), 0x2U | 0x4U | 0x20U | 0x800U | 0x1000U);
}

TEST(DumpPolicy, AnyOtherValueIsTheNormalOne) {
  for (const int value : {-1, 4, 5, 1000})
    EXPECT_EQ(DumpContentsOf(static_cast<EDumpPolicy>(value)), 0U) << value;
}

TEST(DumpPolicy, ADumpTellsItsContents) {
  for (const int policy : {0, 1, 2, 3, 4})
    EXPECT_EQ(DumpBy(policy).Contents(), DumpContentsOf(static_cast<EDumpPolicy>(policy)));
}

TEST(DumpPolicy, TheFilterAnswersByTheKindOfQuestion) {
  for (const EDumpPolicy each :
       {eDUMP_NORMAL, eDUMP_REFERENCED_MEMORY, eDUMP_PRIVATE_MEMORY, eDUMP_FULL_MEMORY}) {
    EDumpPolicy policy = each;
    for (unsigned callback = 0; callback < 20; ++callback) {
      unsigned flags = 0xff;
      EXPECT_EQ(FilterDump(callback, flags, &policy), callback <= 4) << callback;
      EXPECT_EQ(flags, 0xffU);
    }
  }
}

TEST(DumpPolicy, OnlyReferencedMemoryLeavesOutModulesThatNothingPointsAt) {
  for (const EDumpPolicy each :
       {eDUMP_NORMAL, eDUMP_REFERENCED_MEMORY, eDUMP_PRIVATE_MEMORY, eDUMP_FULL_MEMORY}) {
    EDumpPolicy policy = each;
    unsigned without = 0x0f;
    unsigned with = 0x1f;
    EXPECT_TRUE(FilterDump(0, without, &policy));
    EXPECT_TRUE(FilterDump(0, with, &policy));
    EXPECT_EQ(without, each == eDUMP_REFERENCED_MEMORY ? 0x0eU : 0x0fU);
    EXPECT_EQ(with, 0x1fU);
  }
}

TEST(DumpPolicy, AModuleThatNothingPointsAtIsLeftOutOfTheSmallestUsefulDump) {
  // Loaded by a thread that is gone: no stack has a trace of it.
  std::thread([] { EXPECT_NE(::dlopen(UNUSED_LIBRARY, RTLD_NOW | RTLD_LOCAL), nullptr); }).join();
  // And by the first of the dumps: a dump in memory is full of such addresses.
  const std::string unused = std::filesystem::path(UNUSED_LIBRARY).filename().string();
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").filename().string();
  const std::set<std::string> names = NamesIn(DumpBy(1));
  EXPECT_EQ(names.count(unused), 0U);
  EXPECT_EQ(names.count(program), 1U);
  for (const int policy : {0, 2, 3}) {
    const std::set<std::string> all = NamesIn(DumpBy(policy));
    EXPECT_EQ(all.count(unused), 1U) << policy;
    EXPECT_EQ(all.count(program), 1U) << policy;
  }
}

}  // namespace
