#include "Threads/SemaphoreTexts.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.Semaphore";
constexpr char sWAIT_ABANDONED[] = "Infinite wait abandoned!";
constexpr char sWAIT_TIMED_OUT[] = "Infinite wait timed out!";
constexpr char sWAIT_OTHER[] = "Infinite wait ended by unkown error";
constexpr char sTIMED_WAIT_ABANDONED[] = "Wait abandoned!";
constexpr char sTIMED_WAIT_OTHER[] = "Wait ended by unkown error";

}  // namespace

constexpr WaitTexts g_semaphoreWaitTexts = {sLOG_NAME, sWAIT_ABANDONED, sWAIT_TIMED_OUT, sWAIT_OTHER,
                                            nullptr};
constexpr WaitTexts g_semaphoreTimedWaitTexts = {sLOG_NAME, sTIMED_WAIT_ABANDONED, nullptr, sTIMED_WAIT_OTHER,
                                                 nullptr};

}  // namespace Oxa::Core
