#include "StandardHandles.h"

#include <iostream>

#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

namespace OxaTest {

bool OpenStandardHandles() {
  for (int handle = STDIN_FILENO; handle <= STDERR_FILENO; ++handle)
    // The system gives the lowest number that is free, and those below are taken.
    if (::fcntl(handle, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != handle) return false;
  return true;
}

// The end of the process would try it again, and wait for a reader that has stopped reading.
bool FlushOutput() {
  if (std::cout.flush()) return true;
  ::__fpurge(stdout);
  return false;
}

}  // namespace OxaTest
