// Bytes in memory as a source, which gives them in pieces.
#ifndef OXACORE_FUZZ_MEMORYSOURCE_H
#define OXACORE_FUZZ_MEMORYSOURCE_H

#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace OxaFuzz {

class MemorySource : public Oxa::Core::BinaryInputStream {
 public:
  /// A block read gives `piece` bytes at most.
  MemorySource(std::string bytes, std::size_t piece) : m_sBytes(std::move(bytes)), m_uPiece(piece) {}

  using BinaryInputStream::Read;

  int Read() override { return IsAtEnd() ? -1 : static_cast<unsigned char>(m_sBytes[m_uAt++]); }

  long long Read(void* buffer, long long count) override {
    if (count < 1) return 0;
    if (IsAtEnd()) return -1;
    const std::size_t got = std::min({static_cast<std::size_t>(count), m_uPiece, m_sBytes.size() - m_uAt});
    std::memcpy(buffer, m_sBytes.data() + m_uAt, got);
    m_uAt += got;
    return static_cast<long long>(got);
  }

  unsigned long long AvailableBytes() override { return m_sBytes.size() - m_uAt; }

  bool IsAtEnd() const { return m_uAt == m_sBytes.size(); }

 private:
  const std::string m_sBytes;
  const std::size_t m_uPiece;
  std::size_t m_uAt = 0;
};

}  // namespace OxaFuzz

#endif
