// Base64 of 64 KiB through byte streams: memory is read, and written in blocks of 1 KiB. Poco's are streams as
// ours are. GLib and OpenSSL have no streams: they get the same blocks, and their figures are those of a loop over
// an array. Each program checks what it gave once.
#include <Infrastructure/OxaCore/io/Base64Streams.h>
#if __has_include(<Infrastructure/OxaCore/io/BufferedStreams.h>)
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#define OXA_BENCH_BUFFERED
#endif

#include <string>
#include <vector>

#include "BenchSupport.h"
#include "MemoryStreams.h"

#ifdef OXA_PEER_POCO
#include <Poco/Base64Decoder.h>
#include <Poco/Base64Encoder.h>

#include <sstream>
#endif
#ifdef OXA_PEER_GLIB
#include <glib.h>
#endif
#ifdef OXA_PEER_OPENSSL
#include <openssl/evp.h>
#endif

namespace {

using Oxa::Core::Base64DecoderStream;
using Oxa::Core::Base64EncoderStream;
using OxaBench::MemorySink;
using OxaBench::MemorySource;

constexpr std::size_t uBLOCK = 1024;
constexpr std::size_t uSIZE = 64 * uBLOCK;
constexpr std::size_t uROOM = uSIZE * 3 / 2;

const std::string& Plain() {
  static const std::string s_plain = [] {
    std::string bytes(uSIZE, '\0');
    unsigned state = 1;
    for (char& byte : bytes) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
  }();
  return s_plain;
}

const std::string& Encoded() {
  static const std::string s_encoded = [] {
    MemorySink sink(uROOM);
    Base64EncoderStream encoder(sink, false, 0, "");
    encoder.Write(Plain().data(), uSIZE);
    encoder.Close();
    return sink.Content();
  }();
  return s_encoded;
}

/// Bytes are counted as plain ones, both ways.
void Finish(benchmark::State& state, const std::string& result, const std::string& expected) {
  if (result != expected) state.SkipWithError("wrong bytes");
  state.SetBytesProcessed(static_cast<std::int64_t>(uSIZE * static_cast<std::size_t>(state.iterations())));
}

template <class Write>
void InBlocks(const std::string& bytes, const Write& write) {
  for (std::size_t at = 0; at < bytes.size(); at += uBLOCK)
    write(bytes.data() + at, std::min(uBLOCK, bytes.size() - at));
}

void OursEncode(benchmark::State& state) {
  MemorySink sink(uROOM);
  for (auto _ : state) {
    sink.Rewind();
    Base64EncoderStream encoder(sink, false, 0, "");
    InBlocks(Plain(), [&encoder](const char* bytes, std::size_t size) { encoder.Write(bytes, size); });
    encoder.Close();
  }
  Finish(state, sink.Content(), Encoded());
}

std::size_t Decode(Oxa::Core::BinaryInputStream& source, std::string& result) {
  Base64DecoderStream decoder(source);
  std::size_t at = 0;
  for (long long got = decoder.Read(&result[at], uBLOCK); got > 0; got = decoder.Read(&result[at], uBLOCK))
    at += static_cast<std::size_t>(got);
  return at;
}

void OursDecode(benchmark::State& state) {
  MemorySource source(Encoded());
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    source.Rewind();
    size = Decode(source, result);
  }
  Finish(state, result.substr(0, size), Plain());
}

void OursEncodeBytes(benchmark::State& state) {
  MemorySink sink(uROOM);
  for (auto _ : state) {
    sink.Rewind();
    Base64EncoderStream encoder(sink, false, 0, "");
    for (const char byte : Plain()) encoder.Write(static_cast<unsigned char>(byte));
    encoder.Close();
  }
  Finish(state, sink.Content(), Encoded());
}

void OursDecodeBytes(benchmark::State& state) {
  MemorySource source(Encoded());
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    source.Rewind();
    Base64DecoderStream decoder(source);
    size = 0;
    for (int byte = decoder.Read(); byte >= 0; byte = decoder.Read())
      result[size++] = static_cast<char>(byte);
  }
  Finish(state, result.substr(0, size), Plain());
}

OXA_BENCH("Base64 encoded byte by byte", "Ours", OursEncodeBytes);
OXA_BENCH("Base64 decoded byte by byte", "Ours", OursDecodeBytes);
OXA_BENCH("Base64 encoded", "Ours", OursEncode);
OXA_BENCH("Base64 decoded", "Ours", OursDecode);

#ifdef OXA_BENCH_BUFFERED

using Oxa::Core::BufferedBinaryInputStream;
using Oxa::Core::BufferedBinaryOutputStream;

void OursEncodeBuffered(benchmark::State& state) {
  MemorySink sink(uROOM);
  BufferedBinaryOutputStream buffered(sink, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
  for (auto _ : state) {
    sink.Rewind();
    Base64EncoderStream encoder(buffered, false, 0, "");
    InBlocks(Plain(), [&encoder](const char* bytes, std::size_t size) { encoder.Write(bytes, size); });
    encoder.Close();
  }
  Finish(state, sink.Content(), Encoded());
}

void OursDecodeBuffered(benchmark::State& state) {
  MemorySource source(Encoded());
  BufferedBinaryInputStream buffered(source, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    source.Rewind();
    size = Decode(buffered, result);
  }
  Finish(state, result.substr(0, size), Plain());
}

OXA_BENCH("Base64 encoded to a buffered stream", "Ours", OursEncodeBuffered);
OXA_BENCH("Base64 decoded from a buffered stream", "Ours", OursDecodeBuffered);

#endif

#ifdef OXA_PEER_POCO

void PocoEncode(benchmark::State& state) {
  std::ostringstream sink;
  for (auto _ : state) {
    sink.seekp(0);
    Poco::Base64Encoder encoder(sink);
    encoder.rdbuf()->setLineLength(0);
    InBlocks(Plain(), [&encoder](const char* bytes, std::size_t size) {
      encoder.write(bytes, static_cast<std::streamsize>(size));
    });
    encoder.close();
  }
  Finish(state, sink.str(), Encoded());
}

void PocoDecode(benchmark::State& state) {
  std::istringstream source(Encoded());
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    source.clear();
    source.seekg(0);
    Poco::Base64Decoder decoder(source);
    for (size = 0; decoder; size += static_cast<std::size_t>(decoder.gcount()))
      decoder.read(&result[size], uBLOCK);
  }
  Finish(state, result.substr(0, size), Plain());
}

void PocoEncodeBytes(benchmark::State& state) {
  std::ostringstream sink;
  for (auto _ : state) {
    sink.seekp(0);
    Poco::Base64Encoder encoder(sink);
    encoder.rdbuf()->setLineLength(0);
    for (const char byte : Plain()) encoder.put(byte);
    encoder.close();
  }
  Finish(state, sink.str(), Encoded());
}

void PocoDecodeBytes(benchmark::State& state) {
  std::istringstream source(Encoded());
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    source.clear();
    source.seekg(0);
    Poco::Base64Decoder decoder(source);
    size = 0;
    for (int byte = decoder.get(); byte >= 0; byte = decoder.get()) result[size++] = static_cast<char>(byte);
  }
  Finish(state, result.substr(0, size), Plain());
}

OXA_BENCH("Base64 encoded byte by byte", "Poco", PocoEncodeBytes);
OXA_BENCH("Base64 decoded byte by byte", "Poco", PocoDecodeBytes);
OXA_BENCH("Base64 encoded", "Poco", PocoEncode);
OXA_BENCH("Base64 decoded", "Poco", PocoDecode);
OXA_BENCH("Base64 encoded to a buffered stream", "Poco", PocoEncode);
OXA_BENCH("Base64 decoded from a buffered stream", "Poco", PocoDecode);

#endif

#ifdef OXA_PEER_GLIB

void GlibEncode(benchmark::State& state) {
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    gint groups = 0;
    gint pending = 0;
    size = 0;
    InBlocks(Plain(), [&](const char* bytes, std::size_t count) {
      size += g_base64_encode_step(reinterpret_cast<const guchar*>(bytes), count, FALSE, &result[size],
                                   &groups, &pending);
    });
    size += g_base64_encode_close(FALSE, &result[size], &groups, &pending);
  }
  Finish(state, result.substr(0, size), Encoded());
}

void GlibDecode(benchmark::State& state) {
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    gint groups = 0;
    guint pending = 0;
    size = 0;
    InBlocks(Encoded(), [&](const char* characters, std::size_t count) {
      size += g_base64_decode_step(characters, count, reinterpret_cast<guchar*>(&result[size]), &groups,
                                   &pending);
    });
  }
  Finish(state, result.substr(0, size), Plain());
}

OXA_BENCH("Base64 encoded", "GLib (no stream)", GlibEncode);
OXA_BENCH("Base64 decoded", "GLib (no stream)", GlibDecode);

#endif

#ifdef OXA_PEER_OPENSSL

std::string WithoutLineEnds(const std::string& text) {
  std::string result;
  for (const char character : text)
    if (character != '\n') result += character;
  return result;
}

unsigned char* Bytes(std::string& text, std::size_t at) {
  return reinterpret_cast<unsigned char*>(text.data()) + at;
}

/// It can't but insert line ends.
void EvpEncode(benchmark::State& state) {
  EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    EVP_EncodeInit(context);
    size = 0;
    int got = 0;
    InBlocks(Plain(), [&](const char* bytes, std::size_t count) {
      EVP_EncodeUpdate(context, Bytes(result, size), &got, reinterpret_cast<const unsigned char*>(bytes),
                       static_cast<int>(count));
      size += static_cast<std::size_t>(got);
    });
    EVP_EncodeFinal(context, Bytes(result, size), &got);
    size += static_cast<std::size_t>(got);
  }
  EVP_ENCODE_CTX_free(context);
  Finish(state, WithoutLineEnds(result.substr(0, size)), Encoded());
}

void EvpDecode(benchmark::State& state) {
  EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
  std::string result(uROOM, '\0');
  std::size_t size = 0;
  for (auto _ : state) {
    EVP_DecodeInit(context);
    size = 0;
    int got = 0;
    InBlocks(Encoded(), [&](const char* characters, std::size_t count) {
      EVP_DecodeUpdate(context, Bytes(result, size), &got, reinterpret_cast<const unsigned char*>(characters),
                       static_cast<int>(count));
      size += static_cast<std::size_t>(got);
    });
    EVP_DecodeFinal(context, Bytes(result, size), &got);
    size += static_cast<std::size_t>(got);
  }
  EVP_ENCODE_CTX_free(context);
  Finish(state, result.substr(0, size), Plain());
}

OXA_BENCH("Base64 encoded", "OpenSSL EVP (no stream)", EvpEncode);
OXA_BENCH("Base64 decoded", "OpenSSL EVP (no stream)", EvpDecode);

#endif

}  // namespace
