#include "Run.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Deaths {

namespace fs = std::filesystem;

namespace {

const char* const sFATAL = "FatalError_";

fs::path NewFolder() {
  std::string name = (fs::temp_directory_path() / "deathXXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) std::abort();
  return name;
}

// The same file under another name where that can be: the program's own folder is one that reports go to.
void Place(const fs::path& program, const fs::path& as) {
  std::error_code failed;
  fs::create_hard_link(program, as, failed);
  if (failed) fs::copy_file(program, as);
}

constexpr mode_t uOPEN = 0777;
constexpr mode_t uCLOSED = 0555;

void SetMode(const fs::path& path, mode_t mode) { ::chmod(path.c_str(), mode); }

[[noreturn]] void BecomeHost(const std::vector<char*>& arguments, const char* folder) {
  if (::chdir(folder) != 0) ::_exit(98);
  const int null = ::open("/dev/null", O_RDWR);
  const int error = ::open("../error.txt", O_WRONLY | O_CREAT | O_TRUNC, 0666);
  ::dup2(null, STDIN_FILENO);
  ::dup2(null, STDOUT_FILENO);
  ::dup2(error, STDERR_FILENO);
  ::execv(arguments[0], arguments.data());
  ::_exit(98);
}

}  // namespace

Run::Run(const Row& row, const fs::path& host) : m_row(row), m_folder(NewFolder()) {
  MakeFolders(host);
  Start();
}

Run::~Run() {
  if (m_child > 0) {
    ::kill(m_child, SIGKILL);
    ::waitpid(m_child, nullptr, 0);
  }
  for (const char* name : {"base", "program", "working"}) SetMode(m_folder / name, uOPEN);
  std::error_code ignored;
  fs::remove_all(m_folder, ignored);
}

fs::path Run::Base() const {
  // Nothing can be made below a file.
  return m_row.m_eFolders == EFolders::eBASE_IMPOSSIBLE ? Program() / "base" : m_folder / "base";
}

void Run::MakeFolders(const fs::path& host) {
  SetMode(m_folder, uOPEN);
  for (const char* name : {"base", "program", "working"}) {
    fs::create_directory(m_folder / name);
    SetMode(m_folder / name, uOPEN);
  }
  Place(host, Program());
  Protect();
}

void Run::Protect() {
  const EFolders folders = m_row.m_eFolders;
  if (folders == EFolders::eALL || folders == EFolders::eBASE_IMPOSSIBLE) return;
  SetMode(m_folder / "base", uCLOSED);
  if (folders != EFolders::eBASE_READ_ONLY) SetMode(m_folder / "program", uCLOSED);
  if (folders == EFolders::eALL_READ_ONLY) SetMode(m_folder / "working", uCLOSED);
}

std::vector<std::string> Run::Command() const {
  std::vector<std::string> command = {Program().string(), m_row.m_sKind, m_row.m_sPlace,
                                      "base=" + Base().string() + "/"};
  command.insert(command.end(), m_row.m_more.begin(), m_row.m_more.end());
  return command;
}

void Run::Start() {
  std::vector<std::string> command = Command();
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  const std::string folder = (m_folder / "working").string();
  m_begin = std::chrono::steady_clock::now();
  m_child = ::fork();
  if (m_child == 0) BecomeHost(arguments, folder.c_str());
}

bool Run::IsOver() {
  int status = 0;
  const bool ended = ::waitpid(m_child, &status, WNOHANG) != 0;
  const auto passed = std::chrono::steady_clock::now() - m_begin;
  if (!ended && passed < LIMIT) return false;
  if (!ended) {
    m_bHung = true;
    ::kill(m_child, SIGKILL);
    ::waitpid(m_child, &status, 0);
  }
  m_child = 0;
  m_dSeconds = std::chrono::duration<double>(passed).count();
  m_iStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return true;
}

std::string Run::Error() const {
  std::ifstream file(m_folder / "error.txt", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<fs::path> Run::FatalFolders() const {
  std::vector<fs::path> folders;
  for (const char* name : {"base", "program", "working"})
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder / name))
      if (entry.path().filename().string().rfind(sFATAL, 0) == 0) folders.push_back(entry.path());
  return folders;
}

EWhere Run::Where() const {
  const std::vector<fs::path> folders = FatalFolders();
  const std::string name = folders.empty() ? "working" : folders[0].parent_path().filename().string();
  if (folders.empty() && Reports().empty() && Dumps().empty()) return EWhere::eNOWHERE;
  if (name == "base") return EWhere::eBASE;
  return name == "program" ? EWhere::ePROGRAM : EWhere::eWORKING;
}

std::vector<fs::path> Run::FilesLike(const std::string& begin, const std::string& end) const {
  const std::vector<fs::path> folders = FatalFolders();
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry :
       fs::directory_iterator(folders.empty() ? m_folder / "working" : folders[0])) {
    const std::string name = entry.path().filename().string();
    if (name.rfind(begin, 0) == 0 && entry.path().extension() == end) files.push_back(entry.path());
  }
  // The first report and the first dump have no number.
  std::sort(files.begin(), files.end(), [](const fs::path& left, const fs::path& right) {
    return left.string().size() != right.string().size() ? left.string().size() < right.string().size()
                                                         : left < right;
  });
  return files;
}

std::vector<fs::path> Run::Reports() const { return FilesLike("ErrorInfo", ".xml"); }
std::vector<fs::path> Run::Dumps() const { return FilesLike("CrashMiniDump", ".dmp"); }

}  // namespace Deaths
