// What the programs that measure logging share: one message for all, and proof that every line has arrived.
//
// A log of a benchmark has two operations: Write(number) writes one line of always the same length, and Flush()
// sees to it that what has been written gets into the file soon. A LogFile tells whether it has.
#ifndef OXACORE_BENCH_LOGSUPPORT_H
#define OXACORE_BENCH_LOGSUPPORT_H

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "BenchSupport.h"

/// The message, for those who print it as printf does, with its arguments; all lines are of one length.
#define OXA_BENCH_MESSAGE "Channel %02d reads %8.3f K at step %06d"
#define OXA_BENCH_ARGUMENTS(number) (number) % 16, (number)*0.125, (number)

namespace OxaBench {

constexpr int iBURST = 2500;  // lines: below the limit of every queue that drops

using Clock = std::chrono::steady_clock;

inline double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The length of a file, 0 if there is none. A look at its status would slow down whoever writes to it: the system
/// gives the next write a time stamp of its own then.
inline std::uintmax_t LengthOf(const std::string& name) {
  const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return 0;
  const off_t end = lseek(file, 0, SEEK_END);
  close(file);
  return end < 0 ? 0 : static_cast<std::uintmax_t>(end);
}

/// A folder for the logs of this process; gone at its end.
class LogFolder {
 public:
  LogFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "oxacorebenchXXXXXX").string();
    if (mkdtemp(name.data()) != nullptr) m_sPath = name + "/";
  }
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;
  ~LogFolder() {
    std::error_code code;
    std::filesystem::remove_all(m_sPath, code);
  }

  static const std::string& Path() {
    static const LogFolder folder;
    return folder.m_sPath;
  }

 private:
  std::string m_sPath;
};

/// A file that grows by lines of one length. One that turns over becomes `archive` when it is above `limit`.
class LogFile {
 public:
  explicit LogFile(std::string name, std::string archive = "", std::uintmax_t limit = UINTMAX_MAX)
      : m_sName(std::move(name)), m_sArchive(std::move(archive)), m_ullLimit(limit) {}

  const std::string& Name() const { return m_sName; }

  /// Writes one line through `log` and learns how long it is.
  template <class Log>
  void LearnLength(Log& log) {
    const std::uintmax_t before = Size();
    log.Write(0);
    log.Flush();
    for (int round = 0; round < 20000 && Size() == before; ++round)
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    m_ullLength = Size() - before;
    m_ullExpected = Size();
  }

  /// Waits until `lines` more are in the file. False if that takes more than 10 seconds.
  bool Await(int lines) {
    if (m_ullLength == 0) return false;
    for (int line = 0; line < lines; ++line) {
      m_ullExpected += m_ullLength;
      if (m_ullExpected > m_ullLimit) m_ullExpected = 0;
    }
    const Clock::time_point start = Clock::now();
    while (Size() != m_ullExpected) {
      if (SecondsSince(start) > 10) return false;
      std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
    return true;
  }

  /// Whether `what` stands `lines` times in the file and its archive.
  bool Holds(const std::string& what, int lines) const {
    return Count(m_sName, what) + Count(m_sArchive, what) == lines;
  }

 private:
  std::uintmax_t Size() const { return LengthOf(m_sName); }

  static int Count(const std::string& name, const std::string& what) {
    std::ifstream file(name, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    int count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
    return count;
  }

  const std::string m_sName;
  const std::string m_sArchive;
  const std::uintmax_t m_ullLimit;
  std::uintmax_t m_ullLength = 0;
  std::uintmax_t m_ullExpected = 0;
};

/// Lets `threads` threads write a burst together; gives the seconds that one call took its caller, on average.
template <class Log>
double BurstOf(Log& log, int threads) {
  std::atomic<int> ready{0};
  std::vector<double> seconds(static_cast<std::size_t>(threads));
  const auto write = [&](int thread) {
    ++ready;
    while (ready < threads) {
    }
    const Clock::time_point start = Clock::now();
    for (int line = 0; line < iBURST / threads; ++line) log.Write(line);
    seconds[static_cast<std::size_t>(thread)] = SecondsSince(start);
  };
  std::vector<std::thread> others;
  for (int thread = 1; thread < threads; ++thread) others.emplace_back(write, thread);
  write(0);
  for (std::thread& other : others) other.join();
  double sum = 0;
  for (const double second : seconds) sum += second;
  const int ofEach = iBURST / threads;
  return sum / threads / ofEach;
}

/// What one call costs those who write a burst and don't wait for the disk.
template <class Log>
void CallersCost(benchmark::State& state, Log& log, LogFile& file, int threads) {
  file.LearnLength(log);
  for (auto _ : state) {
    state.SetIterationTime(BurstOf(log, threads));
    log.Flush();
    if (!file.Await(iBURST)) return state.SkipWithError("not every line arrived");
  }
}

/// Lines per second from the first call of a burst until the last line is in the file.
template <class Log>
void EndToEnd(benchmark::State& state, Log& log, LogFile& file) {
  file.LearnLength(log);
  for (auto _ : state) {
    const Clock::time_point start = Clock::now();
    for (int line = 0; line < iBURST; ++line) log.Write(line);
    const bool arrived = file.Await(iBURST);
    state.SetIterationTime(SecondsSince(start));
    if (!arrived) return state.SkipWithError("not every line arrived");
  }
  state.SetItemsProcessed(state.iterations() * iBURST);
}

}  // namespace OxaBench

#define OXA_BENCH_LOG(area, who, function) OXA_BENCH(area, who, function)->UseManualTime()->Iterations(40)

#endif
