// What the programs share that write to one log at once: "TwoWritersX FOLDER NAME LINES" gets ready to log into
// FOLDER, says so with one byte on standard output, waits for one on standard input, logs LINES lines that tell of
// NAME, and ends when standard input does.
#ifndef OXACORE_BENCH_TWOWRITERS_H
#define OXACORE_BENCH_TWOWRITERS_H

#include <unistd.h>

#include <cstdlib>
#include <string>

/// The message, for those who print it as printf does, with its arguments.
#define TWO_WRITERS_MESSAGE "Writer %s reads %8.3f K at step %06d"
#define TWO_WRITERS_ARGUMENTS(name, number) (name), (number)*0.125, (number)

namespace OxaBench {

struct WriterTask {
  std::string m_sFolder;  ///< with a separator at its end
  std::string m_sName;
  int m_iLines = 0;
};

inline bool ReadTask(int argc, char** argv, WriterTask& task) {
  if (argc != 4) return false;
  task = {std::string(argv[1]) + "/", argv[2], std::atoi(argv[3])};
  return true;
}

/// Says that this process is ready, and waits until all are to begin.
inline bool AwaitStart() {
  char byte = '.';
  return ::write(STDOUT_FILENO, &byte, 1) == 1 && ::read(STDIN_FILENO, &byte, 1) == 1;
}

inline void AwaitEnd() {
  char byte;
  while (::read(STDIN_FILENO, &byte, 1) == 1) {
  }
}

}  // namespace OxaBench

#endif
