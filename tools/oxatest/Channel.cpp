#include "Channel.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace OxaTest {

namespace {

const char* const sCLOSED =
    "oxatest: a test has closed a handle that it hadn't opened: the process can't go on\n";
const char* const sCOPY =
    "oxatest: a copy of the process that a test has made by fork came out of the test\n";
const int iHIGH = 200;  // beyond what tests use that count on numbers

bool WriteAll(int handle, const std::string& bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const ssize_t count = ::write(handle, bytes.data() + at, bytes.size() - at);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) at += static_cast<std::size_t>(count);
  }
  return true;
}

int MoveHigh(int handle) {
  const int high = ::fcntl(handle, F_DUPFD_CLOEXEC, iHIGH);
  return high < 0 ? ::fcntl(handle, F_DUPFD_CLOEXEC, 0) : high;
}

bool IsStill(const struct stat& file, int handle) {
  struct stat now {};
  return ::fstat(handle, &now) == 0 && now.st_dev == file.st_dev && now.st_ino == file.st_ino;
}

[[noreturn]] void End(const char* why) {
  WriteAll(STDERR_FILENO, why);
  ::_exit(1);
}

}  // namespace

Channel::Channel(int pipe)
    : m_iPipe(MoveHigh(pipe)), m_iOutput(MoveHigh(STDOUT_FILENO)), m_pipe(), m_process(::getpid()) {
  ::fstat(m_iPipe, &m_pipe);
  ::close(pipe);
}

// Standard output and error are one file, which only grows.
std::uint64_t Channel::OutputSoFar() const {
  std::cout.flush();
  std::fflush(stdout);
  struct stat status {};
  return ::fstat(m_iOutput, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void Channel::Tell(Message::EKind kind, std::vector<std::string> texts) {
  if (::getpid() != m_process) End(sCOPY);
  const std::lock_guard<std::mutex> lock(m_mutex);
  Message message;
  message.m_eKind = kind;
  message.m_uOutput = OutputSoFar();
  for (std::string& text : texts) message.m_texts.push_back(Limited(std::move(text)));
  if (!IsStill(m_pipe, m_iPipe)) End(sCLOSED);
  if (!WriteAll(m_iPipe, Encode(message))) ::_exit(1);
}

}  // namespace OxaTest
