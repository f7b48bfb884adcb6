// Says how many milliseconds it takes to load a library.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>

int main(int, char** argv) {
  const auto start = std::chrono::steady_clock::now();
  void* const library = ::dlopen(argv[1], RTLD_NOW);
  const std::chrono::duration<double, std::milli> duration = std::chrono::steady_clock::now() - start;
  if (library == nullptr) return 1;
  std::printf("%f\n", duration.count());
  return 0;
}
