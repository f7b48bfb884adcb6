// What the two halves of the benchmark of call stacks share.
#ifndef OXACORE_BENCH_CALLSTACKS_H
#define OXACORE_BENCH_CALLSTACKS_H

#define OXA_BENCH_NOINLINE __attribute__((noinline))

constexpr int iFRAMES = 20;
constexpr int iFRAMES_WITH_VARIABLES = 30;

/// Goes down so many frames, each with variables of several kinds, and calls `bottom`.
int DescendWithVariables(int depth, void (*bottom)());

#endif
