// The dictionary's figures against those of UDUNITS-2, and the page that tells a reader where the two part.
//
// A unit agrees with the world if its dimensions do, and if one of it is as many base units, but for roundings: the
// dictionary keeps reciprocals (three roundings at most, each of 1.1e-16), UDUNITS-2 multiplies a handful of doubles.
// 1e-15 is above all of that and far below what tells a rounded table from another one: the smallest such difference
// is that of the Degree, 1e-10.
#include "Units/UnitTable.h"

#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <gtest/gtest.h>
#include <udunits2.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>

using namespace Oxa::Core;
using UnitTable::Row;
using UnitTable::Rows;

namespace {

constexpr double dAGREEMENT = 1e-15;

// What each unit is called in the world, as UDUNITS-2 reads it. Empty: the world knows no such unit. Where the
// database itself has a rounded figure (ounces, gallons) or an old one (the constants of atoms), the expression
// gives the definition instead. "Approx" and "(2)" are second names of a unit: they are measured by its own.
const std::map<std::string, const char*> sWORLD = {
    {"", "1"},
    {"Unitless", "1"},
    {"Arb", ""},
    {"Meter", "meter"},
    {"Kilogram", "kilogram"},
    {"Second", "second"},
    {"Ampere", "ampere"},
    {"Kelvin", "kelvin"},
    {"Mole", "mole"},
    {"Candela", "candela"},
    {"Radian", "radian"},
    {"Degree", "arc_degree"},
    {"Steradian", "steradian"},
    {"Arcminute", "arc_minute"},
    {"Arcsecond", "arc_second"},
    {"Kilometer", "kilometer"},
    {"Centimeter", "centimeter"},
    {"Millimeter", "millimeter"},
    {"Micrometer", "micrometer"},
    {"Nanometer", "nanometer"},
    {"Angstrom", "angstrom"},
    {"Picometer", "picometer"},
    {"Femtometer", "femtometer"},
    {"Mile", "international_mile"},
    {"Yard", "international_yard"},
    {"Foot", "international_foot"},
    {"Inch", "international_inch"},
    {"Milliinch", "1e-3 international_inch"},
    {"Microinch", "1e-6 international_inch"},
    {"Yottameter", "yottameter"},
    {"Zetameter", "zettameter"},
    {"Exameter", "exameter"},
    {"Petameter", "petameter"},
    {"Terameter", "terameter"},
    {"Gigameter", "gigameter"},
    {"Megameter", "megameter"},
    {"Hectometer", "hectometer"},
    {"Decameter", "dekameter"},
    {"Decimeter", "decimeter"},
    {"Attometer", "attometer"},
    {"Zeptometer", "zeptometer"},
    {"Yoctoometer", "yoctometer"},
    {"Gram", "gram"},
    {"Milligram", "milligram"},
    {"Pound", "pound"},
    {"Ounce", "pound/16"},
    {"Week", "week"},
    {"Day", "day"},
    {"Hour", "hour"},
    {"Minute", "minute"},
    {"Millisecond", "millisecond"},
    {"Microsecond", "microsecond"},
    {"Nanosecond", "nanosecond"},
    {"Celsius", "degree_Celsius"},
    {"Fahrenheit", "degree_Fahrenheit"},
    {"Rankine", "degree_Rankine"},
    {"Dozen", "12 mole/6.02214076e23"},
    {"Square Meter", "meter2"},
    {"Square Kilometer", "kilometer2"},
    {"Square Centimeter", "centimeter2"},
    {"Square Millimeter", "millimeter2"},
    {"Square Micrometer", "micrometer2"},
    {"Square Nanometer", "nanometer2"},
    {"Square Angstrom", "angstrom2"},
    {"Square Mile", "international_mile2"},
    {"Square Yard", "international_yard2"},
    {"Square Foot", "international_foot2"},
    {"Square Inch", "international_inch2"},
    {"Square Milliinch", "1e-6 international_inch2"},
    {"Cubic Meter", "meter3"},
    {"Cubic Kilometer", "kilometer3"},
    {"Cubic Centimeter", "centimeter3"},
    {"Cubic Millimeter", "millimeter3"},
    {"Cubic Micrometer", "micrometer3"},
    {"Cubic Nanometer", "nanometer3"},
    {"Cubic Angstrom", "angstrom3"},
    {"Cubic Mile", "international_mile3"},
    {"Cubic Yard", "international_yard3"},
    {"Cubic Foot", "international_foot3"},
    {"Cubic Inch", "international_inch3"},
    {"Cubic Milliinch", "1e-9 international_inch3"},
    {"Liter", "liter"},
    {"Milliliter", "milliliter"},
    {"Gallon", "231 international_inch3"},
    {"Fluid Ounce", "231/128 international_inch3"},
    {"Coulomb", "coulomb"},
    {"Volt", "volt"},
    {"Farad", "farad"},
    {"Ohm", "ohm"},
    {"Kilohm", "kiloohm"},
    {"Megaohm", "megaohm"},
    {"Siemens", "siemens"},
    {"Weber", "weber"},
    {"Tesla", "tesla"},
    {"Henry", "henry"},
    {"Kiloampere", "kiloampere"},
    {"Milliampere", "milliampere"},
    {"Microampere", "microampere"},
    {"Nanoampere", "nanoampere"},
    {"Picoampere", "picoampere"},
    {"Femtoampere", "femtoampere"},
    {"Kilovolt", "kilovolt"},
    {"Millivolt", "millivolt"},
    {"Microvolt", "microvolt"},
    {"Nanovolt", "nanovolt"},
    {"Picovolt", "picovolt"},
    {"Meter per Second", "meter/second"},
    {"Mile per Hour", "international_mile/hour"},
    {"Micrometer per Second", "micrometer/second"},
    {"Meter per Second Squared", "meter/second2"},
    {"Micrometer per Second Squared", "micrometer/second2"},
    {"Kilogram per Cubic Meter", "kilogram/meter3"},
    {"Newton", "newton"},
    {"Newton per meter", "newton/meter"},
    {"Piconewton", "piconewton"},
    {"Nanonewton", "nanonewton"},
    {"Micronewton", "micronewton"},
    {"Hertz", "hertz"},
    {"Kilohertz", "kilohertz"},
    {"Pascal", "pascal"},
    {"Gigapascal", "gigapascal"},
    {"Megapascal", "megapascal"},
    {"Joule", "joule"},
    {"Electronvolt", "1.602176634e-19 joule"},
    {"Watt", "watt"},
    {"Lux", "lux"},
    {"Gray", "gray"},
    {"Lumen", "lumen"},
    {"Becquerel", "becquerel"},
    {"Sievert", "sievert"},
    {"Nanometers per Volt", "nanometer/volt"},
    {"Nanometers per Volt squared", "nanometer/volt2"},
    {"Picometers per Volt", "picometer/volt"},
    {"Microns per Volt", "micrometer/volt"},
    {"Milliarb", ""},
    {"log(Arb)", ""},
    {"log(Pa)", "lg(re 1 pascal)"},
    {"log(Ohm)", "lg(re 1 ohm)"},
    {"log(nA)", "lg(re 1 nanoampere)"},
    {"Count", "count"},
    {"Ampere per Volt", "ampere/volt"},
    {"Nanoampere per Volt", "nanoampere/volt"},
    {"Picoampere per Volt", "picoampere/volt"},
    {"Millivolt per Nanoampere", "millivolt/nanoampere"},
    {"Newton per Arb", ""},
    {"Nanonewton per Arb", ""},
    {"Piconewton per Arb", ""},
    {"Micronewton per Arb", ""},
};

// A unit in base units: what 0 and 1 of it are, and of what.
struct Figures {
  double zero = 0;
  double one = 0;
  std::string dimensions;  // as in the listing; "logarithm" for one
};

std::string Shown(const Figures& figures) {
  std::ostringstream text;
  text.precision(15);
  text << figures.one;
  if (figures.dimensions != "1") text << ' ' << figures.dimensions;
  return figures.dimensions == "logarithm" ? "a logarithm" : text.str();
}

bool Agree(double here, double world) { return std::fabs(here - world) <= dAGREEMENT * std::fabs(world); }

bool Agree(const Figures& here, const Figures& world) {
  return here.dimensions == world.dimensions && Agree(here.zero, world.zero) && Agree(here.one, world.one);
}

struct FreeUnit {
  void operator()(ut_unit* unit) const { ut_free(unit); }
};
using WorldUnit = std::unique_ptr<ut_unit, FreeUnit>;

// What the visit of a unit finds.
struct Visit {
  std::map<std::string, int> exponents;  // by symbol
  WorldUnit product;                     // the base units in it, or null
};

ut_status VisitProduct(const ut_unit* unit, int count, const ut_unit* const* basicUnits, const int* powers,
                       void* argument) {
  auto& visit = *static_cast<Visit*>(argument);
  for (int index = 0; index < count; ++index) {
    visit.exponents[ut_get_symbol(basicUnits[index], UT_ASCII)] = powers[index];
  }
  visit.product.reset(ut_clone(unit));
  return UT_SUCCESS;
}

ut_status VisitBasic(const ut_unit* unit, void* argument) {
  const int power = 1;
  return VisitProduct(unit, 1, &unit, &power, argument);
}

ut_status VisitTime(const ut_unit*, const ut_unit*, double, void*) { return UT_VISIT_ERROR; }
ut_status VisitLogarithm(const ut_unit*, double, const ut_unit*, void*) { return UT_SUCCESS; }
ut_status VisitScaled(const ut_unit*, double, const ut_unit* underlying, double, void* argument);

ut_status Accept(const ut_unit* unit, void* argument) {
  const ut_visitor visitor = {VisitBasic, VisitProduct, VisitScaled, VisitTime, VisitLogarithm};
  return ut_accept_visitor(unit, &visitor, argument);
}

ut_status VisitScaled(const ut_unit*, double, const ut_unit* underlying, double, void* argument) {
  return Accept(underlying, argument);
}

std::string DimensionsText(const std::map<std::string, int>& exponents) {
  std::string text;
  for (const char* symbol : {"m", "kg", "s", "A", "K", "mol", "cd", "rad"}) {
    const auto found = exponents.find(symbol);
    if (found == exponents.end()) continue;
    text += (text.empty() ? "" : " ") + found->first;
    if (found->second != 1) text += std::to_string(found->second);
  }
  return text.empty() ? "1" : text;
}

// The database of units that UDUNITS-2 comes with.
class World {
 public:
  World() {
    ut_set_error_message_handler(ut_ignore);
    m_system = ut_read_xml(nullptr);
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World() { ut_free_system(m_system); }

  bool IsThere() const { return m_system != nullptr; }

  // Without dimensions if the world can't read the expression.
  Figures Measure(const std::string& expression) const {
    Figures figures;
    Visit visit;
    const WorldUnit unit(ut_parse(m_system, expression.c_str(), UT_ASCII));
    if (!unit || Accept(unit.get(), &visit) != UT_SUCCESS) return figures;
    figures.dimensions = visit.product ? DimensionsText(visit.exponents) : "logarithm";
    if (visit.product) Convert(unit.get(), visit.product.get(), figures);
    return figures;
  }

 private:
  static void Convert(ut_unit* unit, ut_unit* base, Figures& figures) {
    cv_converter* const converter = ut_get_converter(unit, base);
    figures.zero = cv_convert_double(converter, 0);
    figures.one = cv_convert_double(converter, 1);
    cv_free(converter);
  }

  ut_system* m_system = nullptr;
};

Figures Here(const UnitDescriptor& unit, const Row& row) {
  Figures figures;
  figures.zero = unit.ConvertToBaseUnits(0);
  figures.one = unit.ConvertToBaseUnits(1);
  figures.dimensions = row.dimensions;
  return figures;
}

std::string WithoutEach(std::string text, const std::string& part) {
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part)) {
    text.erase(at, part.size());
  }
  return text;
}

// The name under which the world's unit is listed above: that of the unit itself for its second names.
std::string WorldName(const Row& row) {
  if (std::string(row.name) == "GigaPascal Approx") return "Gigapascal";
  if (std::string(row.name) == "MegaPascal Approx") return "Megapascal";
  return WithoutEach(WithoutEach(row.name, " Approx"), " (2)");
}

std::string WorldExpression(const Row& row) {
  const auto found = sWORLD.find(WorldName(row));
  return found == sWORLD.end() ? "" : found->second;
}

UnitDictionary DictionaryOfAll() {
  UnitDictionary dictionary(false);
  dictionary.RegisterAllKnownUnits();
  return dictionary;
}

// The rows of the page's tables, as they have to be.
struct Findings {
  std::vector<std::string> deviations;
  std::vector<std::string> onlyHere;
  double worstAgreement = 0;
};

void Compare(const UnitDescriptor& unit, const Row& row, const World& world, Findings& findings) {
  const Figures here = Here(unit, row);
  const std::string expression = WorldExpression(row);
  const std::string start = "| " + std::string(row.name) + " | " + Shown(here) + " | ";
  if (expression.empty()) {
    findings.onlyHere.push_back("| " + std::string(row.name) + " | " + Shown(here) + " |");
    return;
  }
  const Figures there = world.Measure(expression);
  ASSERT_FALSE(there.dimensions.empty()) << "unknown to the world: " << expression;
  if (Agree(here, there)) {
    findings.worstAgreement = std::max(findings.worstAgreement, std::fabs(here.one / there.one - 1));
  } else {
    findings.deviations.push_back(start + Shown(there) + " | `" + expression + "` |");
  }
}

Findings CompareAll() {
  Findings findings;
  const World world;
  const UnitDictionary dictionary = DictionaryOfAll();
  EXPECT_TRUE(world.IsThere()) << "UDUNITS-2 finds no database (package libudunits2-data)";
  if (!world.IsThere()) return findings;
  for (const Row& row : Rows()) {
    const auto unit = dictionary.LookupUnit(row.name);
    EXPECT_TRUE(unit) << row.name;
    if (unit) Compare(*unit, row, world, findings);
  }
  return findings;
}

// The rows of the first table below a heading of the page.
std::vector<std::string> TableBelow(const std::string& heading) {
  std::ifstream page(OXACORE_UNITS_PAGE);
  std::vector<std::string> rows;
  std::string line;
  while (std::getline(page, line) && line != heading) {
  }
  while (std::getline(page, line) && line.compare(0, 1, "#") != 0) {
    if (line.compare(0, 1, "|") == 0) rows.push_back(line);
  }
  rows.erase(rows.begin(),
             rows.begin() + std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(rows.size())));
  return rows;
}

std::string Lines(const std::vector<std::string>& rows) {
  std::string text = "\n";
  for (const std::string& row : rows) text += row + "\n";
  return text;
}

TEST(UnitsOfTheWorld, EveryUnitHasItsExpressionOrNone) {
  std::set<std::string> unused;
  for (const auto& [name, expression] : sWORLD) unused.insert(name);
  for (const Row& row : Rows()) {
    EXPECT_EQ(1U, sWORLD.count(WorldName(row))) << row.name;
    unused.erase(WorldName(row));
  }
  EXPECT_TRUE(unused.empty()) << *unused.begin();
}

TEST(UnitsOfTheWorld, ThePageListsExactlyTheUnitsThatDeviateWithBothFigures) {
  const Findings findings = CompareAll();
  EXPECT_FALSE(findings.deviations.empty());
  EXPECT_EQ(Lines(findings.deviations), Lines(TableBelow("## As the family has always computed")));
  RecordProperty("worst", std::to_string(findings.worstAgreement * 1e16) + "e-16");
}

TEST(UnitsOfTheWorld, ThePageListsTheUnitsThatTheWorldDoesntKnow) {
  const Findings findings = CompareAll();
  EXPECT_FALSE(findings.onlyHere.empty());
  EXPECT_EQ(Lines(findings.onlyHere), Lines(TableBelow("### Units that exist only here")));
}

}  // namespace
