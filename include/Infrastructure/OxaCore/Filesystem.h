// std::filesystem::path and PathName, from one to the other.
//
// Both are texts of bytes, and the bytes stay, but for the separators: a PathName separates by backslashes as well as
// by slashes wherever it is, so that its backslashes become what separates on this system. The way back keeps every
// byte: a backslash that is a plain character of a file's name on this system separates in the PathName.
//
// What the two make of a name is not the same: "/tmp/x" is relative for a PathName, which knows drives and servers
// only. Any thread may call both. Throws nothing but std::bad_alloc.
//
//   std::filesystem::remove_all(ToPath(folder));
//   const PathName file = ToPathName(std::filesystem::temp_directory_path() / "run.txt");
#ifndef INFRASTRUCTURE_OXACORE_FILESYSTEM_H
#define INFRASTRUCTURE_OXACORE_FILESYSTEM_H

#include <Infrastructure/OxaCore/PathName.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace Oxa::Core {

/// The name as the library would hand it to the system.
inline std::filesystem::path ToPath(const PathName& name) {
  std::string text = static_cast<const std::string&>(name);
  if (std::filesystem::path::preferred_separator == '/') std::replace(text.begin(), text.end(), '\\', '/');
  return std::filesystem::path(text);
}

/// The name as it stands.
inline PathName ToPathName(const std::filesystem::path& name) { return PathName(name.string()); }

}  // namespace Oxa::Core

#endif
