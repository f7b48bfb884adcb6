// Moving in files, and what that does to the filters stacked on them.
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "Support/Eventually.h"
#include "io/FileStreams.h"

using namespace IoTests;

namespace {

constexpr long long llLARGEST = std::numeric_limits<long long>::max();
constexpr long long llSMALLEST = std::numeric_limits<long long>::min();

class BinaryFileStreamPositionTest : public FileStreamTest {
 protected:
  BinaryFileStreamPositionTest() { m_file.Open(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS); }

  // That another thread may use the file at this moment.
  void ExpectFree() {
    UseOnAnotherThread();
    EXPECT_TRUE(TestSupport::Eventually([this] { return m_uUses == m_others.size(); }));
  }

  // That it may not: the thread goes on when the test is over.
  void ExpectHeld() {
    UseOnAnotherThread();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_LT(m_uUses, m_others.size());
  }

  ~BinaryFileStreamPositionTest() override {
    for (std::thread& thread : m_others) thread.join();
  }

  File m_file;

 private:
  void UseOnAnotherThread() {
    m_others.emplace_back([this] {
      m_file.GetInputPos();
      ++m_uUses;
    });
  }

  std::atomic<std::size_t> m_uUses{0};
  std::vector<std::thread> m_others;
};

// Counts what it is told, and runs what it is given then.
class InputProbe : public BinaryInputStreamFilter {
 public:
  explicit InputProbe(BinaryInputStream& source) : BinaryInputStreamFilter(source) {}
  int m_iInvalidations = 0;
  std::function<void()> m_onInvalidation;

 protected:
  void DoBufferedInputInvalidation() override {
    ++m_iInvalidations;
    if (m_onInvalidation) m_onInvalidation();
  }
};

class OutputProbe : public BinaryOutputStreamFilter {
 public:
  explicit OutputProbe(BinaryOutputStream& sink) : BinaryOutputStreamFilter(sink) {}
  int m_iFlushes = 0;
  std::function<void()> m_onFlush;

 protected:
  void DoOutputBufferFlush() override {
    ++m_iFlushes;
    if (m_onFlush) m_onFlush();
  }
};

}  // namespace

TEST_F(BinaryFileStreamPositionTest, InputMovesFromAllOrigins) {
  EXPECT_EQ(4, m_file.SetInputPos(4, File::eFROM_BEGIN));
  EXPECT_EQ(4, m_file.GetCurrentPos());
  EXPECT_EQ('4', m_file.Read());
  EXPECT_EQ(3, m_file.SetInputPos(-2, File::eFROM_CURRENT));
  EXPECT_EQ('3', m_file.Read());
  EXPECT_EQ(5, m_file.SetInputPos(-5, File::eFROM_END));
  EXPECT_EQ(5U, m_file.AvailableBytes());
  EXPECT_EQ(10, m_file.SetInputPos(0, File::eFROM_END));
  EXPECT_EQ(-1, m_file.Read());
  EXPECT_EQ(10, m_file.SetInputPos(10, File::eFROM_BEGIN));
  EXPECT_EQ(0, m_file.SetInputPos(7, static_cast<File::EMoveMethod>(3)));
  EXPECT_EQ(10, m_file.GetOutputPos());
}

TEST_F(BinaryFileStreamPositionTest, OutputMovesFromAllOrigins) {
  EXPECT_EQ(4, m_file.SetOutputPos(4, File::eFROM_BEGIN));
  EXPECT_EQ(4, m_file.GetCurrentPos());
  m_file.Write('a');
  EXPECT_EQ(3, m_file.SetOutputPos(-2, File::eFROM_CURRENT));
  m_file.Write('b');
  EXPECT_EQ(5, m_file.SetOutputPos(-5, File::eFROM_END));
  m_file.Write('c');
  EXPECT_EQ(10, m_file.SetOutputPos(0, File::eFROM_END));
  m_file.Write('d');
  EXPECT_EQ(0, m_file.SetOutputPos(7, static_cast<File::EMoveMethod>(-1)));
  m_file.Write('e');
  EXPECT_EQ("e12bac6789d", Content());
  EXPECT_EQ(0, m_file.GetInputPos());
}

TEST_F(BinaryFileStreamPositionTest, InputOutsideTheFileIsRefused) {
  m_file.SetInputPos(2, File::eFROM_BEGIN);
  const auto refused = [this](long long offset, File::EMoveMethod method) {
    return Raised<XIOBadFilePosition>([&] { m_file.SetInputPos(offset, method); });
  };
  EXPECT_EQ(BadPosition(15, 10), refused(5, File::eFROM_END));
  EXPECT_EQ(BadPosition(-5, 10), refused(-5, File::eFROM_BEGIN));
  EXPECT_EQ(BadPosition(11, 10), refused(9, File::eFROM_CURRENT));
  EXPECT_EQ(BadPosition(-1, 10), refused(-3, File::eFROM_CURRENT));
  EXPECT_EQ(BadPosition(llSMALLEST + 9, 10), refused(llLARGEST, File::eFROM_END));
  EXPECT_EQ(BadPosition(llSMALLEST + 10, 10), refused(llSMALLEST, File::eFROM_END));
  EXPECT_EQ(BadPosition(llLARGEST, 10), refused(llLARGEST, File::eFROM_BEGIN));
  EXPECT_EQ(BadPosition(llSMALLEST, 10), refused(llSMALLEST, File::eFROM_BEGIN));
  EXPECT_EQ(BadPosition(llSMALLEST + 1, 10), refused(llLARGEST, File::eFROM_CURRENT));
  EXPECT_EQ(2, m_file.GetInputPos());
  EXPECT_EQ(10, m_file.GetOutputPos());
  EXPECT_EQ('2', m_file.Read());
}

TEST_F(BinaryFileStreamPositionTest, OutputOutsideTheFileIsRefused) {
  m_file.SetOutputPos(2, File::eFROM_BEGIN);
  const auto refused = [this](long long offset, File::EMoveMethod method) {
    return Raised<XIOBadFilePosition>([&] { m_file.SetOutputPos(offset, method); });
  };
  EXPECT_EQ(BadPosition(15, 10), refused(5, File::eFROM_END));
  EXPECT_EQ(BadPosition(-5, 10), refused(-5, File::eFROM_BEGIN));
  EXPECT_EQ(BadPosition(11, 10), refused(9, File::eFROM_CURRENT));
  EXPECT_EQ(BadPosition(llSMALLEST + 1, 10), refused(llLARGEST, File::eFROM_CURRENT));
  EXPECT_EQ(BadPosition(llLARGEST, 10), refused(llLARGEST, File::eFROM_BEGIN));
  EXPECT_EQ(BadPosition(llSMALLEST + 10, 10), refused(llSMALLEST, File::eFROM_END));
  EXPECT_EQ(2, m_file.GetOutputPos());
  EXPECT_EQ(0, m_file.GetInputPos());
  m_file.Write('x');
  EXPECT_EQ("01x3456789", Content());
}

TEST_F(BinaryFileStreamPositionTest, SkipsAsFarAsTheEnd) {
  EXPECT_TRUE(m_file.Skip(0));
  EXPECT_TRUE(m_file.Skip(3));
  EXPECT_EQ('3', m_file.Read());
  EXPECT_TRUE(m_file.Skip(6));
  EXPECT_EQ(0U, m_file.AvailableBytes());
  EXPECT_TRUE(m_file.Skip(0));
  EXPECT_FALSE(m_file.Skip(1));
  m_file.SetInputPos(5, File::eFROM_BEGIN);
  EXPECT_FALSE(m_file.Skip(6));
  EXPECT_EQ(0U, m_file.AvailableBytes());
  EXPECT_EQ(10, m_file.GetInputPos());
  m_file.SetInputPos(5, File::eFROM_BEGIN);
  EXPECT_FALSE(m_file.Skip(std::numeric_limits<unsigned long long>::max()));
  EXPECT_EQ(0U, m_file.AvailableBytes());
}

TEST_F(BinaryFileStreamPositionTest, CutsAndPullsBackWhatLiesBehind) {
  m_file.SetInputPos(8, File::eFROM_BEGIN);
  m_file.SetEndOfFile(6, File::eFROM_BEGIN);
  EXPECT_EQ("012345", Content());
  EXPECT_EQ(6, m_file.GetInputPos());
  EXPECT_EQ(6, m_file.GetOutputPos());
  EXPECT_EQ(6, m_file.GetCurrentPos());
  m_file.SetInputPos(1, File::eFROM_BEGIN);
  m_file.SetOutputPos(5, File::eFROM_BEGIN);
  m_file.SetEndOfFile(-2, File::eFROM_CURRENT);
  EXPECT_EQ("012", Content());
  EXPECT_EQ(1, m_file.GetInputPos());
  EXPECT_EQ(3, m_file.GetOutputPos());
  m_file.SetEndOfFile(-1, File::eFROM_END);
  EXPECT_EQ("01", Content());
  EXPECT_EQ('1', m_file.Read());
  m_file.SetEndOfFile(5, static_cast<File::EMoveMethod>(3));
  EXPECT_EQ("", Content());
}

TEST_F(BinaryFileStreamPositionTest, AFileIsNeverLengthened) {
  const auto refused = [this](long long offset, File::EMoveMethod method) {
    return Raised<XIOBadFilePosition>([&] { m_file.SetEndOfFile(offset, method); });
  };
  EXPECT_EQ(BadPosition(11, 10), refused(11, File::eFROM_BEGIN));
  EXPECT_EQ(BadPosition(11, 10), refused(1, File::eFROM_CURRENT));
  EXPECT_EQ(BadPosition(-1, 10), refused(-11, File::eFROM_END));
  EXPECT_EQ(BadPosition(llSMALLEST + 9, 10), refused(llLARGEST, File::eFROM_CURRENT));
  EXPECT_EQ(BadPosition(llSMALLEST, 10), refused(llSMALLEST, File::eFROM_BEGIN));
  EXPECT_EQ("0123456789", Content());
  EXPECT_EQ(10, m_file.GetOutputPos());
  EXPECT_EQ(0, m_file.GetInputPos());
}

TEST_F(BinaryFileStreamPositionTest, CuttingAtTheEndDoesNothing) {
  m_file.SetEndOfFile(10, File::eFROM_BEGIN);
  EXPECT_EQ(0, m_file.GetCurrentPos());
  EXPECT_EQ(0, m_file.GetInputPos());
  EXPECT_EQ(10, m_file.GetOutputPos());
  EXPECT_EQ("0123456789", Content());
}

TEST_F(BinaryFileStreamPositionTest, LargeFilesHaveLargePositions) {
  constexpr long long llSIZE = 5LL << 30;
  m_file.Close();
  std::filesystem::resize_file(m_sName, llSIZE);
  ASSERT_TRUE(m_file.Open(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS));
  EXPECT_EQ(llSIZE, m_file.GetFileSize());
  EXPECT_EQ(llSIZE, m_file.GetOutputPos());
  EXPECT_EQ(static_cast<unsigned long long>(llSIZE), m_file.AvailableBytes());
  WriteText(m_file, "end");
  EXPECT_EQ(llSIZE, m_file.SetInputPos(-3, File::eFROM_END));
  EXPECT_EQ("end", ReadBlock(m_file, 10));
  EXPECT_EQ(BadPosition(llSIZE + 4, llSIZE + 3),
            Raised<XIOBadFilePosition>([&] { m_file.SetInputPos(1, File::eFROM_CURRENT); }));
  m_file.SetInputPos(1, File::eFROM_BEGIN);
  EXPECT_TRUE(m_file.Skip(llSIZE));
  EXPECT_EQ('n', m_file.Read());
  m_file.SetEndOfFile(llSIZE + 1, File::eFROM_BEGIN);
  EXPECT_EQ(static_cast<std::uintmax_t>(llSIZE) + 1, std::filesystem::file_size(m_sName));
  EXPECT_EQ(llSIZE + 1, m_file.GetInputPos());
}

TEST_F(BinaryFileStreamPositionTest, WhereSomebodyElseCutTheFileNothingIsLeft) {
  m_file.SetInputPos(8, File::eFROM_BEGIN);
  std::filesystem::resize_file(m_sName, 4);
  EXPECT_EQ(0U, m_file.AvailableBytes());
  EXPECT_EQ(-1, m_file.Read());
  EXPECT_FALSE(m_file.Skip(1));
  EXPECT_EQ(4, m_file.GetInputPos());
}

TEST_F(BinaryFileStreamPositionTest, WhereSomebodyElseCutTheFileItMayStayWhereItIs) {
  m_file.SetInputPos(8, File::eFROM_BEGIN);
  std::filesystem::resize_file(m_sName, 4);
  EXPECT_EQ(8, m_file.SetInputPos(8, File::eFROM_BEGIN));
  EXPECT_EQ(8, m_file.SetInputPos(4, File::eFROM_END));
  EXPECT_EQ(10, m_file.SetOutputPos(10, File::eFROM_BEGIN));
  EXPECT_EQ(10, m_file.SetOutputPos(0, File::eFROM_CURRENT));
  EXPECT_EQ(BadPosition(7, 4),
            Raised<XIOBadFilePosition>([&] { m_file.SetInputPos(-1, File::eFROM_CURRENT); }));
  EXPECT_EQ(BadPosition(9, 4),
            Raised<XIOBadFilePosition>([&] { m_file.SetOutputPos(9, File::eFROM_BEGIN); }));
}

// What a derived class may do.
TEST_F(BinaryFileStreamPositionTest, ThePointerMovesFromAllOriginsAndThePositionsStay) {
  class Derived : public File {
   public:
    using File::File;
    using File::SetFilePos;
  };
  m_file.Close();
  Derived file(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_TRUE(file.SetFilePos(4, File::eFROM_BEGIN));
  EXPECT_TRUE(file.SetFilePos(3, File::eFROM_CURRENT));
  EXPECT_EQ(7, file.GetCurrentPos());
  EXPECT_TRUE(file.SetFilePos(-1, File::eFROM_END));
  EXPECT_EQ(9, file.GetCurrentPos());
  EXPECT_FALSE(file.SetFilePos(-11, File::eFROM_END));
  EXPECT_FALSE(file.SetFilePos(0, static_cast<File::EMoveMethod>(3)));
  EXPECT_EQ(9, file.GetCurrentPos());
  EXPECT_EQ(0, file.GetInputPos());
  EXPECT_EQ('0', file.Read());
  WriteText(file, "a");
  EXPECT_EQ("0123456789a", Content());
}

// Whoever may not read or write at all hears that at once, and not when somebody else is done.
TEST_F(BinaryFileStreamPositionTest, RefusalsDontWaitForTheLock) {
  File closed;
  File writing(m_folder.File("other"), File::WRITE_MODE, File::eCREATE_NEW);
  m_file.Close();
  ASSERT_TRUE(m_file.Open(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS));
  char bytes[4] = {};
  const std::function<void()> refused[] = {
      [&] { EXPECT_THROW(closed.Read(), XIOFileNotOpen); },
      [&] { EXPECT_THROW(closed.Read(bytes, 4), XIOFileNotOpen); },
      [&] { EXPECT_THROW(closed.Write('x'), XIOFileNotOpen); },
      [&] { EXPECT_THROW(closed.Write(bytes, 4), XIOFileNotOpen); },
      [&] { EXPECT_THROW(closed.Flush(), XIOFileNotOpen); },
      [&] { EXPECT_THROW(writing.Read(), XIOWriteOnlyFile); },
      [&] { EXPECT_THROW(writing.Read(bytes, 4), XIOWriteOnlyFile); },
      [&] { writing.Write(bytes, 0); },
      [&] { writing.Flush(); },
      [&] { EXPECT_THROW(m_file.Write('x'), XIOReadOnlyFile); },
      [&] { EXPECT_THROW(m_file.Write(bytes, 4), XIOReadOnlyFile); },
      [&] { EXPECT_THROW(m_file.SetEndOfFile(0, File::eFROM_BEGIN), XIOReadOnlyFile); },
      [&] { EXPECT_TRUE(m_file.IsOpen()); }};
  LockSet locks;
  for (File* const file : {&closed, &writing, &m_file}) file->AcquireReadLocks(locks);
  std::atomic<std::size_t> done{0};
  std::thread other([&] {
    for (const auto& action : refused) {
      action();
      ++done;
    }
  });
  EXPECT_TRUE(TestSupport::Eventually([&] { return done == std::size(refused); })) << done;
  locks.clear();
  other.join();
}

// --- With filters above

TEST_F(BinaryFileStreamPositionTest, RefusalsDisturbNothingAbove) {
  InputProbe input(m_file);
  OutputProbe output(m_file);
  m_file.Close();
  EXPECT_EQ(1, output.m_iFlushes);
  EXPECT_THROW(m_file.SetInputPos(3, File::eFROM_BEGIN), XIOFileNotOpen);
  EXPECT_THROW(m_file.SetOutputPos(3, File::eFROM_BEGIN), XIOFileNotOpen);
  EXPECT_THROW(m_file.SetEndOfFile(3, File::eFROM_BEGIN), XIOFileNotOpen);
  EXPECT_THROW(m_file.Skip(3), XIOFileNotOpen);
  m_file.Close();
  m_file.Open(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_THROW(m_file.SetEndOfFile(3, File::eFROM_BEGIN), XIOReadOnlyFile);
  EXPECT_EQ(0, input.m_iInvalidations);
  EXPECT_EQ(1, output.m_iFlushes);
}

TEST_F(BinaryFileStreamPositionTest, CuttingAtTheEndConcernsThoseAboveAllTheSame) {
  InputProbe input(m_file);
  OutputProbe output(m_file);
  m_file.SetEndOfFile(0, File::eFROM_END);
  EXPECT_EQ(1, input.m_iInvalidations);
  EXPECT_EQ(1, output.m_iFlushes);
}

TEST_F(BinaryFileStreamPositionTest, AnOpeningThatFailsHasClosedAndWritten) {
  BufferedBinaryOutputStream buffered(m_file, 10);
  buffered.Write('a');
  EXPECT_FALSE(m_file.Open(m_sName, File::WRITE_MODE, static_cast<File::EOpenBehavior>(4)));
  EXPECT_FALSE(m_file.IsOpen());
  EXPECT_EQ("0123456789a", Content());
}

TEST_F(BinaryFileStreamPositionTest, AMoveOfInputDropsWhatWasReadAhead) {
  BufferedBinaryInputStream inner(m_file, 4);
  BufferedBinaryInputStream outer(inner, 3);
  EXPECT_EQ('0', outer.Read());
  EXPECT_EQ(5, m_file.SetInputPos(5, File::eFROM_BEGIN));
  EXPECT_EQ('5', outer.Read());
}

TEST_F(BinaryFileStreamPositionTest, AMoveOfInputToTheSamePlaceDropsNothing) {
  InputProbe probe(m_file);
  EXPECT_EQ("012", ReadBlock(m_file, 3));
  EXPECT_EQ(3, m_file.SetInputPos(3, File::eFROM_BEGIN));
  EXPECT_EQ(3, m_file.SetInputPos(0, File::eFROM_CURRENT));
  EXPECT_EQ(3, m_file.SetInputPos(-7, File::eFROM_END));
  EXPECT_TRUE(m_file.Skip(0));
  EXPECT_EQ(0, probe.m_iInvalidations);
  EXPECT_EQ(4, m_file.SetInputPos(4, File::eFROM_BEGIN));
  EXPECT_EQ(1, probe.m_iInvalidations);
}

TEST_F(BinaryFileStreamPositionTest, ARefusedMoveOfInputHasDroppedWhatWasReadAhead) {
  InputProbe probe(m_file);
  BufferedBinaryInputStream buffered(probe, 4);
  EXPECT_EQ('0', buffered.Read());
  EXPECT_EQ(BadPosition(-1, 10),
            Raised<XIOBadFilePosition>([&] { m_file.SetInputPos(-1, File::eFROM_BEGIN); }));
  EXPECT_EQ(1, probe.m_iInvalidations);
  EXPECT_EQ(4, m_file.GetInputPos());
  EXPECT_EQ('4', buffered.Read());
}

TEST_F(BinaryFileStreamPositionTest, AMoveOfOutputWritesFirstWhatWasHeldBack) {
  BufferedBinaryOutputStream inner(m_file, 4);
  BufferedBinaryOutputStream outer(inner, 3);
  outer.Write('a');
  EXPECT_EQ("0123456789", Content());
  EXPECT_EQ(11, m_file.SetOutputPos(0, File::eFROM_END));
  EXPECT_EQ("0123456789a", Content());
  outer.Write('b');
  EXPECT_EQ(12, m_file.SetOutputPos(0, File::eFROM_CURRENT));
  EXPECT_EQ("0123456789ab", Content());
  outer.Write('c');
  EXPECT_EQ(BadPosition(14, 13),
            Raised<XIOBadFilePosition>([&] { m_file.SetOutputPos(1, File::eFROM_END); }));
  EXPECT_EQ("0123456789abc", Content());
}

TEST_F(BinaryFileStreamPositionTest, OneSideLeavesTheFiltersOfTheOtherAlone) {
  InputProbe input(m_file);
  OutputProbe output(m_file);
  m_file.SetInputPos(3, File::eFROM_BEGIN);
  EXPECT_EQ(1, input.m_iInvalidations);
  EXPECT_EQ(0, output.m_iFlushes);
  m_file.SetOutputPos(3, File::eFROM_BEGIN);
  EXPECT_EQ(1, input.m_iInvalidations);
  EXPECT_EQ(1, output.m_iFlushes);
  m_file.Flush();
  EXPECT_EQ(1, output.m_iFlushes);
}

TEST_F(BinaryFileStreamPositionTest, CuttingConcernsBothSidesTheWritingOneFirst) {
  InputProbe input(m_file);
  OutputProbe output(m_file);
  BufferedBinaryOutputStream buffered(output, 10);
  WriteText(buffered, "abc");
  input.m_onInvalidation = [&] { EXPECT_EQ(input.m_iInvalidations, output.m_iFlushes); };
  m_file.SetEndOfFile(-1, File::eFROM_CURRENT);
  EXPECT_EQ(1, input.m_iInvalidations);
  EXPECT_EQ("0123456789ab", Content());
  EXPECT_EQ(BadPosition(13, 12),
            Raised<XIOBadFilePosition>([&] { m_file.SetEndOfFile(13, File::eFROM_BEGIN); }));
  EXPECT_EQ(2, input.m_iInvalidations);
  EXPECT_EQ(2, output.m_iFlushes);
}

TEST_F(BinaryFileStreamPositionTest, ClosingWritesWhatWasHeldBackAndReadsAheadNoMore) {
  const std::string other = m_folder.File("other");
  InputProbe input(m_file);
  BufferedBinaryOutputStream buffered(m_file, 10);
  buffered.Write('a');
  m_file.Close();
  EXPECT_EQ("0123456789a", Content());
  m_file.Open(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS);
  buffered.Write('b');
  m_file.Open(other, File::WRITE_MODE, File::eCREATE_NEW);
  EXPECT_EQ("0123456789ab", Content());
  buffered.Write('c');
  buffered.Close();
  EXPECT_FALSE(m_file.IsOpen());
  EXPECT_EQ("c", TestSupport::ReadFile(other));
  EXPECT_EQ(0, input.m_iInvalidations);
}

TEST_F(BinaryFileStreamPositionTest, TheEndOfAStreamWritesWhatWasHeldBack) {
  m_file.Close();
  std::unique_ptr<File> file(new File(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS));
  BufferedBinaryOutputStream buffered(*file, 10);
  buffered.Write('a');
  file.reset();
  EXPECT_EQ("0123456789a", Content());
}

TEST_F(BinaryFileStreamPositionTest, WhatCantBeWrittenWhenItMovesIsAWarning) {
  m_file.Close();
  ASSERT_TRUE(m_file.Open(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS));
  BufferedBinaryOutputStream buffered(m_file, 10);
  buffered.Write('a');
  Warnings warnings;
  EXPECT_EQ(3, m_file.SetOutputPos(3, File::eFROM_BEGIN));
  m_file.Close();
  EXPECT_FALSE(m_file.IsOpen());
  ASSERT_EQ(2U, warnings.m_messages.size());
  EXPECT_NE(std::string::npos,
            warnings.m_messages[0].find("Write operation attempted on file opened for read only"));
}

TEST_F(BinaryFileStreamPositionTest, TheFilesOwnLockComesLastInEveryMove) {
  InputProbe input(m_file);
  OutputProbe output(m_file);
  int iTold = 0;
  input.m_onInvalidation = output.m_onFlush = [&] {
    ++iTold;
    ExpectFree();
  };
  m_file.SetInputPos(3, File::eFROM_BEGIN);
  m_file.Skip(2);
  m_file.Skip(100);
  EXPECT_EQ(3, iTold);
  m_file.SetOutputPos(3, File::eFROM_BEGIN);
  m_file.SetEndOfFile(5, File::eFROM_BEGIN);
  EXPECT_EQ(6, iTold);
  m_file.Open(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  m_file.Close();
  EXPECT_EQ(8, iTold);
}

TEST_F(BinaryFileStreamPositionTest, TheLocksOfAllAreHeldUntilTheSetIsEmptied) {
  BufferedBinaryInputStream inner(m_file, 4);
  BufferedBinaryInputStream outer(inner, 4);
  LockSet locks;
  m_file.InvalidateAllBufferedInput(locks);
  EXPECT_EQ(3U, locks.size());
  ExpectHeld();
  m_file.FlushAllBufferedOutput(locks);
  EXPECT_EQ(1U, locks.size());
  ExpectHeld();
  locks.clear();
  ExpectFree();
}
