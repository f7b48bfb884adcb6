// One byte after the other, each call locked, written to the null device and read from the zero device: what a
// buffer is for. The streams of the standard library take no lock.
#include "BenchSupport.h"

#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace {

using namespace Oxa::Core;

constexpr char sSINK[] = "/dev/null";
constexpr char sSOURCE[] = "/dev/zero";
constexpr int iBATCH = 1000;

class Device {
 public:
  Device(const char* name, int mode) : m_iFile(open(name, mode)) {}
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  ~Device() { close(m_iFile); }

  const int m_iFile;
};

class DeviceSink : public BinaryOutputStream {
 public:
  void Write(const void* buffer, unsigned long long count) override {
    benchmark::DoNotOptimize(write(m_device.m_iFile, buffer, count));
  }
  void Write(unsigned char byte) override { Write(&byte, 1); }
  void Flush() override {}

 private:
  Device m_device{sSINK, O_WRONLY};
};

class DeviceSource : public BinaryInputStream {
 public:
  long long Read(void* buffer, long long count) override {
    return read(m_device.m_iFile, buffer, static_cast<std::size_t>(count));
  }
  int Read() override {
    unsigned char byte = 0;
    return Read(&byte, 1) == 1 ? byte : -1;
  }
  unsigned long long AvailableBytes() override { return 0; }

 private:
  Device m_device{sSOURCE, O_RDONLY};
};

void CountBytes(benchmark::State& state, long long eachTime = 1) {
  state.SetBytesProcessed(static_cast<long long>(state.iterations()) * iBATCH * eachTime);
}

void OursWrite(benchmark::State& state) {
  DeviceSink sink;
  BufferedBinaryOutputStream buffered(sink, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
  BinaryOutputStream* stream = &buffered;
  benchmark::DoNotOptimize(stream);  // called as a host calls it, through the interface
  for (auto _ : state) {
    for (int i = 0; i != iBATCH; ++i) stream->Write(static_cast<unsigned char>(i));
  }
  CountBytes(state);
}
OXA_BENCH("Byte stream, byte by byte, locked", "Ours", OursWrite);

void OursRead(benchmark::State& state) {
  DeviceSource source;
  BufferedBinaryInputStream buffered(source, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
  BinaryInputStream* stream = &buffered;
  benchmark::DoNotOptimize(stream);
  for (auto _ : state) {
    for (int i = 0; i != iBATCH; ++i) benchmark::DoNotOptimize(stream->Read());
  }
  CountBytes(state);
}
OXA_BENCH("Byte stream read, byte by byte, locked", "Ours", OursRead);

// Blocks of 8 bytes, as typed values are.
void OursWriteBlocks(benchmark::State& state) {
  DeviceSink sink;
  BufferedBinaryOutputStream buffered(sink, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
  BinaryOutputStream* stream = &buffered;
  benchmark::DoNotOptimize(stream);
  for (auto _ : state) {
    for (long long i = 0; i != iBATCH; ++i) stream->Write(&i, sizeof i);
  }
  CountBytes(state, sizeof(long long));
}
OXA_BENCH("Byte stream, by 8 bytes, locked", "Ours", OursWriteBlocks);

void LockedPutc(benchmark::State& state) {
  std::FILE* const file = std::fopen(sSINK, "wb");
  for (auto _ : state) {
    for (int i = 0; i != iBATCH; ++i) std::putc(i, file);
  }
  std::fclose(file);
  CountBytes(state);
}
OXA_BENCH("Byte stream, byte by byte, locked", "locked putc", LockedPutc);

void LockedGetc(benchmark::State& state) {
  std::FILE* const file = std::fopen(sSOURCE, "rb");
  for (auto _ : state) {
    for (int i = 0; i != iBATCH; ++i) benchmark::DoNotOptimize(std::getc(file));
  }
  std::fclose(file);
  CountBytes(state);
}
OXA_BENCH("Byte stream read, byte by byte, locked", "locked getc", LockedGetc);

void LockedFwrite(benchmark::State& state) {
  std::FILE* const file = std::fopen(sSINK, "wb");
  for (auto _ : state) {
    for (long long i = 0; i != iBATCH; ++i) std::fwrite(&i, sizeof i, 1, file);
  }
  std::fclose(file);
  CountBytes(state, sizeof(long long));
}
OXA_BENCH("Byte stream, by 8 bytes, locked", "locked fwrite", LockedFwrite);

void OfstreamPut(benchmark::State& state) {
  std::ofstream file(sSINK, std::ios::binary);
  for (auto _ : state) {
    for (int i = 0; i != iBATCH; ++i) file.put(static_cast<char>(i));
  }
  CountBytes(state);
}
OXA_BENCH("Byte stream, byte by byte, locked", "ofstream.put", OfstreamPut);

void IfstreamGet(benchmark::State& state) {
  std::ifstream file(sSOURCE, std::ios::binary);
  for (auto _ : state) {
    for (int i = 0; i != iBATCH; ++i) benchmark::DoNotOptimize(file.get());
  }
  CountBytes(state);
}
OXA_BENCH("Byte stream read, byte by byte, locked", "ifstream.get", IfstreamGet);

}  // namespace
