// Who reads what a program writes.
#ifndef OXACORE_PLATFORM_TERMINAL_H
#define OXACORE_PLATFORM_TERMINAL_H

#include <iosfwd>

namespace Oxa::Core::Platform {

/// Whether the stream writes to a terminal at the moment: one of the standard streams that leads there, or any other
/// on a file that the system knows. False for all that can't be told. Any thread may call.
bool IsTerminal(const std::ostream& out) noexcept;

/// Whether the user wants colours on the terminal that the program was started from.
bool WantsColours() noexcept;

}  // namespace Oxa::Core::Platform

#endif
