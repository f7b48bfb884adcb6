// Two processes that write to one log at once, from the moment when they begin until the last line is in the file.
//
// spdlog has no lock between processes: its lines stay whole because each is one append. It neither turns over nor
// mends what a killed process leaves. log4cplus is asked for its lock file.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "LogSupport.h"

namespace {

namespace fs = std::filesystem;
using namespace OxaBench;

constexpr int iWRITERS = 2;
constexpr int iLONGEST_SECONDS = 20;

/// A program that writes when it is told to. Its output on standard error goes nowhere.
class Writer {
 public:
  Writer(const std::string& program, const std::string& folder, const std::string& name, int lines) {
    int in[2];
    int out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) return;
    m_iIn = in[1];
    m_iOut = out[0];
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> words{OXA_BENCH_FOLDER "/" + program, folder, name, std::to_string(lines)};
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    if (posix_spawn(&m_child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) m_child = 0;
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() {
    close(m_iIn);
    close(m_iOut);
    if (m_child != 0) waitpid(m_child, nullptr, 0);
  }

  bool IsReady() {
    char byte;
    return m_child != 0 && read(m_iOut, &byte, 1) == 1;
  }
  bool Start() {
    const char byte = '.';
    return write(m_iIn, &byte, 1) == 1;
  }

 private:
  pid_t m_child = 0;
  int m_iIn = -1;
  int m_iOut = -1;
};

/// The log of both, with its archive. It is empty at first.
class SharedLog {
 public:
  SharedLog() : m_sFolder(LogFolder::Path() + "two") {
    fs::remove_all(m_sFolder);
    fs::create_directories(m_sFolder);
  }

  const std::string& Folder() const { return m_sFolder; }
  std::uintmax_t Length() const { return LengthOf(Entries()) + LengthOf(Archive()); }

  /// Whether it comes to that length.
  bool Await(std::uintmax_t length) const {
    const Clock::time_point start = Clock::now();
    while (Length() != length) {
      if (SecondsSince(start) > iLONGEST_SECONDS) return false;
      std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
    return true;
  }

  bool Holds(const std::string& what, int lines) const {
    return LogFile(Entries(), Archive()).Holds(what, lines);
  }

 private:
  std::string Entries() const { return m_sFolder + "/DefaultLog.entries"; }
  std::string Archive() const { return m_sFolder + "/DefaultLog.archive"; }

  const std::string m_sFolder;
};

/// Lets both write `lines` lines each, which are `length` bytes together, or any number of them if that is 0.
/// Gives the seconds that it took, and less than 0 if something went wrong.
double Together(const char* program, int lines, std::uintmax_t& length) {
  const SharedLog log;
  Writer one(program, log.Folder(), "one", lines);
  Writer two(program, log.Folder(), "two", lines);
  if (!one.IsReady() || !two.IsReady()) return -1;
  const Clock::time_point start = Clock::now();
  if (!one.Start() || !two.Start()) return -1;
  if (length == 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    length = log.Length();
  } else if (!log.Await(length)) {
    return -1;
  }
  const double seconds = SecondsSince(start);
  return log.Holds("Writer one reads ", lines) && log.Holds("Writer two reads ", lines) ? seconds : -1;
}

void TwoProcesses(benchmark::State& state, const char* program) {
  signal(SIGPIPE, SIG_IGN);
  std::uintmax_t length = 0;
  if (Together(program, 1, length) < 0) return state.SkipWithError("the writers don't work");
  length *= iBURST;
  for (auto _ : state) {
    const double seconds = Together(program, iBURST, length);
    if (seconds < 0) return state.SkipWithError("not every line arrived");
    state.SetIterationTime(seconds);
  }
  state.SetItemsProcessed(state.iterations() * iBURST * iWRITERS);
}

#define TWO_WRITERS_BENCH(who, program)                           \
  BENCHMARK_CAPTURE(TwoProcesses, program, #program)              \
      ->Name("Log, end to end, flushed file, two processes/" who) \
      ->UseManualTime()                                           \
      ->Iterations(20)

TWO_WRITERS_BENCH("Ours", TwoWritersOurs);
#ifdef OXA_PEER_SPDLOG
TWO_WRITERS_BENCH("spdlog sync, no lock", TwoWritersSpdlog);
#endif
#ifdef OXA_PEER_LOG4CPLUS
TWO_WRITERS_BENCH("log4cplus, lock file", TwoWritersLog4cplus);
#endif

}  // namespace
