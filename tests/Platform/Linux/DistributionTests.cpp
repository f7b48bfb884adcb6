#include "Platform/Linux/Distribution.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace Platform = Oxa::Core::Platform;

namespace {

constexpr char sBEFORE[] = "what was there before";

// An os-release file with the given text, as long as this lives.
class ReleaseFile {
 public:
  explicit ReleaseFile(const std::string& text) {
    const int file = mkstemp(m_path);
    EXPECT_GE(file, 0);
    close(file);
    std::ofstream(m_path) << text;
  }
  ~ReleaseFile() { unlink(m_path); }

  const char* Path() const { return m_path; }

 private:
  char m_path[40] = "/tmp/oxacore-os-release-XXXXXX";
};

std::string NameIn(const std::string& text) {
  const ReleaseFile file(text);
  std::string name = sBEFORE;
  EXPECT_TRUE(Platform::ReadDistribution(file.Path(), name)) << text;
  return name;
}

}  // namespace

TEST(Distribution, IsTheValueOfItsKey) {
  EXPECT_EQ("Some Linux 1 (name)", NameIn("NAME=x\nPRETTY_NAME=\"Some Linux 1 (name)\"\nID=y\n"));
  EXPECT_EQ("z", NameIn("MY_PRETTY_NAME=x\n#PRETTY_NAME=y\nPRETTY_NAME=z\n"));
}

TEST(Distribution, QuotesAreTaken) {
  EXPECT_EQ("plain", NameIn("PRETTY_NAME=plain\n"));
  EXPECT_EQ("in 'double' quotes", NameIn("PRETTY_NAME=\"in 'double' quotes\"\n"));
  EXPECT_EQ("in \"single\" quotes", NameIn("PRETTY_NAME='in \"single\" quotes'\n"));
  EXPECT_EQ("one two", NameIn("PRETTY_NAME=\"one \"'two'\n"));
  EXPECT_EQ("", NameIn("PRETTY_NAME=\"\"\n"));
}

TEST(Distribution, EscapesAreTakenButInSingleQuotes) {
  EXPECT_EQ("a\"b\\c$d`e", NameIn("PRETTY_NAME=\"a\\\"b\\\\c\\$d\\`e\"\n"));
  EXPECT_EQ("a\"b'c", NameIn("PRETTY_NAME=a\\\"b\\'c\n"));
  EXPECT_EQ("a\\b", NameIn("PRETTY_NAME='a\\b'\n"));
}

TEST(Distribution, LastLineNeedsNoEnd) {
  EXPECT_EQ("whole", NameIn("NAME=x\nPRETTY_NAME=whole"));
  EXPECT_EQ("open", NameIn("PRETTY_NAME=\"open"));
  EXPECT_EQ("back\\", NameIn("PRETTY_NAME=back\\"));
  EXPECT_EQ("back\\", NameIn("PRETTY_NAME=back\\\nNAME=x\n"));
}

TEST(Distribution, IsEmptyWithoutTheKey) {
  EXPECT_EQ("", NameIn(""));
  EXPECT_EQ("", NameIn("NAME=x\nPRETTY_NAM=y\n"));
}

TEST(Distribution, MissingFileIsTold) {
  std::string name = sBEFORE;
  EXPECT_FALSE(Platform::ReadDistribution("/tmp/oxacore-no-such-folder/os-release", name));
  EXPECT_EQ(sBEFORE, name);
}
