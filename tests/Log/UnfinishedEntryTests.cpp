#include "Log/UnfinishedEntry.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "Log/LogEntryText.h"
#include "Support/ChildProcess.h"

namespace {

using namespace Oxa::Core;

std::string Whole(const std::string& message) {
  OxaLogEntry entry;
  entry.m_eSeverity = eLOG_ERROR;
  entry.m_sMessage = message;
  entry.m_sLoggerPath = "Test";
  return LogEntryText(entry);
}

TEST(UnfinishedEntry, IsTheRestBehindTheLastSeparator) {
  const std::string whole = Whole("one") + Whole("two");
  const std::string next = Whole("three");
  for (std::size_t there = 0; there < next.size(); ++there)
    EXPECT_EQ(whole.size(), LengthOfWholeEntries(whole + next.substr(0, there))) << there;
  EXPECT_EQ(whole.size() + next.size(), LengthOfWholeEntries(whole + next));
}

TEST(UnfinishedEntry, CanBeTheFirst) {
  const std::string only = Whole("one");
  for (std::size_t there = 0; there < only.size(); ++there)
    EXPECT_EQ(0U, LengthOfWholeEntries(only.substr(0, there))) << there;
}

TEST(UnfinishedEntry, IsNothingThatSomebodyElseWrote) {
  EXPECT_EQ(5U, LengthOfWholeEntries("hello"));
  EXPECT_EQ(3U, LengthOfWholeEntries("\n \n"));
  const std::string text = Whole("one") + "<!-- a note -->\n";
  EXPECT_EQ(text.size(), LengthOfWholeEntries(text));
}

TEST(UnfinishedEntry, IsCutOffTheFile) {
  const TestSupport::TemporaryFile file;
  const std::string whole = Whole(std::string(100000, 'x')) + Whole("two");  // more than is read at once
  std::ofstream(file.Name(), std::ios::binary) << whole << Whole("three").substr(0, 100);
  CutUnfinishedEntry(file.Name());
  EXPECT_EQ(whole, file.Content());
  CutUnfinishedEntry(file.Name());
  EXPECT_EQ(whole, file.Content());
}

TEST(UnfinishedEntry, OfAFileThatIsNotThereIsNothing) {
  const std::string name = [] { return TestSupport::TemporaryFile().Name(); }();
  CutUnfinishedEntry(name);
  EXPECT_FALSE(std::ifstream(name).is_open());
}

}  // namespace
