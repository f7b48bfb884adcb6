#include "Platform/Linux/VariableExpression.h"

#include "Platform/Linux/VariableMachine.h"
#include "Platform/Linux/VariableRegisters.h"

namespace Oxa::Core::Platform {

namespace {

struct Operations {
  const Dwarf_Op* m_pFirst = nullptr;
  std::size_t m_uCount = 0;
};

// The expression that holds at the frame's place.
bool ExpressionHere(const ExpressionScene& scene, Dwarf_Attribute& attribute, Operations& found) {
  const Dw& dw = scene.m_dw;
  if (!dw.dwarf_getlocation_addr) return false;
  const Dwarf_Addr place = scene.m_frame.m_place;
  Dwarf_Op* first = nullptr;
  if (dw.dwarf_getlocation_addr(&attribute, place, &first, &found.m_uCount, 1) != 1) return false;
  found.m_pFirst = first;
  return true;
}

// Most variables simply have a place in the frame: it takes no machine to find them.
bool IsPlaceInFrame(ExpressionScene& scene, const Operations& operations, std::uint64_t& address) {
  if (operations.m_uCount != 1 || operations.m_pFirst->atom != DW_OP_fbreg || !FrameBase(scene, address))
    return false;
  address += operations.m_pFirst->number;
  return true;
}

// The same of what a function's variables are counted from.
bool IsFrameItself(const ExpressionScene& scene, const Operations& operations, std::uint64_t& number) {
  number = scene.m_frame.m_cfa;
  return operations.m_uCount == 1 && operations.m_pFirst->atom == DW_OP_call_frame_cfa &&
         scene.m_frame.m_bCfaKnown;
}

}  // namespace

LocationAttribute MakeLocationAttribute(const Dw& dw, const Dwarf_Attribute& attribute) {
  LocationAttribute made;
  made.m_attribute = attribute;
  const unsigned form = dw.dwarf_whatform ? dw.dwarf_whatform(&made.m_attribute) : 0;
  if (form != DW_FORM_exprloc || !dw.dwarf_getlocation) return made;
  Dwarf_Op* operations = nullptr;
  if (dw.dwarf_getlocation(&made.m_attribute, &operations, &made.m_uOperations) == 0)
    made.m_pOperations = operations;
  return made;
}

Location Locate(ExpressionScene& scene, LocationAttribute attribute, std::uint64_t size) {
  Operations operations{attribute.m_pOperations, attribute.m_uOperations};
  if (!operations.m_pFirst && !ExpressionHere(scene, attribute.m_attribute, operations)) return Location();
  Location location;
  if (IsPlaceInFrame(scene, operations, location.m_uAddress)) {
    location.m_ePlace = eVALUE_IN_MEMORY;
    return location;
  }
  ExpressionMachine machine(scene, attribute.m_attribute);
  if (!machine.Run(operations.m_pFirst, operations.m_uCount)) return location;
  return machine.Result(size);
}

bool NumberOf(ExpressionScene& scene, Dwarf_Attribute& attribute, std::uint64_t& number) {
  Operations operations;
  if (!ExpressionHere(scene, attribute, operations)) return false;
  if (IsFrameItself(scene, operations, number)) return true;
  ExpressionMachine machine(scene, attribute);
  return machine.Run(operations.m_pFirst, operations.m_uCount) && machine.Number(number);
}

bool AddressInObject(ExpressionScene& scene, Dwarf_Attribute& attribute, std::uint64_t object,
                     std::uint64_t& address) {
  Operations operations;
  if (!ExpressionHere(scene, attribute, operations)) return false;
  ExpressionMachine machine(scene, attribute);
  return machine.Push({object, {}}) && machine.Run(operations.m_pFirst, operations.m_uCount) &&
         machine.Number(address);
}

}  // namespace Oxa::Core::Platform
