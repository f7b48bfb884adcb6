// One death on its way: the host runs in a folder of its own, and all that it leaves is found there.
#ifndef OXACORE_TESTS_DEATHS_RUN_H
#define OXACORE_TESTS_DEATHS_RUN_H

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Row.h"

namespace Deaths {

/// What the watch of a dying process has to keep to, with time to write and to begin.
constexpr std::chrono::seconds LIMIT{15};

class Run {
 public:
  /// Starts it. `host` is the program.
  Run(const Row& row, const std::filesystem::path& host);
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  /// Kills what still runs, and removes the folder.
  ~Run();

  /// Whether it has ended, or is over its limit and was killed for that.
  bool IsOver();

  const Row& What() const { return m_row; }
  bool Hung() const { return m_bHung; }
  int Status() const { return m_iStatus; }  ///< exit status, or minus the signal
  double Seconds() const { return m_dSeconds; }
  std::string Error() const;  ///< what it wrote to standard error

  /// Files of these names that it left, in its first folder (or the only one) that has some.
  std::vector<std::filesystem::path> Reports() const;
  std::vector<std::filesystem::path> Dumps() const;
  /// The folders of fatal errors that there are.
  std::vector<std::filesystem::path> FatalFolders() const;
  EWhere Where() const;

  std::filesystem::path Program() const { return m_folder / "program" / "DeathHost"; }
  const std::filesystem::path& Folder() const { return m_folder; }

 private:
  std::filesystem::path Base() const;
  void MakeFolders(const std::filesystem::path& host);
  void Protect();
  void Start();
  std::vector<std::string> Command() const;
  std::vector<std::filesystem::path> FilesLike(const std::string& begin, const std::string& end) const;

  const Row m_row;
  std::filesystem::path m_folder;
  pid_t m_child = 0;
  std::chrono::steady_clock::time_point m_begin;
  bool m_bHung = false;
  int m_iStatus = -1000;
  double m_dSeconds = 0;
};

}  // namespace Deaths

#endif
