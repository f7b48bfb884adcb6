#include "Side.h"

namespace Model {

int WidthOf(Value type) {
  switch (type) {
    case Value::eSIGNED_CHAR:
    case Value::eCHAR:
    case Value::eUNSIGNED_CHAR:
    case Value::eBOOL:
      return 1;
    case Value::eSHORT:
    case Value::eUNSIGNED_SHORT:
      return 2;
    case Value::eINT:
    case Value::eUNSIGNED_INT:
    case Value::eLONG:
    case Value::eUNSIGNED_LONG:
    case Value::eFLOAT:
      return 4;
    case Value::eLONG_LONG:
    case Value::eUNSIGNED_LONG_LONG:
    case Value::eDOUBLE:
      return 8;
    case Value::eSTRING:
    case Value::eWIDE_STRING:
    case Value::eEND:
      break;
  }
  return 0;
}

Bytes FormerValue(Value type) { return Bytes(static_cast<std::size_t>(WidthOf(type)), '\x01'); }

}  // namespace Model
