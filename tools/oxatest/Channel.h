// The child's end of the pipe to the runner.
#ifndef OXATEST_CHANNEL_H
#define OXATEST_CHANNEL_H

#include "Message.h"

#include <string>
#include <vector>

namespace OxaTest {

class Channel {
 public:
  /// `pipe` is closed in programs that the tests start.
  explicit Channel(int pipe);

  /// Tells it, with the size of the output so far. Ends the process at once if the runner is gone.
  void Tell(Message::EKind kind, std::vector<std::string> texts = {});

 private:
  int m_iPipe;
};

}  // namespace OxaTest

#endif
