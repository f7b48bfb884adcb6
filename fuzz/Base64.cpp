// Base64: the decoder gives what a plain reference gives, whatever the bytes; and what the encoder writes is decoded
// to what was written.
#include <Infrastructure/OxaCore/io/Base64Streams.h>

#include <string>
#include <vector>

#include "FuzzTarget.h"
#include "MemorySource.h"

namespace {

using namespace Oxa::Core;
using namespace OxaFuzz;

const std::string sALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// What a character counts as: its value, or nothing.
struct Sextet {
  bool counts;
  bool pad;
  unsigned value;
};

Sextet SextetOf(char c) {
  if (c == '=') return {true, true, 0};
  if (c == '\xFF') return {true, false, 0};
  const std::size_t at = sALPHABET.find(c);
  return at == std::string::npos ? Sextet{false, false, 0} : Sextet{true, false, static_cast<unsigned>(at)};
}

// The reads that decode `text`, to the end: each a byte or, for a group without a byte, -1.
std::vector<int> ReferenceReads(const std::string& text) {
  std::vector<int> reads;
  for (std::size_t at = 0; at < text.size() || reads.empty() || reads.back() != -1;) {
    unsigned bits = 0;
    int count = 0;
    int valid = 0;
    for (; at < text.size() && count < 4; ++at) {
      const Sextet sextet = SextetOf(text[at]);
      if (!sextet.counts) continue;
      ++count;
      valid += sextet.pad ? 0 : 1;
      bits = bits << 6 | sextet.value;
    }
    bits <<= 6 * (4 - count);
    if (valid == 0) reads.push_back(-1);
    if (valid > 0) reads.push_back(static_cast<int>(bits >> 16 & 255));
    if (valid > 2) reads.push_back(static_cast<int>(bits >> 8 & 255));
    if (valid > 3) reads.push_back(static_cast<int>(bits & 255));
  }
  return reads;
}

std::string Shown(const std::vector<int>& reads) {
  std::string text;
  for (const int read : reads) text += std::to_string(read) + ' ';
  return text;
}

std::vector<int> SingleReads(const std::string& text) {
  MemorySource source(text, 1);
  Base64DecoderStream decoder(source);
  std::vector<int> reads;
  do reads.push_back(decoder.Read());
  while (!source.IsAtEnd() || reads.back() != -1);
  return reads;
}

// The bytes up to the first -1, by blocks of `block`.
std::string BlockReads(const std::string& text, std::size_t block) {
  MemorySource source(text, block);
  Base64DecoderStream decoder(source);
  std::string bytes;
  std::string room(block, '\0');
  for (;;) {
    const long long got = decoder.Read(room.data(), static_cast<long long>(block));
    if (got <= 0) return bytes;
    bytes.append(room, 0, static_cast<std::size_t>(got));
    if (got < static_cast<long long>(block)) return bytes;
  }
}

std::string BytesOf(const std::vector<int>& reads) {
  std::string bytes;
  for (const int read : reads) {
    if (read < 0) break;
    bytes += static_cast<char>(read);
  }
  return bytes;
}

void CheckDecoder(const std::string& text) {
  const std::vector<int> expected = ReferenceReads(text);
  CheckSame(Shown(expected), Shown(SingleReads(text)), "the decoder reads what the reference reads");
  for (const std::size_t block : {std::size_t(1), std::size_t(2 + text.size() % 13), text.size() + 4})
    CheckSame(BytesOf(expected), BlockReads(text, block), "a block holds what single reads give");
}

class MemorySink : public BinaryOutputStream {
 public:
  using BinaryOutputStream::Write;
  void Write(unsigned char byte) override { bytes += static_cast<char>(byte); }
  void Flush() override {}

  std::string bytes;
};

std::string Encoded(const std::string& bytes, bool newlines, int lineLength) {
  MemorySink sink;
  Base64EncoderStream encoder(sink, newlines, lineLength, "\r\n");
  encoder.Write(bytes.data(), bytes.size());
  encoder.Flush();
  return sink.bytes;
}

void CheckEncoder(const std::string& bytes) {
  for (const int lineLength : {0, 4}) {
    const std::string text = Encoded(bytes, lineLength > 0, lineLength);
    const std::size_t groups = (bytes.size() + 2) / 3;
    Check(text.size() == groups * (lineLength > 0 ? 6 : 4), "a group has four characters, and its separator",
          text);
    CheckSame(bytes, BlockReads(text, text.size() + 1), "what was encoded is decoded to what it was");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  const std::string input(reinterpret_cast<const char*>(data), size);
  CheckDecoder(input);
  CheckEncoder(input);
  return 0;
}
