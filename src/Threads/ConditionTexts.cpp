#include "Threads/ConditionTexts.h"

#include <Infrastructure/OxaCore/Condition.h>

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.Condition";
constexpr char sLOCK_ABANDONED[] = "Attempt to acquire lock abandoned";
constexpr char sLOCK_TIMED_OUT[] = "Attempt to acquire lock timed out";
constexpr char sLOCK_OTHER[] = "Attemt to acquire lock ended by unkown error";
constexpr char sWAIT_ABANDONED[] = "Infinite wait on signal abandoned!";
constexpr char sWAIT_TIMED_OUT[] = "Infinite wait timed out!";
constexpr char sWAIT_OTHER[] = "Infinite wait on signal ended by unkown error";
constexpr char sTIMED_WAIT_ABANDONED[] = "Timed wait on signal abandoned!";
constexpr char sTIMED_WAIT_OTHER[] = "Timed wait on signal ended by unkown error";
constexpr char sINTERRUPTED[] = "A wait on a Condition object was ended by a unser mode APC";

void WarnOfInterruption(const CodeSite& site) { site.Raise(sLOG_NAME, ConditionWaitEndedByAPC()); }

}  // namespace

constexpr WaitTexts g_conditionLockTexts = {sLOG_NAME, sLOCK_ABANDONED, sLOCK_TIMED_OUT, sLOCK_OTHER,
                                            nullptr};
constexpr WaitTexts g_conditionTryLockTexts = {sLOG_NAME, sLOCK_ABANDONED, nullptr, sLOCK_OTHER, nullptr};
constexpr WaitTexts g_conditionWaitTexts = {sLOG_NAME, sWAIT_ABANDONED, sWAIT_TIMED_OUT, sWAIT_OTHER,
                                            &WarnOfInterruption};
constexpr WaitTexts g_conditionTimedWaitTexts = {sLOG_NAME, sTIMED_WAIT_ABANDONED, nullptr, sTIMED_WAIT_OTHER,
                                                 &WarnOfInterruption};

ConditionWaitEndedByAPC::ConditionWaitEndedByAPC() : Warning(AlertMessage(sINTERRUPTED)) {}

ConditionWaitEndedByAPC::~ConditionWaitEndedByAPC() = default;

}  // namespace Oxa::Core
