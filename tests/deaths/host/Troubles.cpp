#include "Troubles.h"

#include <cstring>

namespace Deaths {

bool Bring(const Troubles& troubles, const char* name) {
  for (std::size_t index = 0; index < troubles.m_uCount; ++index) {
    if (std::strcmp(troubles.m_pFirst[index].m_pName, name) != 0) continue;
    troubles.m_pFirst[index].m_pBring();
    return true;
  }
  return false;
}

}  // namespace Deaths
