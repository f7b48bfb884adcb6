#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include "Units/CopyOnHeap.h"
#include "Units/DimensionStreams.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.UnitDescriptor";
constexpr char sCLASS[] = "UnitDescriptor";
constexpr char sCOMPARISON_FACTOR[] = "dComparisonFactor";

constexpr char sTIMES[] = " * ";
constexpr char sPER[] = " / ";
constexpr char sONE_PER[] = "1/";

constexpr unsigned int uSIZE_OF_LENGTH = 4;
constexpr unsigned int uSIZE_OF_FACTOR = 8;

double FactorNotZero(double factor) {
  if (factor != 0.0) return factor;
  OXA_RAISE_ERROR(sLOG_NAME, InvalidParameter(sCOMPARISON_FACTOR, factor));
  return 1.0;
}

std::string Joined(const std::string& left, const char* joiner, const std::string& right) {
  return left.empty() || right.empty() ? std::string() : left + joiner + right;
}

// What has no texts gets none by joining: products that are only looked up are made so, and quick.
bool HasTexts(const std::string& name, const std::string& abbreviation) {
  return !name.empty() || !abbreviation.empty();
}

std::string OnePer(const std::string& text) { return text.empty() ? text : sONE_PER + text; }

unsigned int SizeOnStream(const std::string& text) {
  return static_cast<unsigned int>(text.size()) + uSIZE_OF_LENGTH;
}

}  // namespace

UnitDescriptor::UnitDescriptor() : m_dConversionFactor(1.0) {}

UnitDescriptor::UnitDescriptor(const std::string& aName, const std::string& aAbbreviation)
    : m_sName(aName), m_sAbbreviation(aAbbreviation), m_dConversionFactor(1.0) {}

UnitDescriptor::UnitDescriptor(const std::string& aName, const std::string& aAbbreviation,
                               double dComparisonFactor, const UnitDescriptor& aComparisonUnit)
    : m_sName(aName),
      m_sAbbreviation(aAbbreviation),
      m_dConversionFactor(aComparisonUnit.m_dConversionFactor / FactorNotZero(dComparisonFactor)),
      m_dimensions(aComparisonUnit.m_dimensions) {}

UnitDescriptor::UnitDescriptor(const UnitDescriptor& other) = default;
UnitDescriptor::~UnitDescriptor() = default;

UnitDescriptor& UnitDescriptor::operator=(const UnitDescriptor& other) {  // NOLINT: it has a slot
  takeTexts(other.m_sName, other.m_sAbbreviation);
  m_dConversionFactor = other.m_dConversionFactor;
  m_dimensions = other.m_dimensions;
  return *this;
}

// The arguments are copied before anything changes, so that a lack of memory changes nothing.
void UnitDescriptor::takeTexts(std::string name, std::string abbreviation) noexcept {
  m_sName.swap(name);
  m_sAbbreviation.swap(abbreviation);
}

boost::shared_ptr<UnitDescriptor> UnitDescriptor::MakeCopy() const {
  return CopyOnHeap(*this, sLOG_NAME, sCLASS);
}

const std::string& UnitDescriptor::GetName() const { return m_sName; }
void UnitDescriptor::SetName(const std::string& aName) { m_sName = aName; }
const std::string& UnitDescriptor::GetAbbreviation() const { return m_sAbbreviation; }
void UnitDescriptor::SetAbbreviation(const std::string& aAbbreviation) { m_sAbbreviation = aAbbreviation; }

double UnitDescriptor::ConvertToBaseUnits(double value) const { return value / m_dConversionFactor; }
double UnitDescriptor::ConvertFromBaseUnits(double value) const { return value * m_dConversionFactor; }

bool UnitDescriptor::IsUnitless() const { return m_dimensions.IsUnitless(); }

// `other` may be this object, so dimensions and factor come last; and so does what a lack of memory must not change.
UnitDescriptor& UnitDescriptor::operator*=(const UnitDescriptor& other) {
  Dimensions dimensions = m_dimensions;
  dimensions *= other.m_dimensions;
  if (dimensions.IsUnitless()) {
    takeTexts({}, {});
  } else if (m_dimensions.IsUnitless()) {
    takeTexts(other.m_sName, other.m_sAbbreviation);
  } else if (HasTexts(m_sName, m_sAbbreviation) && !other.m_dimensions.IsUnitless()) {
    takeTexts(Joined(m_sName, sTIMES, other.m_sName), Joined(m_sAbbreviation, sTIMES, other.m_sAbbreviation));
  }
  m_dConversionFactor *= other.m_dConversionFactor;
  m_dimensions = dimensions;
  return *this;
}

UnitDescriptor& UnitDescriptor::operator/=(const UnitDescriptor& other) {
  Dimensions dimensions = m_dimensions;
  dimensions /= other.m_dimensions;
  if (dimensions.IsUnitless()) {
    takeTexts({}, {});
  } else if (m_dimensions.IsUnitless()) {
    takeTexts(OnePer(other.m_sName), OnePer(other.m_sAbbreviation));
  } else if (HasTexts(m_sName, m_sAbbreviation) && !other.m_dimensions.IsUnitless()) {
    takeTexts(Joined(m_sName, sPER, other.m_sName), Joined(m_sAbbreviation, sPER, other.m_sAbbreviation));
  }
  m_dConversionFactor /= other.m_dConversionFactor;
  m_dimensions = dimensions;
  return *this;
}

UnitDescriptor UnitDescriptor::operator*(const UnitDescriptor& other) const {
  UnitDescriptor product(*this);
  product *= other;
  return product;
}

UnitDescriptor UnitDescriptor::operator/(const UnitDescriptor& other) const {
  UnitDescriptor quotient(*this);
  quotient /= other;
  return quotient;
}

bool UnitDescriptor::operator==(const UnitDescriptor& other) const {
  return m_dConversionFactor == other.m_dConversionFactor && m_dimensions == other.m_dimensions &&
         m_sName == other.m_sName && m_sAbbreviation == other.m_sAbbreviation;
}

bool UnitDescriptor::operator!=(const UnitDescriptor& other) const { return !(*this == other); }

bool UnitDescriptor::IsDimensionallyEquivalent(const UnitDescriptor& other) const {
  return m_dimensions == other.m_dimensions;
}

bool UnitDescriptor::RequiresConversion(const UnitDescriptor& other) const {
  return m_dConversionFactor != other.m_dConversionFactor;
}

unsigned int UnitDescriptor::GetSerializedSize() const {
  return SizeOnStream(m_sName) + SizeOnStream(m_sAbbreviation) + uSIZE_OF_FACTOR +
         static_cast<unsigned int>(m_dimensions.GetSerializedSize());
}

BinaryOutputStream& operator<<(BinaryOutputStream& out, const UnitDescriptor& unit) {
  if (!CanBeWritten(unit.m_dimensions)) return out;
  DataOutputStream data(out);
  data << unit.m_sName << unit.m_sAbbreviation << unit.m_dConversionFactor;
  WriteDimensions(data, unit.m_dimensions);
  return out;
}

// A scale that is read into is handed a plain unit's fields, hence no assignment by its own operator.
BinaryInputStream& operator>>(BinaryInputStream& in, UnitDescriptor& unit) {
  DataInputStream data(in);
  UnitDescriptor read;
  data >> read.m_sName >> read.m_sAbbreviation >> read.m_dConversionFactor;
  if (ReadDimensions(data, read.m_dimensions)) unit.UnitDescriptor::operator=(read);
  return in;
}

}  // namespace Oxa::Core
