// Memory as a source and as a sink of ours: what a std::stringstream is to the peers.
#ifndef OXACORE_BENCH_MEMORYSTREAMS_H
#define OXACORE_BENCH_MEMORYSTREAMS_H

#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace OxaBench {

/// Reads a text over and over: Rewind begins it again.
class MemorySource : public Oxa::Core::BinaryInputStream {
 public:
  explicit MemorySource(const std::string& bytes) : m_next(bytes.data()), m_sBytes(bytes) { Rewind(); }

  void Rewind() {
    m_next = m_sBytes.data();
    m_end = m_next + m_sBytes.size();
  }

  int Read() override { return m_next != m_end ? static_cast<unsigned char>(*m_next++) : -1; }

  long long Read(void* buffer, long long count) override {
    const long long got = std::min<long long>(count, m_end - m_next);
    if (got <= 0) return count < 1 ? 0 : -1;
    std::memcpy(buffer, m_next, static_cast<std::size_t>(got));
    m_next += got;
    return got;
  }

  unsigned long long AvailableBytes() override { return static_cast<unsigned long long>(m_end - m_next); }

 private:
  const char* m_next;
  const char* m_end = nullptr;
  std::string m_sBytes;
};

/// Keeps what is written, up to a size that is known beforehand; what is more is dropped.
class MemorySink : public Oxa::Core::BinaryOutputStream {
 public:
  explicit MemorySink(std::size_t size) : m_bytes(size), m_next(m_bytes.data()), m_end(m_next + size) {}

  void Rewind() { m_next = m_bytes.data(); }
  std::string Content() const { return std::string(m_bytes.data(), static_cast<const char*>(m_next)); }

  void Write(unsigned char byte) override {
    if (m_next != m_end) *m_next++ = static_cast<char>(byte);
  }

  void Write(const void* buffer, unsigned long long count) override {
    const std::size_t room = static_cast<std::size_t>(m_end - m_next);
    const std::size_t size = std::min<std::size_t>(static_cast<std::size_t>(count), room);
    std::memcpy(m_next, buffer, size);
    m_next += size;
  }

  void Flush() override {}

 private:
  std::vector<char> m_bytes;
  char* m_next;
  char* m_end;
};

}  // namespace OxaBench

#endif
