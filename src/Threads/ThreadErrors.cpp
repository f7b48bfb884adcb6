#include <Infrastructure/OxaCore/Thread.h>

namespace Oxa::Core {

namespace {

constexpr char sNULL_TASK[] = "Attempted to run thread %1% with a NULL Task pointer";
constexpr char sTERMINATED[] = "Thread named %1% terminated by OS before thread ended";
constexpr char sKILLED[] = "Thread named %1% killed by call to Thread::Kill()";

}  // namespace

Thread::NullTaskPointer::NullTaskPointer(const std::string& thread)
    : ErrorClass(AlertMessage(sNULL_TASK, thread)) {}

Thread::NullTaskPointer::~NullTaskPointer() = default;

Thread::OSThreadTermination::OSThreadTermination(const std::string& thread)
    : ErrorClass(AlertMessage(sTERMINATED, thread)) {}

Thread::OSThreadTermination::~OSThreadTermination() = default;

Thread::ThreadKilled::ThreadKilled(const std::string& thread) : ErrorClass(AlertMessage(sKILLED, thread)) {}

Thread::ThreadKilled::~ThreadKilled() = default;

}  // namespace Oxa::Core
