// Units by name, by abbreviation, by other names, and by dimensions.
//
// Thread safety: look-ups are const and change nothing, so that any number of threads may look up in one
// dictionary at once. Who changes a dictionary must have it to himself. A unit must not be changed once it has been
// added: dictionaries that are copies of each other share it. What look-ups hand out is a copy, and the caller's.
// Failures: a name that isn't found is no error, but a null pointer. All errors of a dictionary's own are raised
// under "Oxa.Core.UnitDictionary".
// Texts are single bytes: the standard units have the bytes 0xB5 (micro), 0xB1 (plus-minus) and 0xB0 (degree).
//
//   const UnitDictionary& units = UnitDictionary::StandardUnits();
//   const boost::shared_ptr<UnitDescriptor> inch = units.LookupUnit("inches");
//   const double meters = inch->ConvertToBaseUnits(12);
#ifndef INFRASTRUCTURE_OXACORE_UNITDICTIONARY_H
#define INFRASTRUCTURE_OXACORE_UNITDICTIONARY_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

namespace Oxa::Core {

class Mutex;

/// A set of units. It always holds the base units.
///
/// Each unit has its main name, which is unique. Alternate names lead to a main name; one alternate name may lead
/// to several main names, or twice to the same one, and is ambiguous then. By dimensions only the first of several
/// units of the same dimensions and the same factor is found.
class OXACORE_API UnitDictionary {
 public:
  /// Found multiple units with alternate name of "%1%", line break, "No UnitDescriptor provided to differentiate
  /// them."; severity eERROR.
  class OXACORE_API XAlternateNameCollision : public ErrorClass<XAlternateNameCollision, LogicError> {
   public:
    /// `name` is what was looked up.
    explicit XAlternateNameCollision(const std::string& name);
    ~XAlternateNameCollision() override;
  };

  /// The base units and, if asked for, the default units. Raises AllocationFailed without memory for a unit
  /// ("UnitDescriptor"); without memory for a name std::bad_alloc passes.
  explicit UnitDictionary(bool aRegisterDefaults = true);

  /// A copy is a dictionary of its own that shares the units. Without memory std::bad_alloc passes, and what was
  /// assigned to is as it was.
  UnitDictionary(const UnitDictionary&);
  UnitDictionary& operator=(const UnitDictionary&);
  virtual ~UnitDictionary();

  /// Adds a unit and says whether its name was new; a null `aUnit` isn't added. The dictionary shares it from now on.
  /// If it has both a name and an abbreviation, it gets more alternate names behind `aAlternateNames`: the
  /// abbreviation and the name in lower case and, unless `aPluralSuffix` is empty, both the lower-case name and the
  /// name with the suffix.
  /// Where the name was taken, the older unit stays; but the alternate names are registered all the same, and the
  /// new unit is found by its dimensions if no other one of its factor is. A unit whose factor is no number is found
  /// by its dimensions only if it is the first of these, and then it is the only one.
  /// Without memory std::bad_alloc passes, and nothing was added.
  bool AddUnit(boost::shared_ptr<UnitDescriptor> aUnit, std::string aPluralSuffix = "s",
               std::vector<std::string> aAlternateNames = std::vector<std::string>());

  /// Makes each of `aAlternateNames` lead to the main name `aName`, whether or not there is such a unit, and once
  /// more if it does already. Nothing happens for an empty `aName`. Without memory std::bad_alloc passes, and none of
  /// them was registered.
  void RegisterAlternateNames(const std::string& aName, std::vector<std::string> aAlternateNames);

  /// A copy of the unit that `aName` stands for, or null; its class is that of the unit. With `aExample` only a unit
  /// of the same dimensions counts. A main name comes before all alternate names: where its unit doesn't agree with
  /// the example, nothing is found. Raises XAlternateNameCollision for an alternate name that was registered more
  /// than once, unless there is an example: then the unit that was registered first among those that agree is
  /// found. Null where that raise returns. Raises what UnitDescriptor::MakeCopy raises.
  boost::shared_ptr<UnitDescriptor> LookupUnit(
      const std::string& aName,
      boost::shared_ptr<UnitDescriptor> aExample = boost::shared_ptr<UnitDescriptor>()) const;

  /// As LookupUnit, but gives the unit itself, which lives at least as long as this dictionary isn't changed.
  const UnitDescriptor* FindUnit(const std::string& aName, const UnitDescriptor* aExample = nullptr) const;

  /// A copy of a unit with the dimensions of `aUnit`: the one with the same factor or else the next larger one, or
  /// the one with the largest if all are smaller. Null if there is none of these dimensions. Raises what
  /// UnitDescriptor::MakeCopy raises.
  boost::shared_ptr<UnitDescriptor> LookupDimensionallyEquivalentUnit(const UnitDescriptor& aUnit) const;

  /// As LookupDimensionallyEquivalentUnit for a unit of these dimensions and this conversion factor, but gives the
  /// unit itself, which lives at least as long as this dictionary isn't changed.
  const UnitDescriptor* FindDimensionallyEquivalentUnit(const Dimensions& aDimensions, double aFactor) const;

  /// Whether a unit has this name as its main name or as an alternate name, ambiguous or not. Of a descriptor only
  /// the name is looked at.
  bool IsUnitDefined(const std::string& aName) const;
  bool IsUnitDefined(const UnitDescriptor& aUnit) const;

  /// Removes the unit with the name of `aUnit`, all alternate names that lead to it, and, from what is found by
  /// dimensions, whichever unit has the dimensions and the factor of `aUnit`.
  void RemoveUnit(const UnitDescriptor& aUnit);

  /// As for a descriptor that has this name, no dimensions and the factor 1. So the unit and its alternate names go,
  /// but it is still found by its dimensions; and the unit of factor 1 without dimensions isn't any more.
  void RemoveUnit(const std::string& aName);

  /// Removes everything but the base units, which are as new. Raises what the constructor raises; the dictionary is
  /// as it was then.
  void RemoveAllUnits();

  /// Adds the default units, or all units that the library knows. Units that are there stay; their alternate names
  /// are registered again, which makes them ambiguous. Raises what the constructor raises, and NullPointer with the
  /// unit's name where a unit that others derive from has been removed; where that raise returns, those others are
  /// left out. What was added until then stays.
  void RegisterDefaultUnits();
  void RegisterAllKnownUnits();

  /// The dictionary of the process with the default units, made by the first call. It lives until the library is
  /// taken out of the process, or to the very end of the process, also for static objects that die behind the
  /// library's globals and for threads that still run then. Any thread may call, also before main(). Raises what the
  /// constructor raises; the next call tries again then.
  static const UnitDictionary& StandardUnits();

 protected:
  /// A unit whose exponent of that dimension is 1. Raises AllocationFailed ("UnitDescriptor"); null where that
  /// returns.
  boost::shared_ptr<UnitDescriptor> createBaseUnit(const std::string& aName, const std::string& aAbbreviation,
                                                   EDimension aDimension);

  /// Adds the units that all others derive from.
  void registerBaseUnits();

  // Each adds the standard units of one area. They derive units from those of the base and of the areas before
  // theirs. `aAllKnown` adds those as well that aren't default units.
  void registerAngularUnits(bool aAllKnown);
  void registerLengthUnits(bool aAllKnown);
  void registerMassUnits(bool aAllKnown);
  void registerTimeUnits(bool aAllKnown);
  void registerTemperatureUnits(bool aAllKnown);
  void registerAmountUnits(bool aAllKnown);
  void registerAreaUnits(bool aAllKnown);
  void registerVolumeUnits(bool aAllKnown);
  void registerElectroMagneticUnits(bool aAllKnown);
  void registerVoltUnits(bool aAllKnown);
  void registerTheRestOfUnits(bool aAllKnown);

 private:
  struct Units;
  struct Late {};

  /// The default units, which are registered when somebody first looks.
  explicit UnitDictionary(Late) noexcept;

  const Units& units() const;
  Units& units();
  Units& registerLateUnits() const;
  void takeUnits(UnitDictionary&& other) noexcept;
  void registerUnits(bool aAllKnown);

  mutable std::atomic<Units*> m_pUnits;  ///< owned; null until the default units are registered late

  friend class UnitizedValueBase;
  friend void ReleaseStandardUnits();

  static boost::shared_ptr<UnitDictionary>& sm_spStandardUnits;
  static Mutex& sm_standardUnitsMutex;  ///< guards sm_spStandardUnits while it is made
};

}  // namespace Oxa::Core

#endif
