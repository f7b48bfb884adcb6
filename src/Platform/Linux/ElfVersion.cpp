#include "Platform/Linux/ElfVersion.h"

#include <elf.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <memory>

#include "Platform/Linux/ByteView.h"
#include "Platform/Linux/ElfLayout.h"
#include "Platform/Linux/JsonTexts.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sFILE_VERSION[] = "FileVersion";
constexpr char sINTERNAL_NAME[] = "InternalName";

// The members that every package note has, and the keys that they stand for.
constexpr const char* sNOTE_MEMBERS[][2] = {{"name", "ProductName"}, {"version", "ProductVersion"}};

constexpr char sNOTE_OWNER[] = "FDO";
constexpr std::uint32_t uPACKAGE_NOTE = 0xcafe1a7e;
constexpr std::uint64_t ullNOTE_HEADER = 12;
constexpr std::uint64_t ullMOST_NOTES = 1024 * 1024;  // bytes of one piece that holds notes
constexpr std::uint64_t ullLONGEST_NAME = 4096;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::uint64_t Rounded(std::uint64_t size, std::uint64_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

// --- The package note

// Notes are filled up with them.
std::string WithoutZerosAtEnd(const std::string& text) {
  return text.substr(0, text.find_last_not_of('\0') + 1);
}

// What the package note among the notes of `bytes` says.
bool FindPackageNote(const std::string& bytes, std::uint64_t alignment, bool bigEndian,
                     VersionRecord& record) {
  const ByteView view(bytes, bigEndian);
  for (std::uint64_t at = 0; view.Has(at, ullNOTE_HEADER);) {
    const std::uint64_t owner = at + ullNOTE_HEADER;
    const std::uint64_t content = owner + Rounded(view.Word(at), alignment);
    const std::uint64_t size = view.Word(at + 4);
    if (view.Word(at + 8) == uPACKAGE_NOTE &&
        view.Bytes(owner, view.Word(at)) == std::string(sNOTE_OWNER, sizeof sNOTE_OWNER) &&
        view.Has(content, size))
      return ReadJsonTexts(WithoutZerosAtEnd(view.Bytes(content, size)), record);
    at = content + Rounded(size, alignment);
  }
  return false;
}

bool FindPackageNote(ModuleFile& file, const std::vector<ElfPiece>& pieces, std::uint32_t type,
                     bool bigEndian, VersionRecord& record) {
  std::string bytes;
  return std::any_of(pieces.begin(), pieces.end(), [&](const ElfPiece& piece) {
    return piece.m_uType == type && piece.m_ullSize <= ullMOST_NOTES &&
           file.Read(piece.m_ullOffset, piece.m_ullSize, bytes) &&
           FindPackageNote(bytes, piece.m_ullAlignment == 8 ? 8 : 4, bigEndian, record);
  });
}

// A note that is loaded has a segment; one that isn't has a section only.
bool ReadPackageNote(ModuleFile& file, const ElfLayout& layout, VersionRecord& record) {
  return FindPackageNote(file, layout.Segments(), PT_NOTE, layout.IsBigEndian(), record) ||
         FindPackageNote(file, layout.Sections(), SHT_NOTE, layout.IsBigEndian(), record);
}

void AddPackage(VersionRecord& note) {
  for (const auto& member : sNOTE_MEMBERS) {
    const auto text = note.find(member[0]);
    if (text != note.end()) note.emplace(member[1], text->second);
  }
}

// --- The name that the linker gave

// The places in memory that the dynamic section tells.
struct DynamicNames {
  std::uint64_t m_ullTable = 0;
  std::uint64_t m_ullTableSize = 0;
  std::uint64_t m_ullOwnName = 0;  // in the table; 0, the empty name, if there is none
};

DynamicNames NamesIn(const std::string& bytes, const ElfLayout& layout) {
  const ByteView view(bytes, layout.IsBigEndian());
  const unsigned int width = layout.Is64() ? 8 : 4;
  DynamicNames names;
  for (std::uint64_t at = 0; view.Has(at, 2 * width); at += 2 * width) {
    const std::uint64_t value = view.Number(at + width, width);
    switch (view.Number(at, width)) {
      case DT_NULL:
        return names;
      case DT_STRTAB:
        names.m_ullTable = value;
        break;
      case DT_STRSZ:
        names.m_ullTableSize = value;
        break;
      case DT_SONAME:
        names.m_ullOwnName = value;
        break;
      default:
        break;
    }
  }
  return names;
}

std::string OwnNameBy(const DynamicNames& names, ModuleFile& file, const ElfLayout& layout) {
  std::uint64_t table = 0;
  std::string name;
  if (names.m_ullOwnName >= names.m_ullTableSize || !layout.OffsetOf(names.m_ullTable, table)) return name;
  const std::uint64_t longest = std::min(names.m_ullTableSize - names.m_ullOwnName, ullLONGEST_NAME);
  if (!file.ReadUpTo(table + names.m_ullOwnName, longest, name)) return name;
  const std::string::size_type end = name.find('\0');
  return end != std::string::npos ? name.substr(0, end) : std::string();
}

std::string ReadOwnName(ModuleFile& file, const ElfLayout& layout) {
  std::string bytes;
  for (const ElfPiece& segment : layout.Segments())
    if (segment.m_uType == PT_DYNAMIC && file.Read(segment.m_ullOffset, segment.m_ullSize, bytes))
      return OwnNameBy(NamesIn(bytes, layout), file, layout);
  return std::string();
}

// --- The numbers that end the file's name

std::string ReadVersionSuffix(const std::string& name) {
  std::string suffix = VersionSuffix(name);
  if (!suffix.empty()) return suffix;
  const std::unique_ptr<char, void (*)(void*)> real(realpath(name.c_str(), nullptr), &free);
  return real ? VersionSuffix(real.get()) : std::string();
}

}  // namespace

std::string VersionSuffix(const std::string& name) {
  int numbers = 0;
  std::string::size_type start = name.size();
  for (std::string::size_type at = start; at > 0 && IsDigit(name[at - 1]);) {
    while (at > 0 && IsDigit(name[at - 1])) --at;
    if (at == 0 || name[at - 1] != '.') break;
    start = at--;
    ++numbers;
  }
  return numbers >= 2 ? name.substr(start) : std::string();
}

bool IsElf(ModuleFile& file) {
  std::string mark;
  return file.Read(0, SELFMAG, mark) && mark == ELFMAG;
}

bool ReadElfVersion(ModuleFile& file, const std::string& name, VersionRecord& record) {
  const ElfLayout layout(file);
  if (!layout.IsWhole()) return false;
  const bool noted = ReadPackageNote(file, layout, record);
  const std::string suffix = ReadVersionSuffix(name);
  if (!noted && suffix.empty()) return false;
  AddPackage(record);
  if (!suffix.empty()) record.emplace(sFILE_VERSION, suffix);
  const std::string ownName = ReadOwnName(file, layout);
  if (!ownName.empty()) record.emplace(sINTERNAL_NAME, ownName);
  return true;
}

}  // namespace Oxa::Core::Platform
