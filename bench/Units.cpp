// Units by name, values converted from one named unit to another, and products of values with units.
//
// All look the same names up, one after the other. UDUNITS gives a copy of its unit, as ours does, and Libqalculate
// the address of its own. To convert, UDUNITS looks both units up, makes a converter and uses it once; of a product
// it makes the unit, and the test multiplies the numbers. Each program checks what it gave once.
#include <Infrastructure/OxaCore/UnitDictionary.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <cmath>
#include <string>

#include "BenchSupport.h"

#ifdef OXA_PEER_UDUNITS2
#include <udunits2.h>
#endif
#ifdef OXA_PEER_QALCULATE
#include <libqalculate/qalculate.h>
#endif

namespace {

using Oxa::Core::UnitDescriptor;
using Oxa::Core::UnitDictionary;
using Oxa::Core::UnitizedValue;

constexpr std::size_t uNAMES = 8;

// In ours these are other names of the units, all in lower case as the peers have them.
const std::string aNAMES[uNAMES] = {"meter", "second", "foot", "inch", "minute", "volt", "joule", "mile"};
const std::string aMAIN_NAMES[uNAMES] = {"Meter",  "Second", "Foot",  "Inch",
                                         "Minute", "Volt",   "Joule", "Mile"};

// From each of them to the next.
constexpr std::size_t uLENGTHS = 4;
const std::string aLENGTHS[uLENGTHS] = {"inch", "meter", "mile", "yard"};
constexpr double dMETERS[uLENGTHS] = {0.0254, 1.0, 1609.344, 0.9144};

double Expected(double value, std::size_t from) {
  return value * dMETERS[from] / dMETERS[(from + 1) % uLENGTHS];
}

void CheckNear(benchmark::State& state, double expected, double found) {
  if (!(std::abs(found - expected) < 1e-9 * std::abs(expected))) state.SkipWithError("wrong value");
}

void Look(benchmark::State& state, const std::string (&names)[uNAMES]) {
  const UnitDictionary& units = UnitDictionary::StandardUnits();
  std::size_t at = 0;
  for (auto _ : state) {
    boost::shared_ptr<UnitDescriptor> unit = units.LookupUnit(names[at++ % uNAMES]);
    benchmark::DoNotOptimize(unit);
  }
  for (const std::string& name : names)
    if (!units.LookupUnit(name)) state.SkipWithError("unit not found");
}

void OursLookUp(benchmark::State& state) { Look(state, aNAMES); }
OXA_BENCH("Unit looked up", "Ours", OursLookUp);

void OursMainLookUp(benchmark::State& state) { Look(state, aMAIN_NAMES); }
OXA_BENCH("Unit looked up", "ours by main names", OursMainLookUp);

void OursConvert(benchmark::State& state) {
  std::size_t at = 0;
  double result = 0;
  for (auto _ : state) {
    const UnitizedValue<double> value(12.5, aLENGTHS[at % uLENGTHS]);
    result = value.Get(aLENGTHS[++at % uLENGTHS]);
    benchmark::DoNotOptimize(result);
  }
  CheckNear(state, Expected(12.5, (at - 1) % uLENGTHS), result);
}
OXA_BENCH("Value converted by two names", "Ours", OursConvert);

void OursMultiply(benchmark::State& state) {
  const UnitizedValue<double> volts(12.0, "Volt");
  const UnitizedValue<double> amperes(0.5, "Ampere");
  for (auto _ : state) {
    UnitizedValue<double> product = volts * amperes;
    benchmark::DoNotOptimize(product);
  }
  CheckNear(state, 6.0, (volts * amperes).Get("Watt"));
}
OXA_BENCH("Values with units multiplied", "Ours", OursMultiply);

#ifdef OXA_PEER_UDUNITS2
// The database of units that UDUNITS is installed with; it lives as long as the process.
ut_system* UdunitsSystem() {
  static ut_system* const s_system = [] {
    ut_set_error_message_handler(ut_ignore);
    return ut_read_xml(nullptr);
  }();
  return s_system;
}

void UdunitsLookUp(benchmark::State& state) {
  ut_system* const system = UdunitsSystem();
  std::size_t at = 0;
  bool found = true;
  for (auto _ : state) {
    ut_unit* const unit = ut_get_unit_by_name(system, aNAMES[at++ % uNAMES].c_str());
    benchmark::DoNotOptimize(unit);
    found = found && unit != nullptr;
    ut_free(unit);
  }
  if (!found) state.SkipWithError("unit not found");
}
OXA_BENCH("Unit looked up", "udunits2", UdunitsLookUp);

void UdunitsConvert(benchmark::State& state) {
  ut_system* const system = UdunitsSystem();
  std::size_t at = 0;
  double result = 0;
  for (auto _ : state) {
    ut_unit* const from = ut_get_unit_by_name(system, aLENGTHS[at % uLENGTHS].c_str());
    ut_unit* const to = ut_get_unit_by_name(system, aLENGTHS[++at % uLENGTHS].c_str());
    cv_converter* const converter = ut_get_converter(from, to);
    result = cv_convert_double(converter, 12.5);
    benchmark::DoNotOptimize(result);
    cv_free(converter);
    ut_free(to);
    ut_free(from);
  }
  CheckNear(state, Expected(12.5, (at - 1) % uLENGTHS), result);
}
OXA_BENCH("Value converted by two names", "udunits2", UdunitsConvert);

void UdunitsMultiply(benchmark::State& state) {
  ut_system* const system = UdunitsSystem();
  ut_unit* const volt = ut_get_unit_by_name(system, "volt");
  ut_unit* const ampere = ut_get_unit_by_name(system, "ampere");
  ut_unit* const watt = ut_get_unit_by_name(system, "watt");
  double volts = 12.0;
  double amperes = 0.5;
  int difference = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(volts);
    benchmark::DoNotOptimize(amperes);
    double product = volts * amperes;
    ut_unit* const unit = ut_multiply(volt, ampere);
    benchmark::DoNotOptimize(product);
    benchmark::DoNotOptimize(unit);
    ut_free(unit);
  }
  ut_unit* const product = ut_multiply(volt, ampere);
  difference = ut_compare(product, watt);
  if (difference != 0) state.SkipWithError("wrong unit");
  for (ut_unit* const unit : {product, volt, ampere, watt}) ut_free(unit);
}
OXA_BENCH("Values with units multiplied", "udunits2", UdunitsMultiply);
#endif

#ifdef OXA_PEER_QALCULATE
Calculator& QalculateUnits() {
  static Calculator* const s_calculator = [] {
    Calculator* const calculator = new Calculator();
    calculator->loadGlobalDefinitions();
    return calculator;
  }();
  return *s_calculator;
}

void QalculateLookUp(benchmark::State& state) {
  Calculator& units = QalculateUnits();
  std::size_t at = 0;
  bool found = true;
  for (auto _ : state) {
    const Unit* const unit = units.getActiveUnit(aNAMES[at++ % uNAMES]);
    benchmark::DoNotOptimize(unit);
    found = found && unit != nullptr;
  }
  if (!found) state.SkipWithError("unit not found");
}
OXA_BENCH("Unit looked up", "libqalculate", QalculateLookUp);
#endif

}  // namespace
