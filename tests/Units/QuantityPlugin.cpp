// What OldQuantityHost loads.
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <atomic>
#include <thread>

extern "C" __attribute__((visibility("default"))) double QuantityOfPlugin(double inches);

// The way of so many Inch, twice, in Centimeter.
double QuantityOfPlugin(double inches) {
  using namespace Oxa::Core;
  return (uv2 * UnitizedValue<double>(inches, "Inch")).Get("cm");
}

extern "C" __attribute__((visibility("default"))) long LookUpsOfPlugin();

// How many units a thread has found so far among the standard units. The first call starts it; it never ends.
long LookUpsOfPlugin() {
  using namespace Oxa::Core;
  static std::atomic<long> s_lFound{0};
  static const bool s_bStarted = [] {
    const UnitDictionary& units = UnitDictionary::StandardUnits();
    std::thread([&units] {
      for (;;) s_lFound += units.LookupUnit("mV")->GetName() == "Millivolt";
    }).detach();
    return true;
  }();
  return s_bStarted ? s_lFound.load() : 0;
}
