// How many stacks a process has.
#ifndef OXACORE_TESTS_SUPPORT_GUARDPAGES_H
#define OXACORE_TESTS_SUPPORT_GUARDPAGES_H

#include <cstdio>
#include <fstream>
#include <string>

namespace TestSupport {

/// Every stack has one below it. The lock files, and the heaps of killed threads, stay mapped for other reasons.
inline int GuardPages() {
  std::ifstream file("/proc/self/maps");
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    unsigned long low = 0;
    unsigned long high = 0;
    char access[5] = {};
    if (std::sscanf(line.c_str(), "%lx-%lx %4s", &low, &high, access) != 3) continue;
    if (high - low == 4096 && std::string(access) == "---p") ++count;
  }
  return count;
}

}  // namespace TestSupport

#endif
