// A static object that is older than the library uses quantities when the library's globals have died.
//   OldQuantityHost PLUGIN
#include <dlfcn.h>

#include <cstdio>
#include <cstring>

namespace {

using QuantityFunction = double (*)(double);

struct OldObject {
  QuantityFunction m_quantity = nullptr;
  ~OldObject() {
    if (m_quantity != nullptr) std::printf("late: %g\n", m_quantity(3));
    std::fflush(stdout);
  }
};
OldObject s_oldObject;

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  void* const plugin = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  void* const symbol = plugin == nullptr ? nullptr : ::dlsym(plugin, "QuantityOfPlugin");
  if (symbol == nullptr) {
    std::fprintf(stderr, "%s\n", ::dlerror());
    return 3;
  }
  std::memcpy(&s_oldObject.m_quantity, &symbol, sizeof symbol);
  std::printf("early: %g\n", s_oldObject.m_quantity(1));
  return 0;
}
