// Steps that people like to read off an axis: 1, 2 or 5 times a power of ten.
#ifndef STATION_NICESTEP_H
#define STATION_NICESTEP_H

namespace Station {

struct NiceStep {
  int m_iDigit = 1;     ///< 1, 2 or 5
  int m_iExponent = 0;  ///< of ten

  /// `count` steps, `count` being a whole number: the double next to the decimal fraction, so that three steps of
  /// 0.1 are what 0.3 is.
  double Times(double count) const;
};

/// The least such step that is `width` or more, but for a billionth of it. `width` is to be above 0, and is taken
/// for 1e-250 or 1e250 beyond these.
NiceStep NiceStepFor(double width);

}  // namespace Station

#endif
