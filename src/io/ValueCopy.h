// Copies between a stream's buffer and memory of its caller, most of them of single values.
#ifndef OXACORE_IO_VALUECOPY_H
#define OXACORE_IO_VALUECOPY_H

#include <cstddef>

#include "Platform/Faults.h"

namespace Oxa::Core {

/// An assignment of it is an instruction or two, and one that may fault, which the compiler keeps in mind.
template <std::size_t uSize>
struct [[gnu::may_alias]] ValueBytes {
  unsigned char m_bytes[uSize];
};

template <std::size_t uSize>
void CopyValue(void* to, const void* from) {
  *static_cast<ValueBytes<uSize>*>(to) = *static_cast<const ValueBytes<uSize>*>(from);
}

/// As Platform::CopyBytes, without a call for the sizes of numbers.
inline void CopyValues(void* to, const void* from, unsigned long long count) {
  switch (count) {
    case 2:
      return CopyValue<2>(to, from);
    case 4:
      return CopyValue<4>(to, from);
    case 8:
      return CopyValue<8>(to, from);
    default:
      Platform::CopyBytes(to, from, count);
  }
}

}  // namespace Oxa::Core

#endif
