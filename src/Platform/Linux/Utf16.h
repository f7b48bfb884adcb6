// Names of the system (bytes, commonly UTF-8) in the form of files that want UTF-16.
#ifndef OXACORE_PLATFORM_LINUX_UTF16_H
#define OXACORE_PLATFORM_LINUX_UTF16_H

#include <cstddef>

namespace Oxa::Core::Platform {

/// Takes the next character off `text` and gives its one or two units in `units`, and their number. A byte that
/// isn't UTF-8 counts as one character of its own value. `text` must not be at its end.
std::size_t NextUtf16(const char*& text, char16_t* units) noexcept;

}  // namespace Oxa::Core::Platform

#endif
