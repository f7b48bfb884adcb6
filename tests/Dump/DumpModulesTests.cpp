// Modules that lie in memory as no linker of ours lays them out.
#include "Platform/Linux/DumpModules.h"

#include <elf.h>
#include <gmock/gmock.h>
#include <link.h>
#include <sys/mman.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "Dump/OpenFile.h"
#include "Platform/Linux/DumpFormat.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core::Platform;
using testing::ElementsAre;
using TestSupport::OpenFile;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

constexpr std::uint64_t uPAGE = 4096;
constexpr std::uint64_t uBASE = 0x400000;  // what the module was linked for

DumpMaps s_maps;
DumpModules s_modules;

std::string Note(std::uint32_t type, const std::string& owner, const std::string& content) {
  const ElfW(Nhdr)
      head = {static_cast<ElfW(Word)>(owner.size()), static_cast<ElfW(Word)>(content.size()), type};
  std::string note(reinterpret_cast<const char*>(&head), sizeof head);
  for (const std::string& part : {owner, content}) {
    note += part;
    note.append((4 - part.size() % 4) % 4, '\0');
  }
  return note;
}

// The first page of a file that is mapped for an address that isn't where it lies, with four pages and a byte behind.
std::string FirstPage(const std::string& notes) {
  constexpr std::size_t uNOTES = 0x200;
  ElfW(Ehdr) head = {};
  std::memcpy(head.e_ident, ELFMAG, SELFMAG);
  head.e_phoff = sizeof head;
  head.e_phentsize = sizeof(ElfW(Phdr));
  head.e_phnum = 2;
  ElfW(Phdr) segments[2] = {};
  segments[0].p_type = PT_LOAD;
  segments[0].p_vaddr = uBASE;
  segments[0].p_filesz = uPAGE;
  segments[0].p_memsz = 5 * uPAGE + 1;
  segments[1].p_type = PT_NOTE;
  segments[1].p_vaddr = uBASE + uNOTES;
  segments[1].p_memsz = notes.size();
  std::string page(uPAGE, '\0');
  std::memcpy(page.data(), &head, sizeof head);
  std::memcpy(page.data() + sizeof head, segments, sizeof segments);
  std::memcpy(page.data() + uNOTES, notes.data(), notes.size());
  return page;
}

// Below the program and all that it has loaded, which the real table tells of.
class DumpModulesTests : public testing::Test {
 protected:
  DumpModulesTests() : m_pMemory(Take()) {}
  ~DumpModulesTests() override { ::munmap(m_pMemory, uSIZE); }
  void SetUp() override {
    if (m_pMemory == MAP_FAILED) GTEST_SKIP() << "there is no memory to be had so low";
  }

  // As mapped at a page of ours.
  void Put(std::size_t page, const std::string& content, const std::string& name,
           const std::string& offset = "00000000") {
    std::memcpy(static_cast<char*>(m_pMemory) + page * uPAGE, content.data(), content.size());
    char range[64];
    std::snprintf(range, sizeof range, "%lx-%lx r--p ", At(page), At(page + 1));
    m_sTable += range + offset + " fe:01 1312   " + name + '\n';
  }
  std::uint64_t At(std::size_t page) const {
    return reinterpret_cast<std::uint64_t>(m_pMemory) + page * uPAGE;
  }

  void Read() const {
    const TemporaryFolder folder;
    s_maps.Read(OpenFile(folder.Write("maps", m_sTable + ReadFile("/proc/self/maps"))).Get());
    s_modules.Read(s_maps);
  }

  // Of those that are ours.
  static std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const DumpModule& module : s_modules)
      if (std::strncmp(module.m_sName, "/ours/", 6) == 0) names.emplace_back(module.m_sName);
    return names;
  }
  static DumpModule& Module(const std::string& name) {
    for (DumpModule& module : s_modules)
      if (module.m_sName == name) return module;
    ADD_FAILURE() << name;
    return *s_modules.begin();
  }
  static bool IsReferenced(const DumpModule& module) {
    return (module.m_uFlags & Minidump::eMODULE_REFERENCED_BY_MEMORY) != 0;
  }

 private:
  static constexpr std::size_t uSIZE = 64 * uPAGE;
  static void* Take() {
    return ::mmap(reinterpret_cast<void*>(0x10000000), uSIZE, PROT_READ | PROT_WRITE,
                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  }

  void* m_pMemory;
  std::string m_sTable;
};

TEST_F(DumpModulesTests, AreFoundWhereverTheyWereLinkedFor) {
  const std::string id = "\x01\x02 twenty bytes of id";
  Put(0,
      FirstPage(Note(1, std::string("odd!\0", 5), "abc") +
                Note(NT_GNU_BUILD_ID, std::string("XYZ\0", 4), "no") +
                Note(NT_GNU_BUILD_ID, std::string("GNU\0", 4), id)),
      "/ours/one");
  Read();
  const DumpModule& module = Module("/ours/one");
  EXPECT_EQ(module.m_uBase, At(0));
  EXPECT_EQ(module.m_uEnd, At(6));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(module.m_buildId), module.m_uBuildIdSize), id);
}

TEST_F(DumpModulesTests, AreFilesThatBeginAsOne) {
  std::string other = FirstPage("");
  other[0] = 'x';
  Put(0, other, "/ours/other");
  Put(1, FirstPage(""), "/ours/inside", "00001000");
  Put(2, FirstPage(""), "/ours/module");
  Put(3, FirstPage(""), "[anon: ours]");
  Read();
  EXPECT_THAT(Names(), ElementsAre("/ours/module"));
}

TEST_F(DumpModulesTests, TheProgramIsTheFirstWhateverLiesBelow) {
  Put(0, FirstPage(""), "/ours/low");
  Put(10, FirstPage(""), "/ours/high");
  Read();
  EXPECT_EQ(s_modules.begin()->m_sName, std::filesystem::read_symlink("/proc/self/exe").string());
  EXPECT_THAT(Names(), ElementsAre("/ours/low", "/ours/high"));
  s_modules.Reference(At(0) - 1);
  s_modules.Reference(At(6));
  s_modules.Reference(At(15) + uPAGE);
  EXPECT_FALSE(IsReferenced(Module("/ours/low")));
  EXPECT_FALSE(IsReferenced(Module("/ours/high")));
  s_modules.Reference(At(6) - 1);
  EXPECT_TRUE(IsReferenced(Module("/ours/low")));
  EXPECT_FALSE(IsReferenced(Module("/ours/high")));
  s_modules.Reference(At(10));
  EXPECT_TRUE(IsReferenced(Module("/ours/high")));
  EXPECT_FALSE(IsReferenced(*s_modules.begin()));
  s_modules.Reference(s_modules.begin()->m_uBase);
  EXPECT_TRUE(IsReferenced(*s_modules.begin()));
}

}  // namespace
