// Many bytes, many threads: nothing is lost, doubled or out of order, whatever happens to the pipe meanwhile.
#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <numeric>
#include <random>
#include <thread>

#include "Support/Together.h"
#include "io/PipeSupport.h"

using namespace PipeTests;
using TestSupport::Together;

namespace {

#ifdef OXACORE_SOAK
constexpr int iTIMES = 30;
#else
constexpr int iTIMES = 1;
#endif

// The byte at `position` of a stream that has no short period.
unsigned char Expected(unsigned long long position) {
  return static_cast<unsigned char>(position * 2654435761ULL >> 13);
}

// --- One of each

void WriteAll(BinaryPipe& pipe, unsigned long long total) {
  std::mt19937 random(1);
  std::vector<unsigned char> block;
  for (unsigned long long position = 0; position < total; position += block.size()) {
    block.resize(std::min<unsigned long long>(1 + random() % 700, total - position));
    for (std::size_t index = 0; index < block.size(); ++index) block[index] = Expected(position + index);
    if (block.size() % 4 == 0)
      for (const unsigned char byte : block) pipe.Write(byte);
    else
      pipe.Write(block.data(), block.size());
  }
  pipe.Close();
}

// Gives how many bytes came, and counts those that are wrong.
unsigned long long ReadAll(BinaryPipe& pipe, unsigned long long& wrong) {
  std::mt19937 random(2);
  std::array<unsigned char, 900> block;
  unsigned long long position = 0;
  while (true) {
    const unsigned long long wanted = 1 + random() % block.size();
    if (wanted % 5 == 0) {
      const int byte = pipe.Read();
      if (byte < 0) return position;
      wrong += byte != Expected(position++);
      continue;
    }
    const long long got = pipe.Read(block.data(), static_cast<long long>(wanted));
    if (got <= 0) return position;
    for (std::size_t index = 0; index < static_cast<std::size_t>(got); ++index)
      wrong += block[index] != Expected(position++);
    if (wanted % 7 == 0 && pipe.AvailableBytes() > 0 && pipe.Skip(1)) ++position;
  }
}

void Transfer(unsigned long long size, unsigned long long total) {
  BinaryPipe pipe(size, IMutex::sINFINITE, IMutex::sINFINITE);
  unsigned long long wrong = 0;
  unsigned long long read = 0;
  std::thread writer([&] { WriteAll(pipe, total); });
  EXPECT_NO_THROW(read = ReadAll(pipe, wrong));
  writer.join();
  EXPECT_EQ(total, read);
  EXPECT_EQ(0u, wrong);
}

// With one reader, one writer and no time limit nobody is ever told of a time-out.
TEST(BinaryPipeStress, OneReaderGetsEveryByteOfOneWriterInOrder) {
  for (const unsigned long long size : {1ULL, 7ULL, 256ULL, 2048ULL, 65536ULL})
    Transfer(size, iTIMES * (size < 100 ? 20000 : 500000));
}

// The host changes the time-outs of a pipe in use.
TEST(BinaryPipeStress, TimeoutsMayChangeMeanwhile) {
  BinaryPipe pipe(64, s_long, s_long);
  std::atomic<bool> end{false};
  std::thread changer([&] {
    for (int step = 0; !end; ++step) {
      pipe.SetReadTimeout(Elapse(30 + step % 30));
      pipe.SetWriteTimeout(Elapse(30 + step % 30));
      if (pipe.IsOpen() == pipe.IsClosed()) std::this_thread::yield();
    }
  });
  unsigned long long wrong = 0;
  unsigned long long read = 0;
  std::thread writer([&] { WriteAll(pipe, 50000); });
  read = ReadAll(pipe, wrong);
  writer.join();
  end = true;
  changer.join();
  EXPECT_EQ(50000u, read);
  EXPECT_EQ(0u, wrong);
}

// --- Several of each

// How many times each value went in or came out.
using Counts = std::array<long long, 256>;

class Tally {
 public:
  void Add(const unsigned char* bytes, unsigned long long count) {
    for (unsigned long long index = 0; index < count; ++index) m_counts[bytes[index]].fetch_add(1);
  }
  Counts Get() const {
    Counts counts;
    for (std::size_t value = 0; value < counts.size(); ++value) counts[value] = m_counts[value].load();
    return counts;
  }

 private:
  std::array<std::atomic<long long>, 256> m_counts{};
};

unsigned long long Sent(const IOTimeout& error) {
  unsigned long long wanted = 0;
  unsigned long long sent = 0;
  EXPECT_EQ(2, std::sscanf(error.what(), "Timeout occurred during Write.  Info: %llu bytes, %llu bytes sent",
                           &wanted, &sent));
  return sent;
}

// Goes on behind a time-out, which comes early where another writer was quicker.
void WriteWhole(BinaryPipe& pipe, const unsigned char* bytes, unsigned long long count) {
  while (count > 0) {
    try {
      return pipe.Write(bytes, count);
    } catch (IOTimeout& error) {
      const unsigned long long sent = Sent(error);
      bytes += sent;
      count -= sent;
    }
  }
}

long long ReadSome(BinaryPipe& pipe, unsigned char* block, long long count) {
  while (true) {
    try {
      return pipe.Read(block, count);
    } catch (IOTimeout&) {
    }
  }
}

void WriteRandomly(BinaryPipe& pipe, Tally& written, unsigned seed, unsigned long long total) {
  std::mt19937 random(seed);
  std::array<unsigned char, 300> block;
  while (total > 0) {
    const unsigned long long count = std::min<unsigned long long>(1 + random() % block.size(), total);
    for (unsigned long long index = 0; index < count; ++index)
      block[index] = static_cast<unsigned char>(random());
    WriteWhole(pipe, block.data(), count);
    written.Add(block.data(), count);
    total -= count;
  }
}

void ReadRandomly(BinaryPipe& pipe, Tally& read, unsigned seed) {
  std::mt19937 random(seed);
  std::array<unsigned char, 300> block;
  long long got;
  while ((got = ReadSome(pipe, block.data(), 1 + static_cast<long long>(random() % block.size()))) != -1)
    read.Add(block.data(), static_cast<unsigned long long>(got));
}

void Share(unsigned long long size, const Elapse& timeout, unsigned long long total) {
  constexpr int writers = 3;
  constexpr int readers = 3;
  BinaryPipe pipe(size, timeout, timeout);
  Tally written;
  Tally read;
  std::atomic<int> writing{writers};
  Together(writers + readers, [&](int index) {
    const unsigned seed = static_cast<unsigned>(index);
    if (index >= writers) return ReadRandomly(pipe, read, seed);
    WriteRandomly(pipe, written, seed, total);
    if (--writing == 0) pipe.Close();
  });
  EXPECT_EQ(written.Get(), read.Get());
  EXPECT_EQ(0u, pipe.AvailableBytes());
}

TEST(BinaryPipeStress, SeveralReadersGetEveryByteOfSeveralWriters) {
  Share(16, IMutex::sINFINITE, iTIMES * 3000);
  Share(512, IMutex::sINFINITE, iTIMES * 20000);
}

TEST(BinaryPipeStress, SeveralSharersLoseNothingToTimeouts) { Share(64, Milliseconds(1), iTIMES * 5000); }

// --- Closing and opening

thread_local unsigned long long t_aborted = 0;

// What the calling thread is told of its own aborted writes.
class AbortedWrites : public AlertListener {
 public:
  AbortedWrites() { AlertManager::Instance()->AddAlertListener(*this); }
  ~AbortedWrites() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void WarningRaised(Warning& warning) override {
    EXPECT_EQ(1,
              std::sscanf(warning.GetData(AlertInfo::sMESSAGE).c_str(), "Pending write of %llu", &t_aborted));
  }
};

// One write, however it ends; gives how much of it went in.
unsigned long long WriteOnce(BinaryPipe& pipe, const std::vector<unsigned char>& block) {
  t_aborted = 0;
  try {
    pipe.Write(block.data(), block.size());
    return block.size() - t_aborted;
  } catch (IOTimeout& error) {
    return Sent(error);
  } catch (IOWriteToClosedPipe&) {
    std::this_thread::yield();
    return 0;
  }
}

// Reads until nothing comes.
unsigned long long Drain(BinaryPipe& pipe) {
  std::array<unsigned char, 50> block;
  unsigned long long read = 0;
  try {
    for (long long got; (got = pipe.Read(block.data(), block.size())) > 0;)
      read += static_cast<unsigned long long>(got);
  } catch (IOTimeout&) {
  }
  return read;
}

// The one who closes empties the pipe before it opens it again, so that no byte is thrown away.
unsigned long long CloseAndOpen(BinaryPipe& pipe, int times) {
  unsigned long long read = 0;
  for (int time = 0; time < times; ++time) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    pipe.Close();
    read += Drain(pipe);
    pipe.Open();
  }
  pipe.Close();
  return read + Drain(pipe);
}

TEST(BinaryPipeStress, ClosesAndOpensUnderItsSharersLoseNothing) {
  const AbortedWrites listener;
  BinaryPipe pipe(128, Elapse(5), Elapse(5));
  std::atomic<bool> end{false};
  std::atomic<unsigned long long> written{0};
  std::atomic<unsigned long long> read{0};
  Together(5, [&](int index) {
    const std::vector<unsigned char> block(static_cast<std::size_t>(100 + index * 150), 'x');
    if (index == 0) {
      read += CloseAndOpen(pipe, iTIMES * 10);
      end = true;
    }
    while (!end)
      if (index < 3)
        written += WriteOnce(pipe, block);
      else
        read += Drain(pipe);
  });
  read += Drain(pipe);
  EXPECT_EQ(written.load(), read.load());
  EXPECT_LT(0u, read.load());
}

}  // namespace
