#include "Platform/Linux/DumpModules.h"

#if defined(__x86_64__)

#include <elf.h>
#include <link.h>
#include <string.h>
#include <sys/auxv.h>

#include <algorithm>

#include "Platform/Linux/DumpFormat.h"
#include "Platform/Linux/SafeMemory.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t uPAGE = 4096;
constexpr int iMOST_SEGMENTS = 128;
constexpr int iMOST_MODULES = 4096;
constexpr std::size_t uLOADER_NAMES = 65536;

// Names that come from the dynamic linker's list and not from the mappings.
char s_names[uLOADER_NAMES];

bool ReadHeader(std::uint64_t base, ElfW(Ehdr) & header) noexcept {
  return ReadSafely(base, &header, sizeof header) && memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
         header.e_phentsize == sizeof(ElfW(Phdr));
}

// One note: true if it is the build id, which is then in `module`.
bool TakeNote(std::uint64_t at, const ElfW(Nhdr) & note, DumpModule& module) noexcept {
  char owner[4] = {};
  if (note.n_type != NT_GNU_BUILD_ID || note.n_namesz != sizeof owner) return false;
  if (!ReadSafely(at + sizeof note, owner, sizeof owner) || memcmp(owner, "GNU", sizeof owner) != 0)
    return false;
  const std::size_t size = std::min<std::size_t>(note.n_descsz, DumpModule::uBUILD_ID);
  if (!ReadSafely(at + sizeof note + sizeof owner, module.m_buildId, size)) return false;
  module.m_uBuildIdSize = static_cast<std::uint8_t>(size);
  return true;
}

void FindBuildId(std::uint64_t at, std::uint64_t size, DumpModule& module) noexcept {
  constexpr std::uint64_t uMOST = 65536;
  const std::uint64_t end = at + std::min(size, uMOST);
  ElfW(Nhdr) note;
  while (at + sizeof note <= end && ReadSafely(at, &note, sizeof note)) {
    if (TakeNote(at, note, module)) return;
    at += sizeof note + ((note.n_namesz + 3ULL) & ~3ULL) + ((note.n_descsz + 3ULL) & ~3ULL);
  }
}

struct Segments {
  ElfW(Phdr) m_headers[iMOST_SEGMENTS];
  int m_iCount;
};
Segments s_segments;

bool ReadSegments(std::uint64_t base, const ElfW(Ehdr) & header) noexcept {
  s_segments.m_iCount = std::min<int>(header.e_phnum, iMOST_SEGMENTS);
  return ReadSafely(base + header.e_phoff, s_segments.m_headers,
                    static_cast<std::size_t>(s_segments.m_iCount) * sizeof(ElfW(Phdr)));
}

// Where the file's first byte would lie, less where it lies.
std::uint64_t BiasOf(std::uint64_t base) noexcept {
  for (int i = 0; i < s_segments.m_iCount; ++i) {
    const ElfW(Phdr)& segment = s_segments.m_headers[i];
    if (segment.p_type == PT_LOAD) return base - (segment.p_vaddr - segment.p_offset) / uPAGE * uPAGE;
  }
  return base;
}

// Completes a module of which only the base is known; false if no module lies there.
bool Complete(DumpModule& module) noexcept {
  ElfW(Ehdr) header;
  if (!ReadHeader(module.m_uBase, header) || !ReadSegments(module.m_uBase, header)) return false;
  const std::uint64_t bias = BiasOf(module.m_uBase);
  module.m_uEnd = module.m_uBase + uPAGE;
  for (int i = 0; i < s_segments.m_iCount; ++i) {
    const ElfW(Phdr)& segment = s_segments.m_headers[i];
    const std::uint64_t start = bias + segment.p_vaddr;
    if (segment.p_type == PT_LOAD)
      module.m_uEnd = std::max(module.m_uEnd, (start + segment.p_memsz + uPAGE - 1) / uPAGE * uPAGE);
    if (segment.p_type == PT_NOTE && module.m_uBuildIdSize == 0) FindBuildId(start, segment.p_memsz, module);
  }
  return true;
}

bool IsBefore(const DumpModule* one, const DumpModule* other) noexcept {
  return one->m_uBase < other->m_uBase;
}

}  // namespace

DumpLoader FindDumpLoader() noexcept {
  return {reinterpret_cast<std::uint64_t>(_r_debug.r_map), _r_debug.r_ldbase};
}

bool ReadLoaderEntry(std::uint64_t address, DumpLoaderEntry& entry) noexcept {
  link_map map;
  constexpr std::size_t uPUBLIC = offsetof(link_map, l_prev);
  if (address == 0 || !ReadSafely(address, &map, uPUBLIC)) return false;
  entry = {map.l_addr, reinterpret_cast<std::uint64_t>(map.l_name), reinterpret_cast<std::uint64_t>(map.l_ld),
           reinterpret_cast<std::uint64_t>(map.l_next)};
  return true;
}

void ReadDumpText(std::uint64_t address, char* to, std::size_t size) noexcept {
  std::size_t length = 0;
  while (length + 1 < size && ReadSafely(address + length, to + length, 1) && to[length] != 0) ++length;
  to[length] = 0;
}

void DumpModules::Read(const DumpMaps& maps) noexcept {
  m_uCount = 0;
  ReadMappings(maps);
  if (m_uCount == 0) ReadLoaderList();
  PutProgramFirst();
  for (std::size_t i = 0; i < m_uCount; ++i) m_sorted[i] = m_modules + i;
  std::sort(m_sorted, m_sorted + m_uCount, &IsBefore);
}

void DumpModules::Add(std::uint64_t base, const char* name) noexcept {
  if (m_uCount == uMODULES) return;
  DumpModule& module = m_modules[m_uCount];
  module = DumpModule{};
  module.m_uBase = base;
  module.m_sName = name;
  module.m_uFlags = Minidump::eMODULE_WRITE_MODULE | Minidump::eMODULE_WRITE_MISC_RECORD |
                    Minidump::eMODULE_WRITE_CV_RECORD;
  if (Complete(module)) ++m_uCount;
}

void DumpModules::ReadMappings(const DumpMaps& maps) noexcept {
  for (const DumpMapping& mapping : maps) {
    const bool isModule = mapping.Has(DumpMapping::eVDSO) ||
                          (mapping.Has(DumpMapping::eFILE) && mapping.m_uOffset == 0 && mapping.MayBeRead());
    if (isModule) Add(mapping.m_uStart, maps.Name(mapping));
  }
}

// The program has no name in that list.
void DumpModules::ReadLoaderList() noexcept {
  std::size_t used = 0;
  DumpLoaderEntry entry{};
  std::uint64_t at = FindDumpLoader().m_uFirst;
  for (int i = 0; i < iMOST_MODULES && ReadLoaderEntry(at, entry); ++i, at = entry.m_uNext) {
    const bool program = i == 0;
    const std::uint64_t base = entry.m_uBias != 0 ? entry.m_uBias : getauxval(AT_PHDR) / uPAGE * uPAGE;
    char* const name = s_names + used;
    ReadDumpText(program ? getauxval(AT_EXECFN) : entry.m_uName, name, uLOADER_NAMES - used);
    used += std::min(strlen(name) + 1, uLOADER_NAMES - used - 1);
    Add(base, name);
  }
}

void DumpModules::PutProgramFirst() noexcept {
  const std::uint64_t inProgram = getauxval(AT_PHDR);
  DumpModule* const program = std::find_if(begin(), end(), [inProgram](const DumpModule& module) {
    return module.m_uBase <= inProgram && inProgram < module.m_uEnd;
  });
  if (program != end()) std::rotate(begin(), program, program + 1);
}

void DumpModules::Reference(std::uint64_t address) noexcept {
  DumpModule** const behind =
      std::upper_bound(m_sorted, m_sorted + m_uCount, address,
                       [](std::uint64_t place, const DumpModule* module) { return place < module->m_uBase; });
  if (behind == m_sorted) return;
  DumpModule& module = **(behind - 1);
  if (address < module.m_uEnd) module.m_uFlags |= Minidump::eMODULE_REFERENCED_BY_MEMORY;
}

}  // namespace Oxa::Core::Platform

#endif
