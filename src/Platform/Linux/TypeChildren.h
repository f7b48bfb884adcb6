// The loop over the children of an entry of debug data.
#ifndef OXACORE_PLATFORM_LINUX_TYPECHILDREN_H
#define OXACORE_PLATFORM_LINUX_TYPECHILDREN_H

#include "Platform/Linux/TypeReader.h"

namespace Oxa::Core::Platform {

/// Calls `action` with each child. Ends also where the children have no end, as in debug data that is damaged.
template <class Action>
void TypeReader::ForChildren(Dwarf_Die& parent, const Action& action) const {
  static constexpr int iMOST_CHILDREN = 100000;
  Dwarf_Die child{};
  if (m_dw.dwarf_child(&parent, &child) != 0) return;
  int left = iMOST_CHILDREN;
  do action(child);
  while (--left > 0 && m_dw.dwarf_siblingof(&child, &child) == 0);
}

}  // namespace Oxa::Core::Platform

#endif
