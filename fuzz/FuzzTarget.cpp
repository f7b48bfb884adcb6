#include "FuzzTarget.h"

#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>

#include <cstdlib>
#include <iostream>
#include <new>

namespace OxaFuzz {

namespace {

class Nobody : public Oxa::Core::IOxaLogHandler {
 public:
  void OnLoggersChanged() override {}
  void HandleLogEntry(const Oxa::Core::OxaLogEntry&) override {}
};

}  // namespace

void Check(bool holds, const char* promise, const std::string& found) {
  if (holds) return;
  std::cerr << "BROKEN PROMISE: " << promise << '\n' << found << std::endl;
  std::abort();
}

void CheckSame(const std::string& expected, const std::string& found, const char* promise) {
  if (expected == found) return;
  Check(false, promise, "--- expected:\n" + expected + "\n--- found:\n" + found + "\n---");
}

// In static memory and never destroyed: it is needed until the library is unloaded, and it is no leak.
void StayQuiet() {
  alignas(Nobody) static unsigned char s_memory[sizeof(Nobody)];
  static const bool s_bQuiet = [] {
    Oxa::Core::LogManager::Instance()->RegisterHandler(new (s_memory) Nobody);
    return true;
  }();
  (void)s_bQuiet;
}

}  // namespace OxaFuzz
