// A memory dump by policy, of a process with four threads and a heap of 16 MB: how long it stands still, and how much
// is written. Nothing comparable is at hand on this system: the areas have no peers.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "ErrorHandling/MicrosoftDebugHelpDump.h"

namespace {

using Oxa::Core::EDumpPolicy;
using Oxa::Core::WriteDumpByPolicy;

constexpr std::size_t g_uHEAP = 16 << 20;
constexpr std::size_t g_uBLOCK = 4096;
constexpr int g_iTHREADS = 3;

// What is dumped, and where.
class Process {
 public:
  Process() {
    for (std::size_t size = 0; size < g_uHEAP; size += g_uBLOCK) {
      m_heap.emplace_back(new char[g_uBLOCK]);
      std::memset(m_heap.back().get(), 1, g_uBLOCK);
    }
    ::close(::mkstemp(m_sName.data()));
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() { ::unlink(m_sName.c_str()); }

  bool Write(benchmark::State& state) {
    if (WriteDumpByPolicy(m_sName.c_str(), nullptr, static_cast<EDumpPolicy>(state.range(0))) == 0)
      return true;
    state.SkipWithError("no dump");
    return false;
  }

  double Size() const {
    struct stat status = {};
    ::stat(m_sName.c_str(), &status);
    return static_cast<double>(status.st_size);
  }

 private:
  OxaBench::SleepingThread m_threads[g_iTHREADS];
  std::vector<std::unique_ptr<char[]>> m_heap;
  std::string m_sName = "/tmp/oxacoreXXXXXX";
};

void Time(benchmark::State& state) {
  Process process;
  for (auto _ : state)
    if (!process.Write(state)) return;
}

void Size(benchmark::State& state) {
  Process process;
  for (auto _ : state)
    if (!process.Write(state)) return;
  state.counters["bytes"] = process.Size();
}

OXA_BENCH("Dump by policy", "Ours", Time)->DenseRange(0, 3)->UseRealTime();
OXA_BENCH("Dump by policy, size", "Ours", Size)->DenseRange(0, 3)->Iterations(1);

}  // namespace
