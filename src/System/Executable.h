// The two parts of a program's file name that a process is known by.
#ifndef OXACORE_SYSTEM_EXECUTABLE_H
#define OXACORE_SYSTEM_EXECUTABLE_H

#include <string>

namespace Oxa::Core {

struct Executable {
  std::string folder;  ///< with a closing "/"; "./" if the file name tells none
  std::string leaf;    ///< with the extension; "Unknown" if the file name has none
};

/// Splits the path of a program's file, which may be empty.
Executable SplitExecutable(const std::string& path);

}  // namespace Oxa::Core

#endif
