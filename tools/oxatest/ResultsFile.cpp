#include "ResultsFile.h"

#include "JUnit.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace OxaTest {

namespace {

const char* const sCANNOT_WRITE = "can't be written";
const char* const sFOLDER = "is a folder";
const char* const sOUTPUT = "takes the output already";
const char* const sKEPT = "; the results are in ";
const int iATTEMPTS = 100;

bool IsOutput(const struct stat& file) {
  struct stat output {};
  return ::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev && output.st_ino == file.st_ino;
}

// A file keeps its rights.
mode_t RightsOf(const std::string& path, mode_t ofNewFiles) {
  struct stat before {};
  return (::stat(path.c_str(), &before) == 0 ? before.st_mode : ofNewFiles) & 07777U;
}

}  // namespace

ResultsFile::ResultsFile(const std::string& path) : m_sPath(path) {
  if (!path.empty()) Prepare();
}

void ResultsFile::Prepare() {
  std::error_code ignored;
  const std::filesystem::path resolved = std::filesystem::weakly_canonical(m_sPath, ignored);
  m_sTarget = std::filesystem::absolute(resolved.empty() ? std::filesystem::path(m_sPath) : resolved, ignored)
                  .string();
  struct stat file {};
  const bool there = ::stat(m_sPath.c_str(), &file) == 0;
  if (there && S_ISDIR(file.st_mode)) {
    m_sComplaint = m_sPath + ": " + sFOLDER;
  } else if (there && !S_ISREG(file.st_mode)) {
    m_direct.open(m_sPath, std::ios::binary);
    if (!m_direct) Complain(std::strerror(errno));
  } else if (there && IsOutput(file)) {
    m_sComplaint = m_sPath + ": " + sOUTPUT;
  } else if (there && ::access(m_sPath.c_str(), W_OK) != 0) {
    Complain(std::strerror(errno));
  } else if (const int handle = MakeBeside(); handle >= 0) {
    ::close(handle);
    ::unlink(m_sBeside.c_str());
  }
}

// Under a short name of its own; with the rights that a new file has here.
int ResultsFile::MakeBeside() {
  const std::string name =
      (std::filesystem::path(m_sTarget).parent_path() / (".oxatest" + std::to_string(::getpid()))).string();
  int handle = -1;
  for (int i = 0; i < iATTEMPTS && handle < 0; ++i) {
    m_sBeside = name + '.' + std::to_string(i);
    handle = ::open(m_sBeside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (handle < 0 && errno != EEXIST) break;
  }
  if (handle < 0) Complain(std::strerror(errno));
  return handle;
}

void ResultsFile::Write(const std::vector<ModuleRecord>& modules) {
  if (m_sPath.empty()) return;
  if (!m_direct.is_open()) {
    WriteBeside(modules);
    return;
  }
  WriteJUnit(m_direct, modules);
  m_direct.close();
  if (!m_direct) Complain(std::strerror(errno));
}

void ResultsFile::WriteBeside(const std::vector<ModuleRecord>& modules) {
  const int handle = MakeBeside();
  if (handle < 0) return;
  struct stat file {};
  ::fstat(handle, &file);
  ::fchmod(handle, S_IRUSR | S_IWUSR);  // whatever the umask has taken
  std::ofstream stream(m_sBeside, std::ios::binary);
  WriteJUnit(stream, modules);
  stream.close();
  if (stream && ::fsync(handle) == 0) {
    ::fchmod(handle, RightsOf(m_sTarget, file.st_mode));
    PutInPlace();
  } else {
    Complain(std::strerror(errno));
    ::unlink(m_sBeside.c_str());
  }
  ::close(handle);
}

// What can't be put there isn't thrown away.
void ResultsFile::PutInPlace() {
  if (::rename(m_sBeside.c_str(), m_sTarget.c_str()) != 0)
    Complain(std::strerror(errno) + std::string(sKEPT) + m_sBeside);
}

void ResultsFile::Complain(const std::string& why) {
  m_sComplaint = m_sPath + ": " + sCANNOT_WRITE + ": " + why;
}

}  // namespace OxaTest
