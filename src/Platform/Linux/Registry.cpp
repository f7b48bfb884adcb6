#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "Platform/Faults.h"
#include "Platform/Files.h"
#include "Platform/Kill.h"
#include "Platform/Linux/OpenFile.h"
#include "Platform/Linux/RegistryName.h"
#include "Platform/Secrets.h"

namespace Oxa::Core::Platform {

namespace {

constexpr mode_t uFOLDER_MODE = 0700;
constexpr std::size_t uLARGEST_VALUE = 16U << 20U;  // in bytes

[[gnu::tls_model("initial-exec")]] thread_local const char* t_pFolder = nullptr;

// The value of a variable that names a folder whole; "" if it doesn't.
std::string FolderIn(const char* variable) {
  const char* const folder = getenv(variable);
  return folder != nullptr && *folder == '/' ? folder : "";
}

// Where the registry lies; "" if nobody knows.
std::string RegistryPath() {
  if (t_pFolder != nullptr) return t_pFolder;
  std::string config = FolderIn("XDG_CONFIG_HOME");
  if (config.empty()) {
    config = FolderIn("HOME");
    if (config.empty()) return config;
    config += "/.config";
  }
  return NameForSystem(config + "/OxaCore/registry");
}

const char* NameOf(HKEY root) noexcept {
  if (root == HKEY_CURRENT_USER) return "/HKEY_CURRENT_USER";
  return root == HKEY_LOCAL_MACHINE ? "/HKEY_LOCAL_MACHINE" : nullptr;
}

int FindFolder(HKEY root, const std::string& key, std::string& folder) {
  if (NameOf(root) == nullptr) return EBADF;
  folder = RegistryPath();
  if (folder.empty()) return ENOENT;
  folder += NameOf(root) + FolderOfKey(key);
  return 0;
}

bool IsFolder(const char* name) noexcept {
  FileStatus status;
  return Status(name, status) == 0 && status.m_bDirectory;
}

// Whether the system takes a name of that length, and of such parts: one that it doesn't take would be noticed only
// when the folders above are made.
bool IsTooLong(const std::string& path) noexcept {
  if (path.size() >= PATH_MAX) return true;
  for (std::size_t begin = 1, end = 0; end != std::string::npos; begin = end + 1) {
    end = path.find('/', begin);
    if (std::min(end, path.size()) - begin > NAME_MAX) return true;
  }
  return false;
}

// Makes a folder that nobody else looks into, and what is missing above it.
int MakeFolders(std::string& path) {
  if (IsFolder(path.c_str())) return 0;
  if (IsTooLong(path)) return ENAMETOOLONG;
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const bool last = end == std::string::npos;
    if (!last) path[end] = 0;
    const int code = mkdir(path.c_str(), uFOLDER_MODE) == 0 ? 0 : errno;
    const bool there = code == 0 || IsFolder(path.c_str());
    if (!last) path[end] = '/';
    if (!there) return code == EEXIST ? ENOTDIR : code;
    if (last) return 0;
  }
}

// `unfinished` is what mkostemp wants, and becomes the name of the file.
int WriteUnfinished(std::string& unfinished, const std::vector<unsigned char>& bytes) noexcept {
  const OpenFile file(mkostemp(unfinished.data(), O_CLOEXEC));
  if (!file.IsOpen()) return errno;
  const int code = file.WriteAll(bytes.data(), bytes.size());
  if (code != 0) return code;
  return fsync(file.Get()) == 0 ? 0 : errno;
}

// For plain files only: others may have no end.
int SizeOfValue(int file, std::size_t& size) noexcept {
  struct stat facts = {};
  if (fstat(file, &facts) != 0) return errno;
  if (!S_ISREG(facts.st_mode)) return EINVAL;
  size = static_cast<std::size_t>(facts.st_size);
  return size > uLARGEST_VALUE ? EFBIG : 0;
}

// Reads until `bytes` is full, or cuts it where the file ends.
int ReadAll(int file, std::vector<unsigned char>& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got = read(file, bytes.data() + done, bytes.size() - done);
    if (got < 0 && errno != EINTR) return errno;
    if (got == 0) break;
    if (got > 0) done += static_cast<std::size_t>(got);
  }
  bytes.resize(done);
  return 0;
}

}  // namespace

RegistryFolder::RegistryFolder(const char* folder) noexcept : m_pBefore(t_pFolder) { t_pFolder = folder; }

RegistryFolder::~RegistryFolder() { t_pFolder = m_pBefore; }

int CreateRegistryKey(HKEY root, const std::string& key) {
  const HoldKill alive;
  const HoldCancellation hold;
  std::string folder;
  const int code = FindFolder(root, key, folder);
  return code != 0 ? code : MakeFolders(folder);
}

int WriteRegistryValue(HKEY root, const std::string& key, const std::string& name,
                       const std::vector<unsigned char>& bytes) {
  const HoldKill alive;
  const HoldCancellation hold;
  if (bytes.size() > uLARGEST_VALUE) return EFBIG;  // nobody would read it
  std::string folder;
  int code = FindFolder(root, key, folder);
  if (code != 0) return code;
  const std::string file = folder + '/' + FileOfValue(name);
  std::string unfinished = folder + '/' + g_pUNFINISHED_VALUE;
  code = WriteUnfinished(unfinished, bytes);
  if (code == 0 && rename(unfinished.c_str(), file.c_str()) != 0) code = errno;
  if (code != 0) unlink(unfinished.c_str());
  return code;
}

int ReadRegistryValue(HKEY root, const std::string& key, const std::string& name,
                      std::vector<unsigned char>& bytes) {
  const HoldKill alive;
  const HoldCancellation hold;
  std::string folder;
  int code = FindFolder(root, key, folder);
  if (code != 0) return code;
  const std::string path = folder + '/' + FileOfValue(name);
  // Who opens a pipe may wait for ever, unless he says that he won't.
  const OpenFile file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.IsOpen()) return errno;
  std::size_t size = 0;
  code = SizeOfValue(file.Get(), size);
  if (code != 0) return code;
  std::vector<unsigned char> all(size);
  code = ReadAll(file.Get(), all);
  if (code == 0) bytes.swap(all);
  return code;
}

}  // namespace Oxa::Core::Platform
