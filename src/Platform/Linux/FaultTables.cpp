#include "Platform/Linux/FaultTables.h"

#include <cstddef>
#include <cstring>

namespace Oxa::Core::Platform {

namespace {

// How numbers are written: the low four bits of an encoding.
constexpr unsigned uOMITTED = 0xFF;
constexpr unsigned uFORM = 0x0F;
constexpr unsigned uULEB128 = 0x01;
constexpr unsigned uUDATA2 = 0x02;
constexpr unsigned uUDATA4 = 0x03;
constexpr unsigned uUDATA8 = 0x04;
constexpr unsigned uSDATA2 = 0x0A;
constexpr unsigned uSDATA4 = 0x0B;
constexpr unsigned uSDATA8 = 0x0C;

class Reader {
 public:
  explicit Reader(const unsigned char* at) noexcept : m_pAt(at) {}

  const unsigned char* At() const noexcept { return m_pAt; }
  unsigned Byte() noexcept { return *m_pAt++; }

  std::uint64_t Uleb128() noexcept {
    std::uint64_t value = 0;
    unsigned shift = 0;
    unsigned byte;
    do {
      byte = Byte();
      if (shift < 64) value |= std::uint64_t{byte & 0x7F} << shift;
      shift += 7;
    } while ((byte & 0x80) != 0);
    return value;
  }

  std::uint64_t Value(unsigned encoding) noexcept {
    switch (encoding & uFORM) {
      case uULEB128:
        return Uleb128();
      case uUDATA2:
      case uSDATA2:
        return Bytes(2);
      case uUDATA4:
      case uSDATA4:
        return Bytes(4);
      case uUDATA8:
      case uSDATA8:
      default:
        return Bytes(8);
    }
  }

 private:
  std::uint64_t Bytes(std::size_t count) noexcept {
    std::uint64_t value = 0;
    std::memcpy(&value, m_pAt, count);
    m_pAt += count;
    return value;
  }

  const unsigned char* m_pAt;
};

}  // namespace

bool CoversPlace(const unsigned char* table, std::uintptr_t start, std::uintptr_t place) noexcept {
  Reader reader(table);
  const unsigned landingEncoding = reader.Byte();
  if (landingEncoding != uOMITTED) reader.Value(landingEncoding);
  if (reader.Byte() != uOMITTED) reader.Uleb128();
  const unsigned encoding = reader.Byte();
  const std::uint64_t size = reader.Uleb128();
  const unsigned char* const end = reader.At() + size;
  const std::uintptr_t offset = place - start;
  while (reader.At() < end) {
    const std::uint64_t first = reader.Value(encoding);
    const std::uint64_t length = reader.Value(encoding);
    reader.Value(encoding);
    reader.Uleb128();
    if (offset < first) return false;  // entries stand in order
    if (offset - first < length) return true;
  }
  return false;
}

}  // namespace Oxa::Core::Platform
