// Files as streams: how they are opened, and what is read and written where.
#include <sys/stat.h>

#include <filesystem>
#include <limits>
#include <type_traits>

#include "io/FileStreams.h"

using namespace IoTests;

namespace {

class BinaryFileStreamTest : public FileStreamTest {};

}  // namespace

TEST_F(BinaryFileStreamTest, TheValuesOfItsNamesAreFixed) {
  EXPECT_EQ(1U, File::READ_MODE);
  EXPECT_EQ(2U, File::WRITE_MODE);
  EXPECT_EQ(3U, File::READ_WRITE_MODE);
  EXPECT_TRUE((std::is_same_v<const unsigned int, decltype(File::READ_MODE)>));
  EXPECT_EQ(0, File::eOPEN_IF_EXISTS);
  EXPECT_EQ(1, File::eCREATE_NEW);
  EXPECT_EQ(2, File::eCREATE_ALWAYS);
  EXPECT_EQ(3, File::eOPEN_ALWAYS);
  EXPECT_EQ(0, File::eFROM_BEGIN);
  EXPECT_EQ(1, File::eFROM_CURRENT);
  EXPECT_EQ(2, File::eFROM_END);
}

TEST_F(BinaryFileStreamTest, TheSourceIsItsFirstBase) {
  File file;
  EXPECT_EQ(static_cast<void*>(&file), static_cast<void*>(static_cast<BinaryInputStream*>(&file)));
  EXPECT_LT(static_cast<void*>(&file), static_cast<void*>(static_cast<BinaryOutputStream*>(&file)));
}

TEST_F(BinaryFileStreamTest, OneThatWasNotOpenedRefusesAllThatNeedsAFile) {
  File file;
  char bytes[4] = {};
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ("", file.GetFileName());
  EXPECT_EQ(0, file.GetInputPos());
  EXPECT_EQ(0, file.GetOutputPos());
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Read(); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Read(bytes, 4); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Read(bytes, 0); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Write('x'); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Write(bytes, 4); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Write(bytes, 0); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Flush(); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.GetCurrentPos(); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.GetFileSize(); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.SetInputPos(0, File::eFROM_BEGIN); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.SetOutputPos(0, File::eFROM_BEGIN); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.SetEndOfFile(0, File::eFROM_BEGIN); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.Skip(0); }));
  EXPECT_EQ(sNOT_OPEN, Raised<XIOFileNotOpen>([&] { file.AvailableBytes(); }));
  file.Close();
}

TEST_F(BinaryFileStreamTest, AMissingFileIsAResultAndNoError) {
  Warnings warnings;
  const std::string missing = m_folder.File("missing");
  File file(missing, File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(missing, file.GetFileName());
  EXPECT_FALSE(file.Open(missing, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_FALSE(std::filesystem::exists(missing));
  EXPECT_TRUE(warnings.m_messages.empty());
}

TEST_F(BinaryFileStreamTest, OpensByTheFourBehaviors) {
  const std::string fresh = m_folder.File("new");
  EXPECT_FALSE(File(m_sName, File::WRITE_MODE, File::eCREATE_NEW).IsOpen());
  EXPECT_TRUE(File(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS).IsOpen());
  EXPECT_TRUE(File(m_sName, File::WRITE_MODE, File::eOPEN_ALWAYS).IsOpen());
  EXPECT_EQ("0123456789", Content());
  EXPECT_TRUE(File(m_sName, File::WRITE_MODE, File::eCREATE_ALWAYS).IsOpen());
  EXPECT_EQ("", Content());
  for (const auto behavior : {File::eCREATE_NEW, File::eCREATE_ALWAYS, File::eOPEN_ALWAYS}) {
    EXPECT_TRUE(File(fresh, File::READ_WRITE_MODE, behavior).IsOpen());
    EXPECT_TRUE(std::filesystem::remove(fresh));
  }
  EXPECT_FALSE(File(fresh, File::WRITE_MODE, static_cast<File::EOpenBehavior>(4)).IsOpen());
  EXPECT_FALSE(File(fresh, File::WRITE_MODE, static_cast<File::EOpenBehavior>(-1)).IsOpen());
  EXPECT_FALSE(std::filesystem::exists(fresh));
}

TEST_F(BinaryFileStreamTest, AFolderIsRefused) {
  for (const unsigned int mode : {File::READ_MODE, File::WRITE_MODE, File::READ_WRITE_MODE}) {
    for (const auto behavior : {File::eOPEN_IF_EXISTS, File::eCREATE_ALWAYS, File::eOPEN_ALWAYS})
      EXPECT_FALSE(File(m_folder.Path(), mode, behavior).IsOpen());
  }
}

TEST_F(BinaryFileStreamTest, ANewFileIsEmpty) {
  File file(m_folder.File("new"), File::READ_WRITE_MODE, File::eCREATE_NEW);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(0, file.GetFileSize());
  EXPECT_EQ(0U, file.AvailableBytes());
  EXPECT_EQ(-1, file.Read());
}

TEST_F(BinaryFileStreamTest, ReadsFromTheBeginningAndWritesBehindTheEnd) {
  File file(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_EQ(m_sName, file.GetFileName());
  EXPECT_EQ(0, file.GetInputPos());
  EXPECT_EQ(10, file.GetOutputPos());
  EXPECT_EQ(0, file.GetCurrentPos());
  WriteText(file, "ab");
  EXPECT_EQ("0123", ReadBlock(file, 4));
  EXPECT_EQ("0123456789ab", Content());
}

TEST_F(BinaryFileStreamTest, ThePointerOfOneThatOnlyWritesStandsAtTheEnd) {
  File writing(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_EQ(10, writing.GetCurrentPos());
  EXPECT_EQ(0, writing.GetInputPos());
  EXPECT_EQ(10, writing.GetOutputPos());
}

TEST_F(BinaryFileStreamTest, OneForReadingRefusesToWrite) {
  File file(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_EQ(sREAD_ONLY, Raised<XIOReadOnlyFile>([&] { file.Write('x'); }));
  EXPECT_EQ(sREAD_ONLY, Raised<XIOReadOnlyFile>([&] { file.Write("xy", 2); }));
  EXPECT_EQ(sREAD_ONLY, Raised<XIOReadOnlyFile>([&] { file.Write("xy", 0); }));
  EXPECT_EQ(sREAD_ONLY, Raised<XIOReadOnlyFile>([&] { file.SetEndOfFile(0, File::eFROM_BEGIN); }));
  EXPECT_EQ(3, file.SetOutputPos(3, File::eFROM_BEGIN));
  EXPECT_EQ("0123456789", Content());
}

TEST_F(BinaryFileStreamTest, OneForWritingRefusesToRead) {
  File file(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS);
  char bytes[2] = {};
  EXPECT_EQ(sWRITE_ONLY, Raised<XIOWriteOnlyFile>([&] { file.Read(); }));
  EXPECT_EQ(sWRITE_ONLY, Raised<XIOWriteOnlyFile>([&] { file.Read(bytes, 2); }));
  EXPECT_EQ(sWRITE_ONLY, Raised<XIOWriteOnlyFile>([&] { file.Read(bytes, 0); }));
  EXPECT_EQ(10U, file.AvailableBytes());
  EXPECT_EQ(4, file.SetInputPos(4, File::eFROM_BEGIN));
}

TEST_F(BinaryFileStreamTest, TheModeIsBits) {
  File neither(m_sName, 4, File::eOPEN_IF_EXISTS);
  EXPECT_TRUE(neither.IsOpen());
  EXPECT_EQ(10, neither.GetFileSize());
  EXPECT_EQ(sWRITE_ONLY, Raised<XIOWriteOnlyFile>([&] { neither.Read(); }));
  EXPECT_EQ(sREAD_ONLY, Raised<XIOReadOnlyFile>([&] { neither.Write('x'); }));
  File both(m_sName, 7, File::eOPEN_IF_EXISTS);
  both.Write('x');
  EXPECT_EQ('0', both.Read());
}

TEST_F(BinaryFileStreamTest, ReadsToTheEndAndThenMinusOne) {
  File file(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_EQ("012345", ReadBlock(file, 6));
  EXPECT_EQ(4U, file.AvailableBytes());
  EXPECT_EQ("678", ReadBlock(file, 3));
  EXPECT_EQ('9', file.Read());
  long long result = 0;
  EXPECT_EQ("", ReadBlock(file, 3, &result));
  EXPECT_EQ(-1, result);
  EXPECT_EQ(-1, file.Read());
  EXPECT_EQ(0U, file.AvailableBytes());
  EXPECT_EQ(10, file.GetInputPos());
}

TEST_F(BinaryFileStreamTest, ABlockThatEndsBehindTheFileIsCut) {
  File file(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS);
  long long result = 0;
  EXPECT_EQ("0123456789", ReadBlock(file, 100, &result));
  EXPECT_EQ(10, result);
}

TEST_F(BinaryFileStreamTest, ReadingNothingOrLessIsMinusOneAndMovesNothing) {
  File file(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  char byte = '?';
  EXPECT_EQ('0', file.Read());
  WriteText(file, "ab");
  EXPECT_EQ(-1, file.Read(&byte, 0));
  EXPECT_EQ(-1, file.Read(&byte, -1));
  EXPECT_EQ(-1, file.Read(&byte, std::numeric_limits<long long>::min()));
  EXPECT_EQ('?', byte);
  EXPECT_EQ(1, file.GetInputPos());
  EXPECT_EQ('1', file.Read());
}

TEST_F(BinaryFileStreamTest, ReadingNothingMovesThePointerThereAllTheSame) {
  File file(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  WriteText(file, "ab");
  EXPECT_EQ(12, file.GetCurrentPos());
  char byte = 0;
  EXPECT_EQ(-1, file.Read(&byte, 0));
  EXPECT_EQ(0, file.GetCurrentPos());
}

TEST_F(BinaryFileStreamTest, WritingNothingDoesNothing) {
  File file(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  file.Write(nullptr, 0);
  EXPECT_EQ(10, file.GetOutputPos());
  EXPECT_EQ(0, file.GetCurrentPos());
}

TEST_F(BinaryFileStreamTest, AllValuesOfAByteComeBack) {
  File file(m_sName, File::READ_WRITE_MODE, File::eCREATE_ALWAYS);
  for (int value = 0; value < 256; ++value) file.Write(static_cast<unsigned char>(value));
  for (int value = 0; value < 256; ++value) EXPECT_EQ(value, file.Read());
  EXPECT_EQ(-1, file.Read());
}

TEST_F(BinaryFileStreamTest, TheTwoPositionsDontTouchEachOther) {
  File file(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_EQ(3, file.SetOutputPos(3, File::eFROM_BEGIN));
  EXPECT_EQ(7, file.SetInputPos(7, File::eFROM_BEGIN));
  file.Write('a');
  EXPECT_EQ('7', file.Read());
  EXPECT_EQ(4, file.GetOutputPos());
  EXPECT_EQ(8, file.GetInputPos());
  EXPECT_EQ(8, file.GetCurrentPos());
  WriteText(file, "bc");
  EXPECT_EQ(6, file.GetCurrentPos());
  EXPECT_EQ("89", ReadBlock(file, 2));
  EXPECT_EQ(6, file.GetOutputPos());
  EXPECT_EQ(10, file.GetInputPos());
  EXPECT_EQ("012abc6789", Content());
}

TEST_F(BinaryFileStreamTest, WhatIsWrittenIsThereAtOnce) {
  File file(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS);
  file.Write('a');
  EXPECT_EQ("0123456789a", Content());
  file.Flush();
  EXPECT_EQ("0123456789a", Content());
}

TEST_F(BinaryFileStreamTest, ReadsWhatSomebodyElseAppends) {
  File writer(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS);
  File reader(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS);
  ASSERT_TRUE(reader.IsOpen());
  EXPECT_EQ("0123456789", ReadBlock(reader, 20));
  EXPECT_EQ(-1, reader.Read());
  writer.Write('a');
  EXPECT_EQ(1U, reader.AvailableBytes());
  EXPECT_EQ('a', reader.Read());
}

TEST_F(BinaryFileStreamTest, OneWritesOrManyRead) {
  {
    const File writer(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS);
    EXPECT_FALSE(File(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS).IsOpen());
    EXPECT_FALSE(File(m_sName, File::READ_WRITE_MODE, File::eCREATE_ALWAYS).IsOpen());
    EXPECT_TRUE(File(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS).IsOpen());
  }
  const File reader(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_TRUE(File(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS).IsOpen());
  EXPECT_FALSE(File(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS).IsOpen());
  EXPECT_FALSE(File(m_sName, File::READ_MODE, File::eCREATE_ALWAYS).IsOpen());
  EXPECT_EQ("0123456789", Content());
}

TEST_F(BinaryFileStreamTest, ClosesOnceAndOpensAgainUnderAnotherNameAndMode) {
  File file(m_sName, File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_EQ("01", ReadBlock(file, 2));
  file.Close();
  file.Close();
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(m_sName, file.GetFileName());
  const std::string other = m_folder.Write("other", "abc");
  EXPECT_TRUE(file.Open(other, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS));
  EXPECT_EQ(other, file.GetFileName());
  EXPECT_EQ(0, file.GetInputPos());
  EXPECT_EQ(3, file.GetOutputPos());
  file.Write('d');
  EXPECT_EQ("abcd", ReadBlock(file, 10));
}

TEST_F(BinaryFileStreamTest, AnOpenOneIsClosedBeforeItIsOpenedAgain) {
  File file(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_TRUE(file.Open(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS));
  EXPECT_FALSE(file.Open(m_folder.File("missing"), File::READ_MODE, File::eOPEN_IF_EXISTS));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(m_sName, file.GetFileName());
  EXPECT_TRUE(File(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS).IsOpen());
}

TEST_F(BinaryFileStreamTest, ClosesByEitherBaseAndAtItsEnd) {
  File file(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS);
  static_cast<BinaryInputStream&>(file).Close();
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.Open(m_sName, File::READ_WRITE_MODE, File::eOPEN_IF_EXISTS));
  static_cast<BinaryOutputStream&>(file).Close();
  EXPECT_FALSE(file.IsOpen());
  { const File shortLived(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS); }
  EXPECT_TRUE(File(m_sName, File::WRITE_MODE, File::eOPEN_IF_EXISTS).IsOpen());
}

TEST_F(BinaryFileStreamTest, BothSeparatorsSeparate) {
  const std::string name = m_folder.Path() + "\\file";
  File file(name, File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(name, file.GetFileName());
}
