// FileStreamHost FILE PROGRESS: writes the numbers from 0 on, 8 bytes each, to FILE through a buffer, and says in
// PROGRESS, a line at a time, how many of them were flushed; until it is killed or its parent has ended.
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdint>
#include <string>

using namespace Oxa::Core;

int main(int count, char** arguments) {
  if (count != 3) return 2;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  BinaryFileStream file(arguments[1], BinaryFileStream::WRITE_MODE, BinaryFileStream::eCREATE_NEW);
  BufferedBinaryOutputStream buffered(file, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
  const int progress = ::open(arguments[2], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  for (std::uint64_t number = 0;; ++number) {
    if (number % 100 == 50) {
      buffered.Flush();
      const std::string line = std::to_string(number) + '\n';
      if (::write(progress, line.data(), line.size()) != static_cast<ssize_t>(line.size())) return 1;
    }
    buffered.Write(&number, sizeof number);
  }
}
