// The program's folder, for a process that is about to die.
#ifndef OXACORE_SYSTEM_PROCESSPATH_H
#define OXACORE_SYSTEM_PROCESSPATH_H

#include <string>

namespace Oxa::Core {

/// What System::GetProcessPath gives, without a lock or a heap. Readable at any time; empty before the library has
/// its System.
const char* PlainProcessPath() noexcept;

/// For System, with its lock held.
void PublishProcessPath(const std::string& path) noexcept;

}  // namespace Oxa::Core

#endif
