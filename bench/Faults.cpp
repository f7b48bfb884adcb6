// A machine fault that is caught: the signal, the raise, the way up, and the telling.
#include "BenchSupport.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

namespace {

__attribute__((noinline)) void Write(volatile int* place) { *place = 1; }

__attribute__((noinline)) void Raise() { OXA_RAISE_ERROR("Bench.Faults", Oxa::Core::NullPointer("place")); }

void OursFault(benchmark::State& state) {
  for (auto _ : state) {
    try {
      Write(nullptr);
    } catch (MSWindows::AccessViolation&) {
    }
  }
}
OXA_BENCH("A fault caught", "Ours", OursFault);

// What the same costs where the code looks before it writes.
void OursRaise(benchmark::State& state) {
  for (auto _ : state) {
    try {
      Raise();
    } catch (Oxa::Core::NullPointer&) {
    }
  }
}
OXA_BENCH("A fault caught", "a plain raise", OursRaise);

}  // namespace
