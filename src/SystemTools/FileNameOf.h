// The name of a file without its folder.
#ifndef OXACORE_SYSTEMTOOLS_FILENAMEOF_H
#define OXACORE_SYSTEMTOOLS_FILENAMEOF_H

#include <string>

namespace Oxa::Core {

/// What stands behind the last separator, "/" or "\"; unlike the leaf of a PathName it keeps a dot at its end.
inline std::string FileNameOf(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

}  // namespace Oxa::Core

#endif
