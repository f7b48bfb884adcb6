#include "AutoTest/Module/TEST_UnitDescriptor.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include "AutoTest/Module/RaisedMessage.h"
#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

using IllegalArithmetic = UnitDescriptor_Temperature::XIllegalArithmetic;

constexpr char sNO_MULTIPLICATION[] = "Temperature unit descriptors don't support multiplication";
constexpr char sNO_DIVISION[] = "Temperature unit descriptors don't support division";

UnitDescriptor BaseUnit(const char* name, const char* abbreviation, EDimension dimension) {
  UnitDescriptor unit(name, abbreviation);
  Dimensions dimensions;
  dimensions[dimension] = 1;
  unit.SetDimensions(dimensions);
  return unit;
}

UnitDescriptor Meter() { return BaseUnit("Meter", "m", eLength); }
UnitDescriptor Second() { return BaseUnit("Second", "s", eTime); }
UnitDescriptor Inch() { return UnitDescriptor("Inch", "in", 0.0254, Meter()); }
UnitDescriptor MilesPerHour() {
  return UnitDescriptor("Mile", "mi", 1609.344, Meter()) / UnitDescriptor("Hour", "h", 3600, Second());
}

bool HasTexts(const UnitDescriptor& unit, const std::string& name, const std::string& abbreviation) {
  return unit.GetName() == name && unit.GetAbbreviation() == abbreviation;
}

void CheckCompoundTexts() {
  const UnitDescriptor unnamed;
  OXA_TEST_ASSERT(HasTexts(Meter() / Second(), "Meter / Second", "m / s"));
  OXA_TEST_ASSERT(HasTexts(Meter() * Second(), "Meter * Second", "m * s"));
  OXA_TEST_ASSERT(HasTexts(unnamed / Second(), "1/Second", "1/s"));
  OXA_TEST_ASSERT(HasTexts(unnamed * Second(), "Second", "s"));
  OXA_TEST_ASSERT(HasTexts(Meter() / unnamed, "Meter", "m"));
  const UnitDescriptor ratio = Meter() / Inch();
  OXA_TEST_ASSERT(ratio.IsUnitless() && HasTexts(ratio, "", ""));
  OXA_TEST_ASSERT(ratio.GetConversionFactor() != 1.0);
}

void CheckRefusedArithmetic() {
  UnitDescriptor_Celsius celsius;
  const UnitDescriptor meter = Meter();
  OXA_TEST_ASSERT(MessageOf<IllegalArithmetic>([&] { celsius* meter; }) == sNO_MULTIPLICATION);
  OXA_TEST_ASSERT(MessageOf<IllegalArithmetic>([&] { celsius / meter; }) == sNO_DIVISION);
  OXA_TEST_ASSERT(MessageOf<IllegalArithmetic>([&] { celsius *= meter; }) == sNO_MULTIPLICATION);
  OXA_TEST_ASSERT(MessageOf<IllegalArithmetic>([&] { celsius /= meter; }) == sNO_DIVISION);
  OXA_TEST_ASSERT(celsius == UnitDescriptor_Celsius());
  OXA_TEST_ASSERT((meter * celsius).GetName() == "Meter * Celsius");
}

void CheckTemperatures() {
  const UnitDescriptor_Celsius celsius;
  const UnitDescriptor_Fahrenheit fahrenheit;
  const UnitDescriptor_Rankine rankine;
  OXA_TEST_ASSERT(fahrenheit.ConvertToBaseUnits(3.0) == celsius.ConvertToBaseUnits(-16.11111111111111));
  OXA_TEST_ASSERT(celsius.ConvertFromBaseUnits(celsius.ConvertToBaseUnits(5.0)) == 5.0);
  OXA_TEST_ASSERT(rankine.ConvertToBaseUnits(1.8) == 1.0);
  OXA_TEST_ASSERT(celsius.RequiresConversion(celsius));
  OXA_TEST_ASSERT(celsius.IsDimensionallyEquivalent(BaseUnit("Kelvin", "K", eTemperature)));
  OXA_TEST_ASSERT(celsius.MakeCopy()->ConvertToBaseUnits(0.0) == 273.15);
}

// What comes back of a unit that was written.
UnitDescriptor Streamed(const UnitDescriptor& unit) {
  BinaryPipe pipe(BinaryPipe::DEFAULT_BUFFER_SIZE, Elapse(0), Elapse(0));
  static_cast<BinaryOutputStream&>(pipe) << unit;
  OXA_TEST_ASSERT(pipe.AvailableBytes() == unit.GetSerializedSize());
  UnitDescriptor read("before", "b");
  static_cast<BinaryInputStream&>(pipe) >> read;
  OXA_TEST_ASSERT(pipe.AvailableBytes() == 0);
  return read;
}

}  // namespace

TEST_UnitDescriptor::TEST_UnitDescriptor() : TestSuite("UnitDescriptor Tests") {
  AddTestMethods(*this,
                 {{"Test construction/destruction", &TEST_UnitDescriptor::Construction},
                  {"Test accessor methods", &TEST_UnitDescriptor::Accessors},
                  {"Test numeric converter methods", &TEST_UnitDescriptor::Converters},
                  {"Test assignment and comparison operators", &TEST_UnitDescriptor::AssignmentAndComparison},
                  {"Test arithmetic and comparison operators", &TEST_UnitDescriptor::ArithmeticAndComparison},
                  {"Test serialization", &TEST_UnitDescriptor::Serialization}});
}

void TEST_UnitDescriptor::Construction(std::string&) {
  const UnitDescriptor empty;
  OXA_TEST_ASSERT(HasTexts(empty, "", "") && empty.IsUnitless());
  const UnitDescriptor copy{UnitDescriptor("some unit name", "sun")};
  OXA_TEST_ASSERT(HasTexts(copy, "some unit name", "sun"));
  OXA_TEST_ASSERT(UnitDescriptor("Bunch", "b", 12, empty).IsUnitless());
  OXA_TEST_ASSERT(!UnitDescriptor("Bunch", "b", 12, Meter()).IsUnitless());
  const volatile double inchInMeters = 0.0254;  // divided as the host rounds now, not as the compiler did
  OXA_TEST_ASSERT(Inch().GetConversionFactor() == 1.0 / inchInMeters);
  OXA_TEST_ASSERT(MessageOf<InvalidParameter>([] {
                    UnitDescriptor("Bunch", "b", 0, Meter());
                  }).find("dComparisonFactor") != std::string::npos);
  const boost::shared_ptr<UnitDescriptor> made = Inch().MakeCopy();
  OXA_TEST_ASSERT(made && *made == Inch());
}

void TEST_UnitDescriptor::Accessors(std::string&) {
  UnitDescriptor unit("SoSo", "nada");
  OXA_TEST_ASSERT(HasTexts(unit, "SoSo", "nada"));
  OXA_TEST_ASSERT(unit.IsUnitless() && unit.GetConversionFactor() == 1.0);
  unit.SetName("another");
  unit.SetAbbreviation("a");
  OXA_TEST_ASSERT(HasTexts(unit, "another", "a"));
  unit.SetDimensions(Dimensions(0, 0, -2));
  OXA_TEST_ASSERT(!unit.IsUnitless() && unit.GetDimensions()[eTime] == -2);
  std::map<EDimension, long> exponents;
  unit.GetDimensions().GetExponents(exponents);
  OXA_TEST_ASSERT(exponents.size() == 1 && exponents[eTime] == -2);
  OXA_TEST_ASSERT(Dimensions(exponents) == unit.GetDimensions());
}

void TEST_UnitDescriptor::Converters(std::string&) {
  const UnitDescriptor first = Meter();
  const UnitDescriptor second("Dekameter", "dam", 10, first);
  OXA_TEST_EQUALS_DELTA(10 * first.ConvertToBaseUnits(123), second.ConvertToBaseUnits(123), 1e-9);
  OXA_TEST_EQUALS_DELTA(first.ConvertFromBaseUnits(123) / 10, second.ConvertFromBaseUnits(123), 1e-9);
  OXA_TEST_EQUALS_DELTA(123.0, second.ConvertFromBaseUnits(second.ConvertToBaseUnits(123)), 1e-9);
  OXA_TEST_ASSERT(first.RequiresConversion(second) && !first.RequiresConversion(Second()));
  CheckTemperatures();
}

void TEST_UnitDescriptor::AssignmentAndComparison(std::string&) {
  UnitDescriptor unit;
  unit = Inch();
  OXA_TEST_ASSERT(unit == Inch() && !(unit != Inch()));
  OXA_TEST_ASSERT(unit != Meter());
  unit.SetAbbreviation("inch");
  OXA_TEST_ASSERT(unit != Inch() && unit.IsDimensionallyEquivalent(Inch()));
  OXA_TEST_ASSERT(!unit.IsDimensionallyEquivalent(Second()));
  UnitDescriptor_Celsius celsius;
  UnitDescriptor_Celsius other;
  celsius.SetName("changed");
  OXA_TEST_ASSERT(celsius != other);
  celsius = other;
  OXA_TEST_ASSERT(celsius == other && celsius.ConvertToBaseUnits(0) == 273.15);
}

void TEST_UnitDescriptor::ArithmeticAndComparison(std::string&) {
  const UnitDescriptor mps = Meter() / Second();
  OXA_TEST_ASSERT(!mps.IsUnitless() && mps != Meter() * Second());
  UnitDescriptor again;
  again *= Meter();
  again /= Second();
  OXA_TEST_ASSERT(again == mps);
  OXA_TEST_ASSERT(mps.IsDimensionallyEquivalent(MilesPerHour()) &&
                  MilesPerHour().IsDimensionallyEquivalent(mps));
  OXA_TEST_ASSERT(MilesPerHour() != mps && MilesPerHour().RequiresConversion(mps));
  OXA_TEST_ASSERT(UnitDescriptor().IsDimensionallyEquivalent(Meter() * Meter() / Meter() / Meter()));
  CheckCompoundTexts();
  CheckRefusedArithmetic();
}

void TEST_UnitDescriptor::Serialization(std::string&) {
  for (const UnitDescriptor& unit :
       {Meter(), Second(), Meter() / Second(), Inch() * Inch(), UnitDescriptor()})
    OXA_TEST_ASSERT(Streamed(unit) == unit);
  const UnitDescriptor celsius = Streamed(UnitDescriptor_Celsius());
  OXA_TEST_ASSERT(HasTexts(celsius, "Celsius", "C"));
  OXA_TEST_ASSERT(celsius.ConvertToBaseUnits(1.0) == 1.0);  // it has lost its offset
}

}  // namespace Oxa::Core
