#include "SeriesTest.h"

namespace Station {

namespace {

const char* const sSAMPLES = " samples were taken";

}  // namespace

// The condition eLESS_OR_EQUAL compares in the same way, but writes another sign.
SeriesTest::SeriesTest(const Measurement& measurement)
    : RangeTest(measurement.m_series.m_sName, Quantity(), Tolerance(measurement.m_series), eNO_CONDITION,
                eLESS),
      m_measurement(measurement) {}

SeriesTest::Result SeriesTest::Execute() {
  if (m_measurement.IsComplete()) return RangeTest::Execute();
  const std::string taken = std::to_string(m_measurement.m_latenesses.size());
  const std::string wanted = std::to_string(m_measurement.m_series.m_ulCount);
  return Result(GetName(), Result::eFAILED, "only " + taken + " of " + wanted + sSAMPLES);
}

void SeriesTest::GetTestValue(Quantity& value) {
  value = InUnit(m_measurement.m_statistics.m_percentile99, m_measurement.m_series.m_sUnit);
}

}  // namespace Station
