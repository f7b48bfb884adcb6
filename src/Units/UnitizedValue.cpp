#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Memory.h>

#include <boost/make_shared.hpp>
#include <limits>
#include <new>
#include <ostream>
#include <sstream>
#include <utility>

#include "Units/ConvertUnits.h"

namespace Oxa::Core {

namespace {

const char* const sDESCRIPTOR = "UnitDescriptor";
const char* const sUNITS = "aUnits";
const char* const sNO_UNIT_CONVERSION = "Illegal unit conversion from \"%1%\" to \"%2%\"";
const char* const sUNIT_NOT_FOUND = "%1% unit not found in the unit dictionary";

using Value = UnitizedValue<double>;
using SharedUnit = boost::shared_ptr<UnitDescriptor>;

const UnitDictionary* GlobalDictionary() { return UnitizedValueBase::sm_spGlobalDictionary.get(); }

// Whether the search ends here: by a unit, or because the name is ambiguous and that raise returned.
bool EndsIn(const UnitDictionary* dictionary, const std::string& name, const UnitDescriptor*& found) {
  if (dictionary == nullptr) return false;
  found = dictionary->FindUnit(name);
  return found != nullptr || dictionary->IsUnitDefined(name);
}

// Asks the dictionaries in this order; null where a raise returns.
const UnitDescriptor* FindUnit(const std::string& name, const UnitDictionary* first,
                               const UnitDictionary* second = nullptr,
                               const UnitDictionary* third = nullptr) {
  const UnitDescriptor* found = nullptr;
  if (EndsIn(first, name, found) || EndsIn(second, name, found) || EndsIn(third, name, found)) return found;
  OXA_RAISE_ERROR(sUNITIZED_VALUE_LOG, Value::XUnitNotFound(name));
  return nullptr;
}

SharedUnit NewUnitless() {
  try {
    return boost::make_shared<UnitDescriptor>();
  } catch (const std::bad_alloc&) {
    OXA_RAISE_ERROR(sUNITIZED_VALUE_LOG, AllocationFailed(sDESCRIPTOR));
  }
  return uv1.GetUnits();
}

// A value has a unit whatever happens.
SharedUnit NewUnit(const UnitDescriptor* found) {
  SharedUnit copy = found != nullptr ? found->MakeCopy() : SharedUnit();
  if (!copy) copy = NewUnitless();
  return copy;
}

void Insert(std::ostream& os, double number, const std::string& abbreviation) {
  os << number;
  if (!abbreviation.empty()) os << ' ' << abbreviation;
}

}  // namespace

bool ConvertUnits(double& number, const UnitDescriptor& from, const UnitDescriptor& to) {
  if (!from.IsDimensionallyEquivalent(to)) {
    OXA_RAISE_ERROR(sUNITIZED_VALUE_LOG, Value::XNoUnitConversion(from.GetName(), to.GetName()));
    return false;
  }
  if (from.RequiresConversion(to)) number = to.ConvertFromBaseUnits(from.ConvertToBaseUnits(number));
  return true;
}

// A process that never looks at a unit isn't to pay for all of them.
UnitizedValueBase::Initializer::Initializer() {
  const Memory::MemoryLeakDetection unmarked(1);
  sm_spGlobalDictionary.reset(new UnitDictionary(UnitDictionary::Late()));
}

Value::XNoUnitConversion::XNoUnitConversion(const std::string& from, const std::string& to)
    : ErrorClass(AlertMessage(sNO_UNIT_CONVERSION, from, to)) {}
Value::XNoUnitConversion::~XNoUnitConversion() = default;

Value::XUnitNotFound::XUnitNotFound(const std::string& name)
    : ErrorClass(AlertMessage(sUNIT_NOT_FOUND, name)) {}
Value::XUnitNotFound::~XUnitNotFound() = default;

Value::UnitizedValue(double aValue) : value(aValue), units(NewUnitless()), dictionary(nullptr) {}

Value::UnitizedValue(double aValue, const std::string& aUnitName)
    : value(aValue), units(NewUnit(FindUnit(aUnitName, GlobalDictionary()))), dictionary(nullptr) {}

Value::UnitizedValue(double aValue, const std::string& aUnitName, const UnitDictionary& aDictionary)
    : value(aValue),
      units(NewUnit(FindUnit(aUnitName, &aDictionary, GlobalDictionary()))),
      dictionary(&aDictionary) {}

Value::~UnitizedValue() = default;

double Value::Get(const std::string& aUnitName) const {
  const UnitDescriptor* const found = FindUnit(aUnitName, GlobalDictionary(), dictionary);
  double number = value;
  const bool converted = found != nullptr && ConvertUnits(number, *units, *found);
  return converted ? number : std::numeric_limits<double>::quiet_NaN();
}

void Value::ConvertTo(const std::string& aUnitName) {
  ConvertToFound(FindUnit(aUnitName, GlobalDictionary(), dictionary));
}

void Value::ConvertTo(const std::string& aUnitName, const UnitDictionary& aDictionary) {
  ConvertToFound(FindUnit(aUnitName, &aDictionary, GlobalDictionary(), dictionary));
}

void Value::ConvertToFound(const UnitDescriptor* found) {
  SharedUnit copy = found != nullptr ? found->MakeCopy() : SharedUnit();
  if (copy) ConvertTo(std::move(copy));
}

void Value::ConvertTo(boost::shared_ptr<UnitDescriptor> aUnits) {
  if (!aUnits) {
    OXA_RAISE_ERROR(sUNITIZED_VALUE_LOG, NullPointer(sUNITS));
    return;
  }
  if (ConvertUnits(value, *units, *aUnits)) units.swap(aUnits);
}

bool Value::IsDimensionallyEquivalent(const UnitizedValue& aOther) const {
  return units->IsDimensionallyEquivalent(*aOther.units);
}

bool Value::IsEqual(const UnitizedValue& aOther, double aTolerance) const {
  if (!IsDimensionallyEquivalent(aOther)) return false;
  double other = aOther.value;
  if (!ConvertUnits(other, *aOther.units, *units)) return false;
  return other + aTolerance >= value && value >= other - aTolerance;
}

Value& Value::Negate() {
  value = -value;
  return *this;
}

std::string Value::ToString() const {
  std::ostringstream text;
  text << *this;
  return text.str();
}

std::string Value::ToString(const std::string& aUnitName) const {
  UnitizedValue copy(*this);
  copy.ConvertTo(aUnitName);
  return copy.ToString();
}

std::string Value::ToString(const std::string& aUnitName, const UnitDictionary& aDictionary) const {
  UnitizedValue copy(*this);
  copy.ConvertTo(aUnitName, aDictionary);
  return copy.ToString();
}

std::ostream& operator<<(std::ostream& os, const UnitizedValue<double>& aValue) {
  const std::string& abbreviation = aValue.GetUnits()->GetAbbreviation();
  if (os.width() == 0 || abbreviation.empty()) {
    Insert(os, aValue.GetValue(), abbreviation);
    return os;
  }
  // A number reads the same with a width and without one: digits and locale come along with the flags.
  std::ostringstream text;
  text.flags(os.flags());
  text.precision(os.precision());
  text.imbue(os.getloc());
  Insert(text, aValue.GetValue(), abbreviation);
  return os << text.str();
}

}  // namespace Oxa::Core
