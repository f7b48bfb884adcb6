#include "ErrorHandling/Hooks.h"

#include <cstdlib>

namespace Oxa::Core {

namespace {

// Constant-initialised: a raise from the first static object on finds the defaults.
Hooks s_hooks = {
    /* addCircumstances */ [](AlertData&) {},
    /* markCircumstances */ [] { return CircumstancesMark(); },
    /* walkStack */ [](int) { return boost::shared_ptr<std::vector<CodeContext>>(); },
    /* errorRaised */ [](Error&) {},
    /* errorHandled */ [](Error&) {},
    /* settleInPlace */ [](Error&) { return false; },
    /* mayWarn */ [](const std::string&) { return true; },
    /* warningRaised */ [](Warning&) {},
    /* writeAlert */ [](AlertInfo&, const char*) {},
    /* writeAlertDocument */ [](AlertInfo&, const char*) {},
    /* logFailedAssert */ [](AssertionFailure&) {},
    /* logThreadError */ [](const std::string&) {},
    /* logErrorRaised */ [](Error&) {},
    /* stopBuffering */ [] {},
    /* translateFaults */ [] {},
    /* endUncaught */ &std::abort,
    /* useFaultAdapter */ [] {},
    /* releaseFaultAdapter */ [] {},
};

}  // namespace

Hooks& TheHooks() noexcept { return s_hooks; }

}  // namespace Oxa::Core
