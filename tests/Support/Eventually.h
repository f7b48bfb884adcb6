// Waiting in tests: for a condition, with a generous limit, never for a time that is hoped to be enough.
#ifndef OXACORE_TESTS_SUPPORT_EVENTUALLY_H
#define OXACORE_TESTS_SUPPORT_EVENTUALLY_H

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

namespace TestSupport {

/// Polls `condition` until it holds or 30 seconds are over. Gives whether it holds.
template <class Condition>
bool Eventually(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return condition();
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}

/// How long `action` takes, in milliseconds.
template <class Action>
double MillisecondsOf(const Action& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// A thread that runs `enter`, tells that it did, stays until it is told to, and runs `leave`.
class Holder {
 public:
  template <class Enter, class Leave>
  Holder(Enter enter, Leave leave)
      : m_thread([this, enter, leave] {
          enter();
          m_bIn = true;
          while (!m_bLeave) std::this_thread::sleep_for(std::chrono::microseconds(100));
          leave();
        }) {
    Eventually([this] { return m_bIn.load(); });
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() { Leave(); }

  void Leave() {
    m_bLeave = true;
    if (m_thread.joinable()) m_thread.join();
  }

 private:
  std::atomic<bool> m_bIn{false};
  std::atomic<bool> m_bLeave{false};
  std::thread m_thread;  // last: it uses the others
};

}  // namespace TestSupport

#endif
