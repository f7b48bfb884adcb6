#include "AutoTest/Module/TEST_UnitizedValue.h"

#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <boost/make_shared.hpp>
#include <iomanip>
#include <sstream>

#include "AutoTest/Module/RaisedMessage.h"
#include "AutoTest/Module/Streamed.h"
#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

using Value = UnitizedValue<double>;

constexpr double dTOLERANCE = 0.000001;
constexpr char sMETER_TO_SECOND[] = "Illegal unit conversion from \"Meter\" to \"Second\"";
constexpr char sNANOMETER_TO_CELSIUS[] = "Illegal unit conversion from \"Nanometer\" to \"Celsius\"";
constexpr char sNOT_FOUND[] = "no such unit unit not found in the unit dictionary";
constexpr char sNO_MULTIPLICATION[] = "Temperature unit descriptors don't support multiplication";

// How long a way takes: what no standard dictionary has.
UnitDictionary SlownessUnits() {
  UnitDictionary units(true);
  const UnitDescriptor spm = *units.LookupUnit("Second") / *units.LookupUnit("Meter");
  const UnitDescriptor hpm = *units.LookupUnit("Hour") / *units.LookupUnit("Mile");
  units.AddUnit(boost::make_shared<UnitDescriptor>("Second per Meter", "spm", 1, spm));
  units.AddUnit(boost::make_shared<UnitDescriptor>("Hour per Mile", "hpm", 1, hpm));
  return units;
}

void CheckOrder(const Value& less, const Value& greater) {
  OXA_TEST_ASSERT(!(greater == less) && greater != less);
  OXA_TEST_ASSERT(!(greater < less) && less < greater);
  OXA_TEST_ASSERT(greater > less && !(less > greater));
  OXA_TEST_ASSERT(!(greater <= less) && less <= greater);
  OXA_TEST_ASSERT(greater >= less && !(less >= greater));
}

void CheckSame(const Value& value) {
  OXA_TEST_ASSERT(value == value && !(value != value));
  OXA_TEST_ASSERT(!(value < value) && !(value > value));
  OXA_TEST_ASSERT(value <= value && value >= value);
}

void CheckRefusedConversions() {
  Value length(3, "Meter");
  OXA_TEST_ASSERT(MessageOf<Value::XNoUnitConversion>([&] { length.ConvertTo("Second"); }) ==
                  sMETER_TO_SECOND);
  OXA_TEST_ASSERT(MessageOf<Value::XUnitNotFound>([&] { length.ConvertTo("no such unit"); }) == sNOT_FOUND);
  OXA_TEST_ASSERT(MessageOf<Value::XUnitNotFound>([] { Value(1, "no such unit"); }) == sNOT_FOUND);
  OXA_TEST_ASSERT(length.GetValue() == 3 && length.GetUnits()->GetName() == "Meter");
}

void CheckTemperatureConversions() {
  Value temperature(37, "Celsius");
  temperature.ConvertTo("Fahrenheit");
  OXA_TEST_EQUALS_DELTA(98.6, temperature.GetValue(), dTOLERANCE);
  temperature.ConvertTo("Celsius");
  OXA_TEST_EQUALS_DELTA(37.0, temperature.GetValue(), dTOLERANCE);
  OXA_TEST_EQUALS_DELTA(310.15, temperature.Get("Kelvin"), dTOLERANCE);
  OXA_TEST_ASSERT(Value(300, "Kelvin").Get("Celsius") == 300);  // equal factors: taken for the same
}

void CheckPrivateDictionary() {
  const UnitDictionary units = SlownessUnits();
  Value slowness(5, "Hour per Mile", units);
  slowness.ConvertTo("Second per Meter", units);
  OXA_TEST_EQUALS_DELTA(11.184681, slowness.GetValue(), dTOLERANCE);
  slowness.ConvertTo("Hour per Mile");
  OXA_TEST_EQUALS_DELTA(5.0, slowness.GetValue(), dTOLERANCE);
}

void CheckRefusedMath() {
  using IllegalArithmetic = UnitDescriptor_Temperature::XIllegalArithmetic;
  Value temperature(20, "Celsius");
  const Value length(1, "Nanometer");
  OXA_TEST_ASSERT(MessageOf<IllegalArithmetic>([&] { temperature *= length; }) == sNO_MULTIPLICATION);
  OXA_TEST_ASSERT(MessageOf<Value::XNoUnitConversion>([&] { temperature += length; }) ==
                  sNANOMETER_TO_CELSIUS);
  OXA_TEST_ASSERT(temperature.GetValue() == 20 && temperature.GetUnits()->GetName() == "Celsius");
}

void CheckProducts() {
  const Value length(2, "Inch");
  const Value area = length * length;
  OXA_TEST_ASSERT(!area.GetUnits()->IsUnitless());
  OXA_TEST_ASSERT(area.IsEqual(Value(4, "Square Inch"), dTOLERANCE));
  const Value speed = Value(6, "Meter per Second") / Value(2, "Minute");
  OXA_TEST_ASSERT(speed.IsDimensionallyEquivalent(Value(1, "Meter per Second Squared")));
  OXA_TEST_ASSERT((uv1 / Value(1, "Second")).IsDimensionallyEquivalent(Value(1, "Hertz")));
  OXA_TEST_ASSERT((Value(3, "Degree") * uv2).GetUnits()->GetName() == "Degree");
  OXA_TEST_ASSERT((uv2 * Value(3, "Degree")).GetUnits()->GetName() == "Degree");
  OXA_TEST_ASSERT((uv2 * Value(3, "Degree")).GetValue() == 6);
}

void CheckSums() {
  const Value length(3, "Meter");
  Value negative = length;
  negative.Negate();
  OXA_TEST_ASSERT(negative.GetValue() == -3.0);
  OXA_TEST_ASSERT((length + negative).GetValue() == 0.0);
  OXA_TEST_ASSERT(Value(3) + Value(-3) == Value(0.0));
  OXA_TEST_ASSERT(negative.Negate().GetValue() == 3.0);
  Value sum = length;
  sum += Value(50, "Centimeter");
  OXA_TEST_ASSERT(sum.IsEqual(Value(3.5, "Meter"), dTOLERANCE) && sum.GetUnits()->GetName() == "Meter");
  OXA_TEST_ASSERT((sum - length).IsEqual(Value(50, "Centimeter"), dTOLERANCE));
}

std::string Printed(const Value& value, int width) {
  std::ostringstream text;
  text << std::setw(width) << value << '|';
  return text.str();
}

}  // namespace

TEST_UnitizedValue::TEST_UnitizedValue() : TestSuite("UnitizedValue Tests") {
  AddTestMethods(*this, {{"UnitizedValue Comparison Test", &TEST_UnitizedValue::Comparison},
                         {"UnitizedValue Conversion Test", &TEST_UnitizedValue::Conversion},
                         {"UnitizedValue Math Test", &TEST_UnitizedValue::Math},
                         {"UnitizedValue Output Test", &TEST_UnitizedValue::Output}});
}

void TEST_UnitizedValue::Comparison(std::string&) {
  CheckOrder(Value(1), Value(2));
  CheckOrder(Value(1, "Inch"), Value(1, "Meter"));
  CheckOrder(Value(-1, "Kilometer"), Value(1, "Millimeter"));
  CheckSame(Value(0.1, "Inch"));
  OXA_TEST_ASSERT(Value(1, "Meter").IsEqual(Value(39.37, "Inch"), 0.001));
  OXA_TEST_ASSERT(!Value(1, "Meter").IsEqual(Value(39.37, "Inch"), dTOLERANCE));
  OXA_TEST_ASSERT(!Value(1, "Meter").IsEqual(Value(1, "Second"), 100));
  OXA_TEST_ASSERT(MessageOf<Value::XNoUnitConversion>([] {
                    static_cast<void>(Value(1, "Second") == Value(1, "Meter"));
                  }) == sMETER_TO_SECOND);
}

void TEST_UnitizedValue::Conversion(std::string&) {
  const Value speed(60, "Mile per Hour");
  Value converted = speed;
  converted.ConvertTo("Meter per Second");
  OXA_TEST_EQUALS_DELTA(26.8224, converted.GetValue(), dTOLERANCE);
  converted.ConvertTo("Mile per Hour");
  OXA_TEST_ASSERT(converted.IsEqual(speed, dTOLERANCE));
  CheckRefusedConversions();
  CheckTemperatureConversions();
  CheckPrivateDictionary();
}

void TEST_UnitizedValue::Math(std::string&) {
  CheckSums();
  CheckProducts();
  CheckRefusedMath();
  OXA_TEST_EQUALS_DELTA(6.283185307179586, uv2_PI.GetValue(), 1e-15);
}

void TEST_UnitizedValue::Output(std::string&) {
  OXA_TEST_ASSERT(Value(1, "Meter").ToString() == "1 m");
  OXA_TEST_ASSERT(Value(52.3, "Celsius").ToString() == Streamed(52.3) + " C");
  OXA_TEST_ASSERT(Value(1.25).ToString() == Streamed(1.25));
  OXA_TEST_ASSERT(Printed(Value(1, "Meter"), 6) == "   1 m|");
  OXA_TEST_ASSERT(Printed(Value(1, "Meter"), 0) == "1 m|");
  const UnitDictionary units = SlownessUnits();
  const Value slowness(5, "Hour per Mile", units);
  OXA_TEST_ASSERT(slowness.ToString() == "5 hpm");
  OXA_TEST_ASSERT(slowness.ToString("Second per Meter") == Streamed(11.1847) + " spm");
  OXA_TEST_ASSERT(slowness.ToString("Second per Meter", units) == Streamed(11.1847) + " spm");
}

}  // namespace Oxa::Core
