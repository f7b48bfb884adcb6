// A folder that is gone, with all that is in it, when this object is.
#ifndef STATION_TESTS_TEMPORARYFOLDER_H
#define STATION_TESTS_TEMPORARYFOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace StationTests {

inline std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class TemporaryFolder {
 public:
  TemporaryFolder() : m_sPath((std::filesystem::temp_directory_path() / "stationXXXXXX").string()) {
    if (::mkdtemp(m_sPath.data()) == nullptr) std::abort();
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    RemoveLocks(std::filesystem::path(m_sPath).filename().string());
    std::filesystem::remove_all(m_sPath, ignored);
  }

  const std::string& Path() const { return m_sPath; }
  std::string File(const std::string& name) const { return m_sPath + '/' + name; }

  /// Gives the file's full name.
  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(File(name), std::ios::binary) << text;
    return File(name);
  }

 private:
  // A log has a lock between processes that outlives them, in memory that all of them see. Its name holds that of
  // the log's folder.
  static void RemoveLocks(const std::string& folder) {
    std::error_code ignored;
    for (const auto& file : std::filesystem::directory_iterator("/dev/shm", ignored)) {
      if (file.path().string().find(folder) != std::string::npos) std::filesystem::remove(file, ignored);
    }
  }

  std::string m_sPath;
};

}  // namespace StationTests

#endif
