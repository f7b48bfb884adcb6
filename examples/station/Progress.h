// One line on a terminal that tells how far the measuring has come.
#ifndef STATION_PROGRESS_H
#define STATION_PROGRESS_H

#include <chrono>
#include <iosfwd>

namespace Station {

/// Draws onto a stream whose last line is its own as long as it shows something.
class Progress {
 public:
  /// Shows nothing, ever, unless `terminal`: in a file or a pipe such a line would only be noise.
  Progress(std::ostream& out, bool terminal) : m_out(out), m_bTerminal(terminal) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Clear(); }

  /// `done` of `count` samples. Draws at most ten times a second, since drawing costs time too.
  void Show(unsigned long done, unsigned long count);

  /// Takes the line away, to make room for other text. What is shown next is drawn at once.
  void Clear();

 private:
  std::ostream& m_out;
  bool m_bTerminal;
  bool m_bDrawn = false;
  std::chrono::steady_clock::time_point m_nextDrawing;
};

/// Whether standard error is a terminal.
bool IsErrorOutputTerminal();

}  // namespace Station

#endif
