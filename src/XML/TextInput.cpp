#include "XML/TextInput.h"

#include <algorithm>

#include "Platform/Faults.h"

namespace Oxa::Core {

TextInput::TextInput(std::istream& source)
    : m_rSource(source), m_pBuffer(source.good() ? source.rdbuf() : nullptr) {}

// Never asks for more than the buffer has: what it had copied before it threw would be lost.
std::streamsize TextInput::Read(char* chunk, std::streamsize size) {
  if (m_pBuffer == nullptr) return 0;
  try {
    std::streamsize got = 0;
    if (m_pBuffer->sgetc() != Traits::eof())
      got = m_pBuffer->sgetn(chunk, std::clamp<std::streamsize>(m_pBuffer->in_avail(), 1, size));
    if (got <= 0) End(std::ios::eofbit);
    return got;
  } catch (...) {
    Fail();
    return 0;
  }
}

bool TextInput::GetLine(std::string& line) {
  line.clear();
  for (Traits::int_type c = Next(); c != Traits::eof(); c = Next()) {
    if (c == '\n') return true;
    line += Traits::to_char_type(c);
  }
  return !line.empty();
}

// The state is set before the stream throws for it, if its mask asks for that.
void TextInput::End(std::ios::iostate state) {
  m_pBuffer = nullptr;
  try {
    m_rSource.setstate(state);
  } catch (const std::ios::failure&) {
  }
}

// Within the handler of what the buffer threw.
void TextInput::Fail() {
  End(std::ios::badbit);
  Platform::LetCancellationPass();
}

}  // namespace Oxa::Core
