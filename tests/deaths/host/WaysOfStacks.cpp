// Stacks that are used up, overwritten or gone: whoever walks them finds rubbish.
#include <cstdint>
#include <iterator>

#include "Ways.h"

namespace {

volatile int s_iDepth = 0;

using Words = volatile std::uintptr_t*;

constexpr std::uintptr_t uRUBBISH = 0x4141414141414141U;
constexpr std::uintptr_t uUNMAPPED = 0x123450U;

}  // namespace

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Winfinite-recursion"
#endif
DEATHS_SITE void DieByStackOverflow() {
  volatile char room[512];
  room[0] = 1;
  s_iDepth = s_iDepth + 1;
  DieByStackOverflow();
  s_iDepth = s_iDepth - room[0];
}

// Word 0 of the frame is the caller's frame, word 1 the way back.
DEATHS_SITE void DieByTrashedReturn() { static_cast<Words>(__builtin_frame_address(0))[1] = uRUBBISH; }

DEATHS_SITE void DieByReturnToNowhere() { static_cast<Words>(__builtin_frame_address(0))[1] = uUNMAPPED; }

DEATHS_SITE void DieByReturnToNull() { static_cast<Words>(__builtin_frame_address(0))[1] = 0; }

DEATHS_SITE void DieOnACorruptedStack() {
  Words frame = static_cast<Words>(__builtin_frame_address(0));
  for (int word = 0; word < 48; ++word) frame[word] = uRUBBISH;
  *Deaths::g_pNull = 1;
}

// Every frame leads back to itself.
DEATHS_SITE void DieOnAStackThatLoops() {
  Words frame = static_cast<Words>(__builtin_frame_address(0));
  frame[0] = reinterpret_cast<std::uintptr_t>(frame);
  *Deaths::g_pNull = 1;
}

DEATHS_SITE void DieOnAWildStack() { asm volatile("mov $0x1000, %esp\n\tpush %rax"); }

namespace Deaths {

namespace {

constexpr NamedWay sWAYS[] = {
    {"stack-overflow", &DieByStackOverflow},
    {"trashed-return", &DieByTrashedReturn},
    {"return-to-nowhere", &DieByReturnToNowhere},
    {"return-to-null", &DieByReturnToNull},
    {"corrupted-stack", &DieOnACorruptedStack},
    {"looping-stack", &DieOnAStackThatLoops},
    {"wild-stack", &DieOnAWildStack},
};

}  // namespace

Ways WaysOfStacks() { return {sWAYS, std::size(sWAYS)}; }

}  // namespace Deaths
