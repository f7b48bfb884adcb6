// A static object that is older than the library uses units when the library's globals have died.
//   OldQuantityHost PLUGIN quantity    by itself
//   OldQuantityHost PLUGIN thread      on a thread that runs to the end of the process
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

namespace {

using QuantityFunction = double (*)(double);
using LookUpsFunction = long (*)();

// Whether the thread finds more units; it has 20 s to do so.
bool FindsMore(LookUpsFunction lookUps) {
  const long before = lookUps();
  for (int i = 0; i < 20000 && lookUps() < before + 1000; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return lookUps() >= before + 1000;
}

struct OldObject {
  QuantityFunction m_quantity = nullptr;
  LookUpsFunction m_lookUps = nullptr;

  void Use(const char* moment) const {
    if (m_quantity != nullptr) std::printf("%s: %g\n", moment, m_quantity(3));
    if (m_lookUps != nullptr)
      std::printf("%s: %s\n", moment, FindsMore(m_lookUps) ? "finds" : "doesn't find");
    std::fflush(stdout);
  }
  ~OldObject() { Use("late"); }
};
OldObject s_oldObject;

template <class Function>
bool Find(void* plugin, const char* name, Function& function) {
  void* const symbol = plugin == nullptr ? nullptr : ::dlsym(plugin, name);
  if (symbol == nullptr) std::fprintf(stderr, "%s\n", ::dlerror());
  std::memcpy(&function, &symbol, sizeof symbol);
  return symbol != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  void* const plugin = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  const bool found = std::string(argv[2]) == "thread"
                         ? Find(plugin, "LookUpsOfPlugin", s_oldObject.m_lookUps)
                         : Find(plugin, "QuantityOfPlugin", s_oldObject.m_quantity);
  if (!found) return 3;
  s_oldObject.Use("early");
  return 0;
}
