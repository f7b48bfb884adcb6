// Where a value is, as the expressions of debug data tell.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLEEXPRESSION_H
#define OXACORE_PLATFORM_LINUX_VARIABLEEXPRESSION_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/FrameView.h"
#include "Platform/Variables.h"

namespace Oxa::Core::Platform {

/// The moment that expressions are evaluated in.
struct ExpressionScene {
  const Dw& m_dw;
  const FrameView& m_frame;
  MemoryReader& m_memory;
  int m_iSteps = 0;  ///< operations done so far, of all expressions that led here
  int m_iDepth = 0;  ///< expressions that wait for the present one
  bool m_bBaseTried = false;
  bool m_bBaseKnown = false;
  std::uint64_t m_uBase = 0;  ///< what the function's variables are counted from, once it was asked for
};

/// An attribute with the expression that it always has, if it's always the same.
struct LocationAttribute {
  Dwarf_Attribute m_attribute{};
  const Dwarf_Op* m_pOperations = nullptr;  ///< null: it depends on the place
  std::size_t m_uOperations = 0;
};

/// Looks up whether the expression of `attribute` is always the same. It stands as long as the debug data.
LocationAttribute MakeLocationAttribute(const Dw& dw, const Dwarf_Attribute& attribute);

struct Location {
  EValuePlace m_ePlace = eVALUE_NOWHERE;
  std::uint64_t m_uAddress = 0;
  std::vector<unsigned char> m_bytes;  ///< the value, if it lies in no memory
  std::vector<unsigned char> m_known;  ///< for each of the bytes 0 if it can't be found
};

/// The location of a value of `size` bytes, by an attribute that holds an expression or a list of them by places.
Location Locate(ExpressionScene& scene, LocationAttribute attribute, std::uint64_t size);

/// The number that the expression leaves, or the content of the register that it names.
bool NumberOf(ExpressionScene& scene, Dwarf_Attribute& attribute, std::uint64_t& number);

/// The address that the expression at `attribute` makes of `object`; for members without a fixed offset. False if it
/// can't be told.
bool AddressInObject(ExpressionScene& scene, Dwarf_Attribute& attribute, std::uint64_t object,
                     std::uint64_t& address);

}  // namespace Oxa::Core::Platform

#endif
