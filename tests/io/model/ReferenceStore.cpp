// The file and the pipe of the model.
#include <algorithm>

#include "Reference.h"

namespace Model {

namespace {

Bytes Text(Count number) { return std::to_string(number); }

[[noreturn]] void Timeout(const Bytes& operation, const Bytes& information) {
  throw Failure{"IOTimeout: Timeout occurred during " + operation + ".  Info: " + information};
}

}  // namespace

// --- the pipe

int Reference::ReadStoreByte() {
  if (m_store.m_bPipe && m_ring.empty() && m_bOpen && m_store.m_bReaderWaits) Timeout("Read", "1 byte");
  Bytes byte;
  const long long got = Read(0, byte, 1);
  return got < 0 ? static_cast<int>(got) : static_cast<unsigned char>(byte[0]);
}

long long Reference::ReadPipe(Bytes& into, long long count) {
  if (count < 1) return 0;
  const Bytes bytes = Piece(m_ring, 0, static_cast<Count>(count));
  m_ring.erase(0, bytes.size());
  into += bytes;
  if (!bytes.empty()) return static_cast<long long>(bytes.size());
  if (!m_bOpen) return -1;
  if (!m_store.m_bReaderWaits) return -2;
  Timeout("Read", std::to_string(count) + " bytes");
}

bool Reference::SkipPipe(Count count) {
  const Count skipped = std::min<Count>(count, m_ring.size());
  m_ring.erase(0, static_cast<std::size_t>(skipped));
  if (skipped == count) return true;
  if (!m_bOpen) return false;
  Timeout("Skip", Text(count) + (m_store.m_bReaderWaits ? " bytes" : " bytes, non-blocking read mode"));
}

void Reference::WritePipe(const Bytes& bytes, bool single) {
  if (bytes.empty()) return;
  if (!m_bOpen) throw Failure{"IOWriteToClosedPipe: Attempted to write to a closed BinaryPipe"};
  const Bytes fitting = Piece(bytes, 0, m_store.m_ulPipeSize - m_ring.size());
  m_ring += fitting;
  if (fitting.size() == bytes.size()) return;
  if (single) Timeout("Write", m_store.m_bWriterWaits ? "1 byte" : "1 byte, non-blocking write mode");
  Timeout("Write", Text(bytes.size()) + " bytes, " + Text(fitting.size()) + " bytes sent" +
                       (m_store.m_bWriterWaits ? "" : ", non-blocking mode"));
}

// --- the file

void Reference::NeedOpen() const {
  if (!m_bOpen) throw Failure{"XIOFileNotOpen: Attempted to perform an operation on an unopened file"};
}

long long Reference::ReadFile(Bytes& into, long long count) {
  NeedOpen();
  if ((m_uMode & 1U) == 0)
    throw Failure{"XIOWriteOnlyFile: Read operation attempted on file opened without read permission"};
  m_iCurrent = m_iInput;
  if (count < 1) return -1;
  const Bytes bytes = Piece(m_files[m_sName], static_cast<Count>(m_iInput), static_cast<Count>(count));
  into += bytes;
  m_iInput += static_cast<long long>(bytes.size());
  m_iCurrent = m_iInput;
  return bytes.empty() ? -1 : static_cast<long long>(bytes.size());
}

void Reference::WriteFile(const Bytes& bytes) {
  NeedOpen();
  if ((m_uMode & 2U) == 0)
    throw Failure{"XIOReadOnlyFile: Write operation attempted on file opened for read only"};
  if (bytes.empty()) return;
  m_files[m_sName].replace(static_cast<std::size_t>(m_iOutput), bytes.size(), bytes);
  m_iOutput += static_cast<long long>(bytes.size());
  m_iCurrent = m_iOutput;
}

bool Reference::Open(const Bytes& name, unsigned int mode, Opening how) {
  if (m_store.m_bPipe) {
    if (!m_bOpen) m_ring.clear();
    return m_bOpen = true;
  }
  CloseStore();
  const bool exists = m_files.count(name) != 0;
  if (exists ? how == Opening::eNEW : how == Opening::eIF_EXISTS) return false;
  if (!exists || how == Opening::eEMPTY) m_files[name].clear();
  m_sName = name;
  m_uMode = mode;
  m_iInput = 0;
  m_iOutput = Size();
  m_iCurrent = (mode & 1U) != 0 ? 0 : m_iOutput;
  return m_bOpen = true;
}

void Reference::CloseStore() {
  if (m_bOpen && !m_store.m_bPipe) FlushAllBuffered();
  m_bOpen = false;
}

long long Reference::Target(long long offset, Where from, long long current) {
  switch (from) {
    case Where::eFROM_BEGIN:
      return offset;
    case Where::eFROM_CURRENT:
      return current + offset;
    case Where::eFROM_END:
      return Size() + offset;
    case Where::eFROM_NOWHERE:
      break;
  }
  return 0;
}

void Reference::NeedInside(long long target) {
  if (target < 0 || target > Size())
    throw Failure{"XIOBadFilePosition: Invalid file position of " + std::to_string(target) +
                  " for file of size " + std::to_string(Size())};
}

long long Reference::SetInputPos(long long offset, Where from) {
  NeedOpen();
  const long long target = Target(offset, from, m_iInput);
  if (target == m_iInput) return target;
  DropAllBuffered();
  NeedInside(target);
  return m_iCurrent = m_iInput = target;
}

long long Reference::SetOutputPos(long long offset, Where from) {
  NeedOpen();
  FlushAllBuffered();
  const long long target = Target(offset, from, m_iOutput);
  if (target == m_iOutput) return target;
  NeedInside(target);
  return m_iCurrent = m_iOutput = target;
}

void Reference::SetEndOfFile(long long offset, Where from) {
  NeedOpen();
  if ((m_uMode & 2U) == 0) WriteFile("");
  FlushAllBuffered();
  DropAllBuffered();
  const long long target = Target(offset, from, m_iOutput);
  if (target == Size()) return;
  NeedInside(target);
  m_iCurrent = target;
  m_iInput = std::min(m_iInput, target);
  m_iOutput = std::min(m_iOutput, target);
  m_files[m_sName].resize(static_cast<std::size_t>(target));
}

Bytes Reference::Content(const Bytes& name) {
  const auto found = m_files.find(name);
  return found == m_files.end() ? sNO_FILE : found->second;
}

}  // namespace Model
