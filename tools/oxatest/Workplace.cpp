#include "Workplace.h"

#include <algorithm>
#include <cerrno>
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

std::uint64_t SizeOf(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

Workplace::Workplace() {
  std::error_code error;
  std::string folder = (std::filesystem::temp_directory_path(error) / sTEMPLATE).string();
  if (::mkdtemp(folder.data()) != nullptr) {
    m_sFolder = folder;
    m_iOutput = ::open((folder + sOUTPUT).c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  }
  if (m_iOutput < 0) m_sComplaint = folder + ": " + std::strerror(errno);
}

Workplace::~Workplace() {
  if (m_iOutput >= 0) ::close(m_iOutput);
  std::error_code ignored;
  if (!m_sFolder.empty()) std::filesystem::remove_all(m_sFolder, ignored);
}

std::string Workplace::TakeOutput(std::uint64_t end) {
  end = std::min(end, SizeOf(m_iOutput));
  if (end <= m_uTaken) return "";
  const std::uint64_t begin = std::max(m_uTaken, end - std::min(end, uKEPT));
  std::string text(static_cast<std::size_t>(end - begin), '\0');
  const ssize_t count = ::pread(m_iOutput, text.data(), text.size(), static_cast<off_t>(begin));
  text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  if (begin > m_uTaken) text.insert(0, LeftOut(begin - m_uTaken));
  m_uTaken = end;
  return text;
}

std::string Workplace::TakeOutput() { return TakeOutput(SizeOf(m_iOutput)); }

}  // namespace OxaTest
