// The ways to die, by the names that the driver's table calls them.
#ifndef OXACORE_TESTS_DEATHS_WAYS_H
#define OXACORE_TESTS_DEATHS_WAYS_H

#include <cstddef>

namespace Deaths {

/// Doesn't return, if all goes as it is meant to.
using Way = void (*)();

struct NamedWay {
  const char* m_pName;
  Way m_pWay;
};

/// A table with its length; tables are constants, so that they are there before any static constructor has run.
struct Ways {
  const NamedWay* m_pFirst;
  std::size_t m_uCount;
};

Ways WaysOfFaults();
Ways WaysOfFloats();
Ways WaysOfStacks();
Ways WaysOfHeaps();
Ways WaysOfExceptions();
Ways WaysOfSignals();

/// Null if there is none of that name.
Way FindWay(const char* name);

/// A pointer to nothing, which the compiler doesn't see through.
extern int* volatile g_pNull;

}  // namespace Deaths

/// The function that a debugger has to find on top: it keeps its name, its frame and its calls.
#if defined(__clang__)
#define DEATHS_SITE extern "C" __attribute__((noinline, optnone))
#else
#define DEATHS_SITE extern "C" __attribute__((noipa))
#endif

#endif
