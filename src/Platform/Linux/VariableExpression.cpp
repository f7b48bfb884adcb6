#include "Platform/Linux/VariableExpression.h"

#include "Platform/Linux/VariableMachine.h"

namespace Oxa::Core::Platform {

namespace {

struct Operations {
  Dwarf_Op* m_pFirst = nullptr;
  std::size_t m_uCount = 0;
};

// The expression that holds at the frame's place.
bool ExpressionHere(const ExpressionScene& scene, Dwarf_Attribute& attribute, Operations& found) {
  const Dw& dw = scene.m_dw;
  if (!dw.dwarf_getlocation_addr) return false;
  const Dwarf_Addr place = scene.m_frame.m_place;
  return dw.dwarf_getlocation_addr(&attribute, place, &found.m_pFirst, &found.m_uCount, 1) == 1;
}

}  // namespace

Location Locate(ExpressionScene& scene, Dwarf_Attribute& attribute, std::uint64_t size) {
  Operations operations;
  if (!ExpressionHere(scene, attribute, operations)) return Location();
  ExpressionMachine machine(scene, attribute);
  if (!machine.Run(operations.m_pFirst, operations.m_uCount)) return Location();
  return machine.Result(size);
}

bool NumberOf(ExpressionScene& scene, Dwarf_Attribute& attribute, std::uint64_t& number) {
  Operations operations;
  if (!ExpressionHere(scene, attribute, operations)) return false;
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
