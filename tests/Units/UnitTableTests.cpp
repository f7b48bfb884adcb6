// The library's dictionary against the listing of UnitTable.h.
#include "Units/UnitTable.h"

#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <gtest/gtest.h>
#include <boost/make_shared.hpp>

#include <array>
#include <cctype>
#include <cmath>
#include <map>
#include <set>

using namespace Oxa::Core;
using UnitTable::AlternatesOf;
using UnitTable::DimensionsOf;
using UnitTable::Row;
using UnitTable::Rows;

namespace {

using RowList = std::vector<const Row*>;
using Bearers =
    std::map<std::string, RowList>;  // by name: the units that bear it, in the order of registration

RowList RowsFrom(UnitTable::EAvailability first, UnitTable::EAvailability last) {
  RowList rows;
  for (const Row& row : Rows()) {
    if (row.availability >= first && row.availability <= last) rows.push_back(&row);
  }
  return rows;
}

RowList Joined(RowList rows, const RowList& more) {
  rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

RowList BaseRows() { return RowsFrom(UnitTable::eBASE, UnitTable::eBASE); }
RowList DefaultRows() { return RowsFrom(UnitTable::eBASE, UnitTable::eDEFAULT); }
RowList AllRows() { return RowsFrom(UnitTable::eBASE, UnitTable::eKNOWN); }

// Every unit there is, each registered once.
UnitDictionary DictionaryOfAll() {
  UnitDictionary dictionary(false);
  dictionary.RegisterAllKnownUnits();
  return dictionary;
}

Bearers BearersOf(const RowList& rows) {
  Bearers bearers;
  for (const Row* row : rows) {
    for (const std::string& name : AlternatesOf(*row)) bearers[name].push_back(row);
  }
  return bearers;
}

std::set<std::string> NamesOf(const RowList& rows) {
  std::set<std::string> names;
  for (const Row* row : rows) names.insert(row->name);
  return names;
}

boost::shared_ptr<UnitDescriptor> ExampleOf(const Dimensions& dimensions) {
  auto example = boost::make_shared<UnitDescriptor>();
  example->SetDimensions(dimensions);
  return example;
}

std::string FoundName(const boost::shared_ptr<UnitDescriptor>& unit) {
  return unit ? "\"" + unit->GetName() + "\"" : "nothing";
}

std::string Quoted(const Row& row) { return "\"" + std::string(row.name) + "\""; }

void ExpectFields(const UnitDescriptor& unit, const Row& row) {
  EXPECT_EQ(row.name, unit.GetName());
  EXPECT_EQ(row.abbreviation, unit.GetAbbreviation());
  EXPECT_EQ(row.factor, unit.GetConversionFactor());
  const Dimensions expected = DimensionsOf(row);
  for (int index = 0; index < 8; ++index) {
    const auto dimension = static_cast<EDimension>(index);
    EXPECT_EQ(expected[dimension], unit.GetDimensions()[dimension]) << "exponent " << index;
  }
}

// Each row under its main name, with all its fields.
void ExpectRows(const UnitDictionary& dictionary, const RowList& rows) {
  for (const Row* row : rows) {
    SCOPED_TRACE(Quoted(*row));
    EXPECT_TRUE(dictionary.IsUnitDefined(row->name));
    const auto unit = dictionary.LookupUnit(row->name);
    ASSERT_TRUE(unit);
    ExpectFields(*unit, *row);
  }
}

// The first of the bearers that a unit of these dimensions could be.
const Row* FirstOf(const RowList& bearers, const Dimensions& dimensions) {
  for (const Row* row : bearers) {
    if (DimensionsOf(*row) == dimensions) return row;
  }
  return nullptr;
}

void ExpectBearers(const UnitDictionary& dictionary, const std::string& name, const RowList& bearers) {
  SCOPED_TRACE("\"" + name + "\"");
  EXPECT_TRUE(dictionary.IsUnitDefined(name));
  if (bearers.size() == 1) {
    EXPECT_EQ(Quoted(*bearers.front()), FoundName(dictionary.LookupUnit(name)));
  } else {
    EXPECT_THROW(dictionary.LookupUnit(name), UnitDictionary::XAlternateNameCollision);
  }
  for (const Row* bearer : bearers) {
    const Dimensions dimensions = DimensionsOf(*bearer);
    EXPECT_EQ(Quoted(*FirstOf(bearers, dimensions)),
              FoundName(dictionary.LookupUnit(name, ExampleOf(dimensions))));
  }
  EXPECT_EQ("nothing", FoundName(dictionary.LookupUnit(name, ExampleOf(Dimensions(9, 9, 9)))));
}

// All alternates that registering the rows one by one, repeats included, leaves behind. A main name goes before
// them.
void ExpectAlternates(const UnitDictionary& dictionary, const RowList& rows) {
  const std::set<std::string> mainNames = NamesOf(rows);
  for (const auto& [name, bearers] : BearersOf(rows)) {
    if (mainNames.count(name) != 0) {
      EXPECT_EQ("\"" + name + "\"", FoundName(dictionary.LookupUnit(name)));
    } else {
      ExpectBearers(dictionary, name, bearers);
    }
  }
}

std::set<std::string> AllNames(const RowList& rows) {
  std::set<std::string> names = NamesOf(rows);
  for (const auto& [name, bearers] : BearersOf(rows)) names.insert(name);
  return names;
}

char SwapCase(char letter) {
  const auto byte = static_cast<unsigned char>(letter);
  return static_cast<char>(std::islower(byte) != 0 ? std::toupper(byte) : std::tolower(byte));
}

// What somebody could have registered by a slip: the name with a letter dropped, doubled or of the other case, or
// with another ending.
std::set<std::string> NearMisses(const std::string& name) {
  std::set<std::string> misses = {name + "s",  name + "es",   name + ".",
                                  name + "^2", name + "\261", " " + name};
  std::string swapped = name;
  for (char& letter : swapped) letter = SwapCase(letter);
  misses.insert(swapped);
  for (std::size_t index = 0; index < name.size(); ++index) {
    misses.insert(std::string(name).erase(index, 1));
    misses.insert(std::string(name).insert(index, 1, name[index]));
    std::string other = name;
    other[index] = SwapCase(other[index]);
    misses.insert(other);
  }
  return misses;
}

void ExpectNothingBeside(const UnitDictionary& dictionary, const std::set<std::string>& names) {
  for (const std::string& name : names) {
    for (const std::string& miss : NearMisses(name)) {
      const bool listed = names.count(miss) != 0;
      EXPECT_TRUE(listed || !dictionary.IsUnitDefined(miss)) << '"' << miss << '"';
    }
  }
}

// Of all units with the same factor and dimensions the index keeps the one that came first.
using Index = std::map<std::string, std::map<double, const Row*>>;

Index IndexOf(const RowList& rows) {
  Index index;
  for (const Row* row : rows) index[row->dimensions].emplace(row->factor, row);
  return index;
}

void ExpectStandIns(const UnitDictionary& dictionary, const RowList& rows) {
  const Index index = IndexOf(rows);
  for (const Row* row : rows) {
    const auto unit = dictionary.LookupUnit(row->name);
    ASSERT_TRUE(unit) << row->name;
    const Row* standIn = index.at(row->dimensions).at(row->factor);
    EXPECT_EQ(Quoted(*standIn), FoundName(dictionary.LookupDimensionallyEquivalentUnit(*unit))) << row->name;
  }
}

// A unit whose factor is near that of the row, but not that of any.
UnitDescriptor Beside(const Row& row, double ratio) {
  UnitDescriptor unit("", "", 1 / (row.factor * ratio), UnitDescriptor());
  unit.SetDimensions(DimensionsOf(row));
  return unit;
}

TEST(UnitTable, HasTheRowsOfEachKind) {
  EXPECT_EQ(13U, BaseRows().size());
  EXPECT_EQ(148U, DefaultRows().size());
  EXPECT_EQ(165U, AllRows().size());
  EXPECT_EQ(165U, NamesOf(AllRows()).size());
}

TEST(UnitTable, ADictionaryHasTheDefaultUnitsWithAllFields) {
  const UnitDictionary dictionary;
  ExpectRows(dictionary, DefaultRows());
  ExpectAlternates(dictionary, DefaultRows());
}

TEST(UnitTable, StandardUnitsAreTheDefaultOnes) {
  ExpectRows(UnitDictionary::StandardUnits(), DefaultRows());
  ExpectAlternates(UnitDictionary::StandardUnits(), DefaultRows());
}

TEST(UnitTable, ADictionaryOfAllKnownUnitsHasThemWithAllFields) {
  const UnitDictionary dictionary = DictionaryOfAll();
  ExpectRows(dictionary, AllRows());
  ExpectAlternates(dictionary, AllRows());
}

TEST(UnitTable, WithoutDefaultsThereAreTheBaseUnitsAndNothingElse) {
  const UnitDictionary dictionary(false);
  ExpectRows(dictionary, BaseRows());
  ExpectAlternates(dictionary, BaseRows());
  const std::set<std::string> base = AllNames(BaseRows());
  for (const std::string& name : AllNames(AllRows())) {
    EXPECT_EQ(base.count(name) != 0, dictionary.IsUnitDefined(name)) << '"' << name << '"';
  }
}

TEST(UnitTable, UnitsThatAreOnlyKnownAreNotInADictionaryOfDefaults) {
  const UnitDictionary dictionary;
  const std::set<std::string> defaults = AllNames(DefaultRows());
  for (const std::string& name : AllNames(RowsFrom(UnitTable::eKNOWN, UnitTable::eKNOWN))) {
    if (defaults.count(name) != 0) continue;
    EXPECT_FALSE(dictionary.IsUnitDefined(name)) << '"' << name << '"';
    EXPECT_FALSE(dictionary.LookupUnit(name)) << '"' << name << '"';
  }
}

TEST(UnitTable, NothingIsDefinedUnderNamesThatLookAlike) {
  ExpectNothingBeside(UnitDictionary(false), AllNames(BaseRows()));
  ExpectNothingBeside(UnitDictionary(), AllNames(DefaultRows()));
  ExpectNothingBeside(DictionaryOfAll(), AllNames(AllRows()));
}

// All names with more than one bearer, so that nobody overlooks a new one.
TEST(UnitTable, TheAmbiguousNamesAreThese) {
  const std::set<std::string> expected = {"m",
                                          "oz.",
                                          "oz",
                                          "C",
                                          "F",
                                          "ohm",
                                          "miles per hour",
                                          "meter per second squared",
                                          "kilogram per cubic meter"};
  const UnitDictionary dictionary = DictionaryOfAll();
  std::set<std::string> found;
  for (const std::string& name : AllNames(AllRows())) {
    try {
      dictionary.LookupUnit(name);
    } catch (const UnitDictionary::XAlternateNameCollision&) {
      found.insert(name);
    }
  }
  EXPECT_EQ(expected, found);
}

TEST(UnitTable, RegisteringAgainMakesTheAlternatesAmbiguousAndTheUnitsStay) {
  UnitDictionary dictionary;
  dictionary.RegisterAllKnownUnits();
  ExpectRows(dictionary, AllRows());
  ExpectAlternates(dictionary, Joined(DefaultRows(), RowsFrom(UnitTable::eDEFAULT, UnitTable::eKNOWN)));
}

TEST(UnitTable, TheFirstOfEqualUnitsStandsForTheOthers) {
  ExpectStandIns(UnitDictionary(false), BaseRows());
  ExpectStandIns(UnitDictionary(), DefaultRows());
  ExpectStandIns(DictionaryOfAll(), AllRows());
}

TEST(UnitTable, UnitsThatAreOnlyKnownComeLastBehindDefaults) {
  UnitDictionary dictionary;
  dictionary.RegisterAllKnownUnits();
  ExpectStandIns(dictionary, Joined(DefaultRows(), RowsFrom(UnitTable::eKNOWN, UnitTable::eKNOWN)));
}

TEST(UnitTable, OtherwiseTheNearestLargerFactorStandsForAUnit) {
  const UnitDictionary dictionary = DictionaryOfAll();
  const Index index = IndexOf(AllRows());
  for (const Row& row : Rows()) {
    for (const double ratio : {1e-6, 0.999, 1.001, 1e6}) {
      const UnitDescriptor unit = Beside(row, ratio);
      const auto& units = index.at(row.dimensions);
      const auto next = units.lower_bound(unit.GetConversionFactor());
      const Row* expected = next != units.end() ? next->second : units.rbegin()->second;
      EXPECT_EQ(Quoted(*expected), FoundName(dictionary.LookupDimensionallyEquivalentUnit(unit))) << row.name;
    }
  }
}

// Every combination of exponents that a unit of an instrument could have.
template <class Visitor>
void ForSmallDimensions(const Visitor& visit) {
  const std::array<std::array<long, 2>, 8> limits = {
      {{-4, 4}, {-2, 2}, {-4, 4}, {-2, 2}, {0, 1}, {0, 1}, {0, 1}, {0, 1}}};
  Dimensions dimensions;
  for (std::size_t at = 0; at < 8; ++at) dimensions[static_cast<EDimension>(at)] = limits[at][0];
  for (std::size_t at = 0; at < 8;) {
    visit(dimensions);
    for (at = 0; at < 8; ++at) {
      long& exponent = dimensions[static_cast<EDimension>(at)];
      if (++exponent <= limits[at][1]) break;
      exponent = limits[at][0];
    }
  }
}

TEST(UnitTable, WithoutTheListedUnitsNothingIsLeft) {
  UnitDictionary dictionary = DictionaryOfAll();
  for (const Row& row : Rows()) dictionary.RemoveUnit(*dictionary.LookupUnit(row.name));
  for (const std::string& name : AllNames(AllRows())) EXPECT_FALSE(dictionary.IsUnitDefined(name)) << name;
  int looked = 0;
  ForSmallDimensions([&](const Dimensions& dimensions) {
    ++looked;
    const auto left = dictionary.LookupDimensionallyEquivalentUnit(*ExampleOf(dimensions));
    EXPECT_FALSE(left) << FoundName(left);
  });
  EXPECT_EQ(9 * 5 * 9 * 5 * 16, looked);
}

}  // namespace
