// What the system refuses to a file stream: each call's text, and where the stream stands then. Calls that hardly
// ever fail are exchanged in this program for ones that do as they are told, each thread by itself: the log reads and
// writes files, too.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <vector>

#include "Log/FileLimit.h"
#include "io/FileStreams.h"
#include "io/Held.h"

using namespace IoTests;

namespace {

thread_local bool s_bFailSeek = false;
thread_local bool s_bFailAsk = false;  // seeks that move nothing
thread_local bool s_bFailStatus = false;
thread_local int s_iGoodStatuses = 0;  // before that begins
thread_local bool s_bFailRead = false;
thread_local bool s_bFailCut = false;
thread_local bool s_bPretendToRead = false;  // all that is wanted, and touch nothing
std::vector<std::size_t> s_lengths;          // of what was wanted then

int Fail() {
  errno = EIO;
  return -1;
}

template <class Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

#define OXA_TEST_EXPORT __attribute__((visibility("default")))

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's are reserved
extern "C" {

OXA_TEST_EXPORT off_t lseek(int file, off_t offset, int whence) noexcept {
  static const auto next = Next<off_t (*)(int, off_t, int)>("lseek");
  const bool bAsks = offset == 0 && whence == SEEK_CUR;
  return (bAsks ? s_bFailAsk : s_bFailSeek) ? Fail() : next(file, offset, whence);
}

OXA_TEST_EXPORT int fstat(int file, struct stat* facts) noexcept {
  static const auto next = Next<int (*)(int, struct stat*)>("fstat");
  return s_bFailStatus && s_iGoodStatuses-- <= 0 ? Fail() : next(file, facts);
}

OXA_TEST_EXPORT ssize_t read(int file, void* buffer, size_t size) {
  static const auto next = Next<ssize_t (*)(int, void*, size_t)>("read");
  if (s_bPretendToRead) {
    s_lengths.push_back(size);
    return static_cast<ssize_t>(size);
  }
  return s_bFailRead ? Fail() : next(file, buffer, size);
}

OXA_TEST_EXPORT int ftruncate(int file, off_t size) noexcept {
  static const auto next = Next<int (*)(int, off_t)>("ftruncate");
  return s_bFailCut ? Fail() : next(file, size);
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace {

class BinaryFileStreamFailureTest : public FileStreamTest {
 protected:
  BinaryFileStreamFailureTest() { m_file.Open(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS); }
  ~BinaryFileStreamFailureTest() override { Mend(); }

  static void Mend() {
    for (bool* const flag :
         {&s_bFailSeek, &s_bFailAsk, &s_bFailStatus, &s_bFailRead, &s_bFailCut, &s_bPretendToRead})
      *flag = false;
    s_iGoodStatuses = 0;
  }

  void ExpectPositions(long long input, long long output) const {
    EXPECT_EQ(input, m_file.GetInputPos());
    EXPECT_EQ(output, m_file.GetOutputPos());
  }

  template <class Action>
  static std::string Failed(const Action& action) {
    return Raised<XIOSystemCallFailure>(action);
  }

  File m_file;
  char m_bytes[4] = {};
};

}  // namespace

TEST_F(BinaryFileStreamFailureTest, AReadThatFailsPutsInputWhereTheSystemStands) {
  EXPECT_EQ("012", ReadBlock(m_file, 3));
  s_bFailRead = true;
  EXPECT_EQ(CallFailed("ReadFile", "Read"), Failed([&] { m_file.Read(m_bytes, 4); }));
  EXPECT_EQ(CallFailed("ReadFile", "Read"), Failed([&] { m_file.Read(); }));
  ExpectPositions(3, 10);
  s_bFailAsk = true;
  EXPECT_EQ(CallFailed("ReadFile", "Read"), Failed([&] { m_file.Read(); }));
  ExpectPositions(-1, 10);
  Mend();
  EXPECT_EQ('3', m_file.Read());  // both believe to stand at -1, so nothing is moved
}

TEST_F(BinaryFileStreamFailureTest, AWriteThatFailsPutsOutputWhereTheSystemStands) {
  const LogTests::FileLimit limit(12);
  EXPECT_EQ(CallFailed("WriteFile", "Write"), Failed([&] { m_file.Write("abcd", 4); }));
  ExpectPositions(0, 12);
  EXPECT_EQ(CallFailed("WriteFile", "Write"), Failed([&] { m_file.Write('x'); }));
  ExpectPositions(0, 12);
  EXPECT_EQ("0123456789ab", Content());
  EXPECT_EQ(8, m_file.SetOutputPos(8, File::eFROM_BEGIN));
  m_file.Write("AB", 2);
  EXPECT_EQ("01234567ABab", Content());
}

TEST_F(BinaryFileStreamFailureTest, AFullDeviceIsToldAndTheLastOfIt) {
  ASSERT_TRUE(m_file.Open("/dev/full", File::WRITE_MODE, File::eOPEN_IF_EXISTS));
  EXPECT_EQ(CallFailed("WriteFile", "Write"), Failed([&] { m_file.Write('x'); }));
  EXPECT_EQ(CallFailed("WriteFile", "Write"), Failed([&] { m_file.Write(m_bytes, 4); }));
  ExpectPositions(0, 0);
  s_bFailAsk = true;
  EXPECT_EQ(CallFailed("WriteFile", "Write"), Failed([&] { m_file.Write('x'); }));
  ExpectPositions(0, -1);
}

TEST_F(BinaryFileStreamFailureTest, AMoveThatFailsBeforeAReadOrWrite) {
  m_file.SetInputPos(3, File::eFROM_BEGIN);
  m_file.SetOutputPos(5, File::eFROM_BEGIN);
  s_bFailSeek = true;
  EXPECT_EQ(CallFailed("SetFilePointer", "Read"), Failed([&] { m_file.Read(); }));
  EXPECT_EQ(CallFailed("SetFilePointer", "Read"), Failed([&] { m_file.Read(m_bytes, 4); }));
  m_file.Write('a');  // the system stands there already
  EXPECT_EQ(CallFailed("SetFilePointer", "Read"), Failed([&] { m_file.Read(m_bytes, 0); }));
  ExpectPositions(3, 6);
  Mend();
  EXPECT_EQ('3', m_file.Read());
  s_bFailSeek = true;
  EXPECT_EQ(CallFailed("SetFilePointer", "Write"), Failed([&] { m_file.Write('x'); }));
  EXPECT_EQ(CallFailed("SetFilePointer", "Write"), Failed([&] { m_file.Write(m_bytes, 4); }));
  m_file.Write(m_bytes, 0);
  ExpectPositions(4, 6);
  EXPECT_EQ("01234a6789", Content());
}

TEST_F(BinaryFileStreamFailureTest, APipeOpensAndHasNoPositions) {
  const std::string pipe = m_folder.File("pipe");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  ASSERT_TRUE(m_file.Open(pipe, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS));
  EXPECT_EQ(-1, m_file.GetCurrentPos());
  EXPECT_EQ(CallFailed("SetFilePointer", "Read"), Failed([&] { m_file.Read(); }));
  EXPECT_EQ(CallFailed("SetFilePointer", "Write"), Failed([&] { m_file.Write('x'); }));
}

TEST_F(BinaryFileStreamFailureTest, ASizeThatCantBeToldStopsWhateverNeedsIt) {
  s_bFailStatus = true;
  EXPECT_EQ(-1, m_file.GetFileSize());
  const auto move = [this](long long (File::*set)(long long, File::EMoveMethod)) {
    return Failed([&] { (m_file.*set)(3, File::eFROM_BEGIN); });
  };
  EXPECT_EQ(CallFailed("GetFileSize", "SetInputPos"), move(&File::SetInputPos));
  EXPECT_EQ(CallFailed("GetFileSize", "SetOutputPos"), move(&File::SetOutputPos));
  EXPECT_EQ(CallFailed("GetFileSize", "SetEndOfFile"),
            Failed([&] { m_file.SetEndOfFile(3, File::eFROM_BEGIN); }));
  EXPECT_EQ(CallFailed("GetFileSize", "AvailableBytes"), Failed([&] { m_file.AvailableBytes(); }));
  EXPECT_EQ(CallFailed("GetFileSize", "AvailableBytes"), Failed([&] { m_file.Skip(1); }));
  ExpectPositions(0, 10);
  EXPECT_EQ("0123456789", Content());
}

TEST_F(BinaryFileStreamFailureTest, SkippingAsksForTheSizeAndThenMoves) {
  s_bFailStatus = true;
  for (const unsigned long long count : {3ULL, 30ULL}) {
    s_iGoodStatuses = 1;
    EXPECT_EQ(CallFailed("GetFileSize", "SetInputPos"), Failed([&] { m_file.Skip(count); }));
  }
  ExpectPositions(0, 10);
}

TEST_F(BinaryFileStreamFailureTest, WithoutASizeInputInvalidatesNothingAndOutputHasFlushed) {
  BufferedBinaryInputStream input(m_file, 2);
  BufferedBinaryOutputStream output(m_file, 10);
  EXPECT_EQ('0', input.Read());
  output.Write('a');
  s_bFailStatus = true;
  EXPECT_THROW(m_file.SetInputPos(5, File::eFROM_BEGIN), XIOSystemCallFailure);
  EXPECT_EQ('1', input.Read());
  EXPECT_THROW(m_file.SetOutputPos(5, File::eFROM_BEGIN), XIOSystemCallFailure);
  Mend();
  EXPECT_EQ("0123456789a", Content());
}

TEST_F(BinaryFileStreamFailureTest, NoLockIsHeldWhileAFailureIsRaised) {
  const FreeWhileRaised others([this] { m_file.GetInputPos(); });
  EXPECT_THROW(m_file.SetInputPos(11, File::eFROM_BEGIN), XIOBadFilePosition);
  EXPECT_THROW(m_file.SetOutputPos(11, File::eFROM_BEGIN), XIOBadFilePosition);
  EXPECT_THROW(m_file.SetEndOfFile(11, File::eFROM_BEGIN), XIOBadFilePosition);
  s_bFailStatus = true;
  for (const int good : {0, 1}) {
    s_iGoodStatuses = good;
    EXPECT_THROW(m_file.SetInputPos(3, File::eFROM_BEGIN), XIOSystemCallFailure);
  }
  EXPECT_THROW(m_file.SetOutputPos(3, File::eFROM_BEGIN), XIOSystemCallFailure);
  EXPECT_THROW(m_file.SetEndOfFile(3, File::eFROM_BEGIN), XIOSystemCallFailure);
  Mend();
  s_bFailSeek = true;
  EXPECT_THROW(m_file.SetEndOfFile(3, File::eFROM_BEGIN), XIOSystemCallFailure);
  m_file.SetInputPos(3, File::eFROM_BEGIN);
  m_file.SetOutputPos(5, File::eFROM_BEGIN);
  EXPECT_THROW(m_file.Read(), XIOSystemCallFailure);
  EXPECT_THROW(m_file.Write('x'), XIOSystemCallFailure);
  EXPECT_EQ(10u, others.Heard());
}

TEST_F(BinaryFileStreamFailureTest, ACutThatCantBegin) {
  s_bFailSeek = true;
  EXPECT_EQ(CallFailed("SetFilePos", "SetEndOfFile"),
            Failed([&] { m_file.SetEndOfFile(3, File::eFROM_BEGIN); }));
  ExpectPositions(0, 10);
  EXPECT_EQ("0123456789", Content());
}

TEST_F(BinaryFileStreamFailureTest, ACutThatFailsHasPulledThePositionsBack) {
  m_file.SetInputPos(6, File::eFROM_BEGIN);
  s_bFailCut = true;
  EXPECT_EQ(CallFailed("SetEndOfFile", "SetEndOfFile"),
            Failed([&] { m_file.SetEndOfFile(3, File::eFROM_BEGIN); }));
  ExpectPositions(3, 3);
  EXPECT_EQ("0123456789", Content());
}

TEST_F(BinaryFileStreamFailureTest, MovesTrustThePointerToFollow) {
  s_bFailSeek = true;
  EXPECT_EQ(4, m_file.SetInputPos(4, File::eFROM_BEGIN));
  EXPECT_EQ(6, m_file.SetOutputPos(6, File::eFROM_BEGIN));
  EXPECT_EQ(0, m_file.GetCurrentPos());
  Mend();
  EXPECT_EQ('4', m_file.Read());
  m_file.Write('a');
  EXPECT_EQ("012345a789", Content());
}

TEST_F(BinaryFileStreamFailureTest, ThePointerIsToldAsItIsOrNotAtAll) {
  EXPECT_EQ("012", ReadBlock(m_file, 3));
  EXPECT_EQ(3, m_file.GetCurrentPos());
  s_bFailAsk = true;
  EXPECT_EQ(-1, m_file.GetCurrentPos());
  s_bFailSeek = true;  // asking has changed nothing, so that no move is needed
  EXPECT_EQ('3', m_file.Read());
}

TEST_F(BinaryFileStreamFailureTest, OpeningPromisesNoPositions) {
  s_bFailSeek = true;
  ASSERT_TRUE(m_file.Open(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS));
  ExpectPositions(0, 10);
  EXPECT_EQ(0, m_file.GetCurrentPos());
  Mend();
  m_file.Write('a');
  EXPECT_EQ("0123456789a", Content());
}

TEST_F(BinaryFileStreamFailureTest, AFileThatIsSealedIsNeitherWrittenNorCut) {
  const int sealed = memfd_create("sealed", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  ASSERT_LE(0, sealed);
  ASSERT_EQ(5, write(sealed, "01234", 5));
  ASSERT_TRUE(
      m_file.Open("/proc/self/fd/" + std::to_string(sealed), File::READ_WRITE_MODE, File::eOPEN_ALWAYS));
  ASSERT_EQ(0, fcntl(sealed, F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SHRINK));
  EXPECT_EQ(CallFailed("WriteFile", "Write"), Failed([&] { m_file.Write('x'); }));
  EXPECT_EQ(CallFailed("SetEndOfFile", "SetEndOfFile"),
            Failed([&] { m_file.SetEndOfFile(3, File::eFROM_BEGIN); }));
  m_file.SetInputPos(0, File::eFROM_BEGIN);
  EXPECT_EQ("01234", ReadBlock(m_file, 10));
  close(sealed);
}

TEST_F(BinaryFileStreamFailureTest, AnOpeningThatFailsInTheMiddleLeavesNothingOpen) {
  s_bFailCut = true;
  EXPECT_FALSE(m_file.Open(m_sName, File::WRITE_MODE, File::eCREATE_ALWAYS));
  EXPECT_FALSE(m_file.IsOpen());
  Mend();
  EXPECT_EQ("0123456789", Content());
  EXPECT_TRUE(m_file.Open(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS));
}

TEST_F(BinaryFileStreamFailureTest, MoreThanTheSystemTakesAtOnceGoesInParts) {
  constexpr unsigned long long ullSIZE = (3ULL << 30) + 5;
  void* const untouched =
      mmap(nullptr, ullSIZE, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(MAP_FAILED, untouched);
  ASSERT_TRUE(m_file.Open("/dev/null", File::WRITE_MODE, File::eOPEN_IF_EXISTS));
  m_file.Write(untouched, ullSIZE);
  EXPECT_EQ(static_cast<long long>(ullSIZE), m_file.GetOutputPos());
  ASSERT_TRUE(m_file.Open(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS));
  s_bPretendToRead = true;
  EXPECT_EQ(static_cast<long long>(ullSIZE), m_file.Read(untouched, static_cast<long long>(ullSIZE)));
  EXPECT_EQ(0xFFFFFFFFLL, m_file.Read(untouched, 0x100000000LL));
  Mend();
  unsigned long long sum = 0;
  for (const std::size_t length : s_lengths) sum += length;
  EXPECT_EQ(ullSIZE + 0xFFFFFFFFULL, sum);
  munmap(untouched, ullSIZE);
}
