// What a dictionary of units has to be, written down as plainly as can be: three containers, searched from end to end.
#ifndef OXACORE_FUZZ_UNITMODEL_H
#define OXACORE_FUZZ_UNITMODEL_H

#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace OxaFuzz {

/// A unit without a name is a unit too: whether one was found is told beside it.
struct ModelAnswer {
  enum EKind { eNOTHING, eUNIT, eAMBIGUOUS } m_eKind = eNOTHING;
  Oxa::Core::UnitDescriptor m_unit{};
};

class UnitModel {
 public:
  using Unit = Oxa::Core::UnitDescriptor;
  using Names = std::vector<std::string>;

  UnitModel() { AddBaseUnits(); }

  bool Add(const Unit& unit, const std::string& suffix, Names names) {
    const std::string& name = unit.GetName();
    if (!name.empty() && !unit.GetAbbreviation().empty()) {
      names.push_back(unit.GetAbbreviation());
      names.push_back(Lower(name));
      if (!suffix.empty()) names.push_back(Lower(name) + suffix);
      if (!suffix.empty()) names.push_back(name + suffix);
    }
    AddNames(name, names);
    if (FindByFactor(unit) == m_byDimensions.end()) m_byDimensions.push_back(unit);
    if (FindMain(name) != m_units.end()) return false;
    m_units.push_back(unit);
    return true;
  }

  void AddNames(const std::string& main, const Names& names) {
    if (main.empty()) return;
    for (const std::string& name : names) m_alternates.emplace_back(name, main);
  }

  void Remove(const Unit& unit) {
    const std::string name = unit.GetName();
    if (const auto found = FindMain(name); found != m_units.end()) m_units.erase(found);
    const auto leads = [&name](const auto& alternate) { return alternate.second == name; };
    m_alternates.erase(std::remove_if(m_alternates.begin(), m_alternates.end(), leads), m_alternates.end());
    if (const auto found = FindByFactor(unit); found != m_byDimensions.end()) m_byDimensions.erase(found);
  }

  void RemoveAll() {
    m_units.clear();
    m_alternates.clear();
    m_byDimensions.clear();
    AddBaseUnits();
  }

  ModelAnswer Find(const std::string& name, const Unit* example) const {
    if (const auto found = FindMain(name); found != m_units.end()) return IfAgreed(*found, example);
    const Names mains = MainsOf(name);
    if (mains.size() > 1 && example == nullptr) return {ModelAnswer::eAMBIGUOUS};
    for (const std::string& main : mains)
      if (const auto found = FindMain(main); found != m_units.end())
        if (const ModelAnswer answer = IfAgreed(*found, example); answer.m_eKind == ModelAnswer::eUNIT)
          return answer;
    return {};
  }

  ModelAnswer FindEquivalent(const Unit& unit) const {
    const Unit* best = nullptr;
    for (const Unit& candidate : m_byDimensions)
      if (candidate.GetDimensions() == unit.GetDimensions() &&
          (best == nullptr || IsNearer(candidate, *best, unit)))
        best = &candidate;
    return best == nullptr ? ModelAnswer() : ModelAnswer{ModelAnswer::eUNIT, *best};
  }

  bool IsDefined(const std::string& name) const {
    if (FindMain(name) != m_units.end()) return true;
    const Names mains = MainsOf(name);
    return std::any_of(mains.begin(), mains.end(),
                       [this](const std::string& main) { return FindMain(main) != m_units.end(); });
  }

 private:
  static std::string Lower(std::string text) {
    for (char& c : text)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
  }

  static ModelAnswer IfAgreed(const Unit& unit, const Unit* example) {
    if (example != nullptr && !(example->GetDimensions() == unit.GetDimensions())) return {};
    return {ModelAnswer::eUNIT, unit};
  }

  // Of the factors that aren't below the wanted one the least, else the largest.
  static bool IsNearer(const Unit& candidate, const Unit& best, const Unit& wanted) {
    const double factor = wanted.GetConversionFactor();
    const bool above = candidate.GetConversionFactor() >= factor;
    const bool bestAbove = best.GetConversionFactor() >= factor;
    if (above != bestAbove) return above;
    return above == (candidate.GetConversionFactor() < best.GetConversionFactor());
  }

  std::vector<Unit>::const_iterator FindMain(const std::string& name) const {
    return std::find_if(m_units.begin(), m_units.end(),
                        [&](const Unit& unit) { return unit.GetName() == name; });
  }

  std::vector<Unit>::const_iterator FindByFactor(const Unit& like) const {
    return std::find_if(m_byDimensions.begin(), m_byDimensions.end(), [&](const Unit& unit) {
      return unit.GetDimensions() == like.GetDimensions() &&
             unit.GetConversionFactor() == like.GetConversionFactor();
    });
  }

  Names MainsOf(const std::string& name) const {
    Names mains;
    for (const auto& [alternate, main] : m_alternates)
      if (alternate == name) mains.push_back(main);
    return mains;
  }

  void AddBase(const char* name, const char* abbreviation, int dimension, const char* suffix = "s",
               const Names& names = {}) {
    Unit unit(name, abbreviation);
    Oxa::Core::Dimensions dimensions;
    if (dimension >= 0) dimensions[static_cast<Oxa::Core::EDimension>(dimension)] = 1;
    unit.SetDimensions(dimensions);
    Add(unit, suffix, names);
  }

  void AddBaseUnits() {
    AddBase("", "", -1);
    AddBase("Unitless", "", -1);
    AddBase("Arb", "Arb", 0);
    AddBase("Meter", "m", 0);
    AddBase("Meter Approx", "m\xB1", 0);
    AddBase("Kilogram", "kg", 1);
    AddBase("Second", "s", 2, "s", {"sec"});
    AddBase("Second (2)", "sec.", 2, "");
    AddBase("Ampere", "A", 3, "s", {"Amp", "amp", "Amps", "amps"});
    AddBase("Kelvin", "K", 4, "");
    AddBase("Mole", "mol", 5);
    AddBase("Candela", "cd", 6);
    AddBase("Radian", "rad", 7, "s", {"rads"});
  }

  std::vector<Unit> m_units;
  std::vector<std::pair<std::string, std::string>> m_alternates;  // in order of registration
  std::vector<Unit> m_byDimensions;                               // each pair of dimensions and factor once
};

}  // namespace OxaFuzz

#endif
