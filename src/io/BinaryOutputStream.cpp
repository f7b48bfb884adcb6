#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <Infrastructure/OxaCore/io/IOErrors.h>

namespace Oxa::Core {

namespace {

const char* const sFILTER_LOG_NAME = "Oxa.Core.BinaryOutputStreamFilter";

}  // namespace

BinaryOutputStream::BinaryOutputStream() : m_listeners(NotificationSupport::eFIRST_ADDED_FIRST) {}
BinaryOutputStream::~BinaryOutputStream() = default;

void BinaryOutputStream::Close() {}

void BinaryOutputStream::Write(const void* buffer, unsigned long long count) {
  const unsigned char* const bytes = static_cast<const unsigned char*>(buffer);
  for (unsigned long long written = 0; written != count; ++written) Write(bytes[written]);
}

void BinaryOutputStream::AcquireWriteLocks(LockSet&) {}

void BinaryOutputStream::FlushAllBufferedOutput(LockSet& locks) {
  locks.clear();
  TellListeners(locks);
  AcquireWriteLocks(locks);
  Flush();
}

void BinaryOutputStream::AddListener(Listener& listener) { m_listeners.AddListener(listener); }
void BinaryOutputStream::RemoveListener(Listener& listener) { m_listeners.RemoveListener(listener); }

void BinaryOutputStream::TellListeners(LockSet& locks) {
  if (!m_listeners.HasListeners()) return;
  FlushBufferedOutputEvent event(locks);
  m_listeners.Broadcast(event);
}

BinaryOutputStream::Listener::~Listener() = default;

BinaryOutputStream::FlushBufferedOutputEvent::FlushBufferedOutputEvent(LockSet& locks) : m_locks(&locks) {}

void BinaryOutputStream::FlushBufferedOutputEvent::Notify(NotificationListener& listener) {
  if (auto* const stacked = dynamic_cast<Listener*>(&listener)) stacked->FlushBufferedOutput(*m_locks);
}

BinaryOutputStreamFilter::BinaryOutputStreamFilter(BinaryOutputStream& sink) : m_sink(&sink) {
  sink.AddListener(*this);
}

BinaryOutputStreamFilter::~BinaryOutputStreamFilter() = default;

void BinaryOutputStreamFilter::Close() {
  try {
    Flush();
  } catch (IOError& error) {
    OXA_RAISE_WARNING(sFILTER_LOG_NAME, IOErrorDuringFlush(error.GetData(AlertInfo::sMESSAGE)));
  }
  m_sink->Close();
}

void BinaryOutputStreamFilter::Write(const void* buffer, unsigned long long count) {
  m_sink->Write(buffer, count);
}

void BinaryOutputStreamFilter::Write(unsigned char byte) { m_sink->Write(byte); }
void BinaryOutputStreamFilter::Flush() { m_sink->Flush(); }

void BinaryOutputStreamFilter::FlushBufferedOutput(LockSet& locks) {
  TellListeners(locks);
  AcquireWriteLocks(locks);
  DoOutputBufferFlush();
}

void BinaryOutputStreamFilter::DoOutputBufferFlush() {}

}  // namespace Oxa::Core
