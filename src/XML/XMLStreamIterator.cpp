#include "XML/XMLStreamIterator.h"

#include <boost/spirit/include/classic_multi_pass.hpp>
#include <boost/throw_exception.hpp>

namespace Oxa::Core {

using boost::spirit::classic::multi_pass_policies::illegal_backtracking;

// Positions before the window wrap around and come here, too.
bool XMLStreamWindow::ReadOn(std::uint64_t at) {
  if (at < m_uForgotten) boost::throw_exception(illegal_backtracking());
  while (at - m_uForgotten >= m_uFilled) {
    if (m_uFilled == m_buffer.size()) MakeRoom();
    const std::streamsize got =
        m_input.Read(m_buffer.data() + m_uFilled, static_cast<std::streamsize>(m_buffer.size() - m_uFilled));
    if (got <= 0) return false;
    m_uFilled += static_cast<std::size_t>(got);
  }
  return true;
}

// What is kept moves to the front. There is room for as much again behind it, so that the moves cost no more
// than the reading, however much is kept.
void XMLStreamWindow::MakeRoom() {
  const std::size_t forgotten = static_cast<std::size_t>(m_uCheckpoint - m_uForgotten);
  const std::size_t kept = m_uFilled - forgotten;
  if (kept > 0) std::memmove(m_buffer.data(), m_buffer.data() + forgotten, kept);
  m_uForgotten = m_uCheckpoint;
  m_uFilled = kept;
  if (kept > m_buffer.size() / 2) m_buffer.resize(2 * m_buffer.size());
}

}  // namespace Oxa::Core
