// A folder that is gone, with all that is in it and the locks of logs in it, when this object is.
#ifndef STATION_TESTS_TEMPORARYFOLDER_H
#define STATION_TESTS_TEMPORARYFOLDER_H

#include <filesystem>
#include <string>
#include <system_error>

#include "Support/TemporaryFolder.h"

namespace StationTests {

using TestSupport::ReadFile;

class TemporaryFolder : public TestSupport::TemporaryFolder {
 public:
  ~TemporaryFolder() { RemoveLocks(std::filesystem::path(Path()).filename().string()); }

 private:
  // A log has a lock between processes that outlives them, in memory that all of them see. Its name holds that of
  // the log's folder.
  static void RemoveLocks(const std::string& folder) {
    std::error_code ignored;
    for (const auto& file : std::filesystem::directory_iterator("/dev/shm", ignored)) {
      if (file.path().string().find(folder) != std::string::npos) std::filesystem::remove(file, ignored);
    }
  }
};

}  // namespace StationTests

#endif
