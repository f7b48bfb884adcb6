#include "Units/UnitRows.h"

#include <optional>

#include "Units/UnitExpression.h"

namespace Oxa::Core {

void AddDerived(UnitDictionary& dictionary, const char* name, const char* abbreviation, double factor,
                const char* expression, const char* pluralSuffix, AlternateNames alternateNames) {
  const std::optional<UnitDescriptor> comparison = UnitOf(dictionary, expression);
  if (!comparison) return;
  dictionary.AddUnit(NewUnit(name, abbreviation, factor, *comparison), pluralSuffix,
                     {alternateNames.begin(), alternateNames.end()});
}

void AddRenamed(UnitDictionary& dictionary, const char* name, const char* abbreviation,
                const char* expression, const char* pluralSuffix, AlternateNames alternateNames) {
  const std::optional<UnitDescriptor> product = UnitOf(dictionary, expression);
  if (!product) return;
  const boost::shared_ptr<UnitDescriptor> unit = NewUnit(*product);
  if (!unit) return;
  unit->SetName(name);
  unit->SetAbbreviation(abbreviation);
  dictionary.AddUnit(unit, pluralSuffix, {alternateNames.begin(), alternateNames.end()});
}

}  // namespace Oxa::Core
