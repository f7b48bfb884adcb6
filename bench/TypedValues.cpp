// Typed values written to and read from memory: 1000 samples of a number, a time, a value, a range, a state and a
// unit. Every library gets the same samples, and what it reads back is compared; its own format counts as bytes
// for none: the bytes are those of the values. "Buffered" has our locked buffer beneath, as one has on a file;
// the peers' streams have an unlocked one in every case.
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "MemoryStreams.h"

#ifdef OXA_PEER_POCO
#include <Poco/BinaryReader.h>
#include <Poco/BinaryWriter.h>
#endif
#ifdef OXA_PEER_BOOSTSERIALIZATION
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#endif

namespace {

using Oxa::Core::BufferedBinaryInputStream;
using Oxa::Core::BufferedBinaryOutputStream;
using Oxa::Core::DataInputStream;
using Oxa::Core::DataOutputStream;
using OxaBench::MemorySink;
using OxaBench::MemorySource;

struct Sample {
  unsigned number = 0;
  std::int64_t time = 0;
  double value = 0;
  float range = 0;
  std::int16_t channel = 0;
  bool valid = false;
  std::string unit;

  bool operator==(const Sample& other) const {
    return number == other.number && time == other.time && value == other.value && range == other.range &&
           channel == other.channel && valid == other.valid && unit == other.unit;
  }
};
using Samples = std::vector<Sample>;

constexpr std::size_t uSAMPLES = 1000;
constexpr std::size_t uSAMPLE_BYTES = 4 + 8 + 8 + 4 + 2 + 1 + 4 + 2;
constexpr std::size_t uROOM = uSAMPLES * 100;

Samples Given() {
  Samples samples(uSAMPLES);
  for (unsigned number = 0; number < uSAMPLES; ++number)
    samples[number] = {
        number, 1000000 + number, number * 0.25, 10, static_cast<std::int16_t>(number % 4), number % 7 != 0,
        "mV"};
  return samples;
}

/// One text of the operators for every library whose streams have them.
template <class Out>
void WriteSamples(Out& out, const Samples& samples) {
  for (const Sample& sample : samples)
    out << sample.number << sample.time << sample.value << sample.range << sample.channel << sample.valid
        << sample.unit;
}

template <class In>
void ReadSamples(In& in, Samples& samples) {
  for (Sample& sample : samples)
    in >> sample.number >> sample.time >> sample.value >> sample.range >> sample.channel >> sample.valid >>
        sample.unit;
}

// long is 4 bytes on our streams; a time takes 8.
struct OursOut {
  DataOutputStream& m_stream;
  template <class T>
  OursOut& operator<<(const T& value) {
    m_stream << value;
    return *this;
  }
  OursOut& operator<<(const std::int64_t& value) {
    m_stream << static_cast<long long>(value);
    return *this;
  }
};

struct OursIn {
  DataInputStream& m_stream;
  template <class T>
  OursIn& operator>>(T& value) {
    m_stream >> value;
    return *this;
  }
  OursIn& operator>>(std::int64_t& value) {
    long long wide = 0;
    m_stream >> wide;
    value = wide;
    return *this;
  }
};

void Finish(benchmark::State& state, bool right) {
  if (!right) state.SkipWithError("wrong values");
  state.SetBytesProcessed(
      static_cast<std::int64_t>(uSAMPLES * uSAMPLE_BYTES * static_cast<std::size_t>(state.iterations())));
}

std::string OursBytes() {
  MemorySink sink(uROOM);
  DataOutputStream stream(sink);
  OursOut out{stream};
  WriteSamples(out, Given());
  return sink.Content();
}

void OursWritten(benchmark::State& state) {
  const Samples samples = Given();
  MemorySink sink(uROOM);
  for (auto _ : state) {
    sink.Rewind();
    DataOutputStream stream(sink);
    OursOut out{stream};
    WriteSamples(out, samples);
    stream.Flush();
  }
  Finish(state, sink.Content().size() == uSAMPLES * uSAMPLE_BYTES && sink.Content() == OursBytes());
}

void OursWrittenBuffered(benchmark::State& state) {
  const Samples samples = Given();
  MemorySink sink(uROOM);
  for (auto _ : state) {
    sink.Rewind();
    BufferedBinaryOutputStream buffered(sink, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
    DataOutputStream stream(buffered);
    OursOut out{stream};
    WriteSamples(out, samples);
    stream.Flush();
  }
  Finish(state, sink.Content() == OursBytes());
}

void OursRead(benchmark::State& state) {
  MemorySource source(OursBytes());
  Samples samples(uSAMPLES);
  for (auto _ : state) {
    source.Rewind();
    DataInputStream stream(source);
    OursIn in{stream};
    ReadSamples(in, samples);
  }
  Finish(state, samples == Given());
}

void OursReadBuffered(benchmark::State& state) {
  MemorySource source(OursBytes());
  Samples samples(uSAMPLES);
  for (auto _ : state) {
    source.Rewind();
    BufferedBinaryInputStream buffered(source, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
    DataInputStream stream(buffered);
    OursIn in{stream};
    ReadSamples(in, samples);
  }
  Finish(state, samples == Given());
}

OXA_BENCH("Typed values written", "Ours", OursWritten);
OXA_BENCH("Typed values written, buffered", "Ours", OursWrittenBuffered);
OXA_BENCH("Typed values read", "Ours", OursRead);
OXA_BENCH("Typed values read, buffered", "Ours", OursReadBuffered);

#ifdef OXA_PEER_POCO

void PocoWritten(benchmark::State& state) {
  const Samples samples = Given();
  std::ostringstream sink;
  for (auto _ : state) {
    sink.seekp(0);
    Poco::BinaryWriter out(sink);
    WriteSamples(out, samples);
    out.flush();
  }
  Finish(state, sink.str().size() >= uSAMPLES * 30);
}

void PocoRead(benchmark::State& state) {
  std::stringstream source;
  Poco::BinaryWriter out(source);
  WriteSamples(out, Given());
  out.flush();
  Samples samples(uSAMPLES);
  for (auto _ : state) {
    source.seekg(0);
    Poco::BinaryReader in(source);
    ReadSamples(in, samples);
  }
  Finish(state, samples == Given());
}

OXA_BENCH("Typed values written", "Poco", PocoWritten);
OXA_BENCH("Typed values written, buffered", "Poco", PocoWritten);
OXA_BENCH("Typed values read", "Poco", PocoRead);
OXA_BENCH("Typed values read, buffered", "Poco", PocoRead);

#endif

#ifdef OXA_PEER_BOOSTSERIALIZATION

void BoostWritten(benchmark::State& state) {
  const Samples samples = Given();
  std::ostringstream sink;
  for (auto _ : state) {
    sink.seekp(0);
    boost::archive::binary_oarchive out(sink, boost::archive::no_header);
    WriteSamples(out, samples);
  }
  Finish(state, sink.str().size() >= uSAMPLES * 30);
}

void BoostRead(benchmark::State& state) {
  std::stringstream source;
  {
    boost::archive::binary_oarchive out(source, boost::archive::no_header);
    WriteSamples(out, Given());
  }
  Samples samples(uSAMPLES);
  for (auto _ : state) {
    source.seekg(0);
    boost::archive::binary_iarchive in(source, boost::archive::no_header);
    ReadSamples(in, samples);
  }
  Finish(state, samples == Given());
}

OXA_BENCH("Typed values written", "boost", BoostWritten);
OXA_BENCH("Typed values written, buffered", "boost", BoostWritten);
OXA_BENCH("Typed values read", "boost", BoostRead);
OXA_BENCH("Typed values read, buffered", "boost", BoostRead);

#endif

}  // namespace
