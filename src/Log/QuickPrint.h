// printf for what messages of a log mostly have in them, without the C library's detours.
#ifndef OXACORE_LOG_QUICKPRINT_H
#define OXACORE_LOG_QUICKPRINT_H

#include <cstdarg>
#include <cstddef>

namespace Oxa::Core {

/// What QuickPrint gives for what it leaves to the C library.
constexpr int iNOT_QUICK = -1;

/// Writes what std::vsnprintf would write, byte for byte, and gives its length. iNOT_QUICK for a format that has
/// anything but %%, c, s, d, i, u, x, X, f, F, e, E, g and G in it, with "-", "0", "+", blank, width, precision and
/// a length; for a null text, for numbers that are none or subnormal; where numbers aren't written as in the "C"
/// locale; and for text that `size` bytes can't hold. What stands in `buffer` then is of no use. `args` is walked as
/// far as it went.
int QuickPrint(char* buffer, std::size_t size, const char* format, std::va_list args) noexcept;

}  // namespace Oxa::Core

#endif
