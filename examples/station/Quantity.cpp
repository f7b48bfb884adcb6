#include "Quantity.h"

namespace Station {

using Oxa::Core::Elapse;
using Oxa::Core::UnitDescriptor;

boost::shared_ptr<UnitDescriptor> FindTimeUnit(const std::string& name) {
  const boost::shared_ptr<UnitDescriptor> spTime = ToUnitizedValue(Elapse()).GetUnits();
  return Quantity::sm_spGlobalDictionary->LookupUnit(name, spTime);
}

Quantity InUnit(const Elapse& elapse, const std::string& unit) {
  Quantity quantity = ToUnitizedValue(elapse);
  quantity.ConvertTo(unit);
  return quantity;
}

Quantity Tolerance(const Series& series) { return InUnit(series.m_tolerance, series.m_sUnit); }

}  // namespace Station
