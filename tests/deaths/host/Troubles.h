// What else is wrong at the moment of a death: by names, each a function that brings it about.
#ifndef OXACORE_TESTS_DEATHS_TROUBLES_H
#define OXACORE_TESTS_DEATHS_TROUBLES_H

#include <cstddef>

namespace Deaths {

struct NamedTrouble {
  const char* m_pName;
  void (*m_pBring)();
};

struct Troubles {
  const NamedTrouble* m_pFirst;
  std::size_t m_uCount;
};

/// What the system withholds from the program; brought before the library is used.
Troubles TroublesAround();
/// Listeners and log services that misbehave; brought when the library is in use.
Troubles TroublesOfWitnesses();
/// Locks that another thread holds and never gives back; brought by the thread that dies.
Troubles TroublesOfLocks();

/// Brings the trouble of that name if it is one of these. Gives whether it is.
bool Bring(const Troubles& troubles, const char* name);

}  // namespace Deaths

#endif
