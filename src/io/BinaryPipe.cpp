#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <algorithm>
#include <string>

#include "Threads/WholeMilliseconds.h"
#include "io/BinaryPipeHold.h"

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

constexpr char sREAD_LOG[] = "Oxa.Core.BinaryPipe.Read";
constexpr char sSKIP_LOG[] = "Oxa.Core.BinaryPipe.Skip";
constexpr char sWRITE_LOG[] = "Oxa.Core.BinaryPipe.Write";

constexpr char sREAD[] = "Read";
constexpr char sSKIP[] = "Skip";
constexpr char sWRITE[] = "Write";
constexpr char sONE_BYTE[] = "1 byte";
constexpr char sONE_BYTE_NON_BLOCKING[] = "1 byte, non-blocking write mode";
constexpr char sBYTES[] = " bytes";
constexpr char sSKIP_NON_BLOCKING[] = " bytes, non-blocking read mode";
constexpr char sBYTES_COMMA[] = " bytes, ";
constexpr char sSENT[] = " bytes sent";
constexpr char sSENT_NON_BLOCKING[] = " bytes sent, non-blocking mode";

constexpr int iEND_OF_STREAM = -1;
constexpr int iNO_DATA_NOW = -2;

constexpr long long llCLOSE_PATIENCE_S = 10;
constexpr long long llCLOSE_STEP_MS = 100;

bool IsNonBlocking(const Elapse& timeout) { return timeout.GetRawTimerTicks() == 0; }

}  // namespace

BinaryPipe::BinaryPipe(unsigned long long bufferSize, const Elapse& readTimeout, const Elapse& writeTimeout)
    : m_bufferSize(bufferSize != 0 ? bufferSize : DEFAULT_BUFFER_SIZE),
      m_readIndex(0),
      m_writeIndex(0),
      m_count(0),
      m_pendingWriteBytes(0),
      m_waitingReaders(0),
      m_waitingWriters(0),
      m_closed(false),
      m_writersGate(0),
      m_readersGate(0),
      m_writeTimeout(writeTimeout),
      m_readTimeout(readTimeout),
      m_spins(new SpinBudgets) {
  m_buffer.reset(new unsigned char[m_bufferSize]);
}

BinaryPipe::~BinaryPipe() = default;

void BinaryPipe::SetReadTimeout(const Elapse& timeout) {
  m_readTimeout.store(timeout, std::memory_order_relaxed);
}

void BinaryPipe::SetWriteTimeout(const Elapse& timeout) {
  m_writeTimeout.store(timeout, std::memory_order_relaxed);
}

bool BinaryPipe::IsOpen() const { return !IsClosed(); }

bool BinaryPipe::IsClosed() const { return m_closed.load(std::memory_order_relaxed); }

bool BinaryPipe::Open() {
  Hold hold(*this);
  if (IsOpen()) return true;
  m_closed.store(false, std::memory_order_relaxed);
  m_readIndex = 0;
  m_writeIndex = 0;
  SetCount(0);
  hold.WakeWriters();
  return true;
}

void BinaryPipe::Close() {
  {
    Hold hold(*this);
    m_closed.store(true, std::memory_order_relaxed);
    hold.WakeReaders();
    hold.WakeWriters();
    if (m_pendingWriteBytes == 0) return;
  }
  const Platform::Deadline deadline = ExactDeadline(Elapse(llCLOSE_PATIENCE_S));
  do {
    OxaSleep(Elapse(llCLOSE_STEP_MS, Elapse::MilliSeconds), false);
  } while (WritesArePending() && !deadline.HasPassed());
}

bool BinaryPipe::WritesArePending() {
  const Hold hold(*this);
  return m_pendingWriteBytes != 0;
}

unsigned long long BinaryPipe::AvailableBytes() {
  const Hold hold(*this);
  return Count();
}

int BinaryPipe::Read() {
  unsigned char byte = 0;
  unsigned long long taken = 0;
  switch (Take(&byte, 1, taken)) {
    case EEnd::eALL:
      return byte;
    case EEnd::eWOULD_BLOCK:
      return iNO_DATA_NOW;
    case EEnd::eTIMEOUT:
      OXA_RAISE_ERROR(sREAD_LOG, IOTimeout(sREAD, sONE_BYTE));
      break;
    default:
      break;
  }
  return iEND_OF_STREAM;
}

long long BinaryPipe::Read(void* buffer, long long count) {
  const unsigned long long wanted = count > 0 ? static_cast<unsigned long long>(count) : 0;
  unsigned long long taken = 0;
  const EEnd end = Take(static_cast<unsigned char*>(buffer), wanted, taken);
  if (end == EEnd::eALL || taken > 0) return static_cast<long long>(taken);
  if (end == EEnd::eWOULD_BLOCK) return iNO_DATA_NOW;
  if (end == EEnd::eTIMEOUT) OXA_RAISE_ERROR(sREAD_LOG, IOTimeout(sREAD, std::to_string(count) + sBYTES));
  return iEND_OF_STREAM;
}

bool BinaryPipe::Skip(unsigned long long count) {
  if (count == 0) return true;
  unsigned long long taken = 0;
  const EEnd end = Take(nullptr, count, taken);
  if (end == EEnd::eALL) return true;
  if (end != EEnd::eCLOSED) {
    const char* const info = end == EEnd::eTIMEOUT ? sBYTES : sSKIP_NON_BLOCKING;
    OXA_RAISE_ERROR(sSKIP_LOG, IOTimeout(sSKIP, std::to_string(count) + info));
  }
  return false;
}

// Without a target the bytes are thrown away.
BinaryPipe::EEnd BinaryPipe::Take(unsigned char* target, unsigned long long count,
                                  unsigned long long& taken) {
  Hold hold(*this);
  EEnd end = EEnd::eALL;
  while (taken < count) {
    end = AwaitBytes(hold, count - taken);
    if (end != EEnd::eALL) break;
    taken += TransferBytes(target != nullptr ? target + taken : nullptr, std::min(count - taken, Count()));
    hold.WakeWriters(1);
  }
  if (Count() > 0) hold.WakeReaders(1);  // a reader hands on to the next one what it leaves
  return end;
}

BinaryPipe::EEnd BinaryPipe::AwaitBytes(Hold& hold, unsigned long long wanted) {
  if (Count() == 0 && IsOpen()) {
    const Elapse timeout = m_readTimeout.load(std::memory_order_relaxed);
    if (IsNonBlocking(timeout)) return EEnd::eWOULD_BLOCK;
    hold.WaitForBytes(wanted, timeout);
  }
  if (Count() != 0) return EEnd::eALL;
  return IsClosed() ? EEnd::eCLOSED : EEnd::eTIMEOUT;
}

unsigned long long BinaryPipe::TransferBytes(unsigned char* target, unsigned long long count) {
  const unsigned long long first = std::min(count, m_bufferSize - m_readIndex);
  if (target != nullptr) {
    Platform::CopyBytes(target, m_buffer.get() + m_readIndex, first);
    Platform::CopyBytes(target + first, m_buffer.get(), count - first);
  }
  m_readIndex = first < count ? count - first : m_readIndex + first;
  if (m_readIndex == m_bufferSize) m_readIndex = 0;
  SetCount(Count() - count);
  return count;
}

void BinaryPipe::Write(unsigned char byte) {
  unsigned long long sent = 0;
  switch (Put(&byte, 1, sent)) {
    case EEnd::eCLOSED:
      return OXA_RAISE_ERROR(sWRITE_LOG, IOWriteToClosedPipe());
    case EEnd::eWOULD_BLOCK:
      return OXA_RAISE_ERROR(sWRITE_LOG, IOTimeout(sWRITE, sONE_BYTE_NON_BLOCKING));
    case EEnd::eTIMEOUT:
      return OXA_RAISE_ERROR(sWRITE_LOG, IOTimeout(sWRITE, sONE_BYTE));
    case EEnd::eABORTED:
      return OXA_RAISE_WARNING(sWRITE_LOG, IOPendingWriteToPipeAborted(1));
    default:
      return;
  }
}

void BinaryPipe::Write(const void* buffer, unsigned long long count) {
  if (count == 0) return;
  unsigned long long sent = 0;
  const EEnd end = Put(static_cast<const unsigned char*>(buffer), count, sent);
  if (end == EEnd::eALL) return;
  if (end == EEnd::eCLOSED) return OXA_RAISE_ERROR(sWRITE_LOG, IOWriteToClosedPipe());
  if (end == EEnd::eABORTED) return OXA_RAISE_WARNING(sWRITE_LOG, IOPendingWriteToPipeAborted(count - sent));
  const char* const info = end == EEnd::eTIMEOUT ? sSENT : sSENT_NON_BLOCKING;
  OXA_RAISE_ERROR(sWRITE_LOG,
                  IOTimeout(sWRITE, std::to_string(count) + sBYTES_COMMA + std::to_string(sent) + info));
}

BinaryPipe::EEnd BinaryPipe::Put(const unsigned char* bytes, unsigned long long count,
                                 unsigned long long& sent) {
  Hold hold(*this);
  if (IsClosed()) return EEnd::eCLOSED;
  while (sent < count) {
    const EEnd end = AwaitRoom(hold, count - sent);
    if (end != EEnd::eALL) return end;
    sent += StoreBytes(bytes + sent, std::min(count - sent, m_bufferSize - Count()));
    hold.WakeReaders(1);
  }
  return EEnd::eALL;
}

BinaryPipe::EEnd BinaryPipe::AwaitRoom(Hold& hold, unsigned long long left) {
  if (Count() < m_bufferSize) return EEnd::eALL;
  const Elapse timeout = m_writeTimeout.load(std::memory_order_relaxed);
  if (IsNonBlocking(timeout)) return EEnd::eWOULD_BLOCK;
  hold.WaitForRoom(left, timeout);
  if (IsClosed()) return EEnd::eABORTED;
  return Count() < m_bufferSize ? EEnd::eALL : EEnd::eTIMEOUT;
}

unsigned long long BinaryPipe::StoreBytes(const unsigned char* bytes, unsigned long long count) {
  const unsigned long long first = std::min(count, m_bufferSize - m_writeIndex);
  Platform::CopyBytes(m_buffer.get() + m_writeIndex, bytes, first);
  Platform::CopyBytes(m_buffer.get(), bytes + first, count - first);
  m_writeIndex = first < count ? count - first : m_writeIndex + first;
  if (m_writeIndex == m_bufferSize) m_writeIndex = 0;
  SetCount(Count() + count);
  return count;
}

void BinaryPipe::Flush() {}

}  // namespace Oxa::Core
