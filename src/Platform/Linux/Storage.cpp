#include "Platform/Storage.h"

#include <cxxabi.h>
#include <errno.h>
#include <pthread.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "Platform/Faults.h"
#include "Platform/Linux/Unmapping.h"

// The identity of the library that this file is linked into; every one has its own.
extern "C" [[gnu::visibility("hidden")]] void* __dso_handle;  // NOLINT(bugprone-reserved-identifier)

namespace Oxa::Core::Platform {

namespace {

std::atomic<unsigned long> s_ulLastSerial{0};
std::atomic<DebuggerSink> s_sink{nullptr};
std::atomic<void (*)()> s_lastRoutine{nullptr};

// Initial-exec: no allocation at the first touch on a thread, and nothing to destroy at its end.
[[gnu::tls_model("initial-exec")]] thread_local unsigned long t_ulSerial = 0;
[[gnu::tls_model("initial-exec")]] thread_local unsigned t_uFlags = 0;
[[gnu::tls_model("initial-exec")]] thread_local int t_iDepth = 0;

void WriteToStandardError(const char* text) noexcept {
  for (std::size_t left = std::strlen(text); left > 0;) {
    const ssize_t written = ::write(STDERR_FILENO, text, left);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text += written;
    left -= static_cast<std::size_t>(written);
  }
}

// Destructors with a number come last. At the end of a process threads that nobody has joined run to the last
// moment; where a library is unmapped there are none in it any more.
[[gnu::destructor(101)]] void RunLastRoutine() {
  const auto routine = s_lastRoutine.load();
  if (routine != nullptr && (IsBeingUnmapped() || __libc_single_threaded)) routine();
}

}  // namespace

unsigned long ThreadSerial() noexcept {
  if (t_ulSerial == 0) t_ulSerial = s_ulLastSerial.fetch_add(1, std::memory_order_relaxed) + 1;
  return t_ulSerial;
}

bool HasThreadFlag(EThreadFlag flag) noexcept { return (t_uFlags & static_cast<unsigned>(flag)) != 0; }

void SetThreadFlag(EThreadFlag flag, bool value) noexcept {
  const unsigned bit = static_cast<unsigned>(flag);
  t_uFlags = value ? t_uFlags | bit : t_uFlags & ~bit;
}

int ChangeThreadDepth(int change) noexcept { return t_iDepth += change; }

// What atexit does, with the library named outright: the thread sanitizer puts an atexit of its own in its
// place, which forgets whose routine it is and calls it when the library has been unmapped long since.
bool CallAtUnload(void (*routine)()) noexcept {
  const auto call = [](void* what) {
    NoteUnloading();
    reinterpret_cast<void (*)()>(what)();
  };
  NoteLoading();
  return abi::__cxa_atexit(call, reinterpret_cast<void*>(routine), &__dso_handle) == 0;
}

void CallAtVeryEnd(void (*routine)()) noexcept { s_lastRoutine.store(routine); }

bool CallInForkedChild(void (*routine)()) noexcept { return pthread_atfork(nullptr, nullptr, routine) == 0; }

void WriteToDebugger(const char* text) noexcept {
  const HoldCancellation hold;
  const DebuggerSink sink = s_sink.load();
  (sink != nullptr ? sink : WriteToStandardError)(text);
}

DebuggerSink SetDebuggerSink(DebuggerSink sink) noexcept { return s_sink.exchange(sink); }

}  // namespace Oxa::Core::Platform
