#include <Infrastructure/OxaCore/AutoTest.h>

#include <limits>

namespace Oxa::Core {

namespace {

const char* const sNO_CONDITIONS = "No tolerance conditions for test";
const char* const sTEST_VALUE = "Test value of ";
const char* const sREFUSED_TEST_VALUE = " Test value of ";

using Value = UnitizedValue<double>;

// How a tolerance and a value are told to stand to each other.
struct Relation {
  const char* m_pPassed;
  const char* m_pFailed;
};

// Between the lower tolerance and the value.
Relation LowerRelation(RangeTest::ECondition condition) {
  switch (condition) {
    case RangeTest::eGREATER:
      return {" < ", " >= "};
    case RangeTest::eLESS:
      return {" > ", " <= "};
    case RangeTest::eGREATER_OR_EQUAL:
      return {" <= ", " > "};
    case RangeTest::eLESS_OR_EQUAL:
      return {" >= ", " < "};
    default:
      return {" ? ", " ? "};
  }
}

// Between the value and the upper tolerance.
Relation UpperRelation(RangeTest::ECondition condition) {
  switch (condition) {
    case RangeTest::eGREATER:
      return {" > ", " <= "};
    case RangeTest::eLESS:
      return {" < ", " >= "};
    case RangeTest::eGREATER_OR_EQUAL:
      return {" >= ", " < "};
    case RangeTest::eLESS_OR_EQUAL:
      return {" <= ", " > "};
    default:
      return {" ? ", " ? "};
  }
}

bool Passes(double value, RangeTest::ECondition condition, double tolerance) {
  switch (condition) {
    case RangeTest::eGREATER:
      return value > tolerance;
    case RangeTest::eGREATER_OR_EQUAL:
      return value >= tolerance;
    case RangeTest::eLESS:
    case RangeTest::eLESS_OR_EQUAL:  // strict as well: hosts have set their tolerances by this
      return value < tolerance;
    default:
      return false;
  }
}

// A tolerance in the unit of the value, and how the value does against it.
struct Side {
  Side(const Value& value, RangeTest::ECondition condition, Value tolerance, const Relation& relation) {
    tolerance.ConvertTo(value.GetUnits());
    m_bComparable = tolerance.IsDimensionallyEquivalent(value);
    m_bPassed = m_bComparable && Passes(value.GetValue(), condition, tolerance.GetValue());
    m_pRelation = m_bPassed ? relation.m_pPassed : relation.m_pFailed;
    m_sTolerance = tolerance.ToString();
  }

  bool m_bComparable;  // false where the raise of a conversion that makes no sense returned
  bool m_bPassed;
  const char* m_pRelation;
  std::string m_sTolerance;
};

Test::Result NotComparable(const std::string& name, const Value& tolerance, const Value& value) {
  return Test::Result(name,
                      Value::XNoUnitConversion(tolerance.GetUnits()->GetName(), value.GetUnits()->GetName()));
}

}  // namespace

RangeTest::RangeTest(const std::string& name, UnitizedValue<double> lower, UnitizedValue<double> upper,
                     ECondition lowerCondition, ECondition upperCondition)
    : Test(name),
      m_lowerTolerance(lower),
      m_upperTolerance(upper),
      m_eLowerCondition(lowerCondition),
      m_eUpperCondition(upperCondition) {}

RangeTest::~RangeTest() = default;

void RangeTest::SetLowerTolerance(UnitizedValue<double> tolerance, ECondition condition) {
  m_lowerTolerance = tolerance;
  m_eLowerCondition = condition;
}

void RangeTest::SetUpperTolerance(UnitizedValue<double> tolerance, ECondition condition) {
  m_upperTolerance = tolerance;
  m_eUpperCondition = condition;
}

void RangeTest::GetTolerances(UnitizedValue<double>& lower, ECondition& lowerCondition,
                              UnitizedValue<double>& upper, ECondition& upperCondition) const {
  lower = m_lowerTolerance;
  lowerCondition = m_eLowerCondition;
  upper = m_upperTolerance;
  upperCondition = m_eUpperCondition;
}

bool RangeTest::HasTolerances() const {
  return m_eLowerCondition != eNO_CONDITION || m_eUpperCondition != eNO_CONDITION;
}

Test::Result RangeTest::Execute() {
  if (!HasTolerances()) return Result(GetName(), Result::ePASSED, sNO_CONDITIONS);
  Value value(std::numeric_limits<double>::quiet_NaN());  // what isn't filled in must not pass
  GetTestValue(value);
  const std::string shown = value.ToString();
  std::string text = sTEST_VALUE + shown;
  if (m_eLowerCondition != eNO_CONDITION) {
    const Side lower(value, m_eLowerCondition, m_lowerTolerance, LowerRelation(m_eLowerCondition));
    if (!lower.m_bComparable) return NotComparable(GetName(), m_lowerTolerance, value);
    const std::string part = lower.m_sTolerance + lower.m_pRelation;
    if (!lower.m_bPassed) return Result(GetName(), Result::eFAILED, part + sREFUSED_TEST_VALUE + shown);
    text = part + text;
  }
  if (m_eUpperCondition != eNO_CONDITION) {
    const Side upper(value, m_eUpperCondition, m_upperTolerance, UpperRelation(m_eUpperCondition));
    if (!upper.m_bComparable) return NotComparable(GetName(), m_upperTolerance, value);
    const std::string part = upper.m_pRelation + upper.m_sTolerance;
    if (!upper.m_bPassed) return Result(GetName(), Result::eFAILED, sTEST_VALUE + shown + part);
    text += part;
  }
  return Result(GetName(), Result::ePASSED, text);
}

}  // namespace Oxa::Core
