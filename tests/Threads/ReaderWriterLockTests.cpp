// The scoped guards of the readers-writer mutex.

#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>

#include "Threads/ReadersWriterEither.h"
#include "Threads/ReadersWriterTrace.h"

namespace Oxa::Core::Testing {

namespace {

class ReaderWriterLockTest : public ::testing::Test {
 protected:
  ReaderWriterLockTest() : m_mutex(&Trace::Log), m_otherMutex(&Trace::Log) { Trace::Clear(); }

  ReadersWriterMutex m_mutex;
  ReadersWriterMutex m_otherMutex;
};

void Ignore(const std::pair<unsigned long, unsigned long>&, const ReadersWriterMutex::ReaderCounts&, int, int,
            const char*, const char*) {}

// What the guard held before is free, and what it didn't get isn't given back.
template <class Guard>
void ExpectNothingHeldAfterARefusal(ReadersWriterMutex& mutex, const std::string& codes) {
  ReadersWriterMutex refusing(&Ignore);                     // without slots: everybody goes by the monitor
  std::thread([&] { MonitorOf(refusing).Lock(); }).join();  // whoever is next is told that the owner has died
  testing::internal::CaptureStderr();
  {
    Guard guard(mutex);
    EXPECT_THROW(guard.Reset(refusing), OSError);
    EXPECT_EQ(codes, Trace::Codes());
  }
  EXPECT_EQ(codes, Trace::Codes());
  EXPECT_EQ(std::string::npos, testing::internal::GetCapturedStderr().find("Failed Assertion"));
}

TEST_F(ReaderWriterLockTest, AReaderLockThatIsRefusedItsNextMutexHoldsNothing) {
  ExpectNothingHeldAfterARefusal<ReaderLock>(m_mutex, "RW> RW+ RL-");
}

TEST_F(ReaderWriterLockTest, AWriterLockThatIsRefusedItsNextMutexHoldsNothing) {
  ExpectNothingHeldAfterARefusal<WriterLock>(m_mutex, "WW> WW+ WL-");
}

TEST_F(ReaderWriterLockTest, AReaderLockHoldsForItsScope) {
  {
    ReaderLock reading(m_mutex);
    EXPECT_EQ("RW> RW+", Trace::Codes());
  }
  EXPECT_EQ("RW> RW+ RL-", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, AWriterLockHoldsForItsScope) {
  {
    WriterLock writing(m_mutex);
    EXPECT_EQ("WW> WW+", Trace::Codes());
  }
  EXPECT_EQ("WW> WW+ WL-", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, GuardsTakePointersAsWell) {
  {
    const ReadersWriterMutex* const mutex = &m_mutex;
    ReaderLock reading(mutex);
    WriterLock writing(mutex);
  }
  EXPECT_EQ("RW> RW+ WW> WW+ WL- RL-", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, ReleaseComesOnce) {
  {
    ReaderLock reading(m_mutex);
    reading.Release();
    reading.Release();
    WriterLock writing(m_mutex);
    writing.Release();
    writing.Release();
  }
  EXPECT_EQ("RW> RW+ RL- WW> WW+ WL-", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, ResetToItsOwnMutexDoesNothing) {
  ReaderLock reading(m_mutex);
  WriterLock writing(m_mutex);
  Trace::Clear();
  reading.Reset(m_mutex);
  writing.Reset(m_mutex);
  EXPECT_EQ("", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, ResetReleasesFirstAndLocksThen) {
  {
    ReaderLock reading(m_mutex);
    Trace::Clear();
    reading.Reset(m_otherMutex);
    EXPECT_EQ("RL- RW> RW+", Trace::Codes());
  }
  EXPECT_EQ("RL- RW> RW+ RL-", Trace::Codes());
  Trace::Clear();
  {
    WriterLock writing(m_mutex);
    Trace::Clear();
    writing.Reset(m_otherMutex);
    EXPECT_EQ("WL- WW> WW+", Trace::Codes());
  }
  EXPECT_EQ("WL- WW> WW+ WL-", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, ResetAfterReleaseLocksAgain) {
  ReaderLock reading(m_mutex);
  reading.Release();
  Trace::Clear();
  reading.Reset(m_mutex);
  EXPECT_EQ("RW> RW+", Trace::Codes());
  WriterLock writing(m_mutex);
  writing.Release();
  Trace::Clear();
  writing.Reset(m_mutex);
  EXPECT_EQ("WW> WW+", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, ANullPointerFailsAnAssertion) {
  const ReadersWriterMutex* const none = nullptr;
  ::testing::internal::CaptureStderr();
  { ReaderLock reading(none); }
  std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("ReaderLock.cpp(")) << output;
  EXPECT_NE(std::string::npos, output.find("): Failed Assertion(m_rwMutex != 0)\n")) << output;
  ::testing::internal::CaptureStderr();
  { WriterLock writing(none); }
  output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("WriterLock.cpp(")) << output;
  EXPECT_NE(std::string::npos, output.find("): Failed Assertion(m_rwMutex != 0)\n")) << output;
}

// The reference comes from a null pointer by mistake: told, and nothing is touched.
template <class Guard>
[[gnu::no_sanitize("undefined")]] void LockNothing() {
  ReadersWriterMutex* volatile nothing = nullptr;
  Guard guard(*nothing);
}

TEST_F(ReaderWriterLockTest, ANullReferenceFailsAnAssertion) {
  ::testing::internal::CaptureStderr();
  LockNothing<ReaderLock>();
  std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("ReaderLock.cpp(")) << output;
  EXPECT_NE(std::string::npos, output.find("): Failed Assertion(m_rwMutex != 0)\n")) << output;
  ::testing::internal::CaptureStderr();
  LockNothing<WriterLock>();
  output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("WriterLock.cpp(")) << output;
  EXPECT_NE(std::string::npos, output.find("): Failed Assertion(m_rwMutex != 0)\n")) << output;
}

TEST_F(ReaderWriterLockTest, AGuardOfNothingCanBeReset) {
  const ReadersWriterMutex* const none = nullptr;
  ::testing::internal::CaptureStderr();
  WriterLock writing(none);
  ::testing::internal::GetCapturedStderr();
  writing.Reset(m_mutex);
  EXPECT_EQ("WW> WW+", Trace::Codes());
}

TEST_F(ReaderWriterLockTest, AGuardWhoseLockWasGivenBackByHandEndsInAnAssertionOnly) {
  ::testing::internal::CaptureStderr();
  {
    ReaderLock reading(m_mutex);
    m_mutex.ReaderUnlock();
  }
  const std::string output = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, output.find("it != m_readers.end()")) << output;
}

}  // namespace

}  // namespace Oxa::Core::Testing
