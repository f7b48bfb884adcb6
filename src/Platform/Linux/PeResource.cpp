#include "Platform/Linux/PeResource.h"

#include <vector>

#include "Platform/Linux/ByteView.h"

namespace Oxa::Core::Platform {

namespace {

// The old header, which only leads to the new one.
constexpr std::uint64_t ullOLD_HEADER = 64;
constexpr std::uint64_t ullNEW_HEADER_AT = 60;

// The new header: a mark, counts, and behind them the optional header.
constexpr std::uint64_t ullNEW_HEADER = 24;
constexpr char sMARK[] = {'P', 'E', '\0', '\0'};
constexpr std::uint64_t ullSECTIONS = 6;
constexpr std::uint64_t ullOPTIONAL_SIZE = 20;

// The optional header, by its own mark.
constexpr std::uint16_t uMARK_32 = 0x10b;
constexpr std::uint16_t uMARK_64 = 0x20b;
constexpr std::uint64_t ullDIRECTORIES_32 = 96;
constexpr std::uint64_t ullDIRECTORIES_64 = 112;
constexpr std::uint64_t ullDIRECTORY = 8;
constexpr std::uint32_t uRESOURCE_DIRECTORY = 2;

constexpr std::uint64_t ullSECTION = 40;
constexpr std::uint64_t ullRESOURCE_FOLDER = 16;
constexpr std::uint64_t ullRESOURCE_ENTRY = 8;
constexpr std::uint64_t ullRESOURCE_CONTENT = 16;
constexpr std::uint32_t uFOLDER_BIT = 0x80000000u;
constexpr std::uint64_t ullMOST_CONTENT = 1024 * 1024;

struct Section {
  std::uint32_t m_uAddress;
  std::uint32_t m_uSize;    // in the file
  std::uint32_t m_uOffset;  // in the file
};

class PeFile {
 public:
  explicit PeFile(ModuleFile& file) : m_file(file) { m_bWhole = ReadHeaders(); }

  bool ReadResource(std::uint32_t type, std::string& content) {
    if (!m_bWhole || m_uResources == 0) return false;
    std::uint32_t entry = 0;
    if (!FindEntry(0, &type, entry) || !FindEntry(entry, nullptr, entry) || !FindEntry(entry, nullptr, entry))
      return false;
    return ReadContent(entry, content);
  }

 private:
  bool ReadHeaders() {
    std::string bytes;
    if (!m_file.Read(0, ullOLD_HEADER, bytes)) return false;
    const std::uint64_t start = ByteView(bytes, false).Word(ullNEW_HEADER_AT);
    if (!m_file.Read(start, ullNEW_HEADER, bytes) || bytes.compare(0, sizeof sMARK, sMARK, sizeof sMARK) != 0)
      return false;
    const ByteView header(bytes, false);
    const std::uint64_t sections = header.Half(ullSECTIONS);
    const std::uint64_t optional = header.Half(ullOPTIONAL_SIZE);
    return ReadOptionalHeader(start + ullNEW_HEADER, optional) &&
           ReadSections(start + ullNEW_HEADER + optional, sections);
  }

  bool ReadOptionalHeader(std::uint64_t start, std::uint64_t size) {
    std::string bytes;
    if (!m_file.Read(start, size, bytes)) return false;
    const ByteView header(bytes, false);
    const std::uint16_t mark = header.Half(0);
    if (mark != uMARK_32 && mark != uMARK_64) return false;
    const std::uint64_t directories = mark == uMARK_64 ? ullDIRECTORIES_64 : ullDIRECTORIES_32;
    if (header.Word(directories - 4) > uRESOURCE_DIRECTORY)
      m_uResources = header.Word(directories + uRESOURCE_DIRECTORY * ullDIRECTORY);
    return true;
  }

  bool ReadSections(std::uint64_t start, std::uint64_t count) {
    std::string bytes;
    if (!m_file.Read(start, count * ullSECTION, bytes)) return false;
    const ByteView table(bytes, false);
    for (std::uint64_t at = 0; table.Has(at, ullSECTION); at += ullSECTION)
      m_sections.push_back({table.Word(at + 12), table.Word(at + 16), table.Word(at + 20)});
    return true;
  }

  // Reads what the loader would put at that address.
  bool ReadAt(std::uint64_t address, std::uint64_t size, std::string& bytes) {
    for (const Section& section : m_sections)
      if (address >= section.m_uAddress && address - section.m_uAddress < section.m_uSize)
        return m_file.Read(section.m_uOffset + (address - section.m_uAddress), size, bytes);
    return false;
  }

  // The entry of a folder of resources that bears the number, or the first one: where it leads, from the start of the
  // resources. The depth is fixed, so that a folder that leads to itself is no endless way.
  bool FindEntry(std::uint32_t folder, const std::uint32_t* number, std::uint32_t& leadsTo) {
    std::string bytes;
    const std::uint64_t start = std::uint64_t{m_uResources} + (folder & ~uFOLDER_BIT);
    if ((number == nullptr && (folder & uFOLDER_BIT) == 0) || !ReadAt(start, ullRESOURCE_FOLDER, bytes))
      return false;
    const ByteView header(bytes, false);
    const std::uint64_t count = std::uint64_t{header.Half(12)} + header.Half(14);
    std::string entries;
    if (!ReadAt(start + ullRESOURCE_FOLDER, count * ullRESOURCE_ENTRY, entries)) return false;
    const ByteView table(entries, false);
    for (std::uint64_t at = 0; table.Has(at, ullRESOURCE_ENTRY); at += ullRESOURCE_ENTRY) {
      if (number != nullptr && table.Word(at) != *number) continue;
      leadsTo = table.Word(at + 4);
      return true;
    }
    return false;
  }

  bool ReadContent(std::uint32_t place, std::string& content) {
    std::string bytes;
    if ((place & uFOLDER_BIT) != 0 ||
        !ReadAt(std::uint64_t{m_uResources} + place, ullRESOURCE_CONTENT, bytes))
      return false;
    const ByteView entry(bytes, false);
    return entry.Word(4) <= ullMOST_CONTENT && ReadAt(entry.Word(0), entry.Word(4), content);
  }

  ModuleFile& m_file;
  std::uint32_t m_uResources = 0;  // their address; 0: there are none
  std::vector<Section> m_sections;
  bool m_bWhole = false;
};

}  // namespace

bool ReadPeResource(ModuleFile& file, std::uint32_t type, std::string& content) {
  return PeFile(file).ReadResource(type, content);
}

}  // namespace Oxa::Core::Platform
