// What every dump tells of the process: system, threads, modules, cause.
#include <cpuid.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/utsname.h>

#include <cstring>
#include <ctime>

#include "Dump/DumpScene.h"
#include "Dump/OpenFile.h"
#include "Platform/Linux/FaultContext.h"

namespace {

using namespace TestSupport;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr unsigned uLINUX = 0x47670000;
constexpr unsigned uREQUESTED = 0xffffffff;

unsigned ThisThread() { return static_cast<unsigned>(::syscall(SYS_gettid)); }

const std::set<std::uint32_t> s_always = {
    3,          4,          6,          7,          15,         16,         24,          uLINUX + 3,
    uLINUX + 4, uLINUX + 5, uLINUX + 6, uLINUX + 7, uLINUX + 8, uLINUX + 9, uLINUX + 10, uLINUX + 11};

std::set<std::uint32_t> With(std::set<std::uint32_t> types, const std::set<std::uint32_t>& more) {
  types.insert(more.begin(), more.end());
  return types;
}

TEST(DumpStreams, EachPolicyHasItsStreams) {
  EXPECT_EQ(DumpNow(0).Types(), With(s_always, {5}));
  EXPECT_EQ(DumpNow(uPOLICY_1).Types(), With(s_always, {5}));
  EXPECT_EQ(DumpNow(uPOLICY_2).Types(), With(s_always, {9, 12, 14, 17}));
  EXPECT_EQ(DumpNow(uPOLICY_3).Types(), With(s_always, {9, 12, 14, 17}));
}

TEST(DumpStreams, TheHeaderTellsTimeAndContents) {
  const auto before = static_cast<std::uint32_t>(std::time(nullptr));
  const DumpReader dump = DumpNow(uPOLICY_1);
  EXPECT_EQ(dump.Contents(), uPOLICY_1);
  EXPECT_GE(dump.Time(), before);
  EXPECT_LE(dump.Time(), before + 600);
}

TEST(DumpStreams, TheSystem) {
  const DumpReader dump = DumpNow(0);
  const std::uint64_t at = dump.Stream(7).m_uPosition;
  EXPECT_EQ(dump.Stream(7).m_uSize, 56U);
  EXPECT_EQ(dump.At<std::uint16_t>(at), 9);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 20), 0x8201U);
  cpu_set_t set;
  ASSERT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
  EXPECT_EQ(dump.At<std::uint8_t>(at + 6), CPU_COUNT(&set));
  utsname names;
  ASSERT_EQ(uname(&names), 0);
  EXPECT_EQ(dump.NarrowText(dump.At<std::uint32_t>(at + 24)),
            std::string(names.sysname) + " " + names.release + " " + names.version + " " + names.machine);
  EXPECT_EQ(
      std::to_string(dump.At<std::uint32_t>(at + 8)) + "." + std::to_string(dump.At<std::uint32_t>(at + 12)),
      std::string(names.release).substr(0, std::string(names.release).find_first_of(".-", 3)));
  unsigned a = 0, b = 0, c = 0, d = 0;
  ASSERT_NE(__get_cpuid(0, &a, &b, &c, &d), 0);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 32), b);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 36), d);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 40), c);
}

TEST(DumpStreams, TheProcessorIsToldByFamilyModelAndStepping) {
  const DumpReader dump = DumpNow(0);
  const std::uint64_t at = dump.Stream(7).m_uPosition;
  unsigned a = 0, b = 0, c = 0, d = 0;
  ASSERT_NE(__get_cpuid(1, &a, &b, &c, &d), 0);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 44), a);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 48), d);
  // As the system has them; its list of processors has one to a line.
  std::map<std::string, unsigned> facts;
  std::istringstream lines(dump.Bytes(uLINUX + 3));
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    const std::string name = line.substr(0, line.find_first_of("\t:"));
    if (name == "cpu family" || name == "model" || name == "stepping")
      facts[name] = static_cast<unsigned>(std::stoul(line.substr(line.find(':') + 1)));
  }
  ASSERT_EQ(facts.size(), 3U);
  EXPECT_EQ(dump.At<std::uint16_t>(at + 2), facts["cpu family"]);
  EXPECT_EQ(dump.At<std::uint16_t>(at + 4), facts["model"] * 256 + facts["stepping"]);
  ASSERT_NE(__get_cpuid(0x80000001U, &a, &b, &c, &d), 0);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 52), d);
  EXPECT_EQ(dump.At<std::uint8_t>(at + 7), 1) << "no server";
}

TEST(DumpStreams, TheProcess) {
  const DumpReader dump = DumpNow(0);
  const std::uint64_t at = dump.Stream(15).m_uPosition;
  EXPECT_EQ(dump.At<std::uint32_t>(at), 24U);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 4), 3U);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 8), static_cast<unsigned>(::getpid()));
  EXPECT_NEAR(dump.At<std::uint32_t>(at + 12), static_cast<double>(std::time(nullptr)), 300);
}

// In whole seconds.
TEST(DumpStreams, TimesOfTheProcess) {
  rusage before = {};
  for (volatile unsigned work = 0; before.ru_utime.tv_sec <= before.ru_stime.tv_sec; work = work + 1)
    if (work % 1000000 == 0) ::getrusage(RUSAGE_SELF, &before);
  const DumpReader dump = DumpNow(0);
  rusage after = {};
  ::getrusage(RUSAGE_SELF, &after);
  const std::uint64_t at = dump.Stream(15).m_uPosition;
  EXPECT_LE(before.ru_utime.tv_sec, dump.At<std::uint32_t>(at + 16));
  EXPECT_GE(after.ru_utime.tv_sec, dump.At<std::uint32_t>(at + 16));
  EXPECT_LE(before.ru_stime.tv_sec, dump.At<std::uint32_t>(at + 20));
  EXPECT_GE(after.ru_stime.tv_sec, dump.At<std::uint32_t>(at + 20));
}

TEST(DumpStreams, AllThreadsWithTheirNames) {
  const KnownThread one("channel 1", 1);
  const KnownThread two("\xC2\xB5m channel", 2);
  const DumpReader dump = DumpNow(0);
  std::set<std::uint32_t> ids;
  for (const DumpReader::Thread& thread : dump.Threads())
    EXPECT_TRUE(ids.insert(thread.m_uId).second) << thread.m_uId;
  EXPECT_EQ(ids, ThreadIds());
  EXPECT_EQ(dump.Threads().front().m_uId, ThisThread());
  EXPECT_EQ(dump.ThreadNames()[one.Id()], u"channel 1");
  EXPECT_EQ(dump.ThreadNames()[two.Id()], u"\u00B5m channel");
  EXPECT_EQ(dump.ThreadNames().size(), ids.size());
}

TEST(DumpStreams, EveryThreadHasItsStackFromThePointerOn) {
  const KnownThread one("channel 1", 1);
  const DumpReader dump = DumpNow(0);
  for (const DumpReader::Thread& thread : dump.Threads()) {
    const std::uint64_t pointer = thread.m_registers.m_general[4];
    EXPECT_EQ(thread.m_stack.m_uStart, (pointer - 128) / 16 * 16) << "what lies below is in use, too";
    EXPECT_TRUE(dump.HasMemory(thread.m_stack.m_uStart, thread.m_stack.m_uSize));
    EXPECT_EQ(dump.Text(thread.m_stack.m_uPosition, 8), dump.Text(thread.m_stack.m_uPosition, 8));
    EXPECT_EQ(dump.At<std::uint64_t>(thread.m_stack.m_uPosition),
              dump.Memory<std::uint64_t>(thread.m_stack.m_uStart));
  }
  const DumpReader::Range stack = dump.ThreadOf(one.Id()).m_stack;
  EXPECT_LT(stack.m_uStart, one.Mark());
  EXPECT_GT(stack.m_uStart + stack.m_uSize, one.Mark());
  EXPECT_EQ(dump.Memory<std::uint64_t>(one.Mark()), KnownThread::uMARK + 1);
}

// Runs on with registers that are known.
class Spinning {
 public:
  Spinning() : m_thread([this] { Run(); }) {
    Eventually([this] { return m_uId != 0; });
  }
  ~Spinning() {
    m_iEnd = 1;
    m_thread.join();
  }
  // Of the thread's own: the C library takes its address for the thread's handle.
  std::uint64_t Storage() { return m_thread.native_handle(); }

  std::atomic<unsigned> m_uId{0};

 private:
  void Run() {
    m_uId = ThisThread();
    asm volatile(
        "movq $0x1111, %%r12\n\tmovq $0x2222, %%r13\n\tmovq $0x3333, %%r14\n\tmovq $0x4444, %%r15\n\t"
        "movq $0x5555, %%rcx\n\tmovq $0x6666, %%rdx\n\tmovq $0x7777, %%rsi\n\tmovq $0x8888, %%rdi\n\t"
        "movq $0x9999, %%r8\n\tmovq $0xaaaa, %%r9\n\tmovq $0xbbbb, %%r10\n\tmovq $0xcccc, %%r11\n\t"
        "movq %%r12, %%xmm5\n"
        "1:\tpause\n\tcmpl $0, (%%rax)\n\tje 1b"
        :
        : "a"(&m_iEnd)
        : "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "rcx", "rdx", "rsi", "rdi", "xmm5", "memory",
          "cc");
  }

  std::atomic<int> m_iEnd{0};
  std::thread m_thread;
};

TEST(DumpStreams, TheRegistersOfARunningThread) {
  Spinning spinning;
  DumpReader::Registers registers;
  const auto spins = [&] {
    const DumpReader::Thread thread = DumpNow(0).ThreadOf(spinning.m_uId);
    registers = thread.m_registers;
    EXPECT_EQ(thread.m_uEnvironment, spinning.Storage());
    return registers.m_general[12] == 0x1111;
  };
  ASSERT_TRUE(Eventually(spins));
  const auto& general = registers.m_general;
  EXPECT_THAT(std::vector<std::uint64_t>(general + 8, general + 16),
              ElementsAre(0x9999, 0xaaaa, 0xbbbb, 0xcccc, 0x1111, 0x2222, 0x3333, 0x4444));
  EXPECT_EQ(general[1], 0x5555U);
  EXPECT_EQ(general[2], 0x6666U);
  EXPECT_EQ(general[6], 0x7777U);
  EXPECT_EQ(general[7], 0x8888U);
  EXPECT_EQ(registers.m_uFlags, 0x0010000fU);
  EXPECT_THAT(registers.m_segments, ElementsAre(0x33, 0, 0, 0, 0, 0x2b));
  EXPECT_EQ(registers.m_uFlagsRegister & 0x202U, 0x202U) << "interrupts, and a bit that is always set";
  EXPECT_EQ(registers.m_uMxcsr & 0x1f80U, 0x1f80U);
  std::uint64_t fifth = 0;
  std::memcpy(&fifth, registers.m_sFloating.data() + 160 + 16 * 5, sizeof fifth);
  EXPECT_EQ(fifth, 0x1111U);
}

struct Known {
  std::uint64_t m_uBase;
  std::uint64_t m_uEnd;
  std::string m_sName;
  std::string m_sBuildId;
};

int TakeModule(dl_phdr_info* info, size_t /*size*/, void* modules) {
  constexpr std::uint64_t uPAGE = 4096;
  Known known = {~0ULL, 0, info->dlpi_name, ""};
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = info->dlpi_phdr[i];
    const std::uint64_t start = info->dlpi_addr + segment.p_vaddr;
    if (segment.p_type == PT_LOAD) {
      known.m_uBase = std::min(known.m_uBase, start);
      known.m_uEnd = std::max(known.m_uEnd, (start + segment.p_memsz + uPAGE - 1) / uPAGE * uPAGE);
    }
    if (segment.p_type != PT_NOTE) continue;
    const char* at = reinterpret_cast<const char*>(info->dlpi_addr + segment.p_vaddr);
    const char* const end = at + segment.p_memsz;
    while (at < end) {
      const auto* const note = reinterpret_cast<const ElfW(Nhdr)*>(at);
      if (note->n_type == NT_GNU_BUILD_ID && note->n_namesz == 4)
        known.m_sBuildId.assign(at + sizeof *note + 4, note->n_descsz);
      at += sizeof *note + (note->n_namesz + 3) / 4 * 4 + (note->n_descsz + 3) / 4 * 4;
    }
  }
  static_cast<std::vector<Known>*>(modules)->push_back(known);
  return 0;
}

TEST(DumpStreams, AllModulesWithTheirBuildIds) {
  const std::vector<DumpReader::Module> modules = DumpNow(0).Modules();
  EXPECT_EQ(modules.front().m_sName, std::filesystem::read_symlink("/proc/self/exe").string());
  EXPECT_FALSE(modules.front().m_sBuildId.empty());
  std::vector<Known> known;
  dl_iterate_phdr(&TakeModule, &known);
  ASSERT_GT(known.size(), 3U);
  for (const Known& one : known) {
    const auto found = std::find_if(modules.begin(), modules.end(),
                                    [&](const auto& module) { return module.m_uBase == one.m_uBase; });
    ASSERT_NE(found, modules.end()) << one.m_sName;
    EXPECT_EQ(found->m_sBuildId, one.m_sBuildId) << one.m_sName;
    EXPECT_EQ(found->m_uSize, one.m_uEnd - one.m_uBase) << one.m_sName;
    if (!one.m_sName.empty() && one.m_sName.front() == '/') {
      EXPECT_TRUE(std::filesystem::equivalent(found->m_sName, one.m_sName)) << found->m_sName;
    }
  }
  EXPECT_EQ(modules.size(), known.size());
}

// The registers that a fault would have come with, and what the kernel had to say of it.
class Fault {
 public:
  Fault() {
    getcontext(&m_full);
    m_full.uc_mcontext.gregs[REG_EFL] = 0x246;
    m_full.uc_mcontext.gregs[REG_CSGSFS] = 0x2b005300630033;
    for (int i = 0; i < CONTEXT::iREGISTERS; ++i)
      m_context.m_registers[i] = 0x1000U + static_cast<unsigned>(i);
    m_context.m_registers[CONTEXT::iSTACK] = AddressOf(const_cast<const std::uint64_t*>(&m_mark));
    m_context.m_registers[CONTEXT::iPLACE] = AddressOf(reinterpret_cast<const void*>(&TakeModule)) + 1;
    m_context.m_pFull = &m_full;
    m_record.m_signal.si_signo = SIGBUS;
    m_record.m_signal.si_code = BUS_ADRERR;
    m_record.m_uCode = 0xC0000006;
    m_record.m_uPlace = m_context.m_registers[CONTEXT::iPLACE];
    m_record.m_bWrite = true;
    m_record.m_uTouched = 0x123456789abcULL;
  }
  const _EXCEPTION_POINTERS* Pointers() { return &m_pointers; }
  std::uint64_t Place() const { return m_record.m_uPlace; }

  volatile std::uint64_t m_mark = 0xfeedfacecafebeefULL;
  CONTEXT m_context = {};
  _EXCEPTION_RECORD m_record = {};

 private:
  ucontext_t m_full = {};
  _EXCEPTION_POINTERS m_pointers = {&m_record, &m_context};
};

TEST(DumpStreams, TheFault) {
  Fault fault;
  const DumpReader dump = DumpNow(0, fault.Pointers());
  const DumpReader::Exception exception = dump.TheException();
  EXPECT_EQ(exception.m_uThread, ThisThread());
  EXPECT_EQ(exception.m_uCode, static_cast<unsigned>(SIGBUS));
  EXPECT_EQ(exception.m_uFlags, static_cast<unsigned>(BUS_ADRERR));
  EXPECT_EQ(exception.m_uAddress, fault.Place());
  EXPECT_THAT(exception.m_parameters, ElementsAre(1, 0x123456789abcULL, 0xC0000006));
  EXPECT_EQ(dump.Memory<std::uint64_t>(AddressOf(const_cast<const std::uint64_t*>(&fault.m_mark))),
            0xfeedfacecafebeefULL);
}

TEST(DumpStreams, AFaultThatOnlyRead) {
  Fault fault;
  fault.m_record.m_bWrite = false;
  EXPECT_THAT(DumpNow(0, fault.Pointers()).TheException().m_parameters,
              ElementsAre(0, 0x123456789abcULL, 0xC0000006));
}

TEST(DumpStreams, TheRegistersOfTheFaultAreThoseOfItsThread) {
  Fault fault;
  const DumpReader dump = DumpNow(0, fault.Pointers());
  for (const DumpReader::Registers& registers :
       {dump.TheException().m_registers, dump.Threads().front().m_registers}) {
    // In the order of the file: rax rcx rdx rbx rsp rbp rsi rdi, which debug data numbers 0 2 1 3 7 6 4 5.
    EXPECT_THAT(std::vector<std::uint64_t>(registers.m_general, registers.m_general + 16),
                ElementsAre(0x1000, 0x1002, 0x1001, 0x1003,
                            AddressOf(const_cast<const std::uint64_t*>(&fault.m_mark)), 0x1006, 0x1004,
                            0x1005, 0x1008, 0x1009, 0x100a, 0x100b, 0x100c, 0x100d, 0x100e, 0x100f));
    EXPECT_EQ(registers.m_uPlace, fault.Place());
    EXPECT_EQ(registers.m_uFlags, 0x0010000fU);
    EXPECT_THAT(registers.m_segments, ElementsAre(0x33, 0, 0, 0x53, 0x63, 0x2b));
    EXPECT_EQ(registers.m_uFlagsRegister, 0x246U);
  }
}

TEST(DumpStreams, WithoutAFaultTheCallerIsShownAsItIs) {
  const volatile std::uint64_t mark = 0xdecafbadULL;
  const DumpReader dump = DumpNow(0);
  const DumpReader::Exception exception = dump.TheException();
  EXPECT_EQ(exception.m_uThread, ThisThread());
  EXPECT_EQ(exception.m_uCode, uREQUESTED);
  EXPECT_TRUE(exception.m_parameters.empty());
  EXPECT_LT(exception.m_registers.m_general[4], AddressOf(const_cast<const std::uint64_t*>(&mark)));
  EXPECT_EQ(dump.Memory<std::uint64_t>(AddressOf(const_cast<const std::uint64_t*>(&mark))), 0xdecafbadULL);
}

TEST(DumpStreams, ARecordMayLackItsRegisters) {
  Fault fault;
  const _EXCEPTION_POINTERS pointers = {&fault.m_record, nullptr};
  const DumpReader dump = DumpNow(0, &pointers);
  EXPECT_EQ(dump.TheException().m_uCode, static_cast<unsigned>(SIGBUS));
  EXPECT_GT(dump.Threads().front().m_stack.m_uSize, 0U);
}

std::string File(const char* name) { return ReadFile(name); }

TEST(DumpStreams, TheSystemsTexts) {
  const DumpReader dump = DumpNow(0);
  EXPECT_EQ(dump.Bytes(uLINUX + 6), File("/proc/self/cmdline"));
  EXPECT_EQ(dump.Bytes(uLINUX + 7), File("/proc/self/environ"));
  EXPECT_EQ(dump.Bytes(uLINUX + 8), File("/proc/self/auxv"));
  EXPECT_THAT(dump.Bytes(uLINUX + 3), HasSubstr("model name"));
  EXPECT_THAT(dump.Bytes(uLINUX + 4), HasSubstr("\nPid:\t" + std::to_string(::getpid()) + "\n"));
  EXPECT_EQ(dump.Bytes(uLINUX + 5), File("/etc/os-release"));
  EXPECT_THAT(dump.Bytes(uLINUX + 9),
              HasSubstr(std::filesystem::read_symlink("/proc/self/exe").string() + "\n"));
  EXPECT_EQ(std::stoi(dump.Bytes(uLINUX + 11)), ::getpid());
}

TEST(DumpStreams, TheListOfTheDynamicLinker) {
  const DumpReader dump = DumpNow(0);
  const std::uint64_t at = dump.Stream(uLINUX + 10).m_uPosition;
  EXPECT_EQ(dump.At<std::uint32_t>(at), 1U);
  const std::uint32_t count = dump.At<std::uint32_t>(at + 8);
  std::uint64_t entry = dump.At<std::uint32_t>(at + 4);
  std::uint32_t expected = 0;
  for (const link_map* map = _r_debug.r_map; map != nullptr; map = map->l_next, ++expected, entry += 20) {
    EXPECT_EQ(dump.At<std::uint64_t>(entry), map->l_addr);
    EXPECT_EQ(dump.NarrowText(dump.At<std::uint32_t>(entry + 8)), map->l_name);
    EXPECT_EQ(dump.At<std::uint64_t>(entry + 12), AddressOf(map->l_ld));
  }
  EXPECT_EQ(count, expected);
  EXPECT_EQ(dump.At<std::uint64_t>(at + 20), _r_debug.r_ldbase);
  EXPECT_EQ(dump.At<std::uint64_t>(at + 28), AddressOf(_r_debug.r_map->l_ld));
  const char* const dynamic = reinterpret_cast<const char*>(_r_debug.r_map->l_ld);
  std::size_t bytes = 0;
  for (const ElfW(Dyn)* part = _r_debug.r_map->l_ld; bytes == 0 || part[-1].d_tag != DT_NULL; ++part)
    bytes += sizeof *part;
  ASSERT_GE(dump.Stream(uLINUX + 10).m_uSize, 36 + bytes);
  EXPECT_EQ(dump.Text(at + 36, bytes), std::string(dynamic, bytes));
}

TEST(DumpStreams, RegionsAreThoseOfTheSystemsTable) {
  const DumpReader dump = DumpNow(0);
  std::istringstream table(dump.Bytes(uLINUX + 9));
  const std::vector<DumpReader::Region> regions = dump.Regions();
  std::size_t at = 0;
  for (std::string line; std::getline(table, line); ++at) {
    ASSERT_LT(at, regions.size());
    const std::uint64_t start = std::stoull(line, nullptr, 16);
    const std::uint64_t end = std::stoull(line.substr(line.find('-') + 1), nullptr, 16);
    EXPECT_EQ(regions[at].m_uBase, start);
    EXPECT_EQ(regions[at].m_uAllocation, start);
    EXPECT_EQ(regions[at].m_uAllocationProtection, regions[at].m_uProtection);
    EXPECT_EQ(regions[at].m_uSize, end - start);
    const std::string rights = line.substr(line.find(' ') + 1, 4);
    if (rights == "rw-p") {
      EXPECT_EQ(regions[at].m_uProtection, 0x04U);
    }
    if (rights == "r-xp") {
      EXPECT_EQ(regions[at].m_uProtection, 0x20U);
    }
    const unsigned own = line.find(" /") != std::string::npos ? 0x1000000U : 0x20000U;
    EXPECT_EQ(regions[at].m_uType, rights[3] == 's' ? 0x40000U : own) << line;
    EXPECT_EQ(regions[at].m_uState, rights.substr(0, 3) == "---" ? 0x2000U : 0x1000U);
  }
  EXPECT_EQ(at, regions.size());
}

TEST(DumpStreams, RegionsHaveTheProtectionsOfTheFormat) {
  struct {
    int m_iRights;
    unsigned m_uProtection;
    void* m_pMemory;
  } regions[] = {{PROT_NONE, 0x01, nullptr},
                 {PROT_READ, 0x02, nullptr},
                 {PROT_WRITE, 0x04, nullptr},
                 {PROT_READ | PROT_WRITE, 0x04, nullptr},
                 {PROT_EXEC, 0x10, nullptr},
                 {PROT_READ | PROT_EXEC, 0x20, nullptr},
                 {PROT_WRITE | PROT_EXEC, 0x40, nullptr},
                 {PROT_READ | PROT_WRITE | PROT_EXEC, 0x40, nullptr}};
  for (auto& region : regions)
    region.m_pMemory = ::mmap(nullptr, 4096, region.m_iRights, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  const DumpReader dump = DumpNow(0);
  for (const auto& region : regions) {
    const std::uint64_t address = AddressOf(region.m_pMemory);
    ::munmap(region.m_pMemory, 4096);
    const auto all = dump.Regions();
    const auto found = std::find_if(all.begin(), all.end(), [address](const DumpReader::Region& one) {
      return one.m_uBase <= address && address < one.m_uBase + one.m_uSize;
    });
    ASSERT_NE(found, all.end()) << region.m_iRights;
    EXPECT_EQ(found->m_uProtection, region.m_uProtection) << region.m_iRights;
  }
}

TEST(DumpStreams, OpenFilesOnlyWhereTheyAreAskedFor) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("measured.txt", "1");
  const int handle = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  int ends[2] = {};
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const DumpReader dump = DumpNow(uPOLICY_2);
  for (const int open : {handle, ends[0], ends[1]}) ::close(open);
  const std::uint64_t at = dump.Stream(12).m_uPosition;
  std::map<std::uint64_t, std::string> names;
  for (std::uint64_t i = 0; i < dump.At<std::uint32_t>(at + 8); ++i) {
    const std::uint64_t entry = at + 16 + 32 * i;
    const std::string target = dump.NarrowText(dump.At<std::uint32_t>(entry + 12));
    EXPECT_TRUE(names.emplace(dump.At<std::uint64_t>(entry), target).second) << target;
    EXPECT_EQ(dump.NarrowText(dump.At<std::uint32_t>(entry + 8)), target.front() == '/' ? "File" : "Other");
  }
  EXPECT_EQ(names[static_cast<unsigned>(handle)], name);
  EXPECT_EQ(names[static_cast<unsigned>(ends[0])].substr(0, 6), "pipe:[");
}

TEST(DumpStreams, OfVeryManyOpenFilesTheFirst) {
  constexpr std::uint32_t uMOST = 4096;
  std::vector<std::unique_ptr<OpenFile>> files;
  for (std::uint32_t i = 0; i < uMOST + 10; ++i) {
    files.push_back(std::make_unique<OpenFile>("/dev/null"));
    if (files.back()->Get() < 0) GTEST_SKIP() << "the system gives no more";
  }
  const DumpReader dump = DumpNow(Platform::eDUMP_WITH_HANDLE_DATA);
  const std::uint64_t at = dump.Stream(12).m_uPosition;
  EXPECT_EQ(dump.At<std::uint32_t>(at + 8), uMOST);
  EXPECT_EQ(dump.Stream(12).m_uSize, 16 + 32 * uMOST);
  EXPECT_EQ(dump.At<std::uint64_t>(at + 16 + 32 * (uMOST - 1)), std::uint64_t{uMOST - 1});
}

// Of this thread, in units of 100 ns: in its own code, and in the system's.
std::pair<std::uint64_t, std::uint64_t> TimesNow() {
  const std::string all = ReadFile("/proc/thread-self/stat");
  std::istringstream stat(all.substr(all.rfind(')') + 1));
  std::string word;
  for (int i = 0; i < 11; ++i) stat >> word;
  std::uint64_t user = 0;
  std::uint64_t kernel = 0;
  stat >> user >> kernel;
  return {user * 100000, kernel * 100000};
}

TEST(DumpStreams, TimesOfThreads) {
  pthread_setname_np(pthread_self(), "a) S 1 (2) 3");  // a name may have everything
  while (TimesNow().first == 0 || TimesNow().second == 0) {
  }
  const auto before = TimesNow();
  const DumpReader dump = DumpNow(uPOLICY_3);
  const auto after = TimesNow();
  const std::uint64_t at = dump.Stream(17).m_uPosition;
  EXPECT_EQ(dump.At<std::uint32_t>(at), 12U);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 4), 64U);
  EXPECT_EQ(dump.At<std::uint32_t>(at + 8), dump.Threads().size());
  EXPECT_EQ(dump.At<std::uint32_t>(at + 12), ThisThread());
  const std::uint64_t kernel = dump.At<std::uint64_t>(at + 12 + 32);
  const std::uint64_t user = dump.At<std::uint64_t>(at + 12 + 40);
  EXPECT_LE(before.first, user);
  EXPECT_GE(after.first, user);
  EXPECT_LE(before.second, kernel);
  EXPECT_GE(after.second, kernel);
  const std::uint64_t unloaded = dump.Stream(14).m_uPosition;
  EXPECT_EQ(dump.Stream(14).m_uSize, 12U);
  EXPECT_EQ(dump.At<std::uint32_t>(unloaded), 12U);
  EXPECT_EQ(dump.At<std::uint32_t>(unloaded + 4), 24U);
  EXPECT_EQ(dump.At<std::uint32_t>(unloaded + 8), 0U);
}

}  // namespace
