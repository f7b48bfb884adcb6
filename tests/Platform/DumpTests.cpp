// Memory dumps: the file comes about, or the system's code says why it doesn't.
#include "Platform/Dump.h"

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core::Platform;
using TestSupport::TemporaryFolder;

constexpr int iTIME = 60000;

int WriteTo(const std::string& name) { return WriteDump(name.c_str(), nullptr, 0, nullptr, nullptr, iTIME); }

TEST(Dump, IsAMinidump) {
  const TemporaryFolder folder;
  ASSERT_EQ(WriteTo(folder.File("x.dmp")), 0);
  EXPECT_EQ(folder.Read("x.dmp").substr(0, 4), "MDMP");
}

TEST(Dump, WritesOverAnOldFile) {
  const TemporaryFolder folder;
  folder.Write("x.dmp", "old");
  ASSERT_EQ(WriteTo(folder.File("x.dmp")), 0);
  EXPECT_EQ(folder.Read("x.dmp").substr(0, 4), "MDMP");
}

TEST(Dump, AFolderThatDoesntExistGivesTheSystemsCode) {
  const TemporaryFolder folder;
  EXPECT_EQ(WriteTo(folder.File("missing/x.dmp")), ENOENT);
  EXPECT_TRUE(folder.Names().empty());
}

}  // namespace
