// Functions whose frames are known line by line. Compiled in many ways, as modules that StackHost loads; each calls
// back from its depths. The words behind "at:" are how the tests find a line.

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

}  // namespace victim

extern "C" __attribute__((visibility("default"))) void RunVictim(const char* what, int number,
                                                                 Callback callback) {
  if (what[0] == 'i') victim::Inlined(callback);                    // at: run inlined
  if (what[0] == 'd') victim::Counter().Descend(number, callback);  // at: run descend
  if (what[0] == 't') victim::Templated<long>(number, callback);    // at: run templated
  if (what[0] == 'l') victim::Loop(callback);                       // at: run loop
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
