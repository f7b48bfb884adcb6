// The I/O tests that need no file.
#include <Infrastructure/OxaCore/io/Base64Streams.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>
#include <Infrastructure/OxaCore/io/StreamAdapters.h>

#include <atomic>
#include <sstream>
#include <thread>

#include "AutoTest/Module/Patience.h"
#include "AutoTest/Module/RaisedMessage.h"
#include "AutoTest/Module/StreamValues.h"
#include "AutoTest/Module/TEST_io.h"

namespace Oxa::Core {

namespace {

constexpr long long iPIPE_SIZE = 1024;
constexpr char sCLOSED_PIPE[] = "Attempted to write to a closed BinaryPipe";

Elapse Moment() { return Elapse(20, Elapse::MilliSeconds); }

std::string Timeout(const std::string& operation, const std::string& information) {
  return "Timeout occurred during " + operation + ".  Info: " + information;
}

void CheckEmptyPipe() {
  BinaryPipe pipe(iPIPE_SIZE, Elapse(0), Elapse(0));
  char buffer[10];
  OXA_TEST_ASSERT(pipe.Read() == -2 && pipe.Read(buffer, 10) == -2);
  pipe.Write('x');
  OXA_TEST_ASSERT(pipe.Read(buffer, 10) == 1 && buffer[0] == 'x');
  pipe.SetReadTimeout(Moment());
  const Span leastWait(Elapse(10, Elapse::MilliSeconds));
  const Span patience(Patience());
  OXA_TEST_ASSERT(MessageOf<IOTimeout>([&] { pipe.Read(); }) == Timeout("Read", "1 byte"));
  OXA_TEST_ASSERT(leastWait.IsOver() && !patience.IsOver());
  OXA_TEST_ASSERT(MessageOf<IOTimeout>([&] { pipe.Read(buffer, 10); }) == Timeout("Read", "10 bytes"));
  OXA_TEST_ASSERT(MessageOf<IOTimeout>([&] { pipe.Skip(3); }) == Timeout("Skip", "3 bytes"));
}

void CheckFullPipe() {
  const std::string bytes(3000, 'x');
  BinaryPipe pipe(iPIPE_SIZE, Elapse(0), Elapse(0));
  OXA_TEST_ASSERT(MessageOf<IOTimeout>([&] { pipe.Write(bytes.data(), bytes.size()); }) ==
                  Timeout("Write", "3000 bytes, 1024 bytes sent, non-blocking mode"));
  OXA_TEST_ASSERT(pipe.AvailableBytes() == iPIPE_SIZE);
  OXA_TEST_ASSERT(MessageOf<IOTimeout>([&] { pipe.Write('x'); }) ==
                  Timeout("Write", "1 byte, non-blocking write mode"));
  BinaryPipe usual(0, Elapse(0), Elapse(0));
  usual.Write(bytes.data(), BinaryPipe::DEFAULT_BUFFER_SIZE);
  OXA_TEST_ASSERT(MessageOf<IOTimeout>([&] { usual.Write('x'); }) != "nothing raised");
}

// Across the end of the ring, again and again.
void CheckRing() {
  BinaryPipe pipe(10, Elapse(0), Elapse(0));
  const std::string text = "seven b";
  for (int round = 0; round < 10; ++round) {
    char buffer[7];
    pipe.Write(text.data(), text.size());
    OXA_TEST_ASSERT(pipe.Read(buffer, 7) == 7 && std::string(buffer, 7) == text);
  }
}

void CheckClosedPipe() {
  BinaryPipe pipe(iPIPE_SIZE, Elapse(0), Elapse(0));
  pipe.Write("ab", 2);
  pipe.Close();
  OXA_TEST_ASSERT(pipe.IsClosed() && !pipe.IsOpen());
  OXA_TEST_ASSERT(MessageOf<IOWriteToClosedPipe>([&] { pipe.Write('x'); }) == sCLOSED_PIPE);
  OXA_TEST_ASSERT(pipe.Read() == 'a' && pipe.Read() == 'b' && pipe.Read() == -1);
  OXA_TEST_ASSERT(!pipe.Skip(1));
  OXA_TEST_ASSERT(pipe.Open() && pipe.IsOpen() && pipe.AvailableBytes() == 0);
  OXA_TEST_ASSERT(pipe.Read() == -2);
}

// A writer that has to wait, on a thread of its own.
class WaitingWriter {
 public:
  explicit WaitingWriter(BinaryPipe& pipe)
      : m_pipe(pipe), m_thread([this] { m_bReturned = Write(std::string(iPIPE_SIZE + 100, 'w')); }) {}
  WaitingWriter(const WaitingWriter&) = delete;
  WaitingWriter& operator=(const WaitingWriter&) = delete;
  ~WaitingWriter() { Join(); }

  /// Whether it came back without an exception.
  bool Join() {
    if (m_thread.joinable()) m_thread.join();
    return m_bReturned;
  }

 private:
  bool Write(const std::string& bytes) {
    try {
      m_pipe.Write(bytes.data(), bytes.size());
      return true;
    } catch (Error&) {
      return false;
    }
  }

  BinaryPipe& m_pipe;
  std::atomic<bool> m_bReturned{false};
  std::thread m_thread;
};

void CheckWaitingWriter() {
  BinaryPipe pipe(iPIPE_SIZE, Patience(), Patience());
  WaitingWriter writer(pipe);
  OXA_TEST_ASSERT(Becomes([&] { return pipe.AvailableBytes() == iPIPE_SIZE; }));
  const Span patience(Elapse(9, Elapse::Seconds));  // less than it gives writers that don't come out
  pipe.Close();
  OXA_TEST_ASSERT(!patience.IsOver());
  OXA_TEST_ASSERT(writer.Join());
  char buffer[iPIPE_SIZE];
  OXA_TEST_ASSERT(pipe.Read(buffer, iPIPE_SIZE) == iPIPE_SIZE && buffer[iPIPE_SIZE - 1] == 'w');
  OXA_TEST_ASSERT(pipe.Read() == -1);
}

void CheckThreadsAtAPipe() {
  BinaryPipe pipe(iPIPE_SIZE, Patience(), Patience());
  WaitingWriter writer(pipe);
  char buffer[iPIPE_SIZE + 100];
  OXA_TEST_ASSERT(pipe.Read(buffer, sizeof buffer) == sizeof buffer);
  OXA_TEST_ASSERT(std::string(buffer, sizeof buffer) == std::string(sizeof buffer, 'w'));
  OXA_TEST_ASSERT(writer.Join());
}

// What the buffer makes of a source that has nothing now.
void CheckBufferOnAnEmptyPipe() {
  BinaryPipe pipe(iPIPE_SIZE, Elapse(0), Elapse(0));
  BufferedBinaryInputStream buffered(pipe, 100);
  char buffer[10];
  OXA_TEST_ASSERT(buffered.Read() == -1);
  OXA_TEST_ASSERT(buffered.Read(buffer, 10) == -2);
}

using Strings = BinaryStreamAdapter<std::stringstream>;

std::string Encode(const std::string& bytes, bool newlines = false, int lineLength = 0) {
  std::stringstream text;
  Strings sink(text);
  Base64EncoderStream encoder(sink, newlines, lineLength, "\r\n");
  encoder.Write(bytes.data(), bytes.size());
  encoder.Flush();
  return text.str();
}

std::string Decode(const std::string& encoded) {
  std::stringstream text(encoded);
  Strings source(text);
  Base64DecoderStream decoder(source);
  std::string bytes;
  for (int byte; (byte = decoder.Read()) >= 0;) bytes += static_cast<char>(byte);
  OXA_TEST_ASSERT(decoder.Read() == -1);
  return bytes;
}

void CheckEncoder() {
  OXA_TEST_ASSERT(Encode("Man") == "TWFu");
  OXA_TEST_ASSERT(Encode("Ma") == "TWE=");
  OXA_TEST_ASSERT(Encode("M") == "TQ==");
  OXA_TEST_ASSERT(Encode("").empty());
  OXA_TEST_ASSERT(Encode("ManMan", true, 76) == "TWFu\r\nTWFu\r\n");
  OXA_TEST_ASSERT(Encode("ManMan", true, 3) == "TWFuTWFu");
}

void CheckDecoder() {
  OXA_TEST_ASSERT(Decode("TWFu") == "Man");
  OXA_TEST_ASSERT(Decode("TWE=") == "Ma" && Decode("TWE") == "Ma");
  OXA_TEST_ASSERT(Decode("TQ==") == "M" && Decode("TQ") == "M");
  OXA_TEST_ASSERT(Decode("TW\r\nFu\r\n") == "Man");
  OXA_TEST_ASSERT(Decode("\xFFWFu") == Decode("AWFu"));
}

// Its bits beside the pads come from the group before.
void CheckDestroyedEncoder() {
  std::stringstream text;
  Strings sink(text);
  {
    Base64EncoderStream encoder(sink, false, 0, "");
    encoder.Write("ManM", 4);
  }
  OXA_TEST_ASSERT(text.str() == "TWFuTW==");
}

// A sink that counts what reaches it.
class CountingSink : public BinaryOutputStream {
 public:
  using BinaryOutputStream::Write;
  void Write(unsigned char) override { ++m_iBytes; }
  void Flush() override { ++m_iFlushes; }

  int m_iBytes = 0;
  int m_iFlushes = 0;
};

void CheckIdleFlush() {
  CountingSink sink;
  Base64EncoderStream encoder(sink, false, 0, "");
  encoder.Flush();
  encoder.Write("Man", 3);
  encoder.Flush();
  OXA_TEST_ASSERT(sink.m_iFlushes == 0 && sink.m_iBytes == 4);
  encoder.Write("M", 1);
  encoder.Flush();
  OXA_TEST_ASSERT(sink.m_iFlushes == 1 && sink.m_iBytes == 8);
}

std::string AllBytes() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

template <class Iterator>
IteratorBinaryInputAdapter<Iterator> Adapt(Iterator begin, Iterator end) {
  return IteratorBinaryInputAdapter<Iterator>(begin, end);
}

void CheckIterators() {
  const std::string text = "some text";
  auto chars = Adapt(text.begin(), text.end());
  char buffer[100];
  OXA_TEST_ASSERT(chars.AvailableBytes() == text.size());
  OXA_TEST_ASSERT(chars.Read(buffer, 100) == 9 && std::string(buffer, 9) == text);
  OXA_TEST_ASSERT(chars.Read() == -1);
  const int numbers[] = {0x04030201, 0x08070605};
  auto bytes = Adapt(numbers, numbers + 2);
  for (int byte = 1; byte <= 8; ++byte) OXA_TEST_ASSERT(bytes.Read() == byte);
  OXA_TEST_ASSERT(bytes.Read() == -1);
}

void CheckAdapterAtTheEnd() {
  std::stringstream text("ab");
  Strings stream(text);
  char buffer[10];
  OXA_TEST_ASSERT(stream.Read(buffer, 2) == 2);
  OXA_TEST_ASSERT(stream.Read(buffer, 10) == 0);
  OXA_TEST_ASSERT(stream.Read(buffer, 10) == -1);
}

void CheckSourceAndSink() {
  BinaryPipe pipe(iPIPE_SIZE, Elapse(0), Elapse(0));
  OXA_TEST_ASSERT(BinaryOutputStream::Sink<char>(pipe).write("text", 4) == 4);
  pipe.Close();
  BinaryInputStream::Source<char> source(pipe);
  char buffer[10];
  OXA_TEST_ASSERT(source.read(buffer, 10) == 4 && std::string(buffer, 4) == "text");
  OXA_TEST_ASSERT(source.read(buffer, 10) == -1);
}

}  // namespace

void TEST_io::Pipe(std::string&) {
  CheckEmptyPipe();
  CheckFullPipe();
  CheckRing();
  CheckClosedPipe();
  CheckWaitingWriter();
  CheckThreadsAtAPipe();
  CheckBufferOnAnEmptyPipe();
}

void TEST_io::Base64Streams(std::string&) {
  CheckEncoder();
  CheckDecoder();
  CheckDestroyedEncoder();
  CheckIdleFlush();
  OXA_TEST_ASSERT(Decode(Encode(AllBytes())) == AllBytes());
  OXA_TEST_ASSERT(Decode(Encode(AllBytes(), true, 76)) == AllBytes());
}

void TEST_io::StreamAdapter(std::string&) {
  std::stringstream text;
  Strings stream(text);
  DataOutputStream out(stream);
  WriteStreamValues(out);
  DataInputStream in(stream);
  CheckStreamValues(in);
  CheckAdapterAtTheEnd();
  CheckIterators();
  CheckSourceAndSink();
}

}  // namespace Oxa::Core
