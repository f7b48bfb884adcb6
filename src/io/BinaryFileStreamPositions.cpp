// The positions of a file stream over the one pointer that the system has, and the size of the file.
//
// What is stacked above the file takes part in every move: its locks come first, so that no operation here may
// hold the file's own lock when it calls InvalidateAllBufferedInput or FlushAllBufferedOutput.
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>

#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <algorithm>
#include <cstdint>

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.BinaryFileStream";

const char* const sGET_FILE_SIZE = "::GetFileSize()";
const char* const sSET_FILE_POS = "::SetFilePos()";
const char* const sCUT = "::SetEndOfFile()";

const char* const sSET_INPUT_POS = "BinaryFileStream::SetInputPos";
const char* const sSET_OUTPUT_POS = "BinaryFileStream::SetOutputPos";
const char* const sSET_END_OF_FILE = "BinaryFileStream::SetEndOfFile";
const char* const sAVAILABLE_BYTES = "BinaryFileStream::AvailableBytes";

// Wraps around where it overflows, which no file is large enough to take for a place in it.
long long Sum(long long one, long long other) {
  return static_cast<long long>(static_cast<unsigned long long>(one) +
                                static_cast<unsigned long long>(other));
}

long long TargetOf(long long offset, BinaryFileStream::EMoveMethod method, long long current,
                   long long size) {
  switch (method) {
    case BinaryFileStream::eFROM_BEGIN:
      return offset;
    case BinaryFileStream::eFROM_CURRENT:
      return Sum(current, offset);
    case BinaryFileStream::eFROM_END:
      return Sum(size, offset);
  }
  return 0;
}

bool OriginOf(BinaryFileStream::EMoveMethod method, Platform::EOrigin& origin) {
  using Platform::EOrigin;
  constexpr EOrigin ALL[] = {EOrigin::eBEGIN, EOrigin::eCURRENT, EOrigin::eEND};
  if (method < BinaryFileStream::eFROM_BEGIN || method > BinaryFileStream::eFROM_END) return false;
  origin = ALL[method];
  return true;
}

// None, if the file was cut behind the position.
unsigned long long BytesBetween(long long position, long long size) {
  return position > size ? 0 : static_cast<unsigned long long>(size - position);
}

bool IsOutside(long long target, long long size) { return target < 0 || target > size; }

long long PlaceOf(const Platform::FileHandle& file) {
  std::uint64_t place = 0;
  return file.Position(place) == 0 ? static_cast<long long>(place) : -1;
}

}  // namespace

long long BinaryFileStream::GetInputPos() const {
  const Lock lock(m_mutex);
  return m_inputPos;
}

long long BinaryFileStream::GetOutputPos() const {
  const Lock lock(m_mutex);
  return m_outputPos;
}

long long BinaryFileStream::GetCurrentPos() {
  long long place = -1;
  bool bOpen = false;
  {
    const Lock lock(m_mutex);
    bOpen = m_isOpen;
    place = PlaceOf(*m_hFile);
  }
  if (!bOpen) RaiseClosed();
  return place;
}

long long BinaryFileStream::GetFileSize() {
  long long size = -1;
  bool bOpen = false;
  {
    const Lock lock(m_mutex);
    bOpen = m_isOpen;
    TryToTellSize(size);
  }
  if (!bOpen) RaiseClosed();
  return size;
}

const char* BinaryFileStream::TryToTellSize(long long& size) const {
  std::uint64_t told = 0;
  if (m_hFile->Size(told) != 0) return Failure(sGET_FILE_SIZE);
  size = static_cast<long long>(told);
  return nullptr;
}

bool BinaryFileStream::SetFilePos(const long long& position, EMoveMethod method) {
  Platform::EOrigin origin;
  std::uint64_t place = 0;
  const bool bMoved = OriginOf(method, origin) && m_hFile->Move(position, origin, place) == 0;
  m_currentPos = bMoved ? static_cast<long long>(place) : PlaceOf(*m_hFile);
  return bMoved;
}

bool BinaryFileStream::StandAt(long long position) {
  return m_currentPos == position || SetFilePos(position, eFROM_BEGIN);
}

void BinaryFileStream::StandWhereTheSystemDoes(long long& position) {
  m_currentPos = PlaceOf(*m_hFile);
  position = m_currentPos;
}

const char* BinaryFileStream::TryToTellInput(long long& position, long long& size) const {
  const Lock lock(m_mutex);
  position = m_inputPos;
  return TryToTellSize(size);
}

// What is stacked above has made way by now, and its locks are held.
long long BinaryFileStream::Move(long long& position, long long target, long long size, LockSet& locks) {
  const long long before = position;
  if (IsOutside(target, size)) {
    locks.clear();
    OXA_RAISE_ERROR(sLOG_NAME, XIOBadFilePosition(target, size));
    return before;
  }
  position = target;
  SetFilePos(target, eFROM_BEGIN);
  return target;
}

// Where `aim` says, by the position and the size. It is asked twice: a move to the same place must not disturb what
// is stacked above, and by the time that all of that has made way others may have read, moved or cut the file.
// `operation` is the one that asks first.
template <class Aim>
long long BinaryFileStream::MoveInput(const Aim& aim, const char* operation) {
  long long before = 0;
  long long size = 0;
  LockSet locks;
  const char* failed = TryToTellInput(before, size);
  if (failed == nullptr) {
    if (aim(before, size) == before) return before;
    InvalidateAllBufferedInput(locks);
    failed = TryToTellInput(before, size);
    operation = sSET_INPUT_POS;
  }
  if (failed == nullptr) return Move(m_inputPos, aim(before, size), size, locks);
  locks.clear();
  RaiseFailure(failed, operation);
  return before;
}

long long BinaryFileStream::SetInputPos(long long offset, EMoveMethod method) {
  if (RefuseClosed()) return -1;
  const auto aim = [=](long long before, long long size) { return TargetOf(offset, method, before, size); };
  return MoveInput(aim, sSET_INPUT_POS);
}

long long BinaryFileStream::SetOutputPos(long long offset, EMoveMethod method) {
  if (RefuseClosed()) return -1;
  LockSet locks;
  FlushAllBufferedOutput(locks);
  const long long before = m_outputPos;
  long long size = 0;
  if (const char* const failed = TryToTellSize(size)) {
    locks.clear();
    RaiseFailure(failed, sSET_OUTPUT_POS);
    return before;
  }
  const long long target = TargetOf(offset, method, before, size);
  return target == before ? target : Move(m_outputPos, target, size, locks);
}

// The locks of the writing side, the file's among them, are given up before those of the reading side are taken:
// a reader that waits for the file holds the locks of its own filters.
void BinaryFileStream::SetEndOfFile(long long offset, EMoveMethod method) {
  if (RefuseToWrite()) return;
  LockSet locks;
  FlushAllBufferedOutput(locks);
  InvalidateAllBufferedInput(locks);
  long long size = 0;
  const char* failed = TryToTellSize(size);
  const long long target = TargetOf(offset, method, m_outputPos, size);
  const bool bOutside = failed == nullptr && IsOutside(target, size);
  if (failed == nullptr && !bOutside && target != size) failed = TryToCut(target);
  locks.clear();
  if (bOutside) OXA_RAISE_ERROR(sLOG_NAME, XIOBadFilePosition(target, size));
  if (failed != nullptr) RaiseFailure(failed, sSET_END_OF_FILE);
}

const char* BinaryFileStream::TryToCut(long long target) {
  if (!SetFilePos(target, eFROM_BEGIN)) return Failure(sSET_FILE_POS);
  m_inputPos = std::min(m_inputPos, m_currentPos);
  m_outputPos = std::min(m_outputPos, m_currentPos);
  return m_hFile->Truncate(static_cast<std::uint64_t>(target)) == 0 ? nullptr : Failure(sCUT);
}

bool BinaryFileStream::Skip(unsigned long long count) {
  if (RefuseClosed()) return false;
  bool bEnough = false;
  const auto aim = [=, &bEnough](long long before, long long size) {
    bEnough = count <= BytesBetween(before, size);
    return bEnough ? before + static_cast<long long>(count) : size;
  };
  MoveInput(aim, sAVAILABLE_BYTES);
  return bEnough;
}

unsigned long long BinaryFileStream::AvailableBytes() {
  if (RefuseClosed()) return 0;
  long long before = 0;
  long long size = 0;
  const char* const failed = TryToTellInput(before, size);
  if (failed != nullptr) RaiseFailure(failed, sAVAILABLE_BYTES);
  return failed != nullptr ? 0 : BytesBetween(before, size);
}

}  // namespace Oxa::Core
