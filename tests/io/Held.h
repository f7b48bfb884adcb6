// Whether a stream's lock is held, for tests of who is let in when.
#ifndef OXACORE_TESTS_IO_HELD_H
#define OXACORE_TESTS_IO_HELD_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include "Support/Eventually.h"

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

/// Expects of each error that `action` goes through on another thread while it is raised: who hears of an error may
/// wait for others.
class FreeWhileRaised : public Oxa::Core::AlertListener {
 public:
  explicit FreeWhileRaised(std::function<void()> action) : m_action(std::move(action)) {
    Oxa::Core::AlertManager::Instance()->AddAlertListener(*this);
  }
  FreeWhileRaised(const FreeWhileRaised&) = delete;
  FreeWhileRaised& operator=(const FreeWhileRaised&) = delete;
  ~FreeWhileRaised() override {
    Oxa::Core::AlertManager::Instance()->RemoveAlertListener(*this);
    for (std::thread& other : m_others) other.join();
  }

  void ErrorRaised(Oxa::Core::Error&) override {
    m_others.emplace_back([this] {
      m_action();
      ++m_uThrough;
    });
    EXPECT_TRUE(TestSupport::Eventually([this] { return m_uThrough == m_others.size(); }));
  }

  std::size_t Heard() const { return m_others.size(); }

 private:
  const std::function<void()> m_action;
  std::atomic<std::size_t> m_uThrough{0};
  std::vector<std::thread> m_others;
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
