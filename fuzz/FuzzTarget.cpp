#include "FuzzTarget.h"

#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>

#include <cstdlib>
#include <iostream>

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

void StayQuiet() {
  static Nobody* const s_pNobody = [] {
    Nobody* const nobody = new Nobody;  // for as long as the process lives
    Oxa::Core::LogManager::Instance()->RegisterHandler(nobody);
    return nobody;
  }();
  (void)s_pNobody;
}

}  // namespace OxaFuzz
