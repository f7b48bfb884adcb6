#include "Ways.h"

#include <cstring>
#include <initializer_list>

namespace Deaths {

int* volatile g_pNull = nullptr;

Way FindWay(const char* name) {
  for (const Ways& ways :
       {WaysOfFaults(), WaysOfFloats(), WaysOfStacks(), WaysOfHeaps(), WaysOfExceptions(), WaysOfSignals()}) {
    for (std::size_t index = 0; index < ways.m_uCount; ++index)
      if (std::strcmp(ways.m_pFirst[index].m_pName, name) == 0) return ways.m_pFirst[index].m_pWay;
  }
  return nullptr;
}

}  // namespace Deaths
