// Files that another process writes, until it is killed.
#include <cstdint>
#include <cstring>

#include "Support/BackgroundChild.h"
#include "Support/Eventually.h"
#include "io/FileStreams.h"

using namespace IoTests;

namespace {

#ifdef OXACORE_SOAK
constexpr int iROUNDS = 200;
#else
constexpr int iROUNDS = 8;
#endif

class BinaryFileStreamProcessTest : public FileStreamTest {
 protected:
  std::string WrittenName() const { return m_folder.File("written"); }
  std::string ProgressName() const { return m_folder.File("progress"); }

  // As far as the host has told in whole lines.
  std::uint64_t Progress() const {
    const std::string lines = TestSupport::ReadFile(ProgressName());
    const std::size_t end = lines.rfind('\n');
    if (end == std::string::npos || end == 0) return 0;
    const std::size_t before = lines.rfind('\n', end - 1);
    return std::stoull(lines.substr(before == std::string::npos ? 0 : before + 1));
  }
};

}  // namespace

TEST_F(BinaryFileStreamProcessTest, WhatAKilledProcessFlushedIsThere) {
  for (int round = 0; round < iROUNDS; ++round) {
    TestSupport::BackgroundChild child({FILE_STREAM_HOST, WrittenName(), ProgressName()});
    EXPECT_TRUE(TestSupport::Eventually([&] { return Progress() >= 1000; }));
    child.Kill();
    File file(WrittenName(), File::READ_MODE, File::eOPEN_IF_EXISTS);
    ASSERT_TRUE(file.IsOpen());
    BufferedBinaryInputStream buffered(file, BufferedBinaryInputStream::DEFAULT_BUFFER_SIZE);
    const std::uint64_t flushed = Progress();
    const std::uint64_t whole = file.AvailableBytes() / sizeof(std::uint64_t);
    EXPECT_GE(whole, flushed);
    for (std::uint64_t expected = 0; expected < whole; ++expected) {
      std::uint64_t number = 0;
      ASSERT_EQ(8, buffered.Read(&number, 8));
      ASSERT_EQ(expected, number);
    }
    file.Close();
    std::filesystem::remove(WrittenName());
    std::filesystem::remove(ProgressName());
  }
}

TEST_F(BinaryFileStreamProcessTest, TheFileIsTheWritersUntilHeIsGone) {
  TestSupport::BackgroundChild child({FILE_STREAM_HOST, WrittenName(), ProgressName()});
  EXPECT_TRUE(TestSupport::Eventually([&] { return Progress() > 0; }));
  EXPECT_FALSE(File(WrittenName(), File::WRITE_MODE, File::eOPEN_IF_EXISTS).IsOpen());
  EXPECT_FALSE(File(WrittenName(), File::READ_WRITE_MODE, File::eCREATE_ALWAYS).IsOpen());
  File reader(WrittenName(), File::READ_MODE, File::eOPEN_IF_EXISTS);
  EXPECT_TRUE(reader.IsOpen());
  std::uint64_t number = 1;
  EXPECT_EQ(8, reader.Read(&number, 8));
  EXPECT_EQ(0U, number);
  reader.Close();
  child.Kill();
  EXPECT_TRUE(File(WrittenName(), File::WRITE_MODE, File::eOPEN_IF_EXISTS).IsOpen());
}
