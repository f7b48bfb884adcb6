// Files that can't grow, as on a disk that is full.
#ifndef OXACORE_TESTS_LOG_FILELIMIT_H
#define OXACORE_TESTS_LOG_FILELIMIT_H

#include <sys/resource.h>

#include <cstddef>
#include <cstdlib>

namespace LogTests {

/// Limits the size of files for the length of a scope.
class FileLimit {
 public:
  explicit FileLimit(std::size_t size) {
    getrlimit(RLIMIT_FSIZE, &m_before);
    Set(size);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;
  ~FileLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }

  void Set(std::size_t size) {
    const rlimit limit = {size, m_before.rlim_max};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) std::abort();
  }

 private:
  rlimit m_before;
};

}  // namespace LogTests

#endif
