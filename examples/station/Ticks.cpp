#include "Ticks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <locale>
#include <sstream>

#include "NiceStep.h"

namespace Station {

using Oxa::Core::UnitizedValue;

namespace {

constexpr double dROUNDING = 1e-9;
constexpr std::size_t uLONG_LABEL = 7;
constexpr int iDIGITS = 6;
constexpr int iMOST_LOGARITHMIC = 6;

template <class T>
std::string ClassicText(const T& value, int digits) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(digits);
  text << value;
  return text.str();
}

// So many that neighbours differ, and no fewer than anywhere else on the page.
int DigitsFor(double low, double high, const NiceStep& step) {
  const double largest = std::max(std::abs(low), std::abs(high));
  const int above = static_cast<int>(std::floor(std::log10(largest)));
  return std::clamp(above - step.m_iExponent + 1, iDIGITS, 17);
}

std::vector<Tick> MultiplesOf(const NiceStep& step, double low, double high) {
  const double width = step.Times(1);
  const double first =
      std::ceil(low / width - dROUNDING) + 0.0;  // which makes a negative zero a positive one
  const int count = static_cast<int>(std::floor(high / width + dROUNDING) - first) + 1;
  const int digits = DigitsFor(low, high, step);
  std::vector<Tick> ticks;
  for (int i = 0; i < count; ++i) {
    const double value = step.Times(first + i);
    ticks.push_back({value, FigureText(value, digits)});
  }
  return ticks;
}

bool HasLongLabel(const std::vector<Tick>& ticks) {
  return std::any_of(ticks.begin(), ticks.end(),
                     [](const Tick& tick) { return tick.m_sLabel.size() > uLONG_LABEL; });
}

// The multiples by `digits` of every power of ten whose exponent `every` divides.
std::vector<Tick> PowersOfTen(double low, double high, int every, const std::vector<int>& digits) {
  std::vector<Tick> ticks;
  const int last = static_cast<int>(std::floor(std::log10(high)));
  for (int exponent = static_cast<int>(std::floor(std::log10(low))); exponent <= last; ++exponent) {
    if (exponent % every != 0) continue;
    for (const int digit : digits) {
      const double value = NiceStep{digit, exponent}.Times(1);
      if (value >= low * (1 - dROUNDING) && value <= high * (1 + dROUNDING))
        ticks.push_back({value, FigureText(value)});
    }
  }
  return ticks;
}

}  // namespace

std::vector<Tick> LinearTicks(double low, double high, int most) {
  std::vector<Tick> ticks = MultiplesOf(NiceStepFor((high - low) / most), low, high);
  if (most > 2 && HasLongLabel(ticks)) return LinearTicks(low, high, 2);
  return ticks;
}

std::vector<Tick> CountTicks(double high, int most) {
  return MultiplesOf(NiceStepFor(std::max(1.0, high / most)), 0, std::max(1.0, high));
}

std::vector<Tick> LogarithmicTicks(double low, double high) {
  std::vector<Tick> fine = PowersOfTen(low, high, 1, {1, 2, 5});
  if (fine.size() <= static_cast<std::size_t>(iMOST_LOGARITHMIC)) return fine;
  const int decades = static_cast<int>(std::ceil(std::log10(high) - std::log10(low)));
  return PowersOfTen(low, high, std::max(1, (decades + iMOST_LOGARITHMIC - 1) / iMOST_LOGARITHMIC), {1});
}

std::string FigureText(double value, int digits) { return ClassicText(value, digits); }

std::string FigureText(const UnitizedValue<double>& value) { return ClassicText(value, iDIGITS); }

}  // namespace Station
