// What the tests of files as streams share.
#ifndef OXACORE_TESTS_IO_FILESTREAMS_H
#define OXACORE_TESTS_IO_FILESTREAMS_H

#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include "Support/TemporaryFolder.h"
#include "io/Raised.h"
#include "io/Streams.h"

namespace IoTests {

const char* const sNOT_OPEN =
    "Oxa.Core.BinaryFileStream: Attempted to perform an operation on an unopened file";
const char* const sREAD_ONLY =
    "Oxa.Core.BinaryFileStream: Write operation attempted on file opened for read only";
const char* const sWRITE_ONLY =
    "Oxa.Core.BinaryFileStream: Read operation attempted on file opened without read permission";

inline std::string BadPosition(long long position, long long size) {
  return "Oxa.Core.BinaryFileStream: Invalid file position of " + std::to_string(position) +
         " for file of size " + std::to_string(size);
}

inline std::string CallFailed(const std::string& call, const std::string& operation) {
  return "Oxa.Core.BinaryFileStream: System call to ::" + call +
         "() failed, unable to complete BinaryFileStream::" + operation;
}

/// A folder with a file of the bytes 0123456789 in it.
class FileStreamTest : public testing::Test {
 protected:
  using File = BinaryFileStream;

  std::string Content() const { return TestSupport::ReadFile(m_sName); }

  TestSupport::TemporaryFolder m_folder;
  std::string m_sName = m_folder.Write("file", "0123456789");
};

}  // namespace IoTests

#endif
