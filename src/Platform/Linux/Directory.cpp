#include <dirent.h>
#include <errno.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "Platform/Faults.h"
#include "Platform/Files.h"
#include "Platform/Linux/FileName.h"

namespace Oxa::Core::Platform {

namespace {

class OpenFolder {
 public:
  explicit OpenFolder(const char* name) noexcept : m_pFolder(opendir(name)) {}
  OpenFolder(const OpenFolder&) = delete;
  OpenFolder& operator=(const OpenFolder&) = delete;
  ~OpenFolder() {
    if (m_pFolder != nullptr) closedir(m_pFolder);
  }

  bool IsOpen() const noexcept { return m_pFolder != nullptr; }

  /// The next name; null at the end, with `code` 0, and after a failure.
  const char* Next(int& code) noexcept {
    errno = 0;
    const dirent* entry = readdir(m_pFolder);
    code = errno;
    return entry == nullptr ? nullptr : entry->d_name;
  }

 private:
  DIR* m_pFolder;
};

int List(const char* folder, const char* pattern, std::vector<std::string>& names) {
  OpenFolder open(folder);
  if (!open.IsOpen()) return errno;
  std::vector<std::string> found;
  int code = 0;
  while (const char* name = open.Next(code))
    if (MatchesPattern(name, pattern)) found.emplace_back(name);
  if (code != 0) return code;
  std::sort(found.begin(), found.end());
  names.insert(names.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
  return 0;
}

}  // namespace

int ListDirectory(const char* folder, const char* pattern, std::vector<std::string>& names) noexcept {
  const HoldCancellation hold;
  const FileName converted(folder);
  if (converted.Code() != 0) return converted.Code();
  try {
    return List(converted.Get(), pattern, names);
  } catch (const std::exception&) {
    return ENOMEM;
  }
}

}  // namespace Oxa::Core::Platform
