// A frame of a stack as the reader of variables sees it.
#ifndef OXACORE_PLATFORM_LINUX_FRAMEVIEW_H
#define OXACORE_PLATFORM_LINUX_FRAMEVIEW_H

#include <elfutils/libdw.h>
#include <elfutils/libdwfl.h>

#include "Platform/Linux/FaultContext.h"

namespace Oxa::Core::Platform {

class SymbolizedModule;

/// Everything is valid while the frame is being looked at, and the debug data of its module is there.
///
/// A function that the compiler put into another one has a frame of its own, with the registers, the CFA and the caller
/// of the function that it was put into.
struct FrameView {
  const SymbolizedModule* m_pOwner = nullptr;  ///< of the debug data
  Dwfl_Module* m_pModule = nullptr;
  /// What makes an address of memory of one in the debug data, by addition.
  Dwarf_Addr m_bias = 0;
  Dwarf_Die m_unit{};
  /// The DW_TAG_subprogram or DW_TAG_inlined_subroutine whose frame this is.
  Dwarf_Die m_function{};
  /// The DW_TAG_subprogram that has the frame's place on the stack: `m_function` itself, or what it was put into. No
  /// address where it isn't known.
  Dwarf_Die m_subprogram{};
  /// The entries that the place lies in, innermost first; the last one is `m_function`.
  const Dwarf_Die* m_pScopes = nullptr;
  int m_iScopes = 0;
  /// The instruction, in terms of the debug data: of a caller the last byte of its call.
  Dwarf_Addr m_place = 0;
  /// The registers that this frame had at its place, and which of them are known.
  CONTEXT m_registers{};
  bool m_bKnown[CONTEXT::iREGISTERS] = {};
  /// The canonical frame address.
  Dwarf_Addr m_cfa = 0;
  bool m_bCfaKnown = false;
  /// The frame that called, for values on entry; null where there is none, or none that the debug data knows of. It
  /// has no caller itself.
  const FrameView* m_pCaller = nullptr;
};

}  // namespace Oxa::Core::Platform

#endif
