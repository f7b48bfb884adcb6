#include <Infrastructure/OxaCore/Lock.h>

#include <string>

namespace Oxa::Core {

namespace {

constexpr char sTIMED_OUT[] = "Attempt to lock mutex timed out after waiting for %1%";
constexpr char sDESTROYED[] = "A mutex object was destroyed before its lock could be acquired";
constexpr char sABANDONED[] =
    "Acquired process lock named %1% after lock owner terminated before releasing lock";
constexpr char sFAILED[] =
    "Failed to acquire lock for process mutex named %1% due to following error: \n\n%2%";

}  // namespace

LockTimeout::LockTimeout(const std::string& timeout) : ErrorClass(AlertMessage(sTIMED_OUT, timeout)) {}

LockTimeout::~LockTimeout() = default;

MutexDestroyedBeforeLockAcquired::MutexDestroyedBeforeLockAcquired() : ErrorClass(AlertMessage(sDESTROYED)) {}

MutexDestroyedBeforeLockAcquired::~MutexDestroyedBeforeLockAcquired() = default;

WaitAbandoned::WaitAbandoned(const std::string& lockName) : Warning(AlertMessage(sABANDONED, lockName)) {}

WaitAbandoned::~WaitAbandoned() = default;

WaitFailed::WaitFailed(const std::string& lockName, const std::string& reason)
    : ErrorClass(AlertMessage(sFAILED, lockName, reason)) {}

WaitFailed::~WaitFailed() = default;

}  // namespace Oxa::Core
