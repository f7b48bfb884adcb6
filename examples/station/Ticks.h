// The figures along an axis.
#ifndef STATION_TICKS_H
#define STATION_TICKS_H

#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <string>
#include <vector>

namespace Station {

struct Tick {
  double m_dValue;
  std::string m_sLabel;
};

/// Multiples of a round step from `low` to `high`, at most `most` + 1 (`most` being 2 or more); no more than three if
/// their labels are long. `low` is to be less than `high`.
std::vector<Tick> LinearTicks(double low, double high, int most);

/// The same without fractions from 0 to `high`.
std::vector<Tick> CountTicks(double high, int most);

/// Round figures from `low`, which is above zero, to `high`, for a logarithmic axis: at most seven; 1, 2 and 5
/// times the powers of ten if that isn't too many, or else powers of ten.
std::vector<Tick> LogarithmicTicks(double low, double high);

/// `value` in up to `digits` significant digits, the same in every locale.
std::string FigureText(double value, int digits = 6);

/// The same with the abbreviation of its unit.
std::string FigureText(const Oxa::Core::UnitizedValue<double>& value);

}  // namespace Station

#endif
