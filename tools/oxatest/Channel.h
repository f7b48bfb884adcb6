// The child's end of the pipe to the runner.
#ifndef OXATEST_CHANNEL_H
#define OXATEST_CHANNEL_H

#include "Message.h"

#include <mutex>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/types.h>

namespace OxaTest {

/// Any thread may tell. Tests can close handles, and open others under their numbers: nothing is written to those.
class Channel {
 public:
  /// `pipe` is closed in programs that the tests start. Standard output is that of the runner still.
  explicit Channel(int pipe);

  /// Tells it, with the size of the output so far; a text that is too long is cut. Ends the process at once if the
  /// runner is gone, if the pipe was closed, or if this is a copy of the process that a test has made by fork.
  void Tell(Message::EKind kind, std::vector<std::string> texts = {});

 private:
  std::uint64_t OutputSoFar() const;

  int m_iPipe;
  int m_iOutput;
  struct stat m_pipe;
  const pid_t m_process;
  std::mutex m_mutex;  // keeps messages whole
};

}  // namespace OxaTest

#endif
