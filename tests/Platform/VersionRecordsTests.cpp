#include "Platform/VersionRecords.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "Support/TemporaryFolder.h"
#include "SystemTools/PeFile.h"

namespace Platform = Oxa::Core::Platform;
using Platform::VersionRecord;

namespace {

std::string ProbeFile() {
  SystemToolsTest::PeFile file;
  file.m_translations = {{0x409, 0x4B0}};
  file.m_tables = {{u"040904B0", {{u"ProductName", u"Probe"}, {u"Comments", u"loud"}}}};
  return file.Make();
}

}  // namespace

TEST(VersionRecords, KeysThatAreAskedForAreAdded) {
  const TestSupport::TemporaryFolder folder;
  VersionRecord record{{"Comments", "mine"}, {"Other", "too"}};
  EXPECT_EQ(0, Platform::ReadVersionRecord(folder.Write("probe.dll", ProbeFile()).c_str(),
                                           {"ProductName", "Comments", "SpecialBuild"}, record));
  EXPECT_EQ((VersionRecord{{"Comments", "mine"}, {"Other", "too"}, {"ProductName", "Probe"}}), record);
}

TEST(VersionRecords, BothSeparatorsSeparate) {
  const TestSupport::TemporaryFolder folder;
  std::string name = folder.Write("probe.dll", ProbeFile());
  for (char& c : name)
    if (c == '/') c = '\\';
  VersionRecord record;
  EXPECT_EQ(0, Platform::ReadVersionRecord(name.c_str(), {"ProductName"}, record));
  EXPECT_EQ((VersionRecord{{"ProductName", "Probe"}}), record);
}

TEST(VersionRecords, AFailureLeavesTheRecord) {
  const TestSupport::TemporaryFolder folder;
  VersionRecord record{{"ProductName", "mine"}};
  EXPECT_EQ(ENOENT, Platform::ReadVersionRecord(folder.File("missing").c_str(), {"ProductName"}, record));
  EXPECT_EQ(ENODATA,
            Platform::ReadVersionRecord(folder.Write("text", "no module").c_str(), {"ProductName"}, record));
  const std::string whole = ProbeFile();
  EXPECT_EQ(ENODATA,
            Platform::ReadVersionRecord(folder.Write("half", whole.substr(0, whole.size() / 2)).c_str(),
                                        {"ProductName"}, record));
  EXPECT_NE(0, Platform::ReadVersionRecord(folder.Path().c_str(), {"ProductName"}, record));
  EXPECT_NE(0, Platform::ReadVersionRecord("", {"ProductName"}, record));
  EXPECT_EQ((VersionRecord{{"ProductName", "mine"}}), record);
}
