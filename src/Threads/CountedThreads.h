// Words that count threads which are in some place, and tell in which process they were counted.
#ifndef OXACORE_THREADS_COUNTEDTHREADS_H
#define OXACORE_THREADS_COUNTEDTHREADS_H

#include <atomic>
#include <cstdint>

#include "Platform/Threads.h"

namespace Oxa::Core {

/// The count in such a word. The other half tells after how many forks it was begun.
inline std::uint32_t CountIn(std::uint64_t word) { return static_cast<std::uint32_t>(word); }

/// `word` as it stands, or one that counts nobody if those that it counts have stayed behind in the parent.
inline std::uint64_t OfThisProcess(std::uint64_t word) {
  const std::uint64_t none = std::uint64_t{Platform::ForksSoFar()} << 32;
  return word - CountIn(word) == none ? word : none;
}

/// Who is counted and leaves takes one from the word: it is of the same process still.
inline void CountOneMore(std::atomic<std::uint64_t>& word) {
  std::uint64_t before = word.load();
  while (!word.compare_exchange_weak(before, OfThisProcess(before) + 1)) {
  }
}

}  // namespace Oxa::Core

#endif
