// Sources and sinks for the tests of streams: they work on memory, count what is called, and do as they are told.
// None of them is for several threads at once.
#ifndef OXACORE_TESTS_IO_STREAMS_H
#define OXACORE_TESTS_IO_STREAMS_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

namespace IoTests {

using namespace Oxa::Core;

/// What was called, in order: "read", "read 10", "skip 3", "write", "write 4", "flush", "close" and the like.
using Calls = std::vector<std::string>;

/// For the scripts below: raises the XIOSystemCallFailure("test", "test").
constexpr int iRAISE = -100;
/// What that one says.
const char* const sRAISED = "System call to test failed, unable to complete test";

inline void RaiseTestError() { OXA_RAISE_ERROR("Test.Streams", XIOSystemCallFailure("test", "test")); }

/// Delivers `m_bytes`, and then -1. It reads single bytes only; blocks and skips are those of the base class.
class ByteSource : public BinaryInputStream {
 public:
  using BinaryInputStream::Read;

  explicit ByteSource(const std::string& bytes = std::string()) : m_bytes(bytes) {}

  int Read() override {
    m_calls.push_back("read");
    if (const int turn = NextTurn(); turn <= 0) return turn;
    return m_uAt == m_bytes.size() ? -1 : static_cast<unsigned char>(m_bytes[m_uAt++]);
  }
  unsigned long long AvailableBytes() override { return m_bytes.size() - m_uAt; }
  void Close() override { m_calls.push_back("close"); }

  std::string m_bytes;
  std::size_t m_uAt = 0;
  /// The answers to come: iRAISE, a result of 0 or below, or the most bytes that a block may get. Without any, all
  /// that is wanted and there.
  std::deque<int> m_script;
  Calls m_calls;

 protected:
  int NextTurn() {
    if (m_script.empty()) return 0x7FFFFFFF;
    const int turn = m_script.front();
    m_script.pop_front();
    if (turn == iRAISE) RaiseTestError();
    return turn;
  }
};

/// The same, with blocks and skips of its own.
class MemorySource : public ByteSource {
 public:
  using ByteSource::ByteSource;
  using ByteSource::Read;

  long long Read(void* buffer, long long count) override {
    m_calls.push_back("read " + std::to_string(count));
    const int turn = NextTurn();
    if (turn <= 0 || count < 1) return std::min(turn, 0);
    if (m_uAt == m_bytes.size()) return -1;
    const auto most = static_cast<std::size_t>(std::min<long long>(count, turn));
    const std::size_t given = std::min(most, m_bytes.size() - m_uAt);
    std::memcpy(buffer, m_bytes.data() + m_uAt, given);
    m_uAt += given;
    return static_cast<long long>(given);
  }

  /// A script's answer of 0 or below is false. One that can't be skipped as a whole moves to the end.
  bool Skip(unsigned long long count) override {
    m_calls.push_back("skip " + std::to_string(count));
    if (NextTurn() <= 0) return false;
    const bool enough = count <= m_bytes.size() - m_uAt;
    m_uAt = enough ? m_uAt + count : m_bytes.size();
    return enough;
  }
};

/// Collects what is written. It writes single bytes only; blocks are those of the base class.
class ByteSink : public BinaryOutputStream {
 public:
  using BinaryOutputStream::Write;

  void Write(unsigned char byte) override {
    m_calls.push_back("write");
    Append(&byte, 1);
  }
  void Flush() override {
    m_calls.push_back("flush");
    if (m_bFailFlush) RaiseTestError();
  }
  void Close() override { m_calls.push_back("close"); }

  std::string m_bytes;
  bool m_bFailWrite = false;  ///< a write raises, and takes nothing
  bool m_bFailFlush = false;
  Calls m_calls;

 protected:
  void Append(const void* from, unsigned long long count) {
    if (m_bFailWrite) return RaiseTestError();
    m_bytes.append(static_cast<const char*>(from), count);
  }
};

/// The same, with blocks of its own.
class MemorySink : public ByteSink {
 public:
  using ByteSink::Write;

  void Write(const void* buffer, unsigned long long count) override {
    m_calls.push_back("write " + std::to_string(count));
    Append(buffer, count);
  }
};

/// Bytes that differ from their neighbours: "abc...zab...".
inline std::string Alphabet(std::size_t count) {
  std::string bytes(count, 'a');
  for (std::size_t i = 0; i != count; ++i) bytes[i] = static_cast<char>('a' + i % 26);
  return bytes;
}

/// Block reads of `stream`: the bytes, cut to what came. `result` is what the stream answered.
inline std::string ReadBlock(BinaryInputStream& stream, long long count, long long* result = nullptr) {
  std::string bytes(count > 0 ? static_cast<std::size_t>(count) : 0, '?');
  const long long got = stream.Read(bytes.data(), count);
  if (result != nullptr) *result = got;
  bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return bytes;
}

inline void WriteText(BinaryOutputStream& stream, const std::string& bytes) {
  stream.Write(bytes.data(), bytes.size());
}

/// Keeps the messages and log names of the warnings that are raised while it lives.
class Warnings : public AlertListener {
 public:
  Warnings() { AlertManager::Instance()->AddAlertListener(*this); }
  Warnings(const Warnings&) = delete;
  Warnings& operator=(const Warnings&) = delete;
  ~Warnings() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void WarningRaised(Warning& warning) override {
    m_messages.push_back(warning.GetData(AlertInfo::sMESSAGE));
    m_logNames.push_back(warning.GetData(AlertInfo::sLOG_NAME));
  }

  std::vector<std::string> m_messages;
  std::vector<std::string> m_logNames;
};

}  // namespace IoTests

#endif
