#include "Channel.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace OxaTest {

namespace {

// Standard output and error are one file, which only grows.
std::uint64_t OutputSoFar() {
  std::cout.flush();
  std::fflush(stdout);
  struct stat status {};
  return ::fstat(STDOUT_FILENO, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool WriteAll(int handle, const std::string& bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const ssize_t count = ::write(handle, bytes.data() + at, bytes.size() - at);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) at += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

Channel::Channel(int pipe) : m_iPipe(pipe) { ::fcntl(m_iPipe, F_SETFD, FD_CLOEXEC); }

void Channel::Tell(Message::EKind kind, std::vector<std::string> texts) {
  Message message;
  message.m_eKind = kind;
  message.m_uOutput = OutputSoFar();
  message.m_texts = std::move(texts);
  if (!WriteAll(m_iPipe, Encode(message))) ::_exit(1);
}

}  // namespace OxaTest
