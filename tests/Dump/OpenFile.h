// A file or a folder of a test's making, open for what a dump reads.
#ifndef OXACORE_TESTS_DUMP_OPENFILE_H
#define OXACORE_TESTS_DUMP_OPENFILE_H

#include <fcntl.h>
#include <unistd.h>

#include <string>

namespace TestSupport {

class OpenFile {
 public:
  explicit OpenFile(const std::string& name, int flags = O_RDONLY)
      : m_iHandle(::open(name.c_str(), flags | O_CLOEXEC, 0600)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(m_iHandle); }

  int Get() const { return m_iHandle; }

 private:
  int m_iHandle;
};

}  // namespace TestSupport

#endif
