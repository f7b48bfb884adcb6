// Units: their binary form, their arithmetic and the dictionary give what plain references give, whatever the bytes.
//
// The first byte tells which of the three, and what pieces the source gives. Behind it stands the binary form of
// Dimensions or of a unit, or steps of arithmetic, or steps on a dictionary, a few bytes each.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/UnitDescriptor.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "FuzzTarget.h"
#include "MemorySource.h"
#include "UnitModel.h"

namespace {

using namespace Oxa::Core;
using namespace OxaFuzz;

constexpr std::size_t uLONGEST = 100000;  // text; a longer one only takes memory

class Sink : public BinaryOutputStream {
 public:
  using BinaryOutputStream::Write;
  void Write(unsigned char byte) override { m_sBytes += static_cast<char>(byte); }
  void Flush() override {}
  std::string m_sBytes;
};

std::string Described(const UnitDescriptor& unit) {
  std::string text =
      unit.GetName() + "|" + unit.GetAbbreviation() + "|" + std::to_string(unit.GetConversionFactor());
  for (int i = 0; i < Dimensions::sCOUNT; ++i)
    text += " " + std::to_string(unit.GetDimensions()[static_cast<EDimension>(i)]);
  return text;
}

// A factor counts by its bits: what isn't a number equals itself here.
std::uint64_t Bits(double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

bool IsSame(const UnitDescriptor& left, const UnitDescriptor& right) {
  return left.GetName() == right.GetName() && left.GetAbbreviation() == right.GetAbbreviation() &&
         Bits(left.GetConversionFactor()) == Bits(right.GetConversionFactor()) &&
         left.GetDimensions() == right.GetDimensions();
}

void CheckUnit(const UnitDescriptor& expected, const UnitDescriptor& found, const char* promise) {
  Check(IsSame(expected, found), promise, Described(expected) + "\n" + Described(found));
}

// ---- The binary form

// Reads the fields one by one; what the stream no longer has leaves the preset.
class ReferenceReader {
 public:
  explicit ReferenceReader(const std::string& bytes) : m_sBytes(bytes) {}

  template <class Value>
  Value Take(Value value) {
    const std::size_t got = std::min(sizeof value, m_sBytes.size() - m_uAt);
    std::memcpy(&value, m_sBytes.data() + m_uAt, got);
    m_uAt += got;
    return value;
  }

  /// Nothing for a text that is too long to be tried.
  std::optional<std::string> Text() {
    const std::size_t length = Take(std::uint32_t(0));
    if (length > uLONGEST) return std::nullopt;
    std::string text = m_sBytes.substr(m_uAt, length);
    m_uAt += text.size();
    text.resize(length);
    return text;
  }

  /// False at an index that is none.
  bool Indices(Dimensions& dimensions, long step) {
    for (std::int32_t count = Take(std::int32_t(0)); count > 0; --count) {
      const std::int32_t index = Take(std::int32_t(-1));
      if (index < 0 || index > 7) return false;
      dimensions[static_cast<EDimension>(index)] += step;
    }
    return true;
  }

  bool Read(Dimensions& dimensions) {
    dimensions = Dimensions();
    return Indices(dimensions, 1) && Indices(dimensions, -1);
  }

  std::size_t Left() const { return m_sBytes.size() - m_uAt; }

 private:
  const std::string& m_sBytes;
  std::size_t m_uAt = 0;
};

// Whether `value` was read; without an error it must be.
template <class Value>
bool TryToRead(BinaryInputStream& source, Value& value) {
  try {
    source >> value;
    return true;
  } catch (const IndexOutOfBounds&) {
    return false;
  }
}

template <class Value>
std::string Written(const Value& value) {
  Sink sink;
  sink << value;
  Check(sink.m_sBytes.size() == value.GetSerializedSize(), "the size is that of what is written");
  return sink.m_sBytes;
}

void RunDimensions(const std::string& bytes, std::size_t piece) {
  MemorySource source(bytes, piece);
  ReferenceReader reference(bytes);
  const Dimensions before(1, -2, 3);
  Dimensions expected;
  Dimensions found = before;
  const bool good = reference.Read(expected);
  Check(TryToRead(source, found) == good, "an index is refused where it is no dimension, and only there");
  Check(found == (good ? expected : before), "the exponents are those of the indices, or as they were");
  Check(source.AvailableBytes() == reference.Left(), "what wasn't asked for is still there");
  Dimensions again;
  MemorySource copy(Written(found), piece);
  Check(TryToRead(copy, again) && again == found && copy.IsAtEnd(), "what is written is read");
}

void RunUnit(const std::string& bytes, std::size_t piece) {
  ReferenceReader reference(bytes);
  const std::optional<std::string> name = reference.Text();
  if (!name) return;
  const std::optional<std::string> abbreviation = reference.Text();
  if (!abbreviation) return;
  const double factor = reference.Take(1.0);
  Dimensions dimensions;
  const bool good = reference.Read(dimensions);

  MemorySource source(bytes, piece);
  const UnitDescriptor before("Before", "b", 0.5, UnitDescriptor("Whole", "w"));
  UnitDescriptor found = before;
  Check(TryToRead(source, found) == good,
        "a unit is refused for an index that is no dimension, and only for it");
  Check(source.AvailableBytes() == reference.Left(), "what wasn't asked for is still there");
  if (!good) return CheckUnit(before, found, "a unit that is refused changes nothing");
  Check(found.GetName() == *name && found.GetAbbreviation() == *abbreviation &&
            Bits(factor) == Bits(found.GetConversionFactor()) && found.GetDimensions() == dimensions,
        "a unit is its fields", Described(found));
  UnitDescriptor again;
  MemorySource copy(Written(found), piece);
  Check(TryToRead(copy, again) && copy.IsAtEnd(), "what is written is read");
  CheckUnit(found, again, "what is written is read");
}

// ---- Arithmetic

class Bytes {
 public:
  explicit Bytes(const std::string& bytes) : m_sBytes(bytes) {}
  bool IsAtEnd() const { return m_uAt == m_sBytes.size(); }
  unsigned Next() { return IsAtEnd() ? 0 : static_cast<unsigned char>(m_sBytes[m_uAt++]); }

 private:
  const std::string& m_sBytes;
  std::size_t m_uAt = 0;
};

const char* const aNAMES[] = {"",   "m",   "M", "Meter", "meter", "s",   "Second", "a",
                              "as", "ass", "A", "\xB5",  "kg",    "AMP", "sec",    "x"};
const double aFACTORS[] = {1.0, 2.0, 0.5, 12.0};

Dimensions SmallDimensions(unsigned byte) {
  return Dimensions(static_cast<long>(byte & 3) - 1, 0, static_cast<long>(byte >> 2 & 3) - 1);
}

// Texts, factor and exponents in three bytes.
UnitDescriptor SmallUnit(Bytes& bytes) {
  const unsigned texts = bytes.Next();
  const unsigned rest = bytes.Next();
  UnitDescriptor whole;
  whole.SetDimensions(SmallDimensions(rest));
  return UnitDescriptor(aNAMES[texts & 15], aNAMES[texts >> 4], aFACTORS[rest >> 4 & 3], whole);
}

std::string JoinedText(const std::string& left, const char* joiner, const std::string& right) {
  return left.empty() || right.empty() ? std::string() : left + joiner + right;
}

std::string OnePer(const std::string& text) { return text.empty() ? text : "1/" + text; }

// Texts as whole new ones, exponent by exponent; the factor stays out.
UnitDescriptor ReferenceResult(const UnitDescriptor& left, const UnitDescriptor& right, bool times) {
  Dimensions dimensions;
  for (int i = 0; i < Dimensions::sCOUNT; ++i) {
    const auto at = static_cast<EDimension>(i);
    const auto mine = static_cast<unsigned long>(left.GetDimensions()[at]);
    const auto others = static_cast<unsigned long>(right.GetDimensions()[at]);
    dimensions[at] = static_cast<long>(times ? mine + others : mine - others);  // doubled 64 times they wrap
  }
  const auto text = [&](const std::string& mine, const std::string& others) {
    if (dimensions == Dimensions()) return std::string();
    if (left.IsUnitless()) return times ? others : OnePer(others);
    if (right.IsUnitless()) return mine;
    return JoinedText(mine, times ? " * " : " / ", others);
  };
  UnitDescriptor result(text(left.GetName(), right.GetName()),
                        text(left.GetAbbreviation(), right.GetAbbreviation()));
  result.SetDimensions(dimensions);
  return result;
}

void CheckResult(const UnitDescriptor& left, const UnitDescriptor& right, bool times,
                 const UnitDescriptor& found) {
  const UnitDescriptor expected = ReferenceResult(left, right, times);
  CheckSame(expected.GetName(), found.GetName(), "a name follows the rule");
  CheckSame(expected.GetAbbreviation(), found.GetAbbreviation(), "an abbreviation follows the rule");
  Check(expected.GetDimensions() == found.GetDimensions(), "exponents are added or subtracted");
  const double factor = times ? left.GetConversionFactor() * right.GetConversionFactor()
                              : left.GetConversionFactor() / right.GetConversionFactor();
  Check(Bits(factor) == Bits(found.GetConversionFactor()), "factors are multiplied or divided");
}

void RunArithmetic(const std::string& input) {
  Bytes bytes(input);
  UnitDescriptor unit = SmallUnit(bytes);
  while (!bytes.IsAtEnd() && unit.GetName().size() < uLONGEST && unit.GetAbbreviation().size() < uLONGEST) {
    const unsigned step = bytes.Next();
    const UnitDescriptor left = unit;
    const UnitDescriptor right = (step & 2) != 0 ? unit : SmallUnit(bytes);
    const bool times = (step & 1) == 0;
    const UnitDescriptor result = times ? left * right : left / right;
    CheckResult(left, right, times, result);
    UnitDescriptor& operand = unit;
    const UnitDescriptor& other = (step & 2) != 0 ? operand : right;  // perhaps itself
    times ? unit *= other : unit /= other;
    CheckUnit(result, unit, "in place it is the same");
  }
}

// ---- The dictionary

class DictionaryRun {
 public:
  void Step(Bytes& bytes) {
    switch (bytes.Next() % 8) {
      case 0:
      case 1:
        return Add(bytes);
      case 2:
        return AddNames(bytes);
      case 3:
        return Remove(SmallUnit(bytes));
      case 4:
        return RemoveByName(Name(bytes));
      case 5:
        return Everything(bytes);
      default:
        return Look(bytes);
    }
  }

  // Of the dimensions every fourth, from `first` on: all of them would take most of the time.
  void CompareAll(unsigned first) {
    for (const char* name : aNAMES) Compare(name, nullptr);
    for (unsigned dimensions = first % 4; dimensions < 16; dimensions += 4) {
      UnitDescriptor example;
      example.SetDimensions(SmallDimensions(dimensions));
      for (const char* name : aNAMES) Compare(name, &example);
      for (const double factor : aFACTORS) CompareEquivalent(UnitDescriptor("", "", factor, example));
    }
  }

 private:
  static std::string Name(Bytes& bytes) { return aNAMES[bytes.Next() & 15]; }

  static std::vector<std::string> Names(Bytes& bytes) {
    std::vector<std::string> names;
    for (unsigned count = bytes.Next() % 4; count > 0; --count) names.push_back(Name(bytes));
    return names;
  }

  void Add(Bytes& bytes) {
    const UnitDescriptor unit = SmallUnit(bytes);
    const std::string suffix = (bytes.Next() & 1) != 0 ? "s" : "";
    const std::vector<std::string> names = Names(bytes);
    const bool isNew = m_dictionary.AddUnit(unit.MakeCopy(), suffix, names);
    Check(isNew == m_model.Add(unit, suffix, names), "a unit is new if its name is");
  }

  void AddNames(Bytes& bytes) {
    const std::string main = Name(bytes);
    const std::vector<std::string> names = Names(bytes);
    m_dictionary.RegisterAlternateNames(main, names);
    m_model.AddNames(main, names);
  }

  void Remove(const UnitDescriptor& unit) {
    m_dictionary.RemoveUnit(unit);
    m_model.Remove(unit);
  }

  void RemoveByName(const std::string& name) {
    m_dictionary.RemoveUnit(name);
    m_model.Remove(UnitDescriptor(name));
  }

  // A copy goes on as the original would have.
  void Everything(Bytes& bytes) {
    if ((bytes.Next() & 1) != 0) {
      m_dictionary = UnitDictionary(m_dictionary);
      return;
    }
    m_dictionary.RemoveAllUnits();
    m_model.RemoveAll();
  }

  void Look(Bytes& bytes) {
    const UnitDescriptor unit = SmallUnit(bytes);
    Compare(Name(bytes), (bytes.Next() & 1) != 0 ? &unit : nullptr);
    CompareEquivalent(unit);
  }

  void Compare(const std::string& name, const UnitDescriptor* example) {
    const ModelAnswer expected = m_model.Find(name, example);
    CompareAnswer(expected, [&] {
      return m_dictionary.LookupUnit(name, example == nullptr ? nullptr : example->MakeCopy());
    });
    CompareAnswer(expected, [&] { return m_dictionary.FindUnit(name, example); });
    Check(m_dictionary.IsUnitDefined(name) == m_model.IsDefined(name), "a name is defined or isn't", name);
  }

  template <class Lookup>
  static void CompareAnswer(const ModelAnswer& expected, const Lookup& lookup) {
    try {
      const auto found = lookup();
      Check(expected.m_eKind != ModelAnswer::eAMBIGUOUS, "an ambiguous name is told");
      Check(!found == (expected.m_eKind == ModelAnswer::eNOTHING), "a unit is found if there is one");
      if (found) CheckUnit(expected.m_unit, *found, "the unit found is the right one");
    } catch (const UnitDictionary::XAlternateNameCollision&) {
      Check(expected.m_eKind == ModelAnswer::eAMBIGUOUS, "only an ambiguous name is called so");
    }
  }

  void CompareEquivalent(const UnitDescriptor& unit) {
    CompareAnswer(m_model.FindEquivalent(unit),
                  [&] { return m_dictionary.LookupDimensionallyEquivalentUnit(unit); });
  }

  UnitDictionary m_dictionary{false};
  UnitModel m_model;
};

void RunDictionary(const std::string& input) {
  Bytes bytes(input);
  DictionaryRun run;
  for (int steps = 0; steps < 200 && !bytes.IsAtEnd(); ++steps) run.Step(bytes);
  run.CompareAll(static_cast<unsigned>(input.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  if (size == 0) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t piece = 1 + data[0] / 4 % 8;
  switch (data[0] % 4) {
    case 0:
      RunDimensions(bytes, piece);
      break;
    case 1:
      RunUnit(bytes, piece);
      break;
    case 2:
      RunArithmetic(bytes);
      break;
    default:
      RunDictionary(bytes);
  }
  return 0;
}
