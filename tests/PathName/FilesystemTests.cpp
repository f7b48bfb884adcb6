#include <Infrastructure/OxaCore/Filesystem.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace Oxa::Core;

namespace {

TEST(Filesystem, APathIsTheNameForTheSystem) {
  EXPECT_EQ("/tmp/run.txt", ToPath(PathName("/tmp/run.txt")).native());
  EXPECT_EQ("C:/data/run.txt", ToPath(PathName("C:\\data\\run.txt")).native());
  EXPECT_EQ("//server/share/", ToPath(PathName("\\\\server\\share\\")).native());
  EXPECT_EQ("../a b/\xc3\xa9\xff", ToPath(PathName("..\\a b/\xc3\xa9\xff")).native());
  EXPECT_TRUE(ToPath(PathName()).empty());
}

TEST(Filesystem, APathNameIsThePathAsItStands) {
  EXPECT_TRUE(ToPathName("/tmp/./run.txt") == "/tmp/./run.txt");
  EXPECT_TRUE(ToPathName("a\\b") == "a\\b");
  EXPECT_TRUE(ToPathName(std::filesystem::path()) == "");
  EXPECT_EQ("run", ToPathName("/tmp/run.txt").GetLeaf());
}

TEST(Filesystem, ThereAndBackIsTheSameFile) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  EXPECT_TRUE(ToPathName(folder).IsDir());
  EXPECT_EQ(folder, ToPath(ToPathName(folder)));
}

}  // namespace
