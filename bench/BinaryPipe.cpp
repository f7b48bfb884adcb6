// Blocks of 1 KiB from one thread to another, through a pipe of the library and through one of the system.
#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <functional>
#include <thread>

#include "BenchSupport.h"

namespace {

using Oxa::Core::BinaryPipe;
using Oxa::Core::IMutex;

constexpr std::size_t uBLOCK = 1024;
constexpr int iBLOCKS = 20000;  // that a reader gets in one iteration

using Block = std::array<unsigned char, uBLOCK>;

template <std::size_t size>
class Ours {
 public:
  void Write(const Block& block) { m_pipe.Write(block.data(), block.size()); }
  bool Read(Block& block) { return m_pipe.Read(block.data(), uBLOCK) == static_cast<long long>(uBLOCK); }

 private:
  BinaryPipe m_pipe{size, IMutex::sINFINITE, IMutex::sINFINITE};
};

template <std::size_t size>
class Posix {
 public:
  Posix() {
    if (pipe2(m_ends, O_CLOEXEC) == 0) fcntl(m_ends[1], F_SETPIPE_SZ, static_cast<int>(size));
  }
  Posix(const Posix&) = delete;
  Posix& operator=(const Posix&) = delete;
  ~Posix() {
    close(m_ends[0]);
    close(m_ends[1]);
  }
  void Write(const Block& block) {
    for (std::size_t sent = 0; sent < uBLOCK;) {
      const ssize_t now = write(m_ends[1], block.data() + sent, uBLOCK - sent);
      if (now <= 0) return;
      sent += static_cast<std::size_t>(now);
    }
  }
  bool Read(Block& block) {
    std::size_t got = 0;
    while (got < uBLOCK) {
      const ssize_t now = read(m_ends[0], block.data() + got, uBLOCK - got);
      if (now <= 0) return false;
      got += static_cast<std::size_t>(now);
    }
    return true;
  }

 private:
  int m_ends[2] = {-1, -1};
};

// Each block is told from the others, so that none is counted that didn't come.
template <class Pipe>
void Fill(Pipe& pipe, unsigned core) {
  OxaBench::PinThisThread(core);
  Block block{};
  for (int index = 0; index < iBLOCKS; ++index) {
    block[uBLOCK - 1] = static_cast<unsigned char>(index);
    pipe.Write(block);
  }
}

template <class Pipe>
bool Drain(Pipe& pipe) {
  Block block{};
  for (int index = 0; index < iBLOCKS; ++index)
    if (!pipe.Read(block) || block[uBLOCK - 1] != static_cast<unsigned char>(index)) return false;
  return true;
}

// The reader on core 0, the writer on `writersCore`.
template <class Pipe>
void Transfer(benchmark::State& state, unsigned writersCore) {
  Pipe pipe;
  OxaBench::PinThisThread(0);
  for (auto _ : state) {
    std::thread writer(Fill<Pipe>, std::ref(pipe), writersCore);
    if (!Drain(pipe)) state.SkipWithError("a block is missing");
    writer.join();
  }
  OxaBench::UnpinThisThread();
  state.SetBytesProcessed(state.iterations() * iBLOCKS * static_cast<long long>(uBLOCK));
}

template <class Pipe>
void Apart(benchmark::State& state) {
  Transfer<Pipe>(state, 1);
}

template <class Pipe>
void Together(benchmark::State& state) {
  Transfer<Pipe>(state, 0);
}

#define PIPE_BENCHES(ring, who, Pipe)                                      \
  OXA_BENCH("Pipe, 1 KiB blocks, " ring, who, Apart<Pipe>)->UseRealTime(); \
  OXA_BENCH("Pipe, 1 KiB blocks, " ring ", on one core", who, Together<Pipe>)->UseRealTime()

// Our usual ring is half as large as the smallest one of the system.
PIPE_BENCHES("small ring", "Ours", Ours<2048>);
PIPE_BENCHES("small ring", "POSIX", Posix<4096>);
PIPE_BENCHES("64 KiB", "Ours", Ours<65536>);
PIPE_BENCHES("64 KiB", "POSIX", Posix<65536>);

}  // namespace
