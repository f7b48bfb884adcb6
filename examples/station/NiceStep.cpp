#include "NiceStep.h"

#include <algorithm>
#include <cmath>

namespace Station {

double NiceStep::Times(double count) const {
  const double power = std::pow(10.0, std::abs(m_iExponent));
  return m_iExponent < 0 ? count * m_iDigit / power : count * m_iDigit * power;
}

NiceStep NiceStepFor(double width) {
  const double wanted = std::clamp(width, 1e-250, 1e250) * (1 - 1e-9);
  NiceStep step;
  step.m_iExponent = static_cast<int>(std::floor(std::log10(wanted)));
  for (const int digit : {1, 2, 5}) {
    step.m_iDigit = digit;
    if (step.Times(1) >= wanted) return step;
  }
  return NiceStep{1, step.m_iExponent + 1};
}

}  // namespace Station
