// Values with units as text.
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

#include "Units/Quantities.h"

namespace {

using namespace Oxa::Core;
using namespace UnitTests;

// What `value` looks like on a stream that `setUp` has set up; the width must be gone then.
template <class SetUp>
std::string Shown(const Value& value, const SetUp& setUp) {
  std::ostringstream out;
  setUp(out);
  EXPECT_EQ(&out, &(out << value));
  EXPECT_EQ(0, out.width());
  return out.str();
}

TEST(UnitizedValueText, IsNumberBlankAbbreviation) {
  EXPECT_EQ("1 m", Value(1, "Meter").ToString());
  EXPECT_EQ("52.3 C", Value(52.3, "Celsius").ToString());
  EXPECT_EQ("0.5 \xB5m", Value(0.5, "Micron").ToString());
  EXPECT_EQ("7", Value(7).ToString());
  EXPECT_EQ("7", Value(7, "Unitless").ToString());
  EXPECT_EQ("7 Count", Value(7, "Count").ToString());
}

TEST(UnitizedValueText, HasSixDigits) {
  EXPECT_EQ("3.14159 m", Value(3.14159265, "Meter").ToString());
  EXPECT_EQ("1.23457e+06 m", Value(1234567, "Meter").ToString());
  EXPECT_EQ("1e-07 m", Value(1e-7, "Meter").ToString());
  EXPECT_EQ("inf m", Value(std::numeric_limits<double>::infinity(), "Meter").ToString());
  EXPECT_EQ("nan m", Value(std::numeric_limits<double>::quiet_NaN(), "Meter").ToString());
}

TEST(UnitizedValueText, ConvertsACopy) {
  const PrivateUnits own;
  const Value value(5, "Hour per Mile", own.m_units);
  EXPECT_EQ("5 hpm", value.ToString());
  EXPECT_EQ("11.1847 spm", value.ToString("Second per Meter"));
  ExpectValue(5.0, "Hour per Mile", value);
  EXPECT_EQ("0.127 m", Value(5, "Inch").ToString("Meter"));
  EXPECT_EQ("0.127 m", Value(5, "Inch").ToString("m", own.m_units));
  EXPECT_EQ("2 thumb", Value(4, "Meter").ToString("Inch", own.m_units));
  EXPECT_EQ("Oxa.Core.UnitizedValue: Illegal unit conversion from \"Inch\" to \"Second\"",
            Raised<Value::XNoUnitConversion>([] { Value(5, "Inch").ToString("Second"); }));
  EXPECT_EQ("Oxa.Core.UnitizedValue: thumb unit not found in the unit dictionary",
            Raised<Value::XUnitNotFound>([] { Value(5, "Inch").ToString("thumb"); }));
}

TEST(UnitizedValueText, WidthIsThatOfTheWhole) {
  const Value value(1.5, "Meter");
  EXPECT_EQ("     1.5 m", Shown(value, [](std::ostream& out) { out << std::setw(10); }));
  EXPECT_EQ("1.5 m     ", Shown(value, [](std::ostream& out) { out << std::left << std::setw(10); }));
  EXPECT_EQ("*****1.5 m", Shown(value, [](std::ostream& out) { out << std::setfill('*') << std::setw(10); }));
  EXPECT_EQ("    +1.5 m",
            Shown(value, [](std::ostream& out) { out << std::internal << std::showpos << std::setw(10); }));
  EXPECT_EQ("1.5 m", Shown(value, [](std::ostream& out) { out << std::setw(3); }));
}

TEST(UnitizedValueText, WidthWithoutAnAbbreviationIsThatOfTheNumber) {
  EXPECT_EQ("       1.5", Shown(1.5, [](std::ostream& out) { out << std::setw(10); }));
  EXPECT_EQ("+******1.5", Shown(1.5, [](std::ostream& out) {
              out << std::setfill('*') << std::internal << std::showpos << std::setw(10);
            }));
}

TEST(UnitizedValueText, NumberIsFormattedAsTheStreamIsSetUpWithAndWithoutAWidth) {
  const Value value(1234.5678, "Meter");
  const auto fixed = [](std::ostream& out) { out << std::fixed << std::setprecision(2); };
  EXPECT_EQ("1234.57 m", Shown(value, fixed));
  EXPECT_EQ("   1234.57 m", Shown(value, [&](std::ostream& out) {
              fixed(out);
              out << std::setw(12);
            }));
  EXPECT_EQ("1.234568E+03 m",
            Shown(value, [](std::ostream& out) { out << std::scientific << std::uppercase; }));
  EXPECT_EQ(" 1.234568E+03 m", Shown(value, [](std::ostream& out) {
              out << std::scientific << std::uppercase << std::setw(15);
            }));
}

struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(UnitizedValueText, LocaleOfTheStreamCountsWithAndWithoutAWidth) {
  const std::locale comma(std::locale::classic(), new DecimalComma);
  EXPECT_EQ("1,5 m", Shown(Value(1.5, "Meter"), [&](std::ostream& out) { out.imbue(comma); }));
  EXPECT_EQ("  1,5 m", Shown(Value(1.5, "Meter"), [&](std::ostream& out) {
              out.imbue(comma);
              out << std::setw(7);
            }));
}

TEST(UnitizedValueText, StreamKeepsItsSettingsButForTheWidth) {
  std::ostringstream out;
  out << std::setprecision(3) << std::setfill('.') << std::setw(8) << Value(1.23456, "Meter")
      << Value(2, "Meter") << std::setw(6) << Value(3, "Meter");
  EXPECT_EQ("..1.23 m2 m...3 m", out.str());
  EXPECT_EQ(3, out.precision());
}

}  // namespace
