// A host whose compiler doesn't expect instructions to throw: by another compiler than g++, or without the flag.
// Compiled on its own, with PLAIN_HOST_PREFIX for the prefix of its names.
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include <cstring>

#include "Support/FaultSite.h"

#define PLAIN_HOST_JOIN(prefix, name) prefix##name
#define PLAIN_HOST_NAME(prefix, name) PLAIN_HOST_JOIN(prefix, name)
#define PLAIN_HOST(name) PLAIN_HOST_NAME(PLAIN_HOST_PREFIX, name)

namespace {

struct Guard {
  explicit Guard(int& count) : m_count(count) { ++m_count; }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  ~Guard() { --m_count; }
  int& m_count;
};

int s_iAlive = 0;

OXA_FAULT_SITE void Write(volatile int* place) { *place = 1; }

void Log(int& value) noexcept { ++value; }

// Has something to clean up, and no entry for the instruction that faults.
OXA_FAULT_SITE void WriteInItself(volatile int* place) {
  const Guard guard(s_iAlive);
  *place = 1;
  Log(s_iAlive);
  --s_iAlive;
}

OXA_FAULT_SITE void CopyFrom(void* to, const void* from, std::size_t size) {
  const Guard guard(s_iAlive);
  std::memcpy(to, from, size);
}

void (*volatile const s_write)(volatile int*) = &Write;
void (*volatile const s_writeInItself)(volatile int*) = &WriteInItself;
void (*volatile const s_copy)(void*, const void*, std::size_t) = &CopyFrom;

}  // namespace

// A catch clause around a call.
extern "C" bool PLAIN_HOST(CatchesAroundACall)() {
  try {
    const Guard guard(s_iAlive);
    s_write(nullptr);
  } catch (MSWindows::AccessViolation&) {
    return s_iAlive == 0;
  }
  return false;
}

// A function between that isn't prepared: it is left as it stands.
extern "C" bool PLAIN_HOST(CatchesBehindAFunctionThatIsNotPrepared)() {
  s_iAlive = 0;
  try {
    s_writeInItself(nullptr);
  } catch (MSWindows::AccessViolation&) {
    s_iAlive = 0;
    return true;
  }
  return false;
}

// A call that the compiler takes for one that throws nothing.
extern "C" bool PLAIN_HOST(CatchesWhatACopyDid)(void* to, const void* from, std::size_t size) {
  try {
    s_copy(to, from, size);
  } catch (MSWindows::AccessViolation&) {
    s_iAlive = 0;
    return true;
  }
  return false;
}
