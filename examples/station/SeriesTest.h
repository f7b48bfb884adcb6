// The test that a series has to pass.
#ifndef STATION_SERIESTEST_H
#define STATION_SERIESTEST_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include "Measurement.h"
#include "Quantity.h"

namespace Station {

/// Passes if 99 of 100 samples came in time: if the 99th percentile is less than the tolerance. One late sample is
/// the system's affair, so the greatest of them would tell about the machine's other work. A series that isn't
/// complete fails.
class SeriesTest : public Oxa::Core::RangeTest {
 public:
  /// `measurement`, with its statistics, must outlive the test.
  explicit SeriesTest(const Measurement& measurement);

 protected:
  Result Execute() override;

  /// The 99th percentile, in the unit of the series.
  void GetTestValue(Quantity& value) override;

 private:
  const Measurement& m_measurement;
};

}  // namespace Station

#endif
