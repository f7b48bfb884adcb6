#include "XML/TextOutput.h"

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

// Whether there is nothing to do for a write but to hand the text to the buffer.
bool IsPlain(const std::ostream& os) {
  return os.good() && os.tie() == nullptr && os.exceptions() == std::ios::goodbit &&
         (os.flags() & std::ios::unitbuf) == 0;
}

}  // namespace

// As ostream::write, without what its sentry costs when it has nothing to guard.
void TextOutput::Write(const char* text, std::size_t size) {
  const auto count = static_cast<std::streamsize>(size);
  if (!IsPlain(m_rStream)) {
    m_rStream.write(text, count);
    return;
  }
  try {
    if (m_rStream.rdbuf()->sputn(text, count) != count) m_rStream.setstate(std::ios::badbit);
  } catch (...) {
    m_rStream.setstate(std::ios::badbit);
    Platform::LetCancellationPass();
  }
}

TextOutput& TextOutput::PutBeyond(const char* text, std::size_t size) {
  Flush();
  if (size <= sizeof m_buffer) return Put(text, size);
  Write(text, size);
  return *this;
}

void TextOutput::EndLine() {
  *this << '\n';
  Flush();
  m_rStream.flush();
}

}  // namespace Oxa::Core
