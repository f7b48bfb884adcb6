#include <Infrastructure/OxaCore/io/IOErrors.h>

#include <gtest/gtest.h>

#include <typeinfo>

namespace {

using namespace Oxa::Core;

std::string EndOfInheritance(const Error& error) {
  const std::string& whole = error.GetData(Error::sINHERITANCE);
  return whole.substr(whole.rfind("=>") + 2);
}

// An error of a stream says `message`, and keeps its exact type in a clone and in flight.
template <class Class>
void ExpectError(Class error, const std::string& message) {
  EXPECT_EQ(message, error.GetData(AlertInfo::sMESSAGE));
  EXPECT_STREQ(message.c_str(), error.what());
  EXPECT_EQ(IOError::sCATEGORY, error.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
  EXPECT_EQ(typeid(Class).name(), EndOfInheritance(error));
  EXPECT_EQ(typeid(Class), typeid(*error.Clone()));
  try {
    OXA_RAISE_ERROR("Test.IOErrors", error);
    ADD_FAILURE() << "not thrown";
  } catch (IOError& caught) {
    EXPECT_EQ(typeid(Class), typeid(caught));
    EXPECT_EQ(message, caught.GetData(AlertInfo::sMESSAGE));
  }
}

template <class Class>
void ExpectWarning(const Class& warning, const std::string& message) {
  EXPECT_EQ(message, warning.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ(AlertInfo::eWARNING, warning.GetSeverity());
  EXPECT_TRUE((std::is_base_of_v<Warning, Class>));
}

TEST(IOErrors, EndOfStream) {
  ExpectError(XIOEndOfStream(3, 8), "Hit end-of-stream after reading 3 bytes of a 8 byte read");
}

TEST(IOErrors, BadFilePosition) {
  ExpectError(XIOBadFilePosition(-5, 51), "Invalid file position of -5 for file of size 51");
}

TEST(IOErrors, FileNotOpen) {
  ExpectError(XIOFileNotOpen(), "Attempted to perform an operation on an unopened file");
}

TEST(IOErrors, SystemCallFailure) {
  ExpectError(XIOSystemCallFailure("::ReadFile()", "BinaryFileStream::Read"),
              "System call to ::ReadFile() failed, unable to complete BinaryFileStream::Read");
}

TEST(IOErrors, ReadOnlyFile) {
  ExpectError(XIOReadOnlyFile(), "Write operation attempted on file opened for read only");
}

TEST(IOErrors, WriteOnlyFile) {
  ExpectError(XIOWriteOnlyFile(), "Read operation attempted on file opened without read permission");
}

TEST(IOErrors, ExceededOutputLimit) {
  ExpectError(XIOExceededOutputLimit(),
              "Attempted write operation exceeded the allowed number of output bytes");
}

TEST(IOErrors, TimeoutHasTwoSpaces) {
  ExpectError(IOTimeout("Read", "1 byte"), "Timeout occurred during Read.  Info: 1 byte");
}

TEST(IOErrors, WriteToClosedPipe) {
  ExpectError(IOWriteToClosedPipe(), "Attempted to write to a closed BinaryPipe");
}

TEST(IOErrors, PendingWriteAbortedIsAWarning) {
  ExpectWarning(IOPendingWriteToPipeAborted(17),
                "Pending write of 17 bytes aborted due to pipe being closed");
}

TEST(IOErrors, ErrorDuringReadIsAWarning) {
  ExpectWarning(IOErrorDuringRead(10, 4, "the cause"),
                "Read of 10 bytes ended after 4 bytes read due to error:\nthe cause");
}

TEST(IOErrors, ErrorDuringFlushIsAWarning) {
  ExpectWarning(IOErrorDuringFlush("the cause"), "Flush raised the following i/o error:\nthe cause");
}

}  // namespace
