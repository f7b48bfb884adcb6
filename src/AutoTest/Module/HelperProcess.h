// The program that self-tests start where they need another process.
#ifndef OXACORE_AUTOTEST_MODULE_HELPERPROCESS_H
#define OXACORE_AUTOTEST_MODULE_HELPERPROCESS_H

#include <string>
#include <vector>

#include "Platform/Processes.h"

namespace Oxa::Core {

/// UnitTestProcess.exe, which comes with the library: what it can be told to do stands in its source. It is looked for
/// beside the program, beside the library, in the folder OxaCore there, and where the system looks for programs.
class HelperProcess {
 public:
  /// Starts it. Raises a Test::Failure that names all the folders if it is in none, and one with the system's text if
  /// it can't be started. It ends with this object at the latest.
  explicit HelperProcess(const std::vector<std::string>& arguments);

  /// Waits until it has ended, as long as a test waits for anything; gives its exit status. Raises a Test::Failure if
  /// it doesn't end, or if nobody can tell how it did.
  int Await();

 private:
  Platform::StartedProcess m_process;
};

}  // namespace Oxa::Core

#endif
