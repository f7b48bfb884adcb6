// Errors that are raised at the bottom of a stack of 20 frames, with file, line and function of each. This program is
// compiled with lines and functions but without variables (-g1); CallStacksVariables.cpp has them.
#include "CallStacks.h"
#include "BenchSupport.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>

#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <string>

#ifdef OXA_PEER_BACKTRACE
#include <boost/stacktrace.hpp>
#endif
#ifdef OXA_PEER_KJ
#include <kj/exception.h>
#endif

namespace {

using MSWindows::DebugHelp;

void RaiseOurs() { OXA_RAISE_ERROR("Bench.CallStacks", Oxa::Core::InvalidParameter("p_iChannel", 12)); }

OXA_BENCH_NOINLINE int Descend(int depth, void (*bottom)()) {
  if (depth > 1) {
    const int below = Descend(depth - 1, bottom);
    benchmark::DoNotOptimize(below);
    return below + 1;
  }
  bottom();
  return 0;
}

template <void (*Raise)()>
void RaiseOnce() {
  try {
    Descend(iFRAMES, Raise);
  } catch (...) {
  }
}

// The first of all reads debug data, and takes so long that no other would be run if it counted.
template <void (*Raise)()>
void RaiseAndCatch(benchmark::State& state) {
  RaiseOnce<Raise>();
  for (auto _ : state) RaiseOnce<Raise>();
}
OXA_BENCH("Raise with a stack of 20 frames", "Ours", RaiseAndCatch<RaiseOurs>);

#ifdef OXA_PEER_BACKTRACE
// What a program does that wants the same in its log.
void RaiseBoost() { throw std::runtime_error(boost::stacktrace::to_string(boost::stacktrace::stacktrace())); }
OXA_BENCH("Raise with a stack of 20 frames", "boost and libbacktrace", RaiseAndCatch<RaiseBoost>);
#endif

#ifdef OXA_PEER_KJ
// Addresses only: names and lines would cost another process each time.
void RaiseKj() {
  kj::throwFatalException(
      kj::Exception(kj::Exception::Type::FAILED, __FILE__, __LINE__, kj::str("p_iChannel = ", 12)));
}
OXA_BENCH("Raise with a stack of 20 frames", "kj, addresses only", RaiseAndCatch<RaiseKj>);
#endif

void WalkOurs() { benchmark::DoNotOptimize(DebugHelp::Instance()->CreateCallStack(100)); }

template <void (*Walk)()>
void OnlyWalk(benchmark::State& state) {
  Descend(iFRAMES, Walk);
  for (auto _ : state) Descend(iFRAMES, Walk);
}
OXA_BENCH("Stack of 20 frames", "Ours", OnlyWalk<WalkOurs>);

#ifdef OXA_PEER_BACKTRACE
void WalkBoost() { benchmark::DoNotOptimize(boost::stacktrace::to_string(boost::stacktrace::stacktrace())); }
OXA_BENCH("Stack of 20 frames", "boost and libbacktrace", OnlyWalk<WalkBoost>);
#endif

// Everything that was learnt is forgotten each time: modules, lines and functions are read anew.
void ColdWalk(benchmark::State& state) {
  for (auto _ : state) {
    DebugHelp::Instance()->Initialize();
    Descend(iFRAMES, &WalkOurs);
  }
}
OXA_BENCH("First stack of a process", "Ours", ColdWalk);

// The same with the rest of a frame: its variables.
void WithVariables(benchmark::State& state) {
  for (auto _ : state) DescendWithVariables(iFRAMES_WITH_VARIABLES, &WalkOurs);
}
OXA_BENCH("Stack of 30 frames with variables", "Ours", WithVariables);

long ResidentBytes() {
  long size = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident * ::sysconf(_SC_PAGESIZE);
}

// Runs first: what loading the symbols takes.
const long s_before = ResidentBytes();
const long s_taken = [] {
  const boost::shared_ptr<DebugHelp> help = DebugHelp::Instance();
  if (help) Descend(iFRAMES, &WalkOurs);
  return ResidentBytes() - s_before;
}();

void Memory(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(s_taken);
  state.counters["bytes"] = static_cast<double>(s_taken);
}
OXA_BENCH("Memory of the first stack", "Ours", Memory);

}  // namespace
