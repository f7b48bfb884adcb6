#include "Platform/Terminal.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#include <ext/stdio_sync_filebuf.h>

#include <fstream>
#include <ostream>

namespace Oxa::Core::Platform {

namespace {

// The standard library keeps the system's number of an open file to those who derive.
class OpenFileOf : public std::filebuf {
 public:
  static int Number(std::filebuf& buffer) noexcept { return (buffer.*&OpenFileOf::_M_file).fd(); }
};

// The system's number of the file behind a buffer; -1 where there is none. The standard streams have buffers of the
// first kind as long as they go together with those of C, and of the second otherwise, as all streams on files have.
int FileOf(std::streambuf* buffer) noexcept {
  if (auto* const shared = dynamic_cast<__gnu_cxx::stdio_sync_filebuf<char>*>(buffer))
    return fileno(shared->file());
  auto* const own = dynamic_cast<std::filebuf*>(buffer);
  return own != nullptr && own->is_open() ? OpenFileOf::Number(*own) : -1;
}

bool IsEmpty(const char* text) noexcept { return text == nullptr || *text == 0; }

}  // namespace

bool IsTerminal(const std::ostream& out) noexcept { return isatty(FileOf(out.rdbuf())) == 1; }

bool WantsColours() noexcept {
  const char* const terminal = getenv("TERM");
  return IsEmpty(getenv("NO_COLOR")) && !IsEmpty(terminal) && strcmp(terminal, "dumb") != 0;
}

}  // namespace Oxa::Core::Platform
