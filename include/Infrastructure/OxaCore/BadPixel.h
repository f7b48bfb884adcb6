// The value that marks an invalid sample in measurement data, for each type of pixel.
//
// Thread safety: any thread may call anything. Failures: NoBadPixelValue for `int` alone; a type that isn't
// listed here doesn't compile.
//
//   if (!probe.IsValid(sample)) pixels[sample] = BadPixel<float>::Value();
#ifndef INFRASTRUCTURE_OXACORE_BADPIXEL_H
#define INFRASTRUCTURE_OXACORE_BADPIXEL_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>

namespace Oxa::Core {

/// "No bad pixel value for this type".
class OXACORE_API NoBadPixelValue : public ErrorClass<NoBadPixelValue, LogicError> {
 public:
  NoBadPixelValue();
  ~NoBadPixelValue() override;
};

/// The mark for pixels of type `T`. The signed `char` has its lowest value, the other whole numbers their
/// highest, and both floating types the same large finite number, so that a picture keeps its marks when it is
/// widened from `float` to `double`.
template <class T>
class BadPixel;

/// Signed, whatever the platform's `char` is.
template <>
class BadPixel<char> {
 public:
  /// The mark.
  static constexpr char Value() noexcept { return static_cast<char>(-128); }
};

/// The highest value.
template <>
class BadPixel<unsigned char> {
 public:
  /// The mark.
  static constexpr unsigned char Value() noexcept { return 255; }
};

/// The highest value.
template <>
class BadPixel<short> {
 public:
  /// The mark.
  static constexpr short Value() noexcept { return 32767; }
};

/// Every `int` is a valid sample.
template <>
class OXACORE_API BadPixel<int> {
 public:
  /// Raises NoBadPixelValue ("Oxa.Core.BadPixel"), always; 0 where the raise returns.
  static int Value();
};

/// Pixels of this type have 32 bits in every file, however wide a `long` is here.
template <>
class BadPixel<long> {
 public:
  /// The mark.
  static constexpr long Value() noexcept { return 0x7fffffffL; }
};

/// The same number as for `double`.
template <>
class BadPixel<float> {
 public:
  /// 2 to the power 127.
  static constexpr float Value() noexcept { return 0x1p127F; }
};

/// The same number as for `float`.
template <>
class BadPixel<double> {
 public:
  /// 2 to the power 127.
  static constexpr double Value() noexcept { return 0x1p127; }
};

}  // namespace Oxa::Core

#endif
