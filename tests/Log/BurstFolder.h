// Numbered entries on their way to a default log that is a test's own.
#ifndef OXACORE_TESTS_LOG_BURSTFOLDER_H
#define OXACORE_TESTS_LOG_BURSTFOLDER_H

#include <Infrastructure/OxaCore/LogManager.h>

#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

#include "Log/LogFolder.h"
#include "Log/LogTape.h"

namespace LogTests {

constexpr const char* sBURST_PATH = "Burst.Numbers";

inline LogManager& Manager() { return *LogManager::Instance(); }

/// A folder of its own for the default log.
class BurstFolder {
 public:
  BurstFolder() { CloseFile(); }
  BurstFolder(const BurstFolder&) = delete;
  BurstFolder& operator=(const BurstFolder&) = delete;
  ~BurstFolder() { CloseFile(); }

  const LogFolder& Folder() const { return m_folder; }

  /// The numbers in the file.
  std::vector<int> Numbers() const {
    std::vector<int> numbers;
    if (!m_folder.Has("DefaultLog.entries")) return numbers;
    const std::string text = m_folder.Entries();
    for (std::size_t at = text.find("number "); at != std::string::npos; at = text.find("number ", at + 1))
      numbers.push_back(std::stoi(text.substr(at + 7, 6)));
    return numbers;
  }

 private:
  // A service that takes over closes it.
  static void CloseFile() {
    const Unbuffered sent;
    TapeService service;
    Manager().InstallLogService(service);
  }

  const LogFolder m_folder;
};

/// The entries with those numbers.
inline void Write(int first, int end) {
  const auto logger = GetLogger(sBURST_PATH);
  for (int number = first; number < end; ++number)
    logger->WriteLog(Oxa::Core::eLOG_ERROR, "number %06d.", number);
}

/// From 0 on.
inline std::vector<int> Numbers(int end) {
  std::vector<int> numbers(static_cast<std::size_t>(end));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

}  // namespace LogTests

#endif
