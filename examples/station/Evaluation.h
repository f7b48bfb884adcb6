// Computes the statistics of all series, on several threads.
#ifndef STATION_EVALUATION_H
#define STATION_EVALUATION_H

#include <vector>

#include "Measurement.h"

namespace Station {

/// Fills in the statistics of all `measurements`, and returns when that's done.
void Evaluate(std::vector<Measurement>& measurements);

}  // namespace Station

#endif
