// Threads that meet, for tests of what only one of them may get.
#ifndef OXACORE_TESTS_SUPPORT_TOGETHER_H
#define OXACORE_TESTS_SUPPORT_TOGETHER_H

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace TestSupport {

/// Calls `action(0)` to `action(count - 1)`, each on a thread of its own and none before all threads run. Returns
/// when all have ended.
template <class Action>
void Together(int count, const Action& action) {
  std::atomic<int> missing{count};
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(count));
  for (int index = 0; index < count; ++index)
    threads.emplace_back([&missing, &action, index] {
      --missing;
      while (missing > 0) std::this_thread::yield();
      action(index);
    });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace TestSupport

#endif
