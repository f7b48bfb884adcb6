#include <Infrastructure/OxaCore/io/IOErrors.h>

namespace Oxa::Core {

XIOEndOfStream::XIOEndOfStream(long long bytesRead, long long bytesWanted)
    : ErrorClass(AlertMessage("Hit end-of-stream after reading %1% bytes of a %2% byte read", bytesRead,
                              bytesWanted)) {}
XIOEndOfStream::~XIOEndOfStream() = default;

XIOBadFilePosition::XIOBadFilePosition(long long position, long long fileSize)
    : ErrorClass(AlertMessage("Invalid file position of %1% for file of size %2%", position, fileSize)) {}
XIOBadFilePosition::~XIOBadFilePosition() = default;

XIOFileNotOpen::XIOFileNotOpen()
    : ErrorClass(AlertMessage("Attempted to perform an operation on an unopened file")) {}
XIOFileNotOpen::~XIOFileNotOpen() = default;

XIOSystemCallFailure::XIOSystemCallFailure(const std::string& systemCall, const std::string& operation)
    : ErrorClass(AlertMessage("System call to %1% failed, unable to complete %2%", systemCall, operation)) {}
XIOSystemCallFailure::~XIOSystemCallFailure() = default;

XIOReadOnlyFile::XIOReadOnlyFile()
    : ErrorClass(AlertMessage("Write operation attempted on file opened for read only")) {}
XIOReadOnlyFile::~XIOReadOnlyFile() = default;

XIOWriteOnlyFile::XIOWriteOnlyFile()
    : ErrorClass(AlertMessage("Read operation attempted on file opened without read permission")) {}
XIOWriteOnlyFile::~XIOWriteOnlyFile() = default;

XIOExceededOutputLimit::XIOExceededOutputLimit()
    : ErrorClass(AlertMessage("Attempted write operation exceeded the allowed number of output bytes")) {}
XIOExceededOutputLimit::~XIOExceededOutputLimit() = default;

IOTimeout::IOTimeout(const std::string& operation, const std::string& information)
    : ErrorClass(AlertMessage("Timeout occurred during %1%.  Info: %2%", operation, information)) {}
IOTimeout::~IOTimeout() = default;

IOWriteToClosedPipe::IOWriteToClosedPipe()
    : ErrorClass(AlertMessage("Attempted to write to a closed BinaryPipe")) {}
IOWriteToClosedPipe::~IOWriteToClosedPipe() = default;

IOPendingWriteToPipeAborted::IOPendingWriteToPipeAborted(unsigned long long bytesStillToWrite)
    : Warning(
          AlertMessage("Pending write of %1% bytes aborted due to pipe being closed", bytesStillToWrite)) {}
IOPendingWriteToPipeAborted::~IOPendingWriteToPipeAborted() = default;

IOErrorDuringRead::IOErrorDuringRead(long long bytesWanted, long long bytesRead, const std::string& error)
    : Warning(AlertMessage("Read of %1% bytes ended after %2% bytes read due to error:\n%3%", bytesWanted,
                           bytesRead, error)) {}
IOErrorDuringRead::~IOErrorDuringRead() = default;

IOErrorDuringFlush::IOErrorDuringFlush(const std::string& error)
    : Warning(AlertMessage("Flush raised the following i/o error:\n%1%", error)) {}
IOErrorDuringFlush::~IOErrorDuringFlush() = default;

}  // namespace Oxa::Core
