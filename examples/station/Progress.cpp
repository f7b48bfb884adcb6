#include "Progress.h"

#include <unistd.h>

#include <ostream>

namespace Station {

namespace {

const char* const sCLEAR_LINE = "\r\033[K";  // back to the start of the line, and erase it
constexpr std::chrono::milliseconds PAUSE(100);

}  // namespace

void Progress::Show(unsigned long done, unsigned long count) {
  if (!m_bTerminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < m_nextDrawing) return;
  m_nextDrawing = now + PAUSE;
  m_bDrawn = true;
  m_out << sCLEAR_LINE << done << " of " << count << " samples" << std::flush;
}

void Progress::Clear() {
  if (m_bDrawn) m_out << sCLEAR_LINE << std::flush;
  m_bDrawn = false;
  m_nextDrawing = {};
}

bool IsErrorOutputTerminal() { return ::isatty(STDERR_FILENO) == 1; }

}  // namespace Station
