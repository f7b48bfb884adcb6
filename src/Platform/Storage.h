// Per-thread words, the hook at unload, and the channel to a debugger.
#ifndef OXACORE_PLATFORM_STORAGE_H
#define OXACORE_PLATFORM_STORAGE_H

namespace Oxa::Core::Platform {

/// A number that is this thread's alone: never 0, and never given to another thread of this process, not even
/// after this one has ended (as thread ids are). Allocates nothing.
unsigned long ThreadSerial() noexcept;

/// Flags that are each thread's own and start out false. They allocate nothing and need no clean-up.
enum class EThreadFlag : unsigned {
  eTELLING_FAILURE = 1,
  eGUARDS_FILE_LIMIT = 2,
  eCALLS_LOG = 4,
  eFAILED_TEST = 8,
  eREADS_STACK = 16
};
bool HasThreadFlag(EThreadFlag flag) noexcept;
void SetThreadFlag(EThreadFlag flag, bool value) noexcept;

/// A count that is each thread's own and starts at 0. Adds `change` and gives the new value.
int ChangeThreadDepth(int change) noexcept;

/// Calls `routine` when the library is unloaded or the process exits, before every object of the library that
/// was built earlier than this call dies. False if it can't be registered.
bool CallAtUnload(void (*routine)()) noexcept;

/// From the routine of CallAtUnload on: whether the library is being taken out of a process that goes on. Now and
/// then true at the end of a process as well.
bool IsBeingUnmapped() noexcept;

/// Calls `routine` behind every static destructor of the library, unless other threads may still be running. One
/// routine; null takes it back.
void CallAtVeryEnd(void (*routine)()) noexcept;

/// Calls `routine` in each process that is forked off from now on, before anything else goes on in it. False if it
/// can't be registered.
bool CallInForkedChild(void (*routine)()) noexcept;

using DebuggerSink = void (*)(const char* text);

/// Passes `text` to the debugger's output; standard error where the system has none.
void WriteToDebugger(const char* text) noexcept;

/// Sends the debugger's output to `sink`; null puts the default back. Gives the sink in force before, which
/// is null for the default.
DebuggerSink SetDebuggerSink(DebuggerSink sink) noexcept;

}  // namespace Oxa::Core::Platform

#endif
