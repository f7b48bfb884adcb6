#include "Workplace.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace OxaTest {

namespace {

const char* const sTEMPLATE = "oxatestXXXXXX";
const char* const sOUTPUT = "/output";
const std::uint64_t uKEPT = 65536;

std::string LeftOut(std::uint64_t count) { return "[" + std::to_string(count) + " bytes left out]\n"; }

// The system would be asked too often for less.
const std::uint64_t uWORTH_IT = 1U << 20;

std::filesystem::path TemporaryFolder() {
  const char* const folder = std::getenv("TMPDIR");
  std::error_code ignored;
  return std::filesystem::absolute(folder == nullptr || *folder == '\0' ? "/tmp" : folder, ignored);
}

}  // namespace

Workplace::Workplace() {
  std::string folder = (TemporaryFolder() / sTEMPLATE).string();
  if (::mkdtemp(folder.data()) != nullptr) {
    m_sFolder = folder;
    ::chmod(folder.c_str(), 0700);  // a umask may have taken rights from it
    m_iOutput = ::open((folder + sOUTPUT).c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  }
  if (m_iOutput < 0) m_sComplaint = TemporaryFolder().string() + ": " + std::strerror(errno);
}

Workplace::~Workplace() {
  if (m_iOutput >= 0) ::close(m_iOutput);
  std::error_code ignored;
  if (!m_sFolder.empty()) std::filesystem::remove_all(m_sFolder, ignored);
}

std::string Workplace::TakeOutput(std::uint64_t end) {
  const std::uint64_t size = OutputSize();
  m_uTaken = std::min(m_uTaken, size);  // a test may have emptied the file
  end = std::min(end, size);
  if (end <= m_uTaken) return "";
  const std::uint64_t begin = std::max(m_uTaken, end - std::min(end, uKEPT));
  std::string text(static_cast<std::size_t>(end - begin), '\0');
  const ssize_t count = ::pread(m_iOutput, text.data(), text.size(), static_cast<off_t>(begin));
  text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  if (begin > m_uTaken) text.insert(0, LeftOut(begin - m_uTaken));
  m_uTaken = end;
  return text;
}

std::string Workplace::TakeOutput() { return TakeOutput(OutputSize()); }

std::uint64_t Workplace::OutputSize() const {
  struct stat status {};
  return ::fstat(m_iOutput, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void Workplace::GiveBack(std::uint64_t size) {
  const std::uint64_t end = std::max(m_uTaken, size - std::min(size, uKEPT));
  if (end < m_uGivenBack + uWORTH_IT) return;
  ::fallocate(m_iOutput, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(m_uGivenBack),
              static_cast<off_t>(end - m_uGivenBack));
  m_uGivenBack = end;
}

}  // namespace OxaTest
