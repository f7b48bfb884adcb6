// std::chrono and the two time types of the library, from one to the other.
//
// A tick is 100 ns. What is made of whole ticks converts exactly, in both directions. Of what is finer, a span is cut
// towards zero and a moment towards the past. For what counts in fractions, "exactly" means within their precision: a
// double of 0.3 s lies beside 0.3 and is 3000000 ticks all the same.
//
// What the target can't hold becomes the most, or the least, that it holds; only the least Time is that of
// TickTimePoint::min(). No number at all becomes 0. Nothing raises, allocates or locks; any thread may call anything.
//
// The system's clock of std::chrono counts from 1970 UTC, Time from 1601 UTC; no zone comes into it.
//
//   OxaSleep(ToElapse(std::chrono::milliseconds(20)), false);
//   const Time modified = ToTime(std::chrono::system_clock::now());
//   const auto age = ToDuration<std::chrono::seconds>(modified.TimeSince());
#ifndef INFRASTRUCTURE_OXACORE_CHRONO_H
#define INFRASTRUCTURE_OXACORE_CHRONO_H

#include <Infrastructure/OxaCore/Time.h>

#include <chrono>
#include <limits>
#include <ratio>
#include <type_traits>

namespace Oxa::Core {

/// Ticks of 100 ns: a span holds any Elapse, and the moment any Time from 1970 on, and most of those before.
using TickDuration = std::chrono::duration<long long, std::ratio<1, 10000000>>;
/// A moment in ticks, on the system's clock.
using TickTimePoint = std::chrono::time_point<std::chrono::system_clock, TickDuration>;

/// What the conversions share. Not for hosts.
namespace ChronoDetail {

/// Ticks from 1601 to 1970.
constexpr long long llUNIX_EPOCH = 116444736000000000;

/// What is cut off: towards zero, or towards the past.
enum class ERounding { eTO_ZERO, eTO_PAST };

/// The most or the least of a number.
template <class To>
constexpr To Saturated(bool negative) noexcept {
  return negative ? std::numeric_limits<To>::lowest() : std::numeric_limits<To>::max();
}

/// A whole number from its sign and its size.
template <class To>
constexpr To FromMagnitude(unsigned long long size, bool negative) noexcept {
  using Limits = std::numeric_limits<To>;
  if (negative && !std::is_signed_v<To>) return To{0};
  const auto most = static_cast<unsigned long long>(Limits::max());
  if (size > most) return Saturated<To>(negative);
  return static_cast<To>(negative ? -static_cast<long long>(size) : static_cast<long long>(size));
}

/// `count` times Scale for whole numbers.
template <class To, class Scale, class From>
constexpr To ScaleWhole(From count, ERounding rounding) noexcept {
  constexpr auto num = static_cast<unsigned long long>(Scale::num);
  constexpr auto den = static_cast<unsigned long long>(Scale::den);
  constexpr unsigned long long most = std::numeric_limits<unsigned long long>::max();
  static_assert(den <= most / num, "this period has no simple relation to ticks");
  const bool negative = count < From{0};
  const auto wide = static_cast<unsigned long long>(count);
  const unsigned long long size = negative ? 0 - wide : wide;
  const unsigned long long whole = size / den;
  if (whole > most / num) return Saturated<To>(negative);
  const unsigned long long rest = size % den * num;
  unsigned long long scaled = whole * num;
  const unsigned long long more =
      rest / den + (negative && rounding == ERounding::eTO_PAST && rest % den != 0 ? 1 : 0);
  if (more > most - scaled) return Saturated<To>(negative);
  scaled += more;
  return FromMagnitude<To>(scaled, negative);
}

/// The whole number next to `scaled`, which is `cut` with a fraction.
template <class To>
constexpr To Nearest(long double scaled, To cut) noexcept {
  const long double rest = scaled - static_cast<long double>(cut);
  if (rest >= 0.5L) return static_cast<To>(cut + To{1});
  return rest <= -0.5L ? static_cast<To>(cut - To{1}) : cut;
}

/// Whether a number of that precision can't tell the two apart.
template <class To>
constexpr bool IsWithin(long double scaled, To nearest, long double precision) noexcept {
  const auto size = static_cast<long double>(nearest);
  const long double gap = scaled < size ? size - scaled : scaled - size;
  return gap <= (size < 0 ? -size : size) * precision;
}

/// The same as ScaleWhole where a fraction comes into it.
template <class To, class Scale, class From>
constexpr To ScaleReal(From count, ERounding rounding) noexcept {
  const long double scaled = static_cast<long double>(count) * static_cast<long double>(Scale::num) /
                             static_cast<long double>(Scale::den);
  if constexpr (std::is_floating_point_v<To>) return static_cast<To>(scaled);
  if (!(scaled < 0) && !(scaled >= 0)) return To{0};
  if (scaled >= static_cast<long double>(std::numeric_limits<To>::max())) return Saturated<To>(false);
  if (scaled <= static_cast<long double>(std::numeric_limits<To>::lowest())) return Saturated<To>(true);
  const To cut = static_cast<To>(scaled);
  const To nearest = Nearest(scaled, cut);
  if (IsWithin(scaled, nearest, std::numeric_limits<From>::epsilon())) return nearest;
  const bool beyond = static_cast<long double>(cut) > scaled;
  return beyond && rounding == ERounding::eTO_PAST ? static_cast<To>(cut - To{1}) : cut;
}

/// A span in another unit.
template <class To, class Rep, class Period>
constexpr To Convert(const std::chrono::duration<Rep, Period>& span, ERounding rounding) noexcept {
  using Target = typename To::rep;
  static_assert(std::is_arithmetic_v<Rep> && std::is_arithmetic_v<Target>, "counted by plain numbers");
  static_assert(!std::is_integral_v<Rep> || sizeof(Rep) <= 8, "whole numbers of eight bytes at most");
  static_assert(!std::is_integral_v<Target> || sizeof(Target) <= 8, "whole numbers of eight bytes at most");
  using Scale = std::ratio_divide<Period, typename To::period>;
  if constexpr (std::is_floating_point_v<Rep> || std::is_floating_point_v<Target>)
    return To(ScaleReal<Target, Scale>(span.count(), rounding));
  else
    return To(ScaleWhole<Target, Scale>(span.count(), rounding));
}

/// The sum of two counts of ticks.
constexpr long long Add(long long a, long long b) noexcept {
  if (b > 0 && a > std::numeric_limits<long long>::max() - b) return std::numeric_limits<long long>::max();
  if (b < 0 && a < std::numeric_limits<long long>::min() - b) return std::numeric_limits<long long>::min();
  return a + b;
}

}  // namespace ChronoDetail

/// The span of a std::chrono one, whatever its unit and whether it counts by whole numbers or not.
template <class Rep, class Period>
Elapse ToElapse(const std::chrono::duration<Rep, Period>& span) noexcept {
  return Elapse(ChronoDetail::Convert<TickDuration>(span, ChronoDetail::ERounding::eTO_ZERO).count(),
                Elapse::TimerTicks);
}

/// A span for std::chrono, in the unit that is asked for.
template <class Duration = TickDuration>
Duration ToDuration(const Elapse& span) noexcept {
  return ChronoDetail::Convert<Duration>(TickDuration(span.GetRawTimerTicks()),
                                         ChronoDetail::ERounding::eTO_ZERO);
}

/// The moment of one on the system's clock.
template <class Duration>
Time ToTime(const std::chrono::time_point<std::chrono::system_clock, Duration>& moment) noexcept {
  const long long ticks =
      ChronoDetail::Convert<TickDuration>(moment.time_since_epoch(), ChronoDetail::ERounding::eTO_PAST)
          .count();
  return Time(ChronoDetail::Add(ticks, ChronoDetail::llUNIX_EPOCH), Time::ePlatformTimeCurrent);
}

/// A moment on the system's clock, in the unit that is asked for. The clock's own, std::chrono::system_clock::duration,
/// holds the years 1678 to 2261.
template <class Duration = TickDuration>
std::chrono::time_point<std::chrono::system_clock, Duration> ToTimePoint(const Time& moment) noexcept {
  const TickDuration ticks(ChronoDetail::Add(moment.GetRawTimerTicks(), -ChronoDetail::llUNIX_EPOCH));
  return std::chrono::time_point<std::chrono::system_clock, Duration>(
      ChronoDetail::Convert<Duration>(ticks, ChronoDetail::ERounding::eTO_PAST));
}

}  // namespace Oxa::Core

#endif
