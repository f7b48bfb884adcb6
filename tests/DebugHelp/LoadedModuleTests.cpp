// What is told of a module by its parts in memory, and which files may hold its debug data.
#include <gtest/gtest.h>

#if __has_include(<elfutils/libdw.h>)

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "Platform/Linux/DwDebugFiles.h"
#include "Platform/Linux/SymbolizedModule.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core::Platform;
using Bytes = std::vector<unsigned char>;

ElfW(Phdr)
    Part(unsigned type, std::uint64_t address, std::uint64_t offset, std::uint64_t size, unsigned flags) {
  ElfW(Phdr) part = {};
  part.p_type = type;
  part.p_vaddr = address;
  part.p_offset = offset;
  part.p_filesz = size;
  part.p_memsz = size;
  part.p_flags = flags;
  return part;
}

LoadedModule DescribeParts(const std::vector<ElfW(Phdr)>& parts, std::uint64_t bias = 0) {
  dl_phdr_info info = {};
  info.dlpi_addr = bias;
  info.dlpi_name = "module.so";
  info.dlpi_phdr = parts.data();
  info.dlpi_phnum = static_cast<ElfW(Half)>(parts.size());
  return Describe(info);
}

TEST(LoadedModuleParts, GiveItsBounds) {
  const LoadedModule module = DescribeParts(
      {Part(PT_LOAD, 0x1000, 0, 0x800, PF_R), Part(PT_LOAD, 0x2000, 0x1000, 0x100, PF_R | PF_X),
       Part(PT_LOAD, 0x3000, 0x2000, 0x200, PF_R | PF_X), Part(PT_LOAD, 0x5000, 0x3000, 0x300, PF_R | PF_W),
       Part(PT_DYNAMIC, 0x9000, 0x9000, 0x300, PF_R)},
      0x10000);
  EXPECT_EQ(0x10000u, module.m_uBias);
  EXPECT_EQ(0x11000u, module.m_uBegin);
  EXPECT_EQ(0x15300u, module.m_uEnd);
  EXPECT_EQ(0x12000u, module.m_uCodeBegin);
  EXPECT_EQ(0x13200u, module.m_uCodeEnd);
  EXPECT_EQ(0x2200u, module.m_uImage) << "the last part lies elsewhere than in the file";
}

TEST(LoadedModuleParts, AreAnImageWhereTheyBeginWithTheHeader) {
  EXPECT_EQ(0u, DescribeParts({Part(PT_LOAD, 0x1000, 0x1000, 0x800, PF_R)}).m_uImage);
  EXPECT_EQ(0u, DescribeParts({Part(PT_LOAD, 0x1000, 0, 0x800, PF_X)}).m_uImage);
  EXPECT_EQ(0x800u, DescribeParts({Part(PT_LOAD, 0x1000, 0, 0x800, PF_R)}).m_uImage);
}

// A note: the lengths of its owner and its content, its type, and both of these.
Bytes Note(const std::string& owner, unsigned type, std::size_t size) {
  Bytes bytes(12);
  const std::uint32_t header[] = {static_cast<std::uint32_t>(owner.size()), static_cast<std::uint32_t>(size),
                                  type};
  std::memcpy(bytes.data(), header, sizeof header);
  bytes.insert(bytes.end(), owner.begin(), owner.end());
  bytes.resize((bytes.size() + 3) / 4 * 4);
  bytes.resize(bytes.size() + (size + 3) / 4 * 4, 7);
  return bytes;
}

const std::string sOWNER("GNU\0", 4);

Bytes IdIn(const Bytes& notes, std::size_t size) {
  const std::uint64_t address = reinterpret_cast<std::uintptr_t>(notes.data());
  return DescribeParts({Part(PT_NOTE, address, 0, size, PF_R)}).m_id;
}

Bytes IdIn(const Bytes& notes) { return IdIn(notes, notes.size()); }

TEST(LoadedModuleId, IsTheContentOfItsNote) {
  EXPECT_EQ(Bytes(20, 7), IdIn(Note(sOWNER, NT_GNU_BUILD_ID, 20)));
  EXPECT_EQ(Bytes(5, 7), IdIn(Note(sOWNER, NT_GNU_BUILD_ID, 5)));
  EXPECT_EQ(Bytes(), IdIn(Note(sOWNER, NT_GNU_ABI_TAG, 20)));
  EXPECT_EQ(Bytes(), IdIn(Note(std::string("GNV\0", 4), NT_GNU_BUILD_ID, 20)));
  EXPECT_EQ(Bytes(), IdIn(Note(std::string("GNU\0\0", 5), NT_GNU_BUILD_ID, 20)));
}

TEST(LoadedModuleId, StandsBehindOtherNotesToo) {
  Bytes notes = Note("Others", 3, 9);
  const Bytes own = Note(sOWNER, NT_GNU_BUILD_ID, 20);
  notes.insert(notes.end(), own.begin(), own.end());
  EXPECT_EQ(Bytes(20, 7), IdIn(notes));
  EXPECT_EQ(Bytes(), IdIn(notes, notes.size() - 1)) << "it doesn't end";
  EXPECT_EQ(Bytes(), IdIn(notes, notes.size() - 21));
}

TEST(LoadedModuleIdentity, IsAllThatIsKnownOfIt) {
  const LoadedModule module = {1, 2, 3, 0, 0, 0, "file", {4, 5}};
  const auto differs = [&](auto change) {
    LoadedModule other = module;
    change(other);
    return !module.IsSameAs(other);
  };
  EXPECT_FALSE(differs([](LoadedModule&) {}));
  EXPECT_TRUE(differs([](LoadedModule& other) { other.m_uBias = 9; }));
  EXPECT_TRUE(differs([](LoadedModule& other) { other.m_uBegin = 9; }));
  EXPECT_TRUE(differs([](LoadedModule& other) { other.m_uEnd = 9; }));
  EXPECT_TRUE(differs([](LoadedModule& other) { other.m_sFile = "other"; }));
  EXPECT_TRUE(differs([](LoadedModule& other) { other.m_id = {4, 6}; }));
}

TEST(LoadedModuleName, IsThatOfTheFileWithoutTheRest) {
  const Dw dw;
  const auto name = [&](const std::string& file) {
    LoadedModule loaded;
    loaded.m_sFile = file;
    return SymbolizedModule(dw, loaded, {}).GetName();
  };
  EXPECT_EQ("libone", name("/lib/libone.so"));
  EXPECT_EQ("libone", name("libone.so.1.2"));
  EXPECT_EQ("lib.sound", name("/lib.so/lib.sound.so.2"));
  EXPECT_EQ("lib.sound", name("lib.sound"));
  EXPECT_EQ("program", name("/bin/program"));
}

TEST(DebugFolders, AreGivenOnceEachAndWithoutTheirEnd) {
  using Folders = std::vector<std::string>;
  EXPECT_EQ((Folders{"/a", "/b", "/", "."}), DebugFiles::Split("/a/;/b//;;/;/a;.;./;/b"));
  EXPECT_EQ(Folders{}, DebugFiles::Split(""));
  EXPECT_EQ(Folders{}, DebugFiles::Split(";;"));
}

// A module that lies in a folder of its own, and files that may belong to it.
class DebugFileSearch : public testing::Test {
 protected:
  // The name of the file that is found; empty if none is.
  std::string Find(const Bytes& id, const char* link, std::uint32_t checksum = 0,
                   const std::string& module = "module.so") {
    LoadedModule loaded;
    loaded.m_sFile = m_folder.File(module);
    loaded.m_id = id;
    const std::vector<std::string> folders{m_folder.File("store")};
    SymbolizedModule owner(m_dw, loaded, folders);
    void* pOwner = &owner;
    char* found = nullptr;
    const int file = DebugFiles::Find(nullptr, &pOwner, "", 0, "", link, checksum, &found);
    if (file < 0) return std::string();
    ::close(file);
    const std::string name = found;
    std::free(found);
    return name.substr(m_folder.Path().size() + 1);
  }

  void MakeFolder(const std::string& name) { ASSERT_EQ(0, ::mkdir(m_folder.File(name).c_str(), 0700)); }

  static constexpr std::uint32_t uSUM = 0xCBF43926;  // of the digits from 1 to 9

  const TestSupport::TemporaryFolder m_folder;
  Dw m_dw;
};

TEST_F(DebugFileSearch, ByLinkTakesWhatHasTheSum) {
  m_folder.Write("module.debug", "123456789");
  EXPECT_EQ("module.debug", Find({}, "module.debug", uSUM));
  EXPECT_EQ("", Find({}, "module.debug", uSUM + 1));
  EXPECT_EQ("", Find({}, nullptr, uSUM));
  EXPECT_EQ("", Find({}, "other.debug", uSUM));
}

TEST_F(DebugFileSearch, ByLinkSumsUpTheWholeFile) {
  m_folder.Write("module.debug", std::string(200000, 'a'));
  EXPECT_EQ("module.debug", Find({}, "module.debug", 0xE069539B));
}

TEST_F(DebugFileSearch, ByLinkPassesOverTheModuleItselfAndFolders) {
  m_folder.Write("module.so", "123456789");
  EXPECT_EQ("", Find({}, "module.so", uSUM));
  MakeFolder("store");
  m_folder.Write("store/module.so", "123456789");
  EXPECT_EQ("store/module.so", Find({}, "module.so", uSUM));
  MakeFolder("module.debug");
  m_folder.Write("store/module.debug", "123456789");
  EXPECT_EQ("store/module.debug", Find({}, "module.debug", uSUM));
}

TEST_F(DebugFileSearch, ByIdTakesTheFileOfThatName) {
  for (const char* const name : {"store", "store/.build-id", "store/.build-id/ab"}) MakeFolder(name);
  m_folder.Write("store/.build-id/ab/cd01.debug", "");
  EXPECT_EQ("store/.build-id/ab/cd01.debug", Find({0xab, 0xcd, 0x01}, nullptr));
  EXPECT_EQ("", Find({0xab, 0xcd, 0x02}, nullptr));
  EXPECT_EQ("", Find({0xab}, nullptr));
  MakeFolder("store/.build-id/ab/ef.debug");
  EXPECT_EQ("", Find({0xab, 0xef}, nullptr)) << "a folder";
}

TEST_F(DebugFileSearch, OfTheCLibraryTakesNothing) {
  m_folder.Write("module.debug", "123456789");
  for (const char* const name : {"libc.so.6", "libm.so.6", "ld-linux-x86-64.so.2", "libpthread.so.0"})
    EXPECT_EQ("", Find({}, "module.debug", uSUM, name)) << name;
  EXPECT_EQ("module.debug", Find({}, "module.debug", uSUM, "libcc.so"));
}

TEST_F(DebugFileSearch, ByLinkTakesNoFileOfAnotherId) {
  void* const library = ::dlopen("libdw.so.1", RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) GTEST_SKIP() << "libdw isn't there";
  FindFunctions(m_dw, library);
  m_dw.elf_version(EV_CURRENT);
  const int file = ::open(VICTIM, O_RDONLY | O_CLOEXEC);
  Elf* const elf = m_dw.elf_begin(file, ELF_C_READ_MMAP, nullptr);
  const void* bytes = nullptr;
  const ssize_t size = m_dw.dwelf_elf_gnu_build_id(elf, &bytes);
  ASSERT_LT(2, size);
  const auto* const first = static_cast<const unsigned char*>(bytes);
  Bytes id(first, first + size);
  m_dw.elf_end(elf);
  ::close(file);
  ASSERT_EQ(0, ::symlink(VICTIM, m_folder.File("module.debug").c_str()));
  EXPECT_EQ("module.debug", Find(id, "module.debug"));
  ++id.back();
  EXPECT_EQ("", Find(id, "module.debug"));
  id.pop_back();
  EXPECT_EQ("", Find(id, "module.debug"));
  m_folder.Write("module.debug2", "no such format");
  EXPECT_EQ("", Find(id, "module.debug2"));
  m_dw = Dw();
  ::dlclose(library);
}

}  // namespace

#endif
