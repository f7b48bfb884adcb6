#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <Infrastructure/OxaCore/Memory.h>
#include <Infrastructure/OxaCore/StringTools.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "Units/UnitDictionaryErrors.h"

namespace Oxa::Core {

namespace {

const char* const sCOLLISION =
    "Found multiple units with alternate name of \"%1%\"\nNo UnitDescriptor provided to differentiate them.";

const UnitDescriptor* IfItAgrees(const UnitDescriptor* unit, const UnitDescriptor* example) {
  if (unit == nullptr || example == nullptr) return unit;
  return example->IsDimensionallyEquivalent(*unit) ? unit : nullptr;
}

boost::shared_ptr<UnitDescriptor> CopyOf(const UnitDescriptor* unit) {
  return unit != nullptr ? unit->MakeCopy() : boost::shared_ptr<UnitDescriptor>();
}

/// The names that a unit has besides those that it is given.
void AppendOwnNames(const UnitDescriptor& unit, const std::string& pluralSuffix,
                    std::vector<std::string>& names) {
  const std::string& name = unit.GetName();
  if (name.empty() || unit.GetAbbreviation().empty()) return;
  const std::string lowerCase = StringTools::DownCase(name);
  names.push_back(unit.GetAbbreviation());
  names.push_back(lowerCase);
  if (pluralSuffix.empty()) return;
  names.push_back(lowerCase + pluralSuffix);
  names.push_back(name + pluralSuffix);
}

/// The first one on a scale whose factor isn't less.
template <class Scale>
auto FirstFrom(Scale& scale, double factor) {
  return std::lower_bound(scale.begin(), scale.end(), factor,
                          [](const auto& entry, double wanted) { return entry.first < wanted; });
}

/// Puts a unit that isn't there where its factor belongs. There must be room for it.
template <class Scale>
void AddTo(Scale& scale, const boost::shared_ptr<UnitDescriptor>& unit) {
  const double factor = unit->GetConversionFactor();
  const auto place = FirstFrom(scale, factor);
  if (place == scale.end() || factor < place->first) scale.insert(place, {factor, unit});
}

/// What isn't a number is the same as what isn't either.
bool IsSame(double left, double right) { return left == right || (std::isnan(left) && std::isnan(right)); }

/// Units of the same dimensions by ascending factor, each factor once.
using Scale = std::vector<std::pair<double, boost::shared_ptr<UnitDescriptor>>>;

void RemoveFrom(Scale& scale, double factor) {
  const auto place = FirstFrom(scale, factor);
  if (place != scale.end() && IsSame(factor, place->first)) scale.erase(place);
}

struct Name;

/// A text and what it stands for. It keeps its place in memory.
using Entry = std::pair<const std::string, Name>;

/// What one text stands for.
struct Name {
  bool IsNeeded() const { return m_spUnit || !m_mains.empty() || m_uAlternates > 0; }

  boost::shared_ptr<UnitDescriptor> m_spUnit;  ///< the unit with this main name, or null
  std::vector<Entry*> m_mains;                 ///< as an alternate: where it leads, in order of registration
  std::size_t m_uAlternates = 0;               ///< as a main name: how often others lead here
};

using Names = std::unordered_map<std::string, Name>;

/// Makes names lead to a unit, all or none of them.
class Registration {
 public:
  Registration(Entry& main, std::size_t names) : m_main(main) { m_alternates.reserve(names); }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;
  ~Registration() {
    for (Name* const alternate : m_alternates) alternate->m_mains.pop_back();
    m_main.second.m_uAlternates -= m_alternates.size();
  }

  void Add(Name& alternate) {
    alternate.m_mains.push_back(&m_main);
    m_alternates.push_back(&alternate);
    ++m_main.second.m_uAlternates;
  }
  void Keep() noexcept { m_alternates.clear(); }

 private:
  Entry& m_main;
  std::vector<Name*> m_alternates;  // what was added to, and is taken back unless it is kept
};

struct DimensionsHash {
  std::size_t operator()(const Dimensions& dimensions) const noexcept {
    // Exponents are small: a byte of each tells nearly all dimensions apart.
    std::size_t hash = 0;
    for (int i = 0; i < Dimensions::sCOUNT; ++i) {
      hash |= (static_cast<std::size_t>(dimensions[static_cast<EDimension>(i)]) & 0xFF) << 8 * i;
    }
    return hash;
  }
};

}  // namespace

UnitDictionary::XAlternateNameCollision::XAlternateNameCollision(const std::string& name)
    : ErrorClass(AlertMessage(sCOLLISION, name)) {}
UnitDictionary::XAlternateNameCollision::~XAlternateNameCollision() = default;

struct UnitDictionary::Units {
  Units() = default;

  // The names lead to names of their own dictionary.
  Units(const Units& other) : m_names(other.m_names), m_byDimensions(other.m_byDimensions) {
    for (auto& [text, name] : m_names) {
      for (Entry*& main : name.m_mains) main = &*m_names.find(main->first);
    }
  }
  Units& operator=(const Units&) = delete;
  ~Units() = default;

  Scale& ScaleWithRoom(const Dimensions& dimensions) {
    Scale& scale = m_byDimensions[dimensions];
    if (scale.size() == scale.capacity()) scale.reserve(2 * scale.size() + 1);
    return scale;
  }

  void RemoveFromScale(const Dimensions& dimensions, double factor) {
    const auto found = m_byDimensions.find(dimensions);
    if (found != m_byDimensions.end()) RemoveFrom(found->second, factor);
  }

  void RemoveName(const std::string& text) {
    const auto main = m_names.find(text);
    if (main == m_names.end()) return;
    main->second.m_spUnit.reset();
    main->second.m_uAlternates = 0;
    for (auto& entry : m_names) {
      auto& mains = entry.second.m_mains;
      mains.erase(std::remove(mains.begin(), mains.end(), &*main), mains.end());
    }
    for (auto entry = m_names.begin(); entry != m_names.end();)
      entry = entry->second.IsNeeded() ? std::next(entry) : m_names.erase(entry);
  }

  Names m_names;
  std::unordered_map<Dimensions, Scale, DimensionsHash> m_byDimensions;
};

UnitDictionary::UnitDictionary(Late) noexcept : m_pUnits(nullptr) {}

// The destructor frees the units if a registration raises: the object is whole by then.
UnitDictionary::UnitDictionary(bool aRegisterDefaults) : UnitDictionary(Late()) {
  m_pUnits.store(new Units, std::memory_order_relaxed);
  registerBaseUnits();
  if (aRegisterDefaults) RegisterDefaultUnits();
}

UnitDictionary::UnitDictionary(const UnitDictionary& other) : m_pUnits(new Units(other.units())) {}
UnitDictionary::~UnitDictionary() { delete m_pUnits.load(std::memory_order_relaxed); }

UnitDictionary& UnitDictionary::operator=(const UnitDictionary& other) {
  takeUnits(UnitDictionary(other));
  return *this;
}

bool UnitDictionary::AddUnit(boost::shared_ptr<UnitDescriptor> aUnit, std::string aPluralSuffix,
                             std::vector<std::string> aAlternateNames) {
  if (!aUnit) return false;
  AppendOwnNames(*aUnit, aPluralSuffix, aAlternateNames);
  // What needs memory comes first, so that a unit is added whole or not at all.
  boost::shared_ptr<UnitDescriptor>& unit = units().m_names[aUnit->GetName()].m_spUnit;
  Scale& scale = units().ScaleWithRoom(aUnit->GetDimensions());
  RegisterAlternateNames(aUnit->GetName(), std::move(aAlternateNames));
  AddTo(scale, aUnit);
  if (unit) return false;
  unit = std::move(aUnit);
  return true;
}

void UnitDictionary::RegisterAlternateNames(const std::string& aName,
                                            std::vector<std::string> aAlternateNames) {
  if (aName.empty()) return;
  Names& names = units().m_names;
  Registration registration(*names.try_emplace(aName).first, aAlternateNames.size());
  for (const std::string& name : aAlternateNames) registration.Add(names[name]);
  registration.Keep();
}

boost::shared_ptr<UnitDescriptor> UnitDictionary::LookupUnit(
    const std::string& aName, boost::shared_ptr<UnitDescriptor> aExample) const {
  return CopyOf(FindUnit(aName, aExample.get()));
}

const UnitDescriptor* UnitDictionary::FindUnit(const std::string& aName,
                                               const UnitDescriptor* aExample) const {
  const Units& all = units();
  const auto found = all.m_names.find(aName);
  if (found == all.m_names.end()) return nullptr;
  const Name& name = found->second;
  if (name.m_spUnit) return IfItAgrees(name.m_spUnit.get(), aExample);
  if (name.m_mains.size() > 1 && aExample == nullptr) {
    OXA_RAISE_ERROR(sUNIT_DICTIONARY_LOG, XAlternateNameCollision(aName));
    return nullptr;
  }
  for (const Entry* const main : name.m_mains) {
    if (const UnitDescriptor* const unit = IfItAgrees(main->second.m_spUnit.get(), aExample)) return unit;
  }
  return nullptr;
}

boost::shared_ptr<UnitDescriptor> UnitDictionary::LookupDimensionallyEquivalentUnit(
    const UnitDescriptor& aUnit) const {
  return CopyOf(FindDimensionallyEquivalentUnit(aUnit.GetDimensions(), aUnit.GetConversionFactor()));
}

const UnitDescriptor* UnitDictionary::FindDimensionallyEquivalentUnit(const Dimensions& aDimensions,
                                                                      double aFactor) const {
  const auto& scales = units().m_byDimensions;
  const auto found = scales.find(aDimensions);
  if (found == scales.end() || found->second.empty()) return nullptr;
  const Scale& scale = found->second;
  const auto from = FirstFrom(scale, aFactor);
  return (from != scale.end() ? *from : scale.back()).second.get();
}

bool UnitDictionary::IsUnitDefined(const std::string& aName) const {
  const Units& all = units();
  const auto found = all.m_names.find(aName);
  if (found == all.m_names.end()) return false;
  const Name& name = found->second;
  return name.m_spUnit || std::any_of(name.m_mains.begin(), name.m_mains.end(),
                                      [](const auto* main) { return main->second.m_spUnit != nullptr; });
}

bool UnitDictionary::IsUnitDefined(const UnitDescriptor& aUnit) const {
  return IsUnitDefined(aUnit.GetName());
}

void UnitDictionary::RemoveUnit(const UnitDescriptor& aUnit) {
  const std::string name = aUnit.GetName();  // NOLINT: `aUnit` may be the very unit that goes here
  units().RemoveFromScale(aUnit.GetDimensions(), aUnit.GetConversionFactor());
  units().RemoveName(name);
}

void UnitDictionary::RemoveUnit(const std::string& aName) { RemoveUnit(UnitDescriptor(aName)); }

void UnitDictionary::RemoveAllUnits() { takeUnits(UnitDictionary(false)); }

const UnitDictionary::Units& UnitDictionary::units() const {
  const Units* const all = m_pUnits.load(std::memory_order_acquire);
  return all != nullptr ? *all : registerLateUnits();
}

UnitDictionary::Units& UnitDictionary::units() {
  Units* const all = m_pUnits.load(std::memory_order_acquire);
  return all != nullptr ? *all : registerLateUnits();
}

// Without a lock, so that a thread may be killed here: of several that come at once, one gives its units to all.
UnitDictionary::Units& UnitDictionary::registerLateUnits() const {
  const Memory::MemoryLeakDetection unmarked(1);
  UnitDictionary made;
  Units* current = nullptr;
  if (!m_pUnits.compare_exchange_strong(current, &made.units(), std::memory_order_acq_rel)) return *current;
  return *made.m_pUnits.exchange(nullptr, std::memory_order_relaxed);
}

void UnitDictionary::takeUnits(UnitDictionary&& other) noexcept {
  other.m_pUnits.store(m_pUnits.exchange(other.m_pUnits.load(std::memory_order_relaxed)),
                       std::memory_order_relaxed);
}

}  // namespace Oxa::Core
