#include <Infrastructure/OxaCore/Log.h>

#include <cstdio>
#include <new>

#include "Log/QuickPrint.h"

namespace Oxa::Core {

FormatOnce::FormatOnce(const char* format, std::va_list args) : m_pFormat(format) { va_copy(m_args, args); }

FormatOnce::~FormatOnce() { va_end(m_args); }

const char* FormatOnce::GetText() noexcept {
  if (!m_bExpanded) {
    m_bExpanded = true;
    m_pText = Expand();
  }
  return m_pText;
}

const char* FormatOnce::Expand() noexcept {
  if (m_pFormat == nullptr) return nullptr;
  const int length = Print(m_buffer, sizeof m_buffer);
  if (length < 0) return nullptr;
  if (static_cast<std::size_t>(length) < sizeof m_buffer) return m_buffer;
  return ExpandBeyond(static_cast<std::size_t>(length));
}

// The routine tells how long the text is: only the buffer that holds it, or the largest, is worth a trial.
const char* FormatOnce::ExpandBeyond(std::size_t length) noexcept {
  std::size_t size = sizeof m_buffer;
  while (size <= length && 2 * size < uLIMIT) size *= 2;
  m_longBuffer.reset(new (std::nothrow) char[size]);
  if (m_longBuffer == nullptr) return m_buffer;
  return Print(m_longBuffer.get(), size) < 0 ? nullptr : m_longBuffer.get();
}

// A list of arguments can be walked once only: each trial walks a copy. Most of what a plain message cost its caller
// was the C library's work on its numbers.
int FormatOnce::Print(char* buffer, std::size_t size) noexcept {
  const int quick = QuickPrint(buffer, size, m_pFormat, m_args);
  if (quick != iNOT_QUICK) return quick;
  std::va_list args;
  va_copy(args, m_args);  // NOLINT(clang-analyzer-valist.Uninitialized): copied by the constructor
  const int length = std::vsnprintf(buffer, size, m_pFormat, args);
  va_end(args);
  return length;
}

}  // namespace Oxa::Core
