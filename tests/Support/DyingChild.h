// Programs that die, each with a folder of its own for what it leaves behind.
#ifndef OXACORE_TESTS_SUPPORT_DYINGCHILD_H
#define OXACORE_TESTS_SUPPORT_DYINGCHILD_H

#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"
#include "Support/TemporaryFolder.h"

namespace TestSupport {

/// From now on children of this process leave no core files, and what they had when they died is no leak.
inline void ExpectDeaths() {
  const rlimit none = {0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
  const char* const options = std::getenv("ASAN_OPTIONS");
  ::setenv("ASAN_OPTIONS", ((options != nullptr ? options : "") + std::string(":detect_leaks=0")).c_str(), 1);
}

/// Runs `command` from a copy of its program in `folder`: that is where a dying process puts its records unless it is
/// told another place. Expects deaths from now on.
inline ChildResult RunDying(const TemporaryFolder& folder, std::vector<std::string> command,
                            const std::vector<std::string>& environment = {},
                            std::chrono::seconds limit = std::chrono::seconds(60)) {
  ExpectDeaths();
  const std::filesystem::path program = command[0];
  command[0] = folder.File(program.filename().string());
  std::filesystem::copy_file(program, command[0], std::filesystem::copy_options::skip_existing);
  return RunChild(command, environment, limit);
}

/// The one folder of records in `folder`, whole and with "/" at its end; "" if there isn't exactly one.
inline std::string RecordsIn(const TemporaryFolder& folder) {
  std::string found;
  int count = 0;
  for (const std::string& name : folder.Names()) {
    if (name.rfind("FatalError_", 0) != 0) continue;
    found = folder.File(name) + '/';
    ++count;
  }
  return count == 1 ? found : "";
}

}  // namespace TestSupport

#endif
