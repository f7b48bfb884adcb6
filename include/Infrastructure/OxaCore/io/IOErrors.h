// What streams raise: the errors of reading, writing and positioning, and three warnings.
//
// The errors derive from IOError and leave the function that failed. The warnings are only told to the listeners:
// they stand for what went wrong where a stream goes on all the same. All are plain values; one object belongs to
// one thread at a time.
//
//   try {
//     out.Write(block, size);
//   } catch (XIOExceededOutputLimit&) {
//     // as much as the limit allowed has been written
//   }
#ifndef INFRASTRUCTURE_OXACORE_IO_IOERRORS_H
#define INFRASTRUCTURE_OXACORE_IO_IOERRORS_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <string>

namespace Oxa::Core {

/// "Hit end-of-stream after reading %1% bytes of a %2% byte read".
class OXACORE_API XIOEndOfStream : public ErrorClass<XIOEndOfStream, IOError> {
 public:
  XIOEndOfStream(long long bytesRead, long long bytesWanted);
  ~XIOEndOfStream() override;
};

/// "Invalid file position of %1% for file of size %2%".
class OXACORE_API XIOBadFilePosition : public ErrorClass<XIOBadFilePosition, IOError> {
 public:
  /// `position` counts from the begin of the file; it may be negative.
  XIOBadFilePosition(long long position, long long fileSize);
  ~XIOBadFilePosition() override;
};

/// "Attempted to perform an operation on an unopened file".
class OXACORE_API XIOFileNotOpen : public ErrorClass<XIOFileNotOpen, IOError> {
 public:
  XIOFileNotOpen();
  ~XIOFileNotOpen() override;
};

/// "System call to %1% failed, unable to complete %2%".
class OXACORE_API XIOSystemCallFailure : public ErrorClass<XIOSystemCallFailure, IOError> {
 public:
  XIOSystemCallFailure(const std::string& systemCall, const std::string& operation);
  ~XIOSystemCallFailure() override;
};

/// "Write operation attempted on file opened for read only".
class OXACORE_API XIOReadOnlyFile : public ErrorClass<XIOReadOnlyFile, IOError> {
 public:
  XIOReadOnlyFile();
  ~XIOReadOnlyFile() override;
};

/// "Read operation attempted on file opened without read permission".
class OXACORE_API XIOWriteOnlyFile : public ErrorClass<XIOWriteOnlyFile, IOError> {
 public:
  XIOWriteOnlyFile();
  ~XIOWriteOnlyFile() override;
};

/// "Attempted write operation exceeded the allowed number of output bytes".
class OXACORE_API XIOExceededOutputLimit : public ErrorClass<XIOExceededOutputLimit, IOError> {
 public:
  XIOExceededOutputLimit();
  ~XIOExceededOutputLimit() override;
};

/// "Timeout occurred during %1%.  Info: %2%".
class OXACORE_API IOTimeout : public ErrorClass<IOTimeout, IOError> {
 public:
  IOTimeout(const std::string& operation, const std::string& information);
  ~IOTimeout() override;
};

/// "Attempted to write to a closed BinaryPipe".
class OXACORE_API IOWriteToClosedPipe : public ErrorClass<IOWriteToClosedPipe, IOError> {
 public:
  IOWriteToClosedPipe();
  ~IOWriteToClosedPipe() override;
};

/// "Pending write of %1% bytes aborted due to pipe being closed".
class OXACORE_API IOPendingWriteToPipeAborted : public Warning {
 public:
  explicit IOPendingWriteToPipeAborted(unsigned long long bytesStillToWrite);
  ~IOPendingWriteToPipeAborted() override;
};

/// "Read of %1% bytes ended after %2% bytes read due to error:\n%3%".
class OXACORE_API IOErrorDuringRead : public Warning {
 public:
  /// `error` is the message of what went wrong.
  IOErrorDuringRead(long long bytesWanted, long long bytesRead, const std::string& error);
  ~IOErrorDuringRead() override;
};

/// "Flush raised the following i/o error:\n%1%".
class OXACORE_API IOErrorDuringFlush : public Warning {
 public:
  /// `error` is the message of what went wrong.
  explicit IOErrorDuringFlush(const std::string& error);
  ~IOErrorDuringFlush() override;
};

}  // namespace Oxa::Core

#endif
