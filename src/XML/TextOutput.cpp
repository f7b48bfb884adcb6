#include "XML/TextOutput.h"

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

// Whether there is nothing to do for a write but to hand the text to the buffer.
bool IsPlain(const std::ostream& os) {
  return os.good() && os.tie() == nullptr && os.exceptions() == std::ios::goodbit &&
         (os.flags() & std::ios::unitbuf) == 0;
}

// What goes wrong with the buffer is the stream's state, and no exception.
template <class Work>
void UseBuffer(std::ostream& os, const Work& work) {
  try {
    if (!work(*os.rdbuf())) os.setstate(std::ios::badbit);
  } catch (...) {
    os.setstate(std::ios::badbit);
    Platform::LetCancellationPass();
  }
}

}  // namespace

// As ostream::write, without what its sentry costs when it has nothing to guard.
void TextOutput::Write(const char* text, std::size_t size) {
  if (m_pText != nullptr) {
    m_pText->append(text, size);
    return;
  }
  const auto count = static_cast<std::streamsize>(size);
  if (!IsPlain(*m_pStream)) {  // NOLINT: where there is no text there is a stream
    m_pStream->write(text, count);
    return;
  }
  UseBuffer(*m_pStream, [&](std::streambuf& buffer) { return buffer.sputn(text, count) == count; });
}

TextOutput& TextOutput::PutBeyond(const char* text, std::size_t size) {
  Flush();
  if (size <= sizeof m_buffer) return Put(text, size);
  Write(text, size);
  return *this;
}

void TextOutput::EndLine() {
  *this << '\n';
  if (m_pText != nullptr) return;
  Flush();
  if (!IsPlain(*m_pStream)) {  // NOLINT: where there is no text there is a stream
    m_pStream->flush();
    return;
  }
  UseBuffer(*m_pStream, [](std::streambuf& buffer) { return buffer.pubsync() != -1; });
}

}  // namespace Oxa::Core
