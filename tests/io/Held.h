// Whether a stream's lock is held, for tests of who is let in when.
#ifndef OXACORE_TESTS_IO_HELD_H
#define OXACORE_TESTS_IO_HELD_H

#include <Infrastructure/OxaCore/io/BinaryStreams.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace IoTests {

/// An action on a thread of its own, which is expected to have to wait.
class Waiter {
 public:
  explicit Waiter(const std::function<void()>& action)
      : m_thread([this, action] {
          action();
          m_bThrough = true;
        }) {}
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;
  ~Waiter() { m_thread.join(); }

  /// The more time, the likelier a failure shows.
  bool Waits() const {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return !m_bThrough;
  }

 private:
  std::atomic<bool> m_bThrough{false};
  std::thread m_thread;  // last: it uses the other
};

using Acquire = std::function<void(Oxa::Core::LockSet&)>;

/// Each of `actions` has to wait, on another thread, for whoever holds what `acquire` takes.
inline void ExpectToWait(const Acquire& acquire, const std::vector<std::function<void()>>& actions) {
  for (const auto& action : actions) {
    Oxa::Core::LockSet locks;
    acquire(locks);
    const Waiter waiter(action);
    EXPECT_TRUE(waiter.Waits());
    locks.clear();
  }
}

}  // namespace IoTests

#endif
