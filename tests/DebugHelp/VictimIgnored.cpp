// A chain of functions, each in a source file of its own that isn't there: the names that are left out of call stacks,
// and some that are much like them. The marks are told by FrameChoiceTests.cpp.

using Callback = void (*)();

static volatile int s_iSink = 0;

#define FRAME(name, next)                                         \
  static __attribute__((noinline)) void name(Callback callback) { \
    next(callback);                                               \
    s_iSink = s_iSink + 1;                                        \
  }

static __attribute__((noinline)) void Bottom(Callback callback) {
  callback();
  s_iSink = s_iSink + 1;
}

// clang-format off
#line 10 "afxmem.cpp"
FRAME(Hidden1, Bottom)
#line 10 "dbgheap.c"
FRAME(Hidden2, Hidden1)
#line 10 "New.CPP"
FRAME(Hidden3, Hidden2)
#line 10 "MicrosoftDebugHelp.h"
FRAME(Hidden4, Hidden3)
#line 10 "microsoftdebughelp.cpp"
FRAME(Hidden5, Hidden4)
#line 10 "microsoftsehadapter.h"
FRAME(Hidden6, Hidden5)
#line 10 "microsoftsehadapter.cpp"
FRAME(Hidden7, Hidden6)
#line 10 "Error.cpp"
FRAME(Hidden8, Hidden7)
#line 10 "error.h"
FRAME(Hidden9, Hidden8)
#line 10 "alertinfo.h"
FRAME(Hidden10, Hidden9)
#line 10 "alertinfo.cpp"
FRAME(Hidden11, Hidden10)
#line 10 "AlertManager.h"
FRAME(Hidden12, Hidden11)
#line 10 "alertmanager.cpp"
FRAME(Hidden13, Hidden12)
#line 10 "callstack.h"
FRAME(Hidden14, Hidden13)
#line 10 "/opt/product/CallStack.cpp"
FRAME(Hidden15, Hidden14)
#line 10 "/usr/include/boost/smart_ptr/shared_ptr.hpp"
FRAME(Hidden16, Hidden15)
#line 10 "appmodul.cpp"
FRAME(Hidden17, Hidden16)
#line 10 "crtexe.c"
FRAME(Hidden18, Hidden17)
#line 10 "raisesite.h"
FRAME(Hidden19, Hidden18)
#line 10 "raisesite.cpp"
FRAME(Hidden20, Hidden19)
#line 10 "microsoftdebughelplife.cpp"
FRAME(Hidden21, Hidden20)
#line 10 "microsoftdebughelpstack.cpp"
FRAME(Hidden22, Hidden21)
#line 10 "microsoftsehadaptererrors.cpp"
FRAME(Hidden23, Hidden22)
#line 10 "faultroad.cpp"
FRAME(Hidden24, Hidden23)
#line 10 "stackwalk.cpp"
FRAME(Hidden25, Hidden24)
#line 10 "C:\\sources\\NEW.cpp"
FRAME(HiddenElsewhere, Hidden25)
#line 20 "news.cpp"
FRAME(Shown1, HiddenElsewhere)
#line 21 "new.cpp.h"
FRAME(Shown2, Shown1)
#line 22 "myerror.cpp"
FRAME(Shown3, Shown2)
#line 23 "error.c"
FRAME(Shown4, Shown3)
#line 24 "error.cpp/main.cpp"
FRAME(Shown5, Shown4)
#line 25 "callstack.hpp"
FRAME(Shown6, Shown5)
#line 30 "VictimIgnored.cpp"
// clang-format on

extern "C" __attribute__((visibility("default"))) void RunVictim(const char*, int, Callback callback) {
  Shown6(callback);
}
