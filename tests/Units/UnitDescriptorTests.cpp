#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

#include "Support/Allocations.h"
#include "Units/UnitsSupport.h"

namespace {

using namespace UnitsTests;
using TestSupport::FailAllocation;
using TestSupport::ThreadAllocations;

static_assert(!std::is_convertible_v<std::string, UnitDescriptor>, "a text on a stream is no unit");
static_assert(std::is_same_v<UnitDescriptor, decltype(Meter() * Meter())>);
static_assert(std::is_same_v<UnitDescriptor, decltype(Meter() / Meter())>);
static_assert(std::is_same_v<const std::string&, decltype(Meter().GetName())>);
static_assert(std::is_same_v<const std::string&, decltype(Meter().GetAbbreviation())>);

// The texts, factor and dimensions, with a pointer to the table of functions in front.
static_assert(sizeof(UnitDescriptor) ==
              sizeof(void*) + 2 * sizeof(std::string) + sizeof(double) + sizeof(Dimensions));

TEST(UnitDescriptorTest, WithoutArgumentsHasNothing) {
  const UnitDescriptor unit;
  EXPECT_EQ("", unit.GetName());
  EXPECT_EQ("", unit.GetAbbreviation());
  EXPECT_EQ(1.0, unit.GetConversionFactor());
  EXPECT_TRUE(unit.GetDimensions() == Dimensions());
  EXPECT_TRUE(unit.IsUnitless());
}

TEST(UnitDescriptorTest, KeepsItsTexts) {
  const UnitDescriptor unit("some unit name", "sun");
  EXPECT_EQ("some unit name", unit.GetName());
  EXPECT_EQ("sun", unit.GetAbbreviation());
  EXPECT_EQ(1.0, unit.GetConversionFactor());
  EXPECT_EQ("", UnitDescriptor("only a name").GetAbbreviation());
}

TEST(UnitDescriptorTest, TextsCanBeSet) {
  UnitDescriptor unit;
  unit.SetName("Furlong");
  unit.SetAbbreviation("fur");
  EXPECT_EQ("Furlong", unit.GetName());
  EXPECT_EQ("fur", unit.GetAbbreviation());
}

TEST(UnitDescriptorTest, IsUnitlessUntilAnExponentIsSet) {
  UnitDescriptor unit("SoSo", "nada");
  EXPECT_TRUE(unit.IsUnitless());
  unit.SetDimensions(Dimensions(0, 0, 1));
  EXPECT_FALSE(unit.IsUnitless());
  EXPECT_TRUE(unit.GetDimensions() == Dimensions(0, 0, 1));
  EXPECT_EQ("SoSo", unit.GetName());
}

TEST(UnitDescriptorTest, ADerivedOneInheritsTheDimensions) {
  const UnitDescriptor soso("SoSo", "nada");
  EXPECT_TRUE(UnitDescriptor("Bunch", "bu", 20.0, soso).IsUnitless());
  const UnitDescriptor rod("Rod", "rd", 5.0292, Meter());
  EXPECT_FALSE(rod.IsUnitless());
  EXPECT_TRUE(rod.GetDimensions() == Dimensions(1));
}

TEST(UnitDescriptorTest, FactorIsThatOfTheComparisonUnitDividedByTheGiven) {
  EXPECT_EQ(1.0 / 0.01, Centimeter().GetConversionFactor());
  EXPECT_EQ(100.0, Centimeter().GetConversionFactor());
  EXPECT_EQ((1.0 / 0.0254) / 12.0, UnitDescriptor("Foot", "ft", 12.0, Inch()).GetConversionFactor());
  EXPECT_EQ(-0.5, UnitDescriptor("Back", "b", -2.0, Meter()).GetConversionFactor());
}

TEST(UnitDescriptorTest, ConversionDividesToBaseUnitsAndMultipliesFromThem) {
  EXPECT_EQ(0.25, Centimeter().ConvertToBaseUnits(25.0));
  EXPECT_EQ(25.0, Centimeter().ConvertFromBaseUnits(0.25));
}

TEST(UnitDescriptorTest, TenTimesTheUnitIsATenthOfTheNumber) {
  const UnitDescriptor ud1("one", "1", 1.0, Meter());
  const UnitDescriptor ud2("ten", "10", 10.0, ud1);
  EXPECT_EQ(10 * ud1.ConvertToBaseUnits(123), ud2.ConvertToBaseUnits(123));
  EXPECT_EQ(ud1.ConvertFromBaseUnits(123) / 10, ud2.ConvertFromBaseUnits(123));
  EXPECT_EQ(123, ud1.ConvertFromBaseUnits(ud1.ConvertToBaseUnits(123)));
  EXPECT_EQ(123, ud2.ConvertFromBaseUnits(ud2.ConvertToBaseUnits(123)));
}

constexpr char sREFUSED[] = "Oxa.Core.UnitDescriptor: Invalid Parameter: dComparisonFactor = ";

TEST(UnitDescriptorTest, AComparisonFactorOfZeroRaises) {
  EXPECT_EQ(std::string(sREFUSED) + "0",
            Raised<InvalidParameter>([] { UnitDescriptor("Bunch", "bu", 0.0, Meter()); }));
  EXPECT_EQ(std::string(sREFUSED) + "-0",
            Raised<InvalidParameter>([] { UnitDescriptor("Bunch", "bu", -0.0, Meter()); }));
}

TEST(UnitDescriptorTest, ARefusedFactorIsNamedInTheError) {
  try {
    const UnitDescriptor unit("Bunch", "bu", 0.0, Meter());
    FAIL() << "a factor of 0 was taken";
  } catch (InvalidParameter& error) {
    EXPECT_EQ("dComparisonFactor", error.GetData(InvalidParameter::sPARAM_NAME));
    EXPECT_EQ("0", error.GetData(InvalidParameter::sPARAM_VALUE));
  }
}

TEST(UnitDescriptorTest, OnlyExactlyZeroIsRefused) {
  const double least = std::numeric_limits<double>::denorm_min();
  EXPECT_TRUE(std::isinf(UnitDescriptor("Bunch", "bu", least, Meter()).GetConversionFactor()));
  EXPECT_TRUE(std::isnan(UnitDescriptor("Bunch", "bu", std::nan(""), Meter()).GetConversionFactor()));
}

void ExpectSame(const UnitDescriptor& expected, const UnitDescriptor& found) {
  EXPECT_EQ(expected.GetName(), found.GetName());
  EXPECT_EQ(expected.GetAbbreviation(), found.GetAbbreviation());
  EXPECT_EQ(expected.GetConversionFactor(), found.GetConversionFactor());
  EXPECT_TRUE(expected.GetDimensions() == found.GetDimensions());
  EXPECT_TRUE(expected == found);
  EXPECT_FALSE(expected != found);
}

TEST(UnitDescriptorTest, CopyAndAssignmentTakeAllFourFields) {
  const UnitDescriptor copy(Inch());
  ExpectSame(Inch(), copy);
  UnitDescriptor assigned = Second();
  UnitDescriptor& result = assigned = copy;
  EXPECT_EQ(&assigned, &result);
  ExpectSame(Inch(), assigned);
}

TEST(UnitDescriptorTest, MakeCopyGivesAnObjectOfItsOwn) {
  const UnitDescriptor inch = Inch();
  const boost::shared_ptr<UnitDescriptor> copy = inch.MakeCopy();
  ASSERT_TRUE(copy);
  EXPECT_NE(&inch, copy.get());
  EXPECT_EQ(1, copy.use_count());
  EXPECT_TRUE(typeid(UnitDescriptor) == typeid(*copy));
  ExpectSame(inch, *copy);
}

TEST(UnitDescriptorTest, MakeCopyAllocatesOnceForShortTexts) {
  const UnitDescriptor inch = Inch();
  const unsigned long before = ThreadAllocations().m_ulCount;
  const boost::shared_ptr<UnitDescriptor> copy = inch.MakeCopy();
  EXPECT_EQ(1U, ThreadAllocations().m_ulCount - before);
}

TEST(UnitDescriptorTest, MakeCopyWithoutMemoryRaises) {
  const UnitDescriptor unit("A name that a string keeps on the heap", "m");
  for (const unsigned long failing : {1UL, 2UL}) {
    const FailAllocation fail(failing);
    const std::string raised = Raised<AllocationFailed>([&] { unit.MakeCopy(); });
    EXPECT_EQ("Oxa.Core.UnitDescriptor: Attempt to allocate UnitDescriptor failed", raised);
    EXPECT_TRUE(fail.Happened());
  }
}

TEST(UnitDescriptorTest, EachOfTheFourFieldsCountsForEquality) {
  UnitDescriptor other = Inch();
  other.SetName("inch");
  EXPECT_FALSE(Inch() == other);
  EXPECT_TRUE(Inch() != other);
  other = Inch();
  other.SetAbbreviation("\"");
  EXPECT_FALSE(Inch() == other);
  other = Inch();
  other.SetDimensions(Dimensions(2));
  EXPECT_FALSE(Inch() == other);
  const double next = std::nextafter(0.0254, 1.0);
  ASSERT_NE(Inch().GetConversionFactor(), UnitDescriptor("Inch", "in", next, Meter()).GetConversionFactor());
  EXPECT_FALSE(Inch() == UnitDescriptor("Inch", "in", next, Meter()));
  EXPECT_TRUE(Inch() == UnitDescriptor("Inch", "in", 0.0254, Meter()));
}

TEST(UnitDescriptorTest, AFactorThatIsNoNumberEqualsNothing) {
  const UnitDescriptor unit("Bunch", "bu", std::nan(""), Meter());
  EXPECT_FALSE(unit == unit);
  EXPECT_TRUE(unit != unit);
  EXPECT_TRUE(unit.RequiresConversion(unit));
}

TEST(UnitDescriptorTest, EquivalenceLooksAtDimensionsAlone) {
  EXPECT_TRUE(Meter().IsDimensionallyEquivalent(Inch()));
  EXPECT_TRUE(Inch().IsDimensionallyEquivalent(Meter()));
  EXPECT_FALSE(Meter().IsDimensionallyEquivalent(Second()));
  EXPECT_FALSE(Meter().IsDimensionallyEquivalent(UnitDescriptor("Meter", "m")));
}

TEST(UnitDescriptorTest, NeedOfConversionLooksAtFactorsAlone) {
  EXPECT_TRUE(Meter().RequiresConversion(Inch()));
  EXPECT_FALSE(Meter().RequiresConversion(Second()));
  EXPECT_FALSE(Inch().RequiresConversion(Inch()));
  EXPECT_TRUE(Inch().RequiresConversion(UnitDescriptor("Inch", "in", std::nextafter(0.0254, 1.0), Meter())));
}

TEST(UnitDescriptorTest, ConversionBetweenUnitsGoesThroughBaseUnits) {
  EXPECT_EQ(100.0 / (1.0 / 0.0254) * 100.0,
            Centimeter().ConvertFromBaseUnits(Inch().ConvertToBaseUnits(100.0)));
}

// A unit of a host with another way of conversion.
class Decibel : public UnitDescriptor {
 public:
  Decibel() : UnitDescriptor("Decibel", "dB") {}
  boost::shared_ptr<UnitDescriptor> MakeCopy() const override {
    return boost::shared_ptr<UnitDescriptor>(new Decibel(*this));
  }
  double ConvertToBaseUnits(double value) const override { return std::pow(10.0, value / 10.0); }
  double ConvertFromBaseUnits(double value) const override { return 10.0 * std::log10(value); }
  bool operator==(const UnitDescriptor&) const override { return m_bEqual; }
  bool m_bEqual = true;
};

TEST(UnitDescriptorTest, HostsDeriveTheirOwn) {
  const boost::shared_ptr<UnitDescriptor> copy = Decibel().MakeCopy();
  EXPECT_TRUE(dynamic_cast<Decibel*>(copy.get()) != nullptr);
  EXPECT_EQ(100.0, copy->ConvertToBaseUnits(20.0));
  EXPECT_EQ("Decibel", copy->GetName());
}

TEST(UnitDescriptorTest, InequalityAsksTheOverriddenEquality) {
  Decibel decibel;
  EXPECT_FALSE(decibel != Meter());
  decibel.m_bEqual = false;
  EXPECT_TRUE(decibel != decibel);
}

// Where a member function stands in its class's table of functions.
template <class Member>
std::size_t Slot(Member member) {
  std::size_t word = 0;
  std::memcpy(&word, &member, sizeof word);
  return word / sizeof(void*);
}

TEST(UnitDescriptorTest, SlotsOfTheVirtualOperationsKeepTheirOrder) {
  const std::size_t first = Slot(&UnitDescriptor::MakeCopy);
  EXPECT_EQ(2U, first);  // behind the two of the destructor
  EXPECT_EQ(first + 1, Slot(&UnitDescriptor::GetName));
  EXPECT_EQ(first + 2, Slot(&UnitDescriptor::SetName));
  EXPECT_EQ(first + 3, Slot(&UnitDescriptor::GetAbbreviation));
  EXPECT_EQ(first + 4, Slot(&UnitDescriptor::SetAbbreviation));
  EXPECT_EQ(first + 5, Slot(&UnitDescriptor::ConvertToBaseUnits));
  EXPECT_EQ(first + 6, Slot(&UnitDescriptor::ConvertFromBaseUnits));
  EXPECT_EQ(first + 7, Slot(&UnitDescriptor::IsUnitless));
  EXPECT_EQ(first + 8, Slot(&UnitDescriptor::operator=));
  EXPECT_EQ(first + 9, Slot(&UnitDescriptor::operator*=));
  EXPECT_EQ(first + 10, Slot(&UnitDescriptor::operator/=));
  EXPECT_EQ(first + 11, Slot(&UnitDescriptor::operator*));
  EXPECT_EQ(first + 12, Slot(&UnitDescriptor::operator/));
  EXPECT_EQ(first + 13, Slot(&UnitDescriptor::operator==));
  EXPECT_EQ(first + 14, Slot(&UnitDescriptor::operator!=));
  EXPECT_EQ(first + 15, Slot(&UnitDescriptor::IsDimensionallyEquivalent));
  EXPECT_EQ(first + 16, Slot(&UnitDescriptor::RequiresConversion));
}

}  // namespace
