// How far a process of the tests has come with its entries: in memory that outlives it.
#ifndef OXACORE_TESTS_LOG_LOGPROGRESS_H
#define OXACORE_TESTS_LOG_LOGPROGRESS_H

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

namespace LogTests {

struct LogProgress {
  std::atomic<std::uint64_t> m_ullAllowed{0};  ///< how many entries the process may write in all
  std::atomic<std::uint64_t> m_ullFlushed{0};  ///< how many it has written
  std::atomic<std::uint64_t> m_ullFailed{0};   ///< how many it could not write
  std::atomic<std::int64_t> m_llLongest{0};    ///< nanoseconds of the longest write
};

/// Maps a LogProgress that lies in a file, which is made if it is missing. Stays mapped.
inline LogProgress& MapProgress(const std::string& file) {
  const int handle = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (handle < 0 || ::ftruncate(handle, sizeof(LogProgress)) != 0) std::abort();
  void* const memory = ::mmap(nullptr, sizeof(LogProgress), PROT_READ | PROT_WRITE, MAP_SHARED, handle, 0);
  if (memory == MAP_FAILED) std::abort();
  ::close(handle);
  return *static_cast<LogProgress*>(memory);  // a new file is all zeros, and so is a new LogProgress
}

/// What a process named `writer` writes as its entry of that number, about `size` bytes of text.
inline std::string NumberedMessage(const std::string& writer, std::uint64_t number, std::size_t size) {
  return writer + ' ' + std::to_string(number) + ' ' + std::string(size + number % 97, 'x') + " end";
}

}  // namespace LogTests

#endif
