// Functions whose frames are known line by line. Compiled in many ways, as modules that StackHost loads; each calls
// back from its depths. The words behind "at:" are how the tests find a line.

#include <signal.h>
#include <ucontext.h>

using Callback = void (*)();

namespace victim {

namespace {

volatile int s_iSink = 0;

inline __attribute__((always_inline)) void Innermost(int innermostArgument, Callback callback) {
  callback();  // at: innermost
  s_iSink = innermostArgument;
}

inline __attribute__((always_inline)) void Middle(int middleArgument, Callback callback) {
  Innermost(middleArgument + 1, callback);  // at: middle
  s_iSink = middleArgument;
}

}  // namespace

__attribute__((noinline)) void Inlined(Callback callback) {
  Middle(41, callback);  // at: inlined
  s_iSink = 1;
}

class Counter {
 public:
  __attribute__((noinline)) int Descend(int depth, Callback callback) {
    if (depth == 0) {
      callback();  // at: bottom
    } else {
      Descend(depth - 1, callback);  // at: descend
    }
    return ++m_iCalls;
  }

 private:
  int m_iCalls = 0;
};

template <class T>
__attribute__((noinline)) void Templated(T value, Callback callback) {
  callback();  // at: templated
  s_iSink = static_cast<int>(value);
}

// The frame says that it was called by itself, from this very place.
__attribute__((noinline, optimize("O0"))) void Loop(Callback callback) {
  void** const frame = static_cast<void**>(__builtin_frame_address(0));
  void* const caller = frame[0];
  void* const behindCall = frame[1];
  frame[0] = frame;
  frame[1] = &&place;
  callback();  // at: loop
place:
  frame[0] = caller;
  frame[1] = behindCall;
}

__attribute__((noinline)) void* Here() { return __builtin_return_address(0); }

// The same of a function that is put into another one: its frame is that of the other.
inline __attribute__((always_inline)) void LoopInside(Callback callback, void** frame) {
  void* const caller = frame[0];
  void* const behindCall = frame[1];
  frame[1] = Here();
  frame[0] = frame;
  callback();  // at: loop inside
  frame[0] = caller;
  frame[1] = behindCall;
}

__attribute__((noinline, optimize("O0"))) void LoopAround(Callback callback) {
  LoopInside(callback, static_cast<void**>(__builtin_frame_address(0)));  // at: loop around
}

// Without a frame pointer that leads on: where it has no rules for its frame nobody finds its caller.
__attribute__((naked, noinline)) void Outermost(Callback /*callback*/) {
  asm("push %rbp\n\txor %ebp, %ebp\n\tcall *%rdi\n\tpop %rbp\n\tret");  // at: outermost
}

// The instruction before the one that traps has another line.
// clang-format off
__attribute__((naked, noinline)) void Trap() { asm("nop");
  asm("ud2\n\tret");  // at: trap
}
// clang-format on

Callback s_onTrap = nullptr;

void OnTrap(int /*signal*/, siginfo_t* /*info*/, void* context) {
  s_onTrap();  // at: handler
  static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP] += 2;
}

__attribute__((noinline)) void Interrupted(Callback callback) {
  struct sigaction action = {};
  struct sigaction before = {};
  s_onTrap = callback;
  action.sa_sigaction = &OnTrap;
  action.sa_flags = SA_SIGINFO;
  ::sigaction(SIGILL, &action, &before);
  Trap();  // at: interrupted
  ::sigaction(SIGILL, &before, nullptr);
}

#define TEN(name, value)                                                                       \
  volatile int name##0 = value##0, name##1 = value##1, name##2 = value##2, name##3 = value##3, \
               name##4 = value##4, name##5 = value##5, name##6 = value##6, name##7 = value##7, \
               name##8 = value##8, name##9 = value##9;                                         \
  static_cast<void>(name##0)
#define HUNDRED(name, value) \
  TEN(name##0, value##0);    \
  TEN(name##1, value##1);    \
  TEN(name##2, value##2);    \
  TEN(name##3, value##3);    \
  TEN(name##4, value##4);    \
  TEN(name##5, value##5);    \
  TEN(name##6, value##6);    \
  TEN(name##7, value##7);    \
  TEN(name##8, value##8);    \
  TEN(name##9, value##9)

__attribute__((noinline)) void Many(Callback callback) {
  TEN(v, );
  TEN(v1, 1);
  TEN(v2, 2);
  TEN(v3, 3);
  TEN(v4, 4);
  TEN(v5, 5);
  TEN(v6, 6);
  TEN(v7, 7);
  TEN(v8, 8);
  TEN(v9, 9);
  HUNDRED(v1, 1);
  HUNDRED(v2, 2);
  callback();  // at: many
}

__attribute__((noinline)) void Wide(Callback callback) {
  volatile char room[500000];
  room[0] = 1;
  callback();  // at: wide
  s_iSink = room[0];
}

volatile double s_dDenormal = 5e-324;

__attribute__((noinline)) void Small(Callback callback) {
  volatile double small = s_dDenormal;
  callback();  // at: small
  s_dDenormal = small;
}

}  // namespace victim

extern "C" __attribute__((visibility("default"))) void RunVictim(const char* what, int number,
                                                                 Callback callback) {
  if (what[0] == 'i') victim::Inlined(callback);                    // at: run inlined
  if (what[0] == 'd') victim::Counter().Descend(number, callback);  // at: run descend
  if (what[0] == 't') victim::Templated<long>(number, callback);    // at: run templated
  if (what[0] == 'l') victim::Loop(callback);                       // at: run loop
  if (what[0] == 'a') victim::LoopAround(callback);
  if (what[0] == 'o') victim::Outermost(callback);
  if (what[0] == 'h') victim::Interrupted(callback);
  if (what[0] == 'm') victim::Many(callback);
  if (what[0] == 'w') victim::Wide(callback);  // at: run wide
  if (what[0] == 's') victim::Small(callback);
}

// A module that calls back while it is being loaded, with what the loader holds then.
#if defined(CALLS_WHILE_LOADED)
extern "C" __attribute__((weak)) void CallbackOfHost();
namespace {
struct AtLoad {
  AtLoad() {
    if (CallbackOfHost != nullptr) CallbackOfHost();  // at: load
  }
};
AtLoad s_atLoad;
}  // namespace
#endif
