#include "Log/FormatText.h"

#include <Infrastructure/OxaCore/Log.h>

#include <cstdarg>

namespace Oxa::Core {

namespace {

const char* const sNULL_FORMAT = "!!!NULL!!!";

}  // namespace

std::string FormatText(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  FormatOnce text(format, args);
  va_end(args);
  const char* const expanded = text.GetText();
  return expanded != nullptr ? std::string(expanded) : std::string();
}

const char* ShownFormat(const char* format) noexcept { return format != nullptr ? format : sNULL_FORMAT; }

}  // namespace Oxa::Core
