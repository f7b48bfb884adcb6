// A writer that is killed in the middle, over and over: what it wrote is there, and the next one goes on.
#include <Infrastructure/OxaCore/WrappingFileStreamIterator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "Log/LogProgress.h"
#include "Support/BackgroundChild.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"

namespace {

using LogTests::LogProgress;
using TestSupport::Eventually;

#if defined(OXACORE_SOAK)
constexpr int iKILLS = 300;
#else
constexpr int iKILLS = 10;
#endif

// All that the files hold, in the order of the walk.
class Reader : public Oxa::Core::WrappingFileStreamIterator {
 public:
  explicit Reader(const std::string& folder) {
    Initialize(folder, "Run");
    IterateFiles();
  }
  std::vector<std::uint64_t> Numbers() const {
    std::vector<std::uint64_t> numbers;
    std::istringstream lines(m_sText);
    std::string word;
    std::uint64_t number = 0;
    while (lines >> word >> number) {
      EXPECT_EQ("line", word);
      numbers.push_back(number);
    }
    EXPECT_TRUE(lines.eof());
    return numbers;
  }
  int m_iFiles = 0;

 protected:
  void NextFile(std::string fileName) override {
    ++m_iFiles;
    m_sText += TestSupport::ReadFile(fileName);
  }

 private:
  std::string m_sText;
};

// Whether each number is the one before, or the next. A line may be on disk that its writer didn't come to count: then
// the next writer writes it once more.
bool AreConsecutive(const std::vector<std::uint64_t>& numbers) {
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    if (numbers[i] != numbers[i - 1] && numbers[i] != numbers[i - 1] + 1) return false;
  }
  return true;
}

class WrappingFileStreamKills : public testing::Test {
 protected:
  WrappingFileStreamKills() : m_progress(LogTests::MapProgress(m_other.File("progress"))) {}

  std::vector<std::string> Writer(const std::string& maxFiles) const {
    return {DAILY_LOG_HOST, m_folder.Path(), m_other.File("progress"), maxFiles};
  }

  // Kills one writer after the other, each some files further; the last one may come to its end.
  void WriteAndKill(const std::string& maxFiles) {
    m_progress.m_ullAllowed = UINT64_MAX;
    for (int i = 0; i < iKILLS; ++i) {
      const std::uint64_t goal = m_progress.m_ullFlushed + 97 + static_cast<std::uint64_t>(i % 31);
      TestSupport::BackgroundChild writer(Writer(maxFiles));
      ASSERT_TRUE(Eventually([&] { return m_progress.m_ullFlushed >= goal; }));
      writer.Kill();
    }
    m_progress.m_ullAllowed = m_progress.m_ullFlushed + 100;
    ASSERT_EQ(0, TestSupport::BackgroundChild(Writer(maxFiles)).Await());
  }

  const TestSupport::TemporaryFolder m_folder;
  const TestSupport::TemporaryFolder m_other;
  LogProgress& m_progress;
};

TEST_F(WrappingFileStreamKills, LoseNothingThatWasWritten) {
  WriteAndKill("-1");
  const Reader reader(m_folder.Path());
  const std::vector<std::uint64_t> numbers = reader.Numbers();
  ASSERT_FALSE(numbers.empty());
  EXPECT_TRUE(AreConsecutive(numbers));
  EXPECT_EQ(0U, numbers.front());
  EXPECT_EQ(m_progress.m_ullAllowed - 1, numbers.back());
  EXPECT_GT(reader.m_iFiles, iKILLS);
}

// A file whose turn has come again may have been killed before it was emptied: then it keeps its old lines in front of
// the new ones.
TEST_F(WrappingFileStreamKills, LoseNothingThatIsStillDueWhereFilesWrap) {
  WriteAndKill("3");
  const Reader reader(m_folder.Path());
  std::vector<std::uint64_t> numbers = reader.Numbers();
  std::sort(numbers.begin(), numbers.end());
  ASSERT_GT(numbers.size(), 50U);
  EXPECT_TRUE(AreConsecutive(numbers));
  EXPECT_EQ(m_progress.m_ullAllowed - 1, numbers.back());
  EXPECT_EQ(3, reader.m_iFiles);
}

}  // namespace
