#include "Log/DefaultLogDocument.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <atomic>
#include <thread>

#include "Log/LogFolder.h"
#include "station/WithoutPrivileges.h"

namespace {

using namespace Oxa::Core;
using LogTests::LogFolder;

const char* const sENVELOPE =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE Log [<!ENTITY entries SYSTEM \"DefaultLog.entries\">]>\n"
    "\n"
    "<Log>\n"
    "  &entries;\n"
    "</Log>\n";

std::string WhatIsToldOfCreating() {
  testing::internal::CaptureStderr();
  CreateDefaultLogDocument();
  return testing::internal::GetCapturedStderr();
}

std::string Warning(const LogFolder& folder) {
  return "WARNING: Failed to create default log file named: \n" + folder.File("DefaultLog.xml") + "\n";
}

TEST(DefaultLogDocument, DrawsInTheEntriesByteForByte) {
  const LogFolder folder;
  EXPECT_EQ("", WhatIsToldOfCreating());
  EXPECT_EQ(sENVELOPE, folder.Read("DefaultLog.xml"));
  EXPECT_EQ(std::set<std::string>{"DefaultLog.xml"}, folder.Names());
}

TEST(DefaultLogDocument, StaysAsItIsIfItIsThere) {
  const LogFolder folder;
  folder.Put("DefaultLog.xml", "<Mine/>");
  EXPECT_EQ("", WhatIsToldOfCreating());
  EXPECT_EQ("<Mine/>", folder.Read("DefaultLog.xml"));
}

TEST(DefaultLogDocument, LiesInTheFolderOfTheProcessAsItsTextStands) {
  const LogFolder folder;
  std::filesystem::create_directory(folder.File("deeper"));
  System::Instance()->SetProcessPath(folder.Path() + "deeper/with ");
  EXPECT_EQ(folder.Path() + "deeper/with DefaultLog.xml", DefaultLogFile("DefaultLog.xml"));
  EXPECT_EQ("", WhatIsToldOfCreating());
  EXPECT_EQ(sENVELOPE, folder.Read("deeper/with DefaultLog.xml"));
}

TEST(DefaultLogDocument, ThatCannotBeMadeIsToldOnStandardError) {
  const LogFolder folder;
  System::Instance()->SetProcessPath(folder.Path() + "missing/");
  EXPECT_EQ(
      "WARNING: Failed to create default log file named: \n" + folder.Path() + "missing/DefaultLog.xml\n",
      WhatIsToldOfCreating());
}

TEST(DefaultLogDocument, InAFolderWithoutTheRightToWriteIsToldOnStandardError) {
  const LogFolder folder;
  folder.Allow("", 0555);
  const StationTests::WithoutPrivileges nobody;
  EXPECT_EQ(Warning(folder), WhatIsToldOfCreating());
  EXPECT_EQ(std::set<std::string>{}, folder.Names());
}

TEST(DefaultLogDocument, IsNoFolderOfItsName) {
  const LogFolder folder;
  std::filesystem::create_directory(folder.File("DefaultLog.xml"));
  EXPECT_EQ(Warning(folder), WhatIsToldOfCreating());
  EXPECT_EQ(std::set<std::string>{"DefaultLog.xml"}, folder.Names());
}

TEST(DefaultLogDocument, IsThereWholeOrNotAtAllWithoutRoom) {
  const LogFolder folder;
  rlimit before;
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &before));
  const rlimit narrow = {50, before.rlim_max};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &narrow));
  CreateDefaultLogDocument();
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(std::set<std::string>{}, folder.Names());
  EXPECT_EQ("", WhatIsToldOfCreating());
  EXPECT_EQ(sENVELOPE, folder.Read("DefaultLog.xml"));
}

TEST(DefaultLogDocument, IsNeverSeenHalfMade) {
  const LogFolder folder;
  constexpr int iMOST_ROUNDS = 1000000;
  std::atomic<bool> done{false};
  std::atomic<bool> looked{false};
  std::set<std::string> seen;
  std::thread reader([&] {
    while (!done) {
      std::ifstream file(folder.File("DefaultLog.xml"), std::ios::binary);
      if (!file.is_open()) continue;
      seen.emplace(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
      looked = true;
    }
  });
  // On a busy machine the reader may not get to look for a while.
  for (int i = 0; i < 2000 || (!looked && i < iMOST_ROUNDS); ++i) {
    CreateDefaultLogDocument();
    std::filesystem::remove(folder.File("DefaultLog.xml"));
  }
  done = true;
  reader.join();
  EXPECT_EQ(std::set<std::string>{sENVELOPE}, seen);
}

}  // namespace
