// NamedLockHost COMMAND NAME [NUMBER]: does with a named lock what has to come from another process. The exit
// status tells how it went.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "Platform/NamedLock.h"

namespace Platform = Oxa::Core::Platform;
using Platform::Deadline;
using Platform::EWaitEnd;
using Platform::NamedLock;

namespace {

constexpr int iCANT_OPEN = 100;
constexpr int iWRONG_CALL = 101;

int StatusOf(const Platform::WaitResult& result) { return static_cast<int>(result.m_eEnd); }

int Try(NamedLock& lock) {
  const int status = StatusOf(lock.TryLock());
  lock.Unlock();
  return status;
}

// The number beside the lock goes from 1, "held", to 2, "let go".
int Hold(NamedLock& lock) {
  const int status = StatusOf(lock.LockBy(Deadline::Never()));
  lock.Generation() = 1;
  while (lock.Generation() != 2) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  lock.Unlock();
  return status;
}

int Leave(NamedLock& lock) {
  lock.LockBy(Deadline::Never());
  return StatusOf(lock.LockBy(Deadline::Never()));
}

int Count(NamedLock& lock, long rounds) {
  for (long round = 0; round < rounds; ++round) {
    if (lock.LockBy(Deadline::Never()).m_eEnd != EWaitEnd::eSIGNALLED) return 1;
    lock.Generation().store(lock.Generation().load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    lock.Unlock();
  }
  return 0;
}

// For ever; odd while the lock is held.
int TakeTurns(NamedLock& lock) {
  while (true) {
    if (lock.LockBy(Deadline::Never()).m_eEnd == EWaitEnd::eFAILED) return 1;
    if (lock.Generation() % 2 == 0) ++lock.Generation();
    ++lock.Generation();
    lock.Unlock();
  }
}

int Run(const std::string& command, NamedLock& lock, long number) {
  if (command == "try") return Try(lock);
  if (command == "wait") return StatusOf(lock.LockBy(Deadline::InMilliseconds(number)));
  if (command == "hold") return Hold(lock);
  if (command == "leave") return Leave(lock);
  if (command == "count") return Count(lock, number);
  if (command == "turns") return TakeTurns(lock);
  if (command == "die") {
    Leave(lock);
    std::raise(SIGKILL);
  }
  return iWRONG_CALL;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return iWRONG_CALL;
  int code;
  NamedLock* const lock = NamedLock::Open(arguments[2], code);
  if (lock == nullptr) return iCANT_OPEN;
  std::_Exit(Run(arguments[1], *lock, count > 3 ? std::atol(arguments[3]) : 0));
}
