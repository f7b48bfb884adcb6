#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <boost/make_shared.hpp>
#include <iostream>

using namespace Oxa::Core;
using Quantity = UnitizedValue<double>;

void Calculate() {
  const Quantity speed(60, "mph");
  const Quantity way = speed * Quantity(90, "Seconds");
  std::cout << speed << " are " << speed.ToString("m/s") << "; in 90 s that makes " << way.ToString("Miles")
            << '\n';

  const Quantity gap(250, "usec");
  std::cout << gap.Get("msec") << (gap < Quantity(0.5, "msec") ? ": in time\n" : ": late\n");
}

// "m" is short for Meter and for Minute: only an example of what is meant tells.
void Choose(const UnitDictionary& units) {
  try {
    std::cout << Quantity(5, "m") << '\n';
  } catch (const UnitDictionary::XAlternateNameCollision& error) {
    std::cout << error.what() << '\n';
  }
  std::cout << units.LookupUnit("m", units.LookupUnit("Second"))->GetName() << '\n';
}

void DefineOwn() {
  UnitDictionary units;
  units.AddUnit(
      boost::make_shared<UnitDescriptor>("Turn", "tr", 6.283185307179586, *units.LookupUnit("Radian")));
  std::cout << Quantity(2.5, "turns", units).ToString("Radian") << '\n';
}

void Warm(const UnitDictionary& units) {
  std::cout << Quantity(25, "Celsius").ToString("Fahrenheit") << '\n';
  std::cout << units.LookupUnit("Celsius")->ConvertFromBaseUnits(300) << " C\n";  // 300 Kelvin
}

int main() {
  InitializeOxaCore();
  const UnitDictionary& units = UnitDictionary::StandardUnits();
  Calculate();
  Choose(units);
  DefineOwn();
  Warm(units);
  ShutdownOxaCore();
}
