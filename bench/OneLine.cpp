// A process that logs one line, from its start to its end: wall time, processor time, and memory at its peak.
#include "OneLine.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <vector>

#include "LogSupport.h"

namespace {

namespace fs = std::filesystem;
using namespace OxaBench;

struct Run {
  bool m_bLogged = false;
  double m_dWall = 0;  // seconds
  double m_dProcessor = 0;
  double m_dPeak = 0;  // bytes; told only when asked for
};

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

std::string ContentOf(const fs::path& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Whether some file of the folder holds the line; the folder is empty afterwards.
bool TakeLine(const fs::path& folder) {
  bool found = false;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    found = found || ContentOf(entry.path()).find(sONE_LINE) != std::string::npos;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) fs::remove(entry.path());
  return found;
}

// What the programs say besides doesn't belong into the table.
const posix_spawn_file_actions_t* QuietOutput() {
  static posix_spawn_file_actions_t actions;
  static const bool made = [] {
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    return posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0) == 0;
  }();
  return made ? &actions : nullptr;
}

Run RunOnce(const std::string& program, bool withPeak) {
  std::string name = OXA_BENCH_FOLDER "/" + program;
  std::string folder = LogFolder::Path() + "oneline";
  std::string peak = LogFolder::Path() + "peak";
  fs::create_directories(folder);
  std::vector<char*> arguments{name.data(), folder.data()};
  if (withPeak) arguments.push_back(peak.data());
  arguments.push_back(nullptr);

  Run run;
  const Clock::time_point start = Clock::now();
  pid_t child = 0;
  if (posix_spawn(&child, name.c_str(), QuietOutput(), nullptr, arguments.data(), environ) != 0) return run;
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  run.m_dWall = SecondsSince(start);
  run.m_dProcessor = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  run.m_bLogged = TakeLine(folder) && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (withPeak) run.m_dPeak = 1024.0 * std::stod("0" + ContentOf(peak));
  return run;
}

void Measure(benchmark::State& state, const char* program, double Run::*what, bool withPeak = false) {
  double bytes = 0;
  for (auto _ : state) {
    const Run run = RunOnce(program, withPeak);
    state.SetIterationTime(run.*what);
    bytes = run.m_dPeak;
    if (!run.m_bLogged) return state.SkipWithError("the line didn't arrive");
  }
  if (withPeak) state.counters["bytes"] = bytes;
}

#define ONE_LINE_BENCH(area, who, program, ...)              \
  BENCHMARK_CAPTURE(Measure, program, #program, __VA_ARGS__) \
      ->Name(area "/" who)                                   \
      ->UseManualTime()                                      \
      ->Iterations(20)
#define ONE_LINE_BENCHES(who, program)                                                              \
  ONE_LINE_BENCH("A process that logs one line", who, program, &Run::m_dWall);                      \
  ONE_LINE_BENCH("A process that logs one line, processor time", who, program, &Run::m_dProcessor); \
  ONE_LINE_BENCH("A process that logs one line, memory at its peak", who, program, &Run::m_dWall, true)

ONE_LINE_BENCHES("Ours", OneLineOurs);
#ifdef OXA_PEER_SPDLOG
ONE_LINE_BENCHES("spdlog", OneLineSpdlog);
#endif

}  // namespace
