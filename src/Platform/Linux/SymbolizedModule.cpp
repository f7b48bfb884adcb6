#include "Platform/Linux/SymbolizedModule.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "Platform/Linux/DwDebugFiles.h"
#include "Platform/Linux/SafeMemory.h"
#include "Platform/Machine.h"

namespace Oxa::Core::Platform {

namespace {

const char* const sSHARED = ".so";
constexpr std::size_t uMAX_NOTES = 64 * 1024;

const unsigned char* Memory(std::uint64_t address) {
  return reinterpret_cast<const unsigned char*>(
      static_cast<std::uintptr_t>(address));  // NOLINT(performance-no-int-to-ptr)
}

// The loader doesn't tell what file the program is.
std::string ProgramFile() {
  std::string path;
  if (ExecutablePath(path) == 0) return path;
  const std::uint64_t started = ::getauxval(AT_EXECFN);
  return started != 0 ? reinterpret_cast<const char*>(Memory(started)) : std::string();
}

std::size_t Aligned(std::size_t size) { return (size + 3) & ~static_cast<std::size_t>(3); }

void ReadId(const unsigned char* note, std::size_t size, std::vector<unsigned char>& id) {
  while (size >= sizeof(ElfW(Nhdr))) {
    ElfW(Nhdr) header;
    std::memcpy(&header, note, sizeof header);
    const std::size_t whole = sizeof header + Aligned(header.n_namesz) + Aligned(header.n_descsz);
    if (whole > size) return;
    const unsigned char* const name = note + sizeof header;
    if (header.n_type == NT_GNU_BUILD_ID && header.n_namesz == 4 && std::memcmp(name, "GNU", 4) == 0) {
      const unsigned char* const bytes = name + Aligned(header.n_namesz);
      id.assign(bytes, bytes + header.n_descsz);
      return;
    }
    note += whole;
    size -= whole;
  }
}

// What went wrong with the module's memory must not become a fault here: the loader's lock would stay held.
void ReadIdSafely(std::uint64_t notes, std::size_t size, std::vector<unsigned char>& id) {
  std::vector<unsigned char> copy(std::min(size, uMAX_NOTES));
  if (ReadSafely(notes, copy.data(), copy.size())) ReadId(copy.data(), copy.size(), id);
}

// The part that begins with the file's header and goes on as it does in the file.
std::size_t SizeOfImage(const dl_phdr_info& info) {
  std::size_t size = 0;
  const ElfW(Phdr)* first = nullptr;
  for (const ElfW(Phdr)* part = info.dlpi_phdr; part != info.dlpi_phdr + info.dlpi_phnum; ++part) {
    if (part->p_type != PT_LOAD) continue;
    if (first == nullptr && part->p_offset != 0) return 0;
    if (first == nullptr) first = part;
    if (part->p_vaddr - part->p_offset == first->p_vaddr && (part->p_flags & PF_R) != 0)
      size = std::max(size, static_cast<std::size_t>(part->p_offset + part->p_filesz));
  }
  return size;
}

std::string NameOf(const std::string& file) {
  std::string name = file.substr(file.find_last_of('/') + 1);
  for (auto at = name.find(sSHARED); at != std::string::npos; at = name.find(sSHARED, at + 1)) {
    const auto behind = at + std::strlen(sSHARED);
    if (behind == name.size() || name[behind] == '.') return name.substr(0, at);
  }
  return name;
}

bool CanReadDebugData(const Dw& dw) {
  return dw.dwfl_begin != nullptr && dw.dwfl_report_begin != nullptr && dw.dwfl_report_elf != nullptr &&
         dw.dwfl_report_end != nullptr && dw.dwfl_module_info != nullptr &&
         dw.dwfl_module_build_id != nullptr && dw.dwfl_module_getdwarf != nullptr &&
         dw.dwarf_get_units != nullptr && dw.dwarf_ranges != nullptr && dw.dwarf_tag != nullptr &&
         dw.dwarf_dieoffset != nullptr && dw.dwarf_offdie != nullptr;
}

// The library would end the process. A fault ends the walk. The attribute is the form that is part of the type.
__attribute__((noreturn)) void RunOutOfMemory() { __builtin_trap(); }

void SurviveShortage(const Dw& dw, Dwarf* debugData) {
  if (dw.dwarf_new_oom_handler == nullptr) return;
  dw.dwarf_new_oom_handler(debugData, &RunOutOfMemory);
  Dwarf* const shared = dw.dwarf_getalt != nullptr ? dw.dwarf_getalt(debugData) : nullptr;
  if (shared != nullptr) dw.dwarf_new_oom_handler(shared, &RunOutOfMemory);
}

int NoFile(Dwfl_Module*, void**, const char*, Dwarf_Addr, char**, Elf**) { return -1; }

// A name stands still while the loader calls back, by a lock of its own that the thread sanitizer knows nothing of; all
// but the end of it is known to it as shared.
__attribute__((no_sanitize("thread"))) std::size_t LengthOf(const char* name) {
  std::size_t length = 0;
  while (name[length] != 0) ++length;
  return length;
}

}  // namespace

bool LoadedModule::IsSameAs(const LoadedModule& other) const {
  return m_uBias == other.m_uBias && m_uBegin == other.m_uBegin && m_uEnd == other.m_uEnd &&
         m_sFile == other.m_sFile && m_id == other.m_id;
}

LoadedModule Describe(const dl_phdr_info& info) {
  LoadedModule module;
  module.m_uBias = info.dlpi_addr;
  module.m_uBegin = ~std::uint64_t{0};
  for (const ElfW(Phdr)* part = info.dlpi_phdr; part != info.dlpi_phdr + info.dlpi_phnum; ++part) {
    const std::uint64_t begin = info.dlpi_addr + part->p_vaddr;
    if (part->p_type == PT_NOTE && module.m_id.empty()) ReadIdSafely(begin, part->p_filesz, module.m_id);
    if (part->p_type != PT_LOAD) continue;
    module.m_uBegin = std::min<std::uint64_t>(module.m_uBegin, begin);
    module.m_uEnd = std::max<std::uint64_t>(module.m_uEnd, begin + part->p_memsz);
    if ((part->p_flags & PF_X) == 0) continue;
    if (module.m_uCodeEnd == 0) module.m_uCodeBegin = begin;
    module.m_uCodeEnd = std::max<std::uint64_t>(module.m_uCodeEnd, begin + part->p_memsz);
  }
  module.m_uImage = SizeOfImage(info);
  if (info.dlpi_name != nullptr) module.m_sFile.assign(info.dlpi_name, LengthOf(info.dlpi_name));
  if (module.m_sFile.empty()) module.m_sFile = ProgramFile();
  return module;
}

SymbolizedModule::SymbolizedModule(const Dw& dw, LoadedModule loaded, const std::vector<std::string>& folders)
    : m_dw(dw),
      m_loaded(std::move(loaded)),
      m_sName(NameOf(m_loaded.m_sFile)),
      m_folders(folders),
      m_units(dw) {}

SymbolizedModule::~SymbolizedModule() {
  if (m_pFrames != nullptr && m_dw.dwarf_cfi_end != nullptr) m_dw.dwarf_cfi_end(m_pFrames);
  if (m_pImage != nullptr && m_dw.elf_end != nullptr) m_dw.elf_end(m_pImage);
  if (m_pSession != nullptr && m_dw.dwfl_end != nullptr) m_dw.dwfl_end(m_pSession);
}

Dwarf_CFI* SymbolizedModule::GetFrames() {
  if (m_bFramesTried) return m_pFrames;
  m_bFramesTried = true;
  if (m_loaded.m_uImage == 0 || m_dw.elf_memory == nullptr || m_dw.dwarf_getcfi_elf == nullptr)
    return nullptr;
  // Nothing is written through it.
  auto* const image = const_cast<char*>(reinterpret_cast<const char*>(Memory(m_loaded.m_uBegin)));
  m_pImage = m_dw.elf_memory(image, m_loaded.m_uImage);
  if (m_pImage != nullptr) m_pFrames = m_dw.dwarf_getcfi_elf(m_pImage);
  return m_pFrames;
}

Dwarf_CFI* SymbolizedModule::GetFramesOfDebugData() {
  if (m_dw.dwfl_module_dwarf_cfi == nullptr || !OpenDebugData()) return nullptr;
  Dwarf_Addr bias = 0;
  Dwarf_CFI* const frames = m_dw.dwfl_module_dwarf_cfi(m_pModule, &bias);
  return bias == m_loaded.m_uBias ? frames : nullptr;
}

// A file that was replaced while the program runs tells of other code.
bool SymbolizedModule::IsFileOfThisModule() {
  const unsigned char* id = nullptr;
  GElf_Addr place = 0;
  const int size = m_dw.dwfl_module_build_id(m_pModule, &id, &place);
  if (m_loaded.m_id.empty()) return size <= 0 && DebugFiles::HasHeaderOf(m_loaded);
  return size == static_cast<int>(m_loaded.m_id.size()) &&
         std::equal(m_loaded.m_id.begin(), m_loaded.m_id.end(), id);
}

bool SymbolizedModule::OpenFile() {
  static const Dwfl_Callbacks callbacks = {&NoFile, &DebugFiles::Find, nullptr, nullptr};
  m_pSession = m_dw.dwfl_begin(&callbacks);
  if (m_pSession == nullptr) return false;
  m_dw.dwfl_report_begin(m_pSession);
  m_pModule =
      m_dw.dwfl_report_elf(m_pSession, m_sName.c_str(), m_loaded.m_sFile.c_str(), -1, m_loaded.m_uBias, true);
  m_dw.dwfl_report_end(m_pSession, nullptr, nullptr);
  if (m_pModule == nullptr) return false;
  void** owner = nullptr;
  m_dw.dwfl_module_info(m_pModule, &owner, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  if (owner != nullptr) *owner = this;
  return owner != nullptr && IsFileOfThisModule();
}

bool SymbolizedModule::OpenDebugData() {
  if (m_bDebugDataTried) return m_pDebugData != nullptr;
  m_bDebugDataTried = true;
  if (!CanReadDebugData(m_dw) || !OpenFile()) return false;
  m_pDebugData = m_dw.dwfl_module_getdwarf(m_pModule, &m_debugBias);
  if (m_pDebugData == nullptr) return false;
  SurviveShortage(m_dw, m_pDebugData);
  m_units.Read(m_pDebugData);
  return true;
}

}  // namespace Oxa::Core::Platform
