// The functions of PlainHost.cpp, once for each way in which it is compiled.
#ifndef OXACORE_TESTS_FAULTS_PLAINHOSTS_H
#define OXACORE_TESTS_FAULTS_PLAINHOSTS_H

#include <cstddef>

#define OXA_PLAIN_HOST(prefix)                                                    \
  bool prefix##CatchesAroundACall();                                              \
  bool prefix##CatchesBehindAFunctionThatIsNotPrepared();                         \
  bool prefix##CatchesWhatACopyDid(void* to, const void* from, std::size_t size); \
  bool prefix##BroadcastsPastAListenerThatIsGone()

extern "C" {
OXA_PLAIN_HOST(Prepared);
OXA_PLAIN_HOST(Unprepared);
#ifdef OXA_CLANG_HOST
OXA_PLAIN_HOST(Clang);
#endif
}

#undef OXA_PLAIN_HOST

#endif
