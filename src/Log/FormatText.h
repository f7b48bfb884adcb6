// printf into a string, for the log's own texts.
#ifndef OXACORE_LOG_FORMATTEXT_H
#define OXACORE_LOG_FORMATTEXT_H

#include <string>

namespace Oxa::Core {

/// As FormatOnce expands it; empty if that can't.
[[gnu::format(printf, 1, 2)]] std::string FormatText(const char* format, ...);

/// `format`, or what stands for a null one in texts about it.
const char* ShownFormat(const char* format) noexcept;

}  // namespace Oxa::Core

#endif
