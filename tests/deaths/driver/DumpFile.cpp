#include "DumpFile.h"

#include <elf.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace Deaths {

namespace {

// Bytes with numbers at places that may be wrong.
class Bytes {
 public:
  explicit Bytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    m_sBytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }

  template <class T>
  T At(std::uint64_t offset) const {
    if (offset > m_sBytes.size() || m_sBytes.size() - offset < sizeof(T))
      throw std::out_of_range("cut short");
    T value;
    std::memcpy(&value, m_sBytes.data() + offset, sizeof(T));
    return value;
  }
  std::uint32_t Word(std::uint64_t offset) const { return At<std::uint32_t>(offset); }
  std::uint64_t Long(std::uint64_t offset) const { return At<std::uint64_t>(offset); }
  std::string Text(std::uint64_t offset) const {
    return offset < m_sBytes.size() ? std::string(m_sBytes.c_str() + offset) : std::string();
  }

 private:
  std::string m_sBytes;
};

constexpr std::uint32_t uSIGNATURE = 0x504d444dU;  // "MDMP"
constexpr std::uint32_t uMODULE_LIST = 4;
constexpr std::uint32_t uEXCEPTION = 6;
constexpr std::uint64_t uMODULE_SIZE = 108;
constexpr std::uint64_t uMODULE_NAME = 20;
constexpr std::uint64_t uCONTEXT_PLACE = 164;  // of the exception stream
constexpr std::uint64_t uINSTRUCTION = 0xf8;   // of the context

// Where a stream begins.
std::uint64_t Stream(const Bytes& dump, std::uint32_t type) {
  if (dump.Word(0) != uSIGNATURE) throw std::runtime_error("no dump");
  const std::uint32_t count = dump.Word(8);
  const std::uint64_t directory = dump.Word(12);
  for (std::uint64_t index = 0; index < count; ++index)
    if (dump.Word(directory + index * 12) == type) return dump.Word(directory + index * 12 + 8);
  throw std::runtime_error("a stream is missing");
}

std::string ModuleName(const Bytes& dump, std::uint64_t at) {
  std::string name;
  for (std::uint64_t index = 0; index < dump.Word(at); index += 2)
    name += static_cast<char>(dump.At<std::uint16_t>(at + 4 + index));
  return name;
}

struct Place {
  std::string m_sModule;
  std::uint64_t m_uOffset;
};

Place PlaceOf(const Bytes& dump, std::uint64_t instruction) {
  const std::uint64_t list = Stream(dump, uMODULE_LIST);
  for (std::uint64_t index = 0; index < dump.Word(list); ++index) {
    const std::uint64_t module = list + 4 + index * uMODULE_SIZE;
    const std::uint64_t base = dump.Long(module);
    if (instruction >= base && instruction - base < dump.Word(module + 8))
      return {ModuleName(dump, dump.Word(module + uMODULE_NAME)), instruction - base};
  }
  return {};
}

// The function of a symbol table that covers the address.
std::string Lookup(const Bytes& file, const Elf64_Shdr& symbols, const Elf64_Shdr& names,
                   std::uint64_t address) {
  for (std::uint64_t at = symbols.sh_offset; at < symbols.sh_offset + symbols.sh_size;
       at += sizeof(Elf64_Sym)) {
    const auto symbol = file.At<Elf64_Sym>(at);
    if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC && address >= symbol.st_value &&
        address - symbol.st_value < symbol.st_size)
      return file.Text(names.sh_offset + symbol.st_name);
  }
  return "";
}

// "" where the file is another one by now, or gone.
std::string FunctionAt(const Place& place) try {
  const Bytes file(place.m_sModule);
  const auto header = file.At<Elf64_Ehdr>(0);
  const auto section = [&](std::uint64_t index) {
    return file.At<Elf64_Shdr>(header.e_shoff + index * sizeof(Elf64_Shdr));
  };
  for (std::uint64_t index = 0; index < header.e_shnum; ++index) {
    const Elf64_Shdr symbols = section(index);
    if (symbols.sh_type != SHT_SYMTAB && symbols.sh_type != SHT_DYNSYM) continue;
    std::string found = Lookup(file, symbols, section(symbols.sh_link), place.m_uOffset);
    if (!found.empty()) return found;
  }
  return "";
} catch (const std::exception&) {
  return "";
}

}  // namespace

std::string FunctionOnTop(const std::filesystem::path& path) {
  try {
    const Bytes dump(path);
    const std::uint64_t exception = Stream(dump, uEXCEPTION);
    const Place place = PlaceOf(dump, dump.Long(dump.Word(exception + uCONTEXT_PLACE) + uINSTRUCTION));
    return place.m_sModule.empty() ? "" : FunctionAt(place);
  } catch (const std::exception& failure) {
    return std::string("!") + failure.what();
  }
}

}  // namespace Deaths
