// Files of modules: what is read of them, and how much.
#include "Platform/Linux/ModuleFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "Support/TemporaryFolder.h"

namespace {

using Oxa::Core::Platform::ModuleFile;

constexpr std::uint64_t uMOST = 16 * 1024 * 1024;

class ModuleFiles : public testing::Test {
 protected:
  std::string Path() const { return m_folder.File("module"); }

  const TestSupport::TemporaryFolder m_folder;
  std::string m_bytes = "untouched";
};

TEST_F(ModuleFiles, OnlyFilesAreRead) {
  EXPECT_EQ(ENOENT, ModuleFile(Path().c_str()).Code());
  EXPECT_EQ(EISDIR, ModuleFile(m_folder.Path().c_str()).Code());
  EXPECT_EQ(EINVAL, ModuleFile("/dev/null").Code());
  m_folder.Write("module", "");
  EXPECT_EQ(0, ModuleFile(Path().c_str()).Code());
}

TEST_F(ModuleFiles, APartIsReadWhereAllOfItIsThere) {
  ModuleFile file(m_folder.Write("module", "0123456789").c_str());
  EXPECT_FALSE(file.Read(8, 3, m_bytes));
  EXPECT_FALSE(file.Read(11, 0, m_bytes));
  EXPECT_FALSE(file.Read(8, ~std::uint64_t{0}, m_bytes));
  EXPECT_EQ("untouched", m_bytes);
  EXPECT_TRUE(file.Read(8, 2, m_bytes));
  EXPECT_EQ("89", m_bytes);
  EXPECT_TRUE(file.Read(10, 0, m_bytes));
  EXPECT_EQ("", m_bytes);
}

TEST_F(ModuleFiles, APartIsReadAsFarAsItIsThere) {
  ModuleFile file(m_folder.Write("module", "0123456789").c_str());
  EXPECT_TRUE(file.ReadUpTo(8, 3, m_bytes));
  EXPECT_EQ("89", m_bytes);
  EXPECT_TRUE(file.ReadUpTo(7, 2, m_bytes));
  EXPECT_EQ("78", m_bytes);
  EXPECT_FALSE(file.ReadUpTo(11, 1, m_bytes));
}

// However often the file says that it has more: what is damaged could have it all read again and again.
TEST_F(ModuleFiles, AllThatIsReadHasALimit) {
  m_folder.Write("module", "");
  std::filesystem::resize_file(Path(), uMOST + 1);
  ModuleFile file(Path().c_str());
  EXPECT_FALSE(file.Read(0, uMOST + 1, m_bytes));
  EXPECT_TRUE(file.Read(1, uMOST - 10, m_bytes));
  EXPECT_TRUE(file.Read(0, 9, m_bytes));
  EXPECT_FALSE(file.Read(0, 2, m_bytes));
  EXPECT_TRUE(file.Read(0, 1, m_bytes));
  EXPECT_FALSE(file.Read(0, 1, m_bytes));
}

}  // namespace
