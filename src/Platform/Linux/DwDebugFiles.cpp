#include "Platform/Linux/DwDebugFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Oxa::Core::Platform {

namespace {

const char* const sSYSTEM_FOLDER = "/usr/lib/debug";
const char* const sIDS = "/.build-id/";
const char* const sID_SUFFIX = ".debug";
const char* const sBESIDE = "/.debug";
const char* const sC_LIBRARY[] = {"libc", "ld-linux-x86-64", "libm", "libpthread", "libdl", "librt"};

int OpenFile(const std::string& path) {
  struct stat status;
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return -1;
  if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)) return file;
  ::close(file);
  return -1;
}

std::string Hexadecimal(const unsigned char* bytes, std::size_t count) {
  const char* const digits = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += digits[bytes[i] / 16];
    text += digits[bytes[i] % 16];
  }
  return text;
}

// The sum that the module's link carries.
std::uint32_t AddToChecksum(std::uint32_t sum, const unsigned char* bytes, std::size_t count) {
  constexpr std::uint32_t uPOLYNOMIAL = 0xEDB88320U;
  static std::uint32_t table[256];
  if (table[1] == 0) {
    for (std::uint32_t i = 0; i < 256; ++i) {
      std::uint32_t value = i;
      for (int bit = 0; bit < 8; ++bit) value = (value & 1) != 0 ? uPOLYNOMIAL ^ (value >> 1) : value >> 1;
      table[i] = value;
    }
  }
  sum = ~sum;
  for (std::size_t i = 0; i < count; ++i) sum = table[(sum ^ bytes[i]) & 0xff] ^ (sum >> 8);
  return ~sum;
}

bool HasChecksum(int file, std::uint32_t expected) {
  std::vector<unsigned char> buffer(65536);
  std::uint32_t sum = 0;
  off_t position = 0;
  while (true) {
    const ssize_t got = ::pread(file, buffer.data(), buffer.size(), position);
    if (got < 0) return false;
    if (got == 0) return sum == expected;
    sum = AddToChecksum(sum, buffer.data(), static_cast<std::size_t>(got));
    position += got;
  }
}

bool IsOfCLibrary(const std::string& name) {
  return std::find(std::begin(sC_LIBRARY), std::end(sC_LIBRARY), name) != std::end(sC_LIBRARY);
}

std::string FolderOf(const std::string& file) { return file.substr(0, file.find_last_of('/')); }

}  // namespace

std::vector<std::string> DebugFiles::Split(const char* searchPath) {
  std::vector<std::string> folders;
  const std::string path(searchPath);
  std::size_t begin = 0;
  while (begin <= path.size()) {
    const std::size_t end = std::min(path.find(';', begin), path.size());
    std::string folder = path.substr(begin, end - begin);
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    if (!folder.empty() && std::find(folders.begin(), folders.end(), folder) == folders.end())
      folders.push_back(folder);
    begin = end + 1;
  }
  return folders;
}

bool DebugFiles::HasHeaderOf(const LoadedModule& module) {
  const int file = OpenFile(module.m_sFile);
  if (file < 0) return false;
  unsigned char header[sizeof(ElfW(Ehdr))];
  const bool read = ::pread(file, header, sizeof header, 0) == static_cast<ssize_t>(sizeof header);
  ::close(file);
  const auto place = static_cast<std::uintptr_t>(module.m_uBegin);
  const void* const memory = reinterpret_cast<const void*>(place);  // NOLINT(performance-no-int-to-ptr)
  return read && module.m_uImage >= sizeof header && std::memcmp(header, memory, sizeof header) == 0;
}

bool DebugFiles::HasId(const SymbolizedModule& module, int file) {
  const Dw& dw = module.m_dw;
  if (dw.elf_begin == nullptr || dw.elf_end == nullptr || dw.dwelf_elf_gnu_build_id == nullptr) return false;
  Elf* const elf = dw.elf_begin(file, ELF_C_READ_MMAP, nullptr);
  if (elf == nullptr) return false;
  const std::vector<unsigned char>& id = module.GetLoaded().m_id;
  const void* found = nullptr;
  const bool same = dw.dwelf_elf_gnu_build_id(elf, &found) == static_cast<ssize_t>(id.size()) &&
                    std::memcmp(found, id.data(), id.size()) == 0;
  dw.elf_end(elf);
  return same;
}

int DebugFiles::FindById(const SymbolizedModule& module, std::string& found) {
  const std::vector<unsigned char>& id = module.GetLoaded().m_id;
  if (id.size() < 2) return -1;
  const std::string name =
      sIDS + Hexadecimal(id.data(), 1) + "/" + Hexadecimal(id.data() + 1, id.size() - 1) + sID_SUFFIX;
  const auto open = [&](const std::string& folder) {
    found = folder + name;
    return OpenFile(found);
  };
  for (const std::string& folder : module.m_folders) {
    const int file = open(folder);
    if (file >= 0) return file;
  }
  return open(sSYSTEM_FOLDER);
}

int DebugFiles::FindByLink(const SymbolizedModule& module, const std::string& link, GElf_Word checksum,
                           std::string& found) {
  const std::string beside = FolderOf(module.GetLoaded().m_sFile);
  std::vector<std::string> folders = {beside, beside + sBESIDE};
  folders.insert(folders.end(), module.m_folders.begin(), module.m_folders.end());
  folders.push_back(sSYSTEM_FOLDER + beside);
  for (const std::string& folder : folders) {
    found = folder + "/" + link;
    if (found == module.GetLoaded().m_sFile) continue;
    const int file = OpenFile(found);
    if (file < 0) continue;
    if (module.GetLoaded().m_id.empty() ? HasChecksum(file, checksum) : HasId(module, file)) return file;
    ::close(file);
  }
  return -1;
}

int DebugFiles::Find(Dwfl_Module* /*module*/, void** owner, const char* /*name*/, Dwarf_Addr /*base*/,
                     const char* /*file*/, const char* link, GElf_Word checksum, char** found) {
  try {
    const auto* const module = owner != nullptr ? static_cast<const SymbolizedModule*>(*owner) : nullptr;
    if (module == nullptr || IsOfCLibrary(module->GetName())) return -1;
    std::string path;
    int file = FindById(*module, path);
    if (file < 0 && link != nullptr) file = FindByLink(*module, link, checksum, path);
    if (file >= 0) *found = ::strdup(path.c_str());
    return file;
  } catch (...) {
    return -1;
  }
}

}  // namespace Oxa::Core::Platform
