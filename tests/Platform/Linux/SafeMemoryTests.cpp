// Memory that may not be there, read by the call of the system and, where a sandbox forbids that, in the other way.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Platform/Linux/SafeMemory.h"
#include "Support/SystemCallFilter.h"

namespace {

using namespace Oxa::Core::Platform;

// Three pages of which the last can't be read.
class Pages {
 public:
  Pages() {
    m_pPages = static_cast<unsigned char*>(
        ::mmap(nullptr, 3 * m_uPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    for (std::size_t i = 0; i < 2 * m_uPage; ++i) m_pPages[i] = static_cast<unsigned char>(i * 7 + i / 256);
    ::mprotect(m_pPages + 2 * m_uPage, m_uPage, PROT_NONE);
  }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;
  ~Pages() { ::munmap(m_pPages, 3 * m_uPage); }

  // What is read of `size` bytes that begin so many before the end; more than 9999 if it isn't what stands there.
  std::size_t Read(std::size_t before, std::size_t size) const {
    std::vector<unsigned char> bytes(size);
    const unsigned char* const from = m_pPages + 2 * m_uPage - before;
    const std::size_t read = ReadMemory(reinterpret_cast<std::uintptr_t>(from), bytes.data(), size);
    return std::equal(from, from + read, bytes.begin()) ? read : 10000;
  }

  bool IsReadable(std::size_t before, std::size_t size) const {
    std::vector<unsigned char> bytes(size);
    return ReadSafely(reinterpret_cast<std::uintptr_t>(m_pPages + 2 * m_uPage - before), bytes.data(), size);
  }

  // The second lowest that is free, since a pipe has two ends: it is the same unless one has stayed open.
  static int FreeDescriptor() {
    const int lowest = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int second = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(lowest);
    ::close(second);
    return second;
  }

  // The number of the first statement that doesn't hold; 0 if all do.
  int CheckAll() const {
    const int descriptor = FreeDescriptor();
    errno = ENOTTY;
    if (Read(100, 60) != 60) return 1;
    if (Read(5000, 5000) != 5000) return 2;
    if (Read(100, 200) != 100) return 3;
    if (Read(5000, 6000) != 5000) return 4;
    if (Read(0, 10) != 0) return 5;
    if (Read(10, 0) != 0) return 6;
    if (!IsReadable(5000, 5000) || !IsReadable(0, 0)) return 7;
    if (IsReadable(100, 101) || IsReadable(0, 1)) return 8;
    unsigned char byte = 0;
    if (ReadMemory(8, &byte, 1) != 0 || ReadSafely(~std::uint64_t(0), &byte, 1)) return 9;
    if (errno != ENOTTY) return 10;
    return FreeDescriptor() == descriptor ? 0 : 11;
  }

 private:
  const std::size_t m_uPage = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  unsigned char* m_pPages;
};

bool ForbidReadingProcesses() {
  return TestSupport::AnswerSystemCall(SYS_process_vm_readv, SECCOMP_RET_ERRNO | EPERM);
}

TEST(SafeMemory, IsReadUpToWhereItCanBe) { EXPECT_EQ(0, Pages().CheckAll()); }

TEST(SafeMemory, IsReadWhereASandboxForbidsTheReadingOfProcesses) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(ForbidReadingProcesses() ? Pages().CheckAll() : 99);
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == 99) GTEST_SKIP() << "no such sandbox can be had here";
  EXPECT_EQ(0, WEXITSTATUS(status));
}

}  // namespace
