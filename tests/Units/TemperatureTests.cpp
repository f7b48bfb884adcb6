#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <type_traits>

#include "Support/Allocations.h"
#include "Units/UnitsSupport.h"

namespace {

using namespace UnitsTests;
using TestSupport::FailAllocation;
using TestSupport::ThreadAllocations;
using XIllegalArithmetic = UnitDescriptor_Temperature::XIllegalArithmetic;

static_assert(std::is_abstract_v<UnitDescriptor_Temperature>);
static_assert(std::is_base_of_v<UnitDescriptor, UnitDescriptor_Temperature>);
static_assert(std::is_base_of_v<UnitDescriptor_Temperature, UnitDescriptor_Celsius>);
static_assert(std::is_base_of_v<UnitDescriptor_Temperature, UnitDescriptor_Fahrenheit>);
static_assert(std::is_base_of_v<UnitDescriptor_Temperature, UnitDescriptor_Rankine>);
static_assert(sizeof(UnitDescriptor) == sizeof(UnitDescriptor_Celsius), "no field of its own");
static_assert(sizeof(UnitDescriptor) == sizeof(UnitDescriptor_Fahrenheit), "no field of its own");
static_assert(sizeof(UnitDescriptor) == sizeof(UnitDescriptor_Rankine), "no field of its own");
static_assert(std::is_base_of_v<LogicError, XIllegalArithmetic>);

UnitDescriptor Kelvin() { return BaseUnit("Kelvin", "K", eTemperature); }

struct Scale {
  const UnitDescriptor_Temperature& m_unit;
  const char* m_pName;
  const char* m_pAbbreviation;
};

class Scales : public testing::Test {
 protected:
  const UnitDescriptor_Celsius m_celsius;
  const UnitDescriptor_Fahrenheit m_fahrenheit;
  const UnitDescriptor_Rankine m_rankine;
  const Scale m_all[3] = {
      {m_celsius, "Celsius", "C"}, {m_fahrenheit, "Fahrenheit", "F"}, {m_rankine, "Rankine", "Rk"}};
};

TEST_F(Scales, HaveTheirTextsAFactorOfOneAndTheDimensionOfATemperature) {
  for (const Scale& scale : m_all) {
    EXPECT_EQ(scale.m_pName, scale.m_unit.GetName());
    EXPECT_EQ(scale.m_pAbbreviation, scale.m_unit.GetAbbreviation());
    EXPECT_EQ(1.0, scale.m_unit.GetConversionFactor());
    EXPECT_TRUE(scale.m_unit.GetDimensions() == Dimensions(0, 0, 0, 0, 1, 0, 0, 0));
    EXPECT_FALSE(scale.m_unit.IsUnitless());
  }
}

TEST_F(Scales, CelsiusAddsItsZero) {
  for (const double value : {0.0, 5.0, -273.15, 36.6, -16.11111111111111, 1e6}) {
    EXPECT_EQ(value + 273.15, m_celsius.ConvertToBaseUnits(value));
    EXPECT_EQ(value - 273.15, m_celsius.ConvertFromBaseUnits(value));
  }
  EXPECT_EQ(273.15, m_celsius.ConvertToBaseUnits(0.0));
  EXPECT_EQ(5.0, m_celsius.ConvertFromBaseUnits(m_celsius.ConvertToBaseUnits(5.0)));
}

TEST_F(Scales, FahrenheitAddsAndDividesMultipliesAndSubtracts) {
  for (const double value : {0.0, 3.0, 32.0, 98.6, -459.67, 451.0, 1e6}) {
    EXPECT_EQ((value + 459.67) / 1.8, m_fahrenheit.ConvertToBaseUnits(value));
    const volatile double product = value * 1.8;
    EXPECT_EQ(product - 459.67, m_fahrenheit.ConvertFromBaseUnits(value));
  }
  EXPECT_EQ(0.0, m_fahrenheit.ConvertToBaseUnits(-459.67));
}

TEST_F(Scales, RankineDividesAndMultiplies) {
  for (const double value : {0.0, 1.0, 491.67, 0.7, 1e6}) {
    EXPECT_EQ(value / 1.8, m_rankine.ConvertToBaseUnits(value));
    EXPECT_EQ(value * 1.8, m_rankine.ConvertFromBaseUnits(value));
  }
}

TEST_F(Scales, ThreeFahrenheitAreExactlyThatManyCelsius) {
  EXPECT_EQ(m_fahrenheit.ConvertToBaseUnits(3.0), m_celsius.ConvertToBaseUnits(-16.11111111111111));
}

TEST_F(Scales, AlwaysRequireConversion) {
  EXPECT_TRUE(m_celsius.RequiresConversion(m_celsius));
  for (const Scale& scale : m_all) {
    EXPECT_TRUE(scale.m_unit.RequiresConversion(Kelvin()));
    EXPECT_TRUE(scale.m_unit.RequiresConversion(Meter()));
    EXPECT_TRUE(scale.m_unit.RequiresConversion(m_rankine));
    EXPECT_FALSE(
        Kelvin().RequiresConversion(scale.m_unit));  // only the left one is asked, and factors are both 1
  }
}

TEST_F(Scales, AreAllEquivalentToKelvin) {
  for (const Scale& scale : m_all) {
    EXPECT_TRUE(scale.m_unit.IsDimensionallyEquivalent(Kelvin()));
    EXPECT_TRUE(Kelvin().IsDimensionallyEquivalent(scale.m_unit));
    EXPECT_FALSE(scale.m_unit.IsDimensionallyEquivalent(Meter()));
  }
}

TEST_F(Scales, AreComparedByTheirFields) {
  EXPECT_TRUE(m_celsius == UnitDescriptor_Celsius());
  EXPECT_FALSE(m_celsius == m_fahrenheit);
  EXPECT_TRUE(m_celsius != m_rankine);
  EXPECT_TRUE(m_celsius == BaseUnit("Celsius", "C", eTemperature));  // the class doesn't count
}

constexpr char sNO_MULTIPLICATION[] =
    "Oxa.Core.UnitDescriptor_Temperature: Temperature unit descriptors don't support multiplication";
constexpr char sNO_DIVISION[] =
    "Oxa.Core.UnitDescriptor_Temperature: Temperature unit descriptors don't support division";

TEST_F(Scales, RefuseProductsAndQuotientsWithAnything) {
  const UnitDescriptor others[] = {Meter(), Kelvin(), UnitDescriptor(), Dozen()};
  for (const Scale& scale : m_all) {
    for (const UnitDescriptor& other : others) {
      EXPECT_EQ(sNO_MULTIPLICATION, Raised<XIllegalArithmetic>([&] { (void)(scale.m_unit * other); }));
      EXPECT_EQ(sNO_DIVISION, Raised<XIllegalArithmetic>([&] { (void)(scale.m_unit / other); }));
    }
    EXPECT_EQ(sNO_MULTIPLICATION, Raised<XIllegalArithmetic>([&] { (void)(scale.m_unit * scale.m_unit); }));
    EXPECT_EQ(sNO_DIVISION, Raised<XIllegalArithmetic>([&] { (void)(scale.m_unit / m_celsius); }));
  }
}

template <class Unit>
void ExpectRefusalInPlace() {
  Unit scale;
  UnitDescriptor& unit = scale;
  EXPECT_EQ(sNO_MULTIPLICATION, Raised<XIllegalArithmetic>([&] { unit *= Meter(); }));
  EXPECT_EQ(sNO_DIVISION, Raised<XIllegalArithmetic>([&] { unit /= Meter(); }));
  EXPECT_EQ(sNO_MULTIPLICATION, Raised<XIllegalArithmetic>([&] { scale *= scale; }));
  EXPECT_EQ(sNO_DIVISION, Raised<XIllegalArithmetic>([&] { scale /= UnitDescriptor(); }));
  EXPECT_TRUE(scale == Unit());
}

TEST_F(Scales, RefusedArithmeticInPlaceLeavesTheUnitAsItWas) {
  ExpectRefusalInPlace<UnitDescriptor_Celsius>();
  ExpectRefusalInPlace<UnitDescriptor_Fahrenheit>();
  ExpectRefusalInPlace<UnitDescriptor_Rankine>();
}

TEST_F(Scales, TheErrorIsALogicError) {
  const XIllegalArithmetic error("addition");
  EXPECT_STREQ("Temperature unit descriptors don't support addition", error.what());
  EXPECT_EQ("Logic", error.GetData(AlertInfo::sCATEGORY));
}

TEST_F(Scales, OnTheRightGoByTheOrdinaryArithmetic) {
  const UnitDescriptor product = Meter() * m_celsius;
  EXPECT_EQ("Meter * Celsius", product.GetName());
  EXPECT_EQ("m * C", product.GetAbbreviation());
  EXPECT_EQ(1.0, product.GetConversionFactor());
  EXPECT_TRUE(product.GetDimensions() == Dimensions(1, 0, 0, 0, 1));
  EXPECT_EQ(5.0, product.ConvertToBaseUnits(5.0));
  const UnitDescriptor quotient = Inch() / m_fahrenheit;
  EXPECT_EQ("Inch / Fahrenheit", quotient.GetName());
  EXPECT_EQ(1.0 / 0.0254, quotient.GetConversionFactor());
  UnitDescriptor inPlace = Meter();
  EXPECT_NO_THROW(inPlace *= m_rankine);
  EXPECT_EQ("Meter * Rankine", inPlace.GetName());
  EXPECT_NO_THROW(static_cast<void>(product * m_celsius));
}

TEST_F(Scales, AUnitlessLeftSideTakesTheirTextsAndNotTheirOffset) {
  const UnitDescriptor product = UnitDescriptor() * m_celsius;
  EXPECT_EQ("Celsius", product.GetName());
  EXPECT_EQ(5.0, product.ConvertToBaseUnits(5.0));
}

TEST_F(Scales, CopiesAreOfTheSameScale) {
  const boost::shared_ptr<UnitDescriptor> celsius = m_celsius.MakeCopy();
  const boost::shared_ptr<UnitDescriptor> fahrenheit = m_fahrenheit.MakeCopy();
  const boost::shared_ptr<UnitDescriptor> rankine = m_rankine.MakeCopy();
  EXPECT_TRUE(typeid(UnitDescriptor_Celsius) == typeid(*celsius));
  EXPECT_TRUE(typeid(UnitDescriptor_Fahrenheit) == typeid(*fahrenheit));
  EXPECT_TRUE(typeid(UnitDescriptor_Rankine) == typeid(*rankine));
  EXPECT_EQ(278.15, celsius->ConvertToBaseUnits(5.0));
  EXPECT_TRUE(*rankine == m_rankine);
  const UnitDescriptor_Celsius copy(m_celsius);
  UnitDescriptor_Celsius assigned;
  assigned.SetName("warm");
  assigned = copy;
  EXPECT_TRUE(assigned == m_celsius);
}

TEST_F(Scales, AssignmentTakesTheFieldsAndKeepsTheScale) {
  UnitDescriptor_Celsius celsius;
  UnitDescriptor& unit = celsius;
  unit = m_fahrenheit;  // NOLINT(cppcoreguidelines-slicing): that is the point
  EXPECT_EQ("Fahrenheit", celsius.GetName());
  EXPECT_EQ(278.15, celsius.ConvertToBaseUnits(5.0));
}

TEST_F(Scales, MakeCopyAllocatesOnce) {
  for (const Scale& scale : m_all) {
    const unsigned long before = ThreadAllocations().m_ulCount;
    const boost::shared_ptr<UnitDescriptor> copy = scale.m_unit.MakeCopy();
    EXPECT_EQ(1U, ThreadAllocations().m_ulCount - before);
  }
}

TEST_F(Scales, MakeCopyWithoutMemoryRaisesByTheNameOfTheClass) {
  for (const Scale& scale : m_all) {
    const std::string name = std::string("UnitDescriptor_") + scale.m_pName;
    const std::string message = "Attempt to allocate " + name + " failed";
    const FailAllocation fail(1);
    const std::string raised = Raised<AllocationFailed>([&] { scale.m_unit.MakeCopy(); });
    EXPECT_EQ("Oxa.Core." + name + ": " + message, raised);  // NOLINT: a temporary more is no matter
    EXPECT_TRUE(fail.Happened());
  }
}

// A scale of a host.
class Reaumur : public UnitDescriptor_Temperature {
 public:
  Reaumur() : UnitDescriptor_Temperature("Reaumur", "Re") {}
  boost::shared_ptr<UnitDescriptor> MakeCopy() const override {
    return boost::shared_ptr<UnitDescriptor>(new Reaumur(*this));
  }
  double ConvertToBaseUnits(double value) const override { return value * 1.25 + 273.15; }
  double ConvertFromBaseUnits(double value) const override { return (value - 273.15) / 1.25; }
};

TEST_F(Scales, HostsDeriveTheirOwn) {
  const Reaumur reaumur;
  EXPECT_TRUE(reaumur.IsDimensionallyEquivalent(m_celsius));
  EXPECT_EQ(373.15, reaumur.MakeCopy()->ConvertToBaseUnits(80.0));
  EXPECT_EQ(sNO_DIVISION, Raised<XIllegalArithmetic>([&] { (void)(reaumur / Meter()); }));
}

}  // namespace
