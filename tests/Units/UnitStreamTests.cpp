// The binary form of units, byte by byte, and what becomes of bytes that are none.
#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <gtest/gtest.h>

#include "Units/UnitsSupport.h"

namespace {

using namespace UnitsTests;

const std::string& MeterBytes() {
  static const std::string s_bytes = Bytes("\5\0\0\0Meter") + Bytes("\1\0\0\0m") +
                                     Bytes("\0\0\0\0\0\0\xF0\x3F") +  // 1.0
                                     Bytes("\1\0\0\0\0\0\0\0") + Bytes("\0\0\0\0");
  return s_bytes;
}

TEST(UnitStream, WritesTextsFactorAndDimensions) {
  EXPECT_EQ(MeterBytes(), Written(Meter()));
  EXPECT_EQ(Bytes("\xA\0\0\0Centimeter\2\0\0\0cm\0\0\0\0\0\0\x59\x40\1\0\0\0\0\0\0\0\0\0\0\0"),
            Written(Centimeter()));
  EXPECT_EQ(Bytes("\0\0\0\0\0\0\0\0\0\0\0\0\0\0\xF0\x3F\0\0\0\0\0\0\0\0"), Written(UnitDescriptor()));
}

TEST(UnitStream, WritesACompound) {
  EXPECT_EQ(Bytes("\xE\0\0\0Meter / Second\5\0\0\0m / s\0\0\0\0\0\0\xF0\x3F"
                  "\1\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0"),
            Written(Meter() / Second()));
}

TEST(UnitStream, SizeIsThatOfTheBytes) {
  EXPECT_EQ(4U + 4 + 8 + 8, UnitDescriptor().GetSerializedSize());
  EXPECT_EQ(9U + 5 + 8 + 12, Meter().GetSerializedSize());
  for (const UnitDescriptor& unit : {UnitDescriptor(), Meter(), Centimeter(), Dozen(), Meter() / Second()})
    EXPECT_EQ(Written(unit).size(), unit.GetSerializedSize());
}

TEST(UnitStream, WhatIsReadEqualsWhatWasWritten) {
  for (const UnitDescriptor& unit :
       {Meter(), Second(), Meter() / Second(), Inch(), Dozen(), UnitDescriptor()}) {
    const UnitDescriptor read = ReadInto(Second() * Inch(), Written(unit));
    EXPECT_TRUE(unit == read);
    EXPECT_EQ(unit.GetName(), read.GetName());
    EXPECT_EQ(unit.GetAbbreviation(), read.GetAbbreviation());
  }
}

TEST(UnitStream, SeveralFollowEachOther) {
  IoTests::MemorySink sink;
  sink << Meter() << Second() << Dimensions(3);
  IoTests::MemorySource source(sink.m_bytes);
  UnitDescriptor first;
  UnitDescriptor second;
  Dimensions dimensions;
  source >> first >> second >> dimensions;
  EXPECT_TRUE(first == Meter());
  EXPECT_TRUE(second == Second());
  EXPECT_TRUE(dimensions == Dimensions(3));
}

TEST(UnitStream, WorksOnTypedStreams) {
  IoTests::MemorySink sink;
  DataOutputStream out(sink);
  out << 7 << Meter();
  IoTests::MemorySource source(sink.m_bytes);
  DataInputStream in(source);
  int number = 0;
  UnitDescriptor unit;
  in >> number >> unit;
  EXPECT_EQ(7, number);
  EXPECT_TRUE(unit == Meter());
}

TEST(UnitStream, AScaleComesBackAsAPlainUnitWithoutItsOffset) {
  const UnitDescriptor read = ReadInto(UnitDescriptor(), Written(UnitDescriptor_Celsius()));
  EXPECT_EQ("Celsius", read.GetName());
  EXPECT_EQ("C", read.GetAbbreviation());
  EXPECT_EQ(5.0, read.ConvertToBaseUnits(5.0));
  EXPECT_FALSE(read.RequiresConversion(read));
  EXPECT_NO_THROW(static_cast<void>(read * Meter()));
}

TEST(UnitStream, AScaleIsWrittenAsAnyUnit) {
  EXPECT_EQ(Bytes("\7\0\0\0Celsius\1\0\0\0C\0\0\0\0\0\0\xF0\x3F\1\0\0\0\4\0\0\0\0\0\0\0"),
            Written(UnitDescriptor_Celsius()));
}

TEST(UnitStream, AScaleThatIsReadIntoKeepsItsClass) {
  const UnitDescriptor_Celsius read = ReadInto(UnitDescriptor_Celsius(), MeterBytes());
  EXPECT_EQ("Meter", read.GetName());
  EXPECT_TRUE(read.GetDimensions() == Dimensions(1));
  EXPECT_EQ(278.15, read.ConvertToBaseUnits(5.0));
}

// A unit of a host that can't be assigned.
class Fixed : public UnitDescriptor {
 public:
  UnitDescriptor& operator=(const UnitDescriptor&) override { return *this; }  // NOLINT: it overrides
};

TEST(UnitStream, ReadingIsNoAssignmentOfTheClassThatIsReadInto) {
  IoTests::MemorySource source(MeterBytes());
  Fixed unit;
  source >> unit;
  EXPECT_TRUE(unit == Meter());
}

TEST(UnitStream, ANameHoldsAnyBytes) {
  const UnitDescriptor micron(Bytes("\xB5\0m"), "\xB5");
  EXPECT_EQ(Bytes("\3\0\0\0\xB5\0m\1\0\0\0\xB5\0\0\0\0\0\0\xF0\x3F\0\0\0\0\0\0\0\0"), Written(micron));
  EXPECT_TRUE(micron == ReadInto(UnitDescriptor(), Written(micron)));
}

// What reading `bytes` raises; the target must have stayed as it was.
std::string RaisedByReading(const std::string& bytes) {
  IoTests::MemorySource source(bytes);
  UnitDescriptor unit = Inch();
  std::string raised = Raised<IndexOutOfBounds>([&] { source >> unit; });
  EXPECT_TRUE(unit == Inch());
  return raised;
}

TEST(UnitStream, AnIndexThatIsNoDimensionRaisesAndChangesNothing) {
  std::string bytes = MeterBytes();
  bytes[bytes.size() - 8] = 8;
  EXPECT_EQ("Oxa.Core.Dimensions: Out of bounds index of 8 for Dimensions with size of 8",
            RaisedByReading(bytes));
}

TEST(UnitStream, AHugeCountInAShortStreamEndsAtOnce) {
  const std::string front = MeterBytes().substr(0, MeterBytes().size() - 12);
  EXPECT_EQ("Oxa.Core.Dimensions: Out of bounds index of -1 for Dimensions with size of 8",
            RaisedByReading(front + Bytes("\xFF\xFF\xFF\x7F\0\0\0\0\0\0\0\0")));
}

// Behind the last whole field of a stream that was cut off stands what a fresh unit has.
TEST(UnitStream, WhatIsCutOffIsEmptyOrOneOrZero) {
  const auto cut = [](std::size_t length) { return ReadInto(Inch(), MeterBytes().substr(0, length)); };
  EXPECT_TRUE(cut(0) == UnitDescriptor());
  EXPECT_TRUE(cut(9) == UnitDescriptor("Meter"));
  EXPECT_TRUE(cut(14) == UnitDescriptor("Meter", "m"));
  EXPECT_TRUE(cut(22) == UnitDescriptor("Meter", "m"));
  EXPECT_TRUE(cut(30) == Meter());
  EXPECT_EQ(Bytes("Met\0\0"), cut(7).GetName());
}

TEST(UnitStream, CutOffWithinAnIndexRaises) {
  for (const std::size_t length : {26U, 27U, 28U, 29U})
    EXPECT_EQ(0U, RaisedByReading(MeterBytes().substr(0, length)).find("Oxa.Core.Dimensions: Out of bounds"));
}

TEST(UnitStream, MoreIndicesThanACountHoldsAreNotWritten) {
  UnitDescriptor unit = Meter();
  unit.SetDimensions(Dimensions(0, 0, -2147483648L));
  IoTests::MemorySink sink;
  EXPECT_EQ("Oxa.Core.Dimensions: Invalid Parameter: exponents = 2147483648",
            Raised<InvalidParameter>([&] { sink << unit; }));
  EXPECT_EQ("", sink.m_bytes);
}

}  // namespace
