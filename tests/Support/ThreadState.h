// What the system tells of a thread of this process.
#ifndef OXACORE_TESTS_SUPPORT_THREADSTATE_H
#define OXACORE_TESTS_SUPPORT_THREADSTATE_H

#include <cstddef>
#include <fstream>
#include <string>

namespace TestSupport {

/// Whether it sleeps at that moment. The system tells by a letter behind the name that ends with a bracket.
inline bool ThreadSleeps(unsigned long thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string text;
  std::getline(file, text);
  const std::size_t state = text.rfind(')') + 2;
  return state < text.size() && text[state] == 'S';
}

}  // namespace TestSupport

#endif
