#include "Platform/Linux/ElfLayout.h"

#include <elf.h>
#include <stddef.h>

#include "Platform/Linux/ByteView.h"

namespace Oxa::Core::Platform {

namespace {

#define OXACORE_PLACE(structure, field) \
  { offsetof(structure, field), sizeof(structure::field) }

// A field of a structure of the format: where, and how wide.
struct Place {
  std::uint64_t m_ullOffset;
  std::uint64_t m_ullWidth;
};

struct PiecePlaces {
  std::uint64_t m_ullSize;
  Place m_type, m_offset, m_address, m_size, m_alignment;
};

struct HeaderPlaces {
  std::uint64_t m_ullSize;
  Place m_segments, m_segmentSize, m_segmentCount, m_sections, m_sectionSize, m_sectionCount;
  PiecePlaces m_segment, m_section;
};

#define OXACORE_HEADER_PLACES(E, P, S)                                                              \
  {                                                                                                 \
    sizeof(E), OXACORE_PLACE(E, e_phoff), OXACORE_PLACE(E, e_phentsize), OXACORE_PLACE(E, e_phnum), \
        OXACORE_PLACE(E, e_shoff), OXACORE_PLACE(E, e_shentsize), OXACORE_PLACE(E, e_shnum),        \
        {sizeof(P),                                                                                 \
         OXACORE_PLACE(P, p_type),                                                                  \
         OXACORE_PLACE(P, p_offset),                                                                \
         OXACORE_PLACE(P, p_vaddr),                                                                 \
         OXACORE_PLACE(P, p_filesz),                                                                \
         OXACORE_PLACE(P, p_align)},                                                                \
    {                                                                                               \
      sizeof(S), OXACORE_PLACE(S, sh_type), OXACORE_PLACE(S, sh_offset), OXACORE_PLACE(S, sh_addr), \
          OXACORE_PLACE(S, sh_size), OXACORE_PLACE(S, sh_addralign)                                 \
    }                                                                                               \
  }

constexpr HeaderPlaces s_places32 = OXACORE_HEADER_PLACES(Elf32_Ehdr, Elf32_Phdr, Elf32_Shdr);
constexpr HeaderPlaces s_places64 = OXACORE_HEADER_PLACES(Elf64_Ehdr, Elf64_Phdr, Elf64_Shdr);

#undef OXACORE_HEADER_PLACES
#undef OXACORE_PLACE

std::uint64_t Field(const ByteView& view, std::uint64_t start, const Place& place) {
  return view.Number(start + place.m_ullOffset, static_cast<unsigned int>(place.m_ullWidth));
}

ElfPiece PieceAt(const ByteView& view, std::uint64_t start, const PiecePlaces& places) {
  return {static_cast<std::uint32_t>(Field(view, start, places.m_type)), Field(view, start, places.m_offset),
          Field(view, start, places.m_address), Field(view, start, places.m_size),
          Field(view, start, places.m_alignment)};
}

struct Table {
  std::uint64_t m_ullOffset;
  std::uint64_t m_ullEntrySize;
  std::uint64_t m_ullCount;
};

bool ReadTable(ModuleFile& file, const Table& table, const PiecePlaces& places, bool bigEndian,
               std::vector<ElfPiece>& pieces) {
  if (table.m_ullCount == 0) return true;
  std::string bytes;
  if (table.m_ullEntrySize < places.m_ullSize ||
      !file.Read(table.m_ullOffset, table.m_ullEntrySize * table.m_ullCount, bytes))
    return false;
  const ByteView view(bytes, bigEndian);
  for (std::uint64_t entry = 0; entry < table.m_ullCount; ++entry)
    pieces.push_back(PieceAt(view, entry * table.m_ullEntrySize, places));
  return true;
}

bool IsOneOf(char value, char first, char second) { return value == first || value == second; }

}  // namespace

ElfLayout::ElfLayout(ModuleFile& file) {
  std::string bytes;
  if (!file.ReadUpTo(0, s_places64.m_ullSize, bytes) || bytes.size() <= EI_DATA) return;
  m_b64 = bytes[EI_CLASS] == ELFCLASS64;
  m_bBigEndian = bytes[EI_DATA] == ELFDATA2MSB;
  const HeaderPlaces& places = m_b64 ? s_places64 : s_places32;
  if (!IsOneOf(bytes[EI_CLASS], ELFCLASS32, ELFCLASS64) ||
      !IsOneOf(bytes[EI_DATA], ELFDATA2LSB, ELFDATA2MSB) || bytes.size() < places.m_ullSize)
    return;
  const ByteView view(bytes, m_bBigEndian);
  const auto table = [&](const Place& offset, const Place& size, const Place& count) {
    return Table{Field(view, 0, offset), Field(view, 0, size), Field(view, 0, count)};
  };
  m_bWhole = ReadTable(file, table(places.m_segments, places.m_segmentSize, places.m_segmentCount),
                       places.m_segment, m_bBigEndian, m_segments) &&
             ReadTable(file, table(places.m_sections, places.m_sectionSize, places.m_sectionCount),
                       places.m_section, m_bBigEndian, m_sections);
}

bool ElfLayout::OffsetOf(std::uint64_t address, std::uint64_t& offset) const {
  for (const ElfPiece& segment : m_segments) {
    if (segment.m_uType != PT_LOAD || address < segment.m_ullAddress ||
        address - segment.m_ullAddress >= segment.m_ullSize)
      continue;
    offset = segment.m_ullOffset + (address - segment.m_ullAddress);
    return true;
  }
  return false;
}

}  // namespace Oxa::Core::Platform
