// The files of one day: their names, their turns, and restarts.
#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <locale>
#include <string>

#include "Log/DailyFolder.h"

namespace {

using namespace Oxa::Core;
using LogTests::At;
using LogTests::iNO_LIMIT;

class WrappingFileStreamFiles : public LogTests::DailyFolder {
 protected:
  // Writes texts of four bytes: "t00\n", "t01\n" and so on.
  static void WriteTexts(WrappingFileStream& stream, int count) {
    for (int i = 0; i < count; ++i)
      stream.Write(std::string("t") + static_cast<char>('0' + i / 10) + static_cast<char>('0' + i % 10) +
                   '\n');
  }
};

TEST_F(WrappingFileStreamFiles, LogPathIsTheLoggersName) {
  EXPECT_EQ("OxaCore.WrappingFileStream", WrappingFileStream::s_logPath);
}

TEST_F(WrappingFileStreamFiles, WriteBeforeInitializeDoesNothing) {
  WrappingFileStream stream;
  stream.Write("lost");
  stream.MidnightCheck();
  EXPECT_EQ(Names(), All());
}

TEST_F(WrappingFileStreamFiles, NamesArePrefixDateAndNumber) {
  WrappingFileStream stream;
  Begin(stream);
  EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03.seq"}), All());
  EXPECT_EQ("0\n", Read("Run2011_03_03.seq"));
  EXPECT_EQ("", Read("Run2011_03_03-0.log"));
}

TEST_F(WrappingFileStreamFiles, PrefixMayBeEmpty) {
  m_clock.Set(At(12, 11, 10));
  WrappingFileStream stream;
  BeginPruning(stream, iNO_LIMIT);
  EXPECT_EQ((Names{"2011_12_11-0.log", "2011_12_11.seq"}), All());
}

TEST_F(WrappingFileStreamFiles, FolderMayEndInASeparator) {
  WrappingFileStream stream;
  stream.Initialize(Path() + '/', iNO_LIMIT, iNO_LIMIT, iNO_LIMIT, "Run");
  EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03.seq"}), All());
}

TEST_F(WrappingFileStreamFiles, BackslashesSeparateFolders) {
  std::filesystem::create_directory(m_folder.File("inner"));
  const TestSupport::CurrentFolder current(Path());
  WrappingFileStream stream;
  stream.Initialize(".\\inner", iNO_LIMIT, iNO_LIMIT, iNO_LIMIT, "Run");
  stream.Write("text");
  EXPECT_EQ(Names{"inner"}, All());
  EXPECT_EQ("text", Read("inner/Run2011_03_03-0.log"));
}

TEST_F(WrappingFileStreamFiles, TextsAreWrittenAsTheyAreAndAtOnce) {
  WrappingFileStream stream;
  Begin(stream);
  const std::string bytes("a\r\n\0\xff%s\n", 8);
  stream.Write(bytes);
  EXPECT_EQ(bytes, Read("Run2011_03_03-0.log"));
  stream.Write("");
  stream.Write("no line end");
  EXPECT_EQ(bytes + "no line end", Read("Run2011_03_03-0.log"));
  const std::string large(1000000, 'x');
  stream.Write(large);
  EXPECT_EQ(bytes + "no line end" + large, Read("Run2011_03_03-0.log"));
}

TEST_F(WrappingFileStreamFiles, EveryByteIsWrittenAsItIs) {
  WrappingFileStream stream;
  Begin(stream);
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  stream.Write(bytes);
  EXPECT_EQ(bytes, Read("Run2011_03_03-0.log"));
}

TEST_F(WrappingFileStreamFiles, WithoutASizeThereIsOneFile) {
  WrappingFileStream stream;
  Begin(stream, 3, iNO_LIMIT);
  for (int i = 0; i < 100; ++i) stream.Write(std::string(10000, 'x'));
  EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03.seq"}), All());
  EXPECT_EQ(1000000U, Read("Run2011_03_03-0.log").size());
}

TEST_F(WrappingFileStreamFiles, NextFileBeginsBehindOneThatIsAboveTheSize) {
  WrappingFileStream stream;
  Begin(stream, iNO_LIMIT, 8);
  WriteTexts(stream, 3);  // 8 bytes aren't above 8
  EXPECT_EQ("t00\nt01\nt02\n", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("0\n", Read("Run2011_03_03.seq"));
  stream.Write("next");
  EXPECT_EQ("t00\nt01\nt02\n", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("next", Read("Run2011_03_03-1.log"));
  EXPECT_EQ("1\n", Read("Run2011_03_03.seq"));
}

TEST_F(WrappingFileStreamFiles, SizeOfZeroGivesEachTextAFile) {
  WrappingFileStream stream;
  Begin(stream, iNO_LIMIT, 0);
  WriteTexts(stream, 3);
  EXPECT_EQ("t00\n", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("t01\n", Read("Run2011_03_03-1.log"));
  EXPECT_EQ("t02\n", Read("Run2011_03_03-2.log"));
}

TEST_F(WrappingFileStreamFiles, LastNumberIsFollowedByTheFirst) {
  WrappingFileStream stream;
  Begin(stream, 3, 4);
  WriteTexts(stream, 6);
  EXPECT_EQ("2\n", Read("Run2011_03_03.seq"));
  EXPECT_EQ(0U, Alarms().size());
  stream.Write("again");
  EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03-1.log", "Run2011_03_03-2.log", "Run2011_03_03.seq"}),
            All());
  EXPECT_EQ("again", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("t02\nt03\n", Read("Run2011_03_03-1.log"));
  EXPECT_EQ("t04\nt05\n", Read("Run2011_03_03-2.log"));
  EXPECT_EQ("0\n", Read("Run2011_03_03.seq"));
  EXPECT_EQ(
      std::vector<std::string>{"The daily log file has wrapped because the maximum number of log files (3) "
                               "per day has been exceeded"},
      Alarms());
}

TEST_F(WrappingFileStreamFiles, OneFileIsEmptiedEachTime) {
  WrappingFileStream stream;
  Begin(stream, 1, 4);
  WriteTexts(stream, 5);
  EXPECT_EQ("t04\n", Read("Run2011_03_03-0.log"));
  EXPECT_EQ(2U, Alarms().size());
}

TEST_F(WrappingFileStreamFiles, FewerThanOneFileIsOne) {
  for (const int files : {0, -2, -2147483647 - 1}) {
    WrappingFileStream stream;
    Begin(stream, files, 4);
    WriteTexts(stream, 3);
    EXPECT_EQ("t02\n", Read("Run2011_03_03-0.log")) << files;
    EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03.seq"}), All()) << files;
    Put("Run2011_03_03-0.log");
  }
}

TEST_F(WrappingFileStreamFiles, NumbersGrowToTheLargestThereIs) {
  Put("Run2011_03_03.seq", "2147483645\n");
  WrappingFileStream stream;
  Begin(stream, iNO_LIMIT, 4);
  WriteTexts(stream, 4);
  EXPECT_EQ("t00\nt01\n", Read("Run2011_03_03-2147483645.log"));
  EXPECT_EQ("t02\nt03\n", Read("Run2011_03_03-2147483646.log"));
  stream.Write("again");
  EXPECT_EQ("again", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("0\n47483646\n", Read("Run2011_03_03.seq"));
  EXPECT_EQ(std::vector<std::string>{"The daily log file has wrapped because the maximum number of log files "
                                     "(2147483647) per day has been exceeded"},
            Alarms());
}

TEST_F(WrappingFileStreamFiles, SequenceNumberIsWrittenOverTheStartOfItsFile) {
  Put("Run2011_03_03.seq", "10\n");
  WrappingFileStream stream;
  Begin(stream, 11, 0);
  stream.Write("a");
  EXPECT_EQ("10\n", Read("Run2011_03_03.seq"));
  stream.Write("b");
  EXPECT_EQ("0\n\n", Read("Run2011_03_03.seq"));
}

TEST_F(WrappingFileStreamFiles, RestartGoesOnInTheLastFile) {
  Put("Run2011_03_03-2.log", "before ");
  Put("Run2011_03_03.seq", "2\n");
  WrappingFileStream stream;
  Begin(stream, 3);
  stream.Write("behind");
  EXPECT_EQ("before behind", Read("Run2011_03_03-2.log"));
  EXPECT_EQ("2\n", Read("Run2011_03_03.seq"));
}

TEST_F(WrappingFileStreamFiles, RestartWithFewerFilesGoesOnInTheLastThatIsAllowed) {
  Put("Run2011_03_03-1.log", "before ");
  Put("Run2011_03_03-2.log", "untouched");
  Put("Run2011_03_03.seq", "2\n");
  WrappingFileStream stream;
  Begin(stream, 2);
  stream.Write("behind");
  EXPECT_EQ("before behind", Read("Run2011_03_03-1.log"));
  EXPECT_EQ("untouched", Read("Run2011_03_03-2.log"));
  EXPECT_EQ("1\n", Read("Run2011_03_03.seq"));
}

TEST_F(WrappingFileStreamFiles, RestartCountsWhatIsThere) {
  Put("Run2011_03_03-0.log", "above");
  Put("Run2011_03_03.seq", "0\n");
  WrappingFileStream stream;
  Begin(stream, 3, 5);
  stream.Write("five ");
  stream.Write("next");
  EXPECT_EQ("abovefive ", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("next", Read("Run2011_03_03-1.log"));
}

TEST_F(WrappingFileStreamFiles, RestartBehindAFullFileBeginsTheNext) {
  Put("Run2011_03_03-0.log", "above ");
  Put("Run2011_03_03-1.log", "of an earlier round");
  Put("Run2011_03_03.seq", "0\n");
  WrappingFileStream stream;
  Begin(stream, 3, 5);
  stream.Write("next");
  EXPECT_EQ("above ", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("next", Read("Run2011_03_03-1.log"));
}

// With holes, so that it takes no room.
TEST_F(WrappingFileStreamFiles, SizesAreCountedBeyondTheLargestLimit) {
  constexpr int iLARGEST = std::numeric_limits<int>::max();
  const std::string first = Path() + "/Run2011_03_03-0.log";
  for (const std::uintmax_t size : {0x7FFFFFFFULL, 0x80000000ULL, 0x100000001ULL}) {
    Put("Run2011_03_03-0.log");
    std::filesystem::resize_file(first, size);
    Put("Run2011_03_03.seq", "0\n");
    WrappingFileStream stream;
    Begin(stream, 2, iLARGEST);
    stream.Write("next");
    const bool above = size > std::uintmax_t{iLARGEST};
    EXPECT_EQ(above ? size : size + 4, std::filesystem::file_size(first));
    EXPECT_EQ(above ? "1\n" : "0\n", Read("Run2011_03_03.seq"));
  }
  EXPECT_EQ("next", Read("Run2011_03_03-1.log"));
}

TEST_F(WrappingFileStreamFiles, SequenceFileMayHoldAnything) {
  const struct {
    const char* m_pContent;
    const char* m_pFile;
    const char* m_pSaved;
  } cases[] = {
      {"", "Run2011_03_03-0.log", "0\n"},
      {"garbage", "Run2011_03_03-0.log", "0\nrbage"},
      {" \n 1", "Run2011_03_03-1.log", "1\n 1"},
      {"1x", "Run2011_03_03-1.log", "1\n"},
      {"99999999999999999999", "Run2011_03_03-2.log", "2\n999999999999999999"},
      {"-5\n", "Run2011_03_03--5.log", "-5\n"},
  };
  for (const auto& each : cases) {
    Put("Run2011_03_03.seq", each.m_pContent);
    WrappingFileStream stream;
    Begin(stream, 3);
    stream.Write(each.m_pContent);
    EXPECT_EQ(each.m_pContent, Read(each.m_pFile));
    EXPECT_EQ(each.m_pSaved, Read("Run2011_03_03.seq"));
    std::filesystem::remove(m_folder.File(each.m_pFile));
  }
}

// What a host's locale makes of numbers must not get into names and sequence files.
TEST_F(WrappingFileStreamFiles, LocaleOfTheHostIsNoMatter) {
  class Grouped : public std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  Put("Run2011_03_03.seq", "12345\n");
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouped));
  {
    WrappingFileStream stream;
    Begin(stream);
    stream.Write("text");
  }
  std::locale::global(before);
  EXPECT_EQ("12345\n", Read("Run2011_03_03.seq"));
  EXPECT_EQ("text", Read("Run2011_03_03-12345.log"));
}

TEST_F(WrappingFileStreamFiles, SecondInitializeTakesAllArgumentsAnew) {
  const TestSupport::TemporaryFolder other;
  WrappingFileStream stream;
  Begin(stream, 3, 0);
  WriteTexts(stream, 2);
  stream.Initialize(other.Path(), iNO_LIMIT, iNO_LIMIT, iNO_LIMIT, "Else");
  WriteTexts(stream, 2);
  EXPECT_EQ("t01\n", Read("Run2011_03_03-1.log"));
  EXPECT_EQ("t00\nt01\n", other.Read("Else2011_03_03-0.log"));
  EXPECT_EQ((Names{"Else2011_03_03-0.log", "Else2011_03_03.seq"}), other.Names());
}

}  // namespace
