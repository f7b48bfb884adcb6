// A folder that is gone, with all that is in it, when this object is.
#ifndef OXACORE_TESTS_SUPPORT_TEMPORARYFOLDER_H
#define OXACORE_TESTS_SUPPORT_TEMPORARYFOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <system_error>

namespace TestSupport {

/// All bytes of a file; "" if it can't be read.
inline std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class TemporaryFolder {
 public:
  TemporaryFolder() : m_sPath((std::filesystem::temp_directory_path() / "oxacoreXXXXXX").string()) {
    if (::mkdtemp(m_sPath.data()) == nullptr) std::abort();
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_sPath, ignored);
  }

  /// Without a separator at its end.
  const std::string& Path() const { return m_sPath; }

  /// The whole name of what is in it.
  std::string File(const std::string& name) const { return m_sPath + '/' + name; }

  /// Gives the file's whole name.
  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(File(name), std::ios::binary) << bytes;
    return File(name);
  }

  std::string Read(const std::string& name) const { return ReadFile(File(name)); }
  bool Has(const std::string& name) const { return std::filesystem::exists(File(name)); }

  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_sPath))
      names.insert(entry.path().filename().string());
    return names;
  }

 private:
  std::string m_sPath;
};

/// Makes a folder the current one of the process, and goes back.
class CurrentFolder {
 public:
  explicit CurrentFolder(const std::string& path) : m_before(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;
  ~CurrentFolder() {
    std::error_code ignored;
    std::filesystem::current_path(m_before, ignored);
  }

 private:
  std::filesystem::path m_before;
};

}  // namespace TestSupport

#endif
