// A file as a stream: opening and closing, reading and writing. Its positions stand in their own file.
//
// Errors are raised behind the lock of the file, since whoever hears of them is a stranger.
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>

#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "Platform/Faults.h"
#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.BinaryFileStream";

const char* const sSET_FILE_POINTER = "::SetFilePointer()";
const char* const sREAD_FILE = "::ReadFile()";
const char* const sWRITE_FILE = "::WriteFile()";

const char* const sCLOSED = "closed";  // in the place of a call

const char* const sREAD = "BinaryFileStream::Read";
const char* const sWRITE = "BinaryFileStream::Write";

constexpr long long llMOST_READ = 0xFFFFFFFF;
constexpr unsigned long long ullMOST_AT_ONCE = 1ULL
                                               << 30;  // systems take different sizes, and this one all do

std::size_t Part(unsigned long long left) {
  return static_cast<std::size_t>(std::min(left, ullMOST_AT_ONCE));
}

bool DispositionOf(BinaryFileStream::EOpenBehavior behavior, Platform::EDisposition& disposition) {
  using Platform::EDisposition;
  constexpr EDisposition ALL[] = {EDisposition::eOPEN_EXISTING, EDisposition::eCREATE_NEW,
                                  EDisposition::eCREATE_ALWAYS, EDisposition::eOPEN_ALWAYS};
  if (behavior < BinaryFileStream::eOPEN_IF_EXISTS || behavior > BinaryFileStream::eOPEN_ALWAYS) return false;
  disposition = ALL[behavior];
  return true;
}

}  // namespace

BinaryFileStream::BinaryFileStream()
    : m_mode(0),
      m_isOpen(false),
      m_currentPos(0),
      m_inputPos(0),
      m_outputPos(0),
      m_hFile(new Platform::FileHandle) {}

BinaryFileStream::BinaryFileStream(std::string fileName, unsigned int mode, EOpenBehavior behavior)
    : BinaryFileStream() {
  m_fileName = fileName;
  m_mode = mode;
  Open(std::move(fileName), mode, behavior);
}

BinaryFileStream::~BinaryFileStream() {
  const Platform::HoldCancellation hold;
  try {
    CloseFile();
  } catch (...) {
    // The handle closes itself; who wants to hear of failures calls Close.
  }
}

// Closing takes the locks of the filters above, which come before this stream's own.
bool BinaryFileStream::Open(std::string fileName, unsigned int mode, EOpenBehavior behavior) {
  while (true) {
    CloseFile();
    const Lock lock(m_mutex);
    if (!m_isOpen) return OpenFile(fileName, mode, behavior);
  }
}

bool BinaryFileStream::OpenFile(const std::string& fileName, unsigned int mode, EOpenBehavior behavior) {
  Platform::EDisposition disposition;
  if (!DispositionOf(behavior, disposition)) return false;
  const Platform::FileAccess access = {(mode & READ_MODE) != 0, (mode & WRITE_MODE) != 0};
  int code = 0;
  Platform::FileHandle file = Platform::FileHandle::OpenShared(fileName.c_str(), access, disposition, code);
  if (code != 0) return false;
  m_fileName = fileName;  // where memory is short, nothing stays open
  *m_hFile = std::move(file);
  m_mode = mode;
  m_isOpen = true;
  SetFilePos(0, access.m_bRead ? eFROM_BEGIN : eFROM_END);
  m_inputPos = 0;
  m_outputPos = GetFileSize();
  return true;
}

void BinaryFileStream::Close() { CloseFile(); }

void BinaryFileStream::CloseFile() {
  if (!m_isOpen) return;
  LockSet locks;
  try {
    FlushAllBufferedOutput(locks);
  } catch (XIOFileNotOpen&) {
    return;  // another thread was first
  }
  m_hFile->Close();
  m_isOpen = false;
}

bool BinaryFileStream::IsOpen() const { return m_isOpen; }

std::string BinaryFileStream::GetFileName() const {
  const Lock lock(m_mutex);
  return m_fileName;
}

long long BinaryFileStream::Read(void* buffer, long long count) {
  if (RefuseToRead()) return -1;
  long long read = 0;
  const char* failed = nullptr;
  {
    const Lock lock(m_mutex);
    failed = TryToRead(buffer, count, read);
  }
  if (failed != nullptr) RaiseFailure(failed, sREAD);
  return failed != nullptr || read == 0 ? -1 : read;
}

int BinaryFileStream::Read() {
  unsigned char byte = 0;
  return BinaryFileStream::Read(&byte, 1) == 1 ? byte : -1;
}

const char* BinaryFileStream::TryToRead(void* buffer, long long count, long long& result) {
  if (!StandAt(m_inputPos)) return Failure(sSET_FILE_POINTER);
  unsigned char* const bytes = static_cast<unsigned char*>(buffer);
  const long long wanted = std::min(count, llMOST_READ);
  while (result < wanted) {
    const std::size_t part = Part(static_cast<unsigned long long>(wanted - result));
    std::size_t read = 0;
    if (m_hFile->Read(bytes + result, part, read) != 0) {
      StandWhereTheSystemDoes(m_inputPos);
      return Failure(sREAD_FILE);
    }
    result += static_cast<long long>(read);
    m_currentPos += static_cast<long long>(read);
    m_inputPos = m_currentPos;
    if (read < part) break;
  }
  return nullptr;
}

void BinaryFileStream::Write(const void* buffer, unsigned long long count) {
  if (RefuseToWrite() || count == 0) return;
  const char* failed = nullptr;
  {
    const Lock lock(m_mutex);
    failed = TryToWrite(buffer, count);
  }
  if (failed != nullptr) RaiseFailure(failed, sWRITE);
}

void BinaryFileStream::Write(unsigned char byte) { BinaryFileStream::Write(&byte, 1); }

// A write that is cut short says nothing about why: the disk may be full, or a signal came. The next one tells.
const char* BinaryFileStream::TryToWrite(const void* buffer, unsigned long long count) {
  if (!StandAt(m_outputPos)) return Failure(sSET_FILE_POINTER);
  const unsigned char* const bytes = static_cast<const unsigned char*>(buffer);
  for (unsigned long long done = 0; done < count;) {
    std::size_t written = 0;
    const int code = m_hFile->Write(bytes + done, Part(count - done), written);
    if (code != 0 || written == 0) {
      StandWhereTheSystemDoes(m_outputPos);
      return Failure(sWRITE_FILE);
    }
    done += written;
    m_currentPos += static_cast<long long>(written);
    m_outputPos = m_currentPos;
  }
  return nullptr;
}

void BinaryFileStream::Flush() { RefuseClosed(); }

void BinaryFileStream::AcquireReadLocks(LockSet& locks) { AddLock(locks, m_mutex); }
void BinaryFileStream::AcquireWriteLocks(LockSet& locks) { AddLock(locks, m_mutex); }

void BinaryFileStream::RaiseClosed() const { OXA_RAISE_ERROR(sLOG_NAME, XIOFileNotOpen()); }

bool BinaryFileStream::RefuseClosed() const {
  if (m_isOpen) return false;
  RaiseClosed();
  return true;
}

bool BinaryFileStream::RefuseToRead() const {
  if (RefuseClosed()) return true;
  if ((m_mode & READ_MODE) != 0) return false;
  OXA_RAISE_ERROR(sLOG_NAME, XIOWriteOnlyFile());
  return true;
}

bool BinaryFileStream::RefuseToWrite() const {
  if (RefuseClosed()) return true;
  if ((m_mode & WRITE_MODE) != 0) return false;
  OXA_RAISE_ERROR(sLOG_NAME, XIOReadOnlyFile());
  return true;
}

// The failure of `call`, for RaiseFailure. What fails because another thread has closed the file meanwhile is none
// of the system; that can be told under the lock only.
const char* BinaryFileStream::Failure(const char* call) const { return m_isOpen ? call : sCLOSED; }

void BinaryFileStream::RaiseFailure(const char* failure, const char* operation) const {
  if (failure == sCLOSED) return RaiseClosed();
  OXA_RAISE_ERROR(sLOG_NAME, XIOSystemCallFailure(failure, operation));
}

}  // namespace Oxa::Core
