#include "AlertLog.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/RaiseSite.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeClock.h"
#include "StationAlerts.h"
#include "TemporaryFolder.h"
#include "WithoutPrivileges.h"

namespace {

using Oxa::Core::Error;
using Oxa::Core::InvalidParameter;
using Station::AlertLog;
using Station::OutputUnusable;
using Station::SampleLate;
using StationTests::Micro;
using StationTests::ReadFile;
using StationTests::TemporaryFolder;
using StationTests::WithoutPrivileges;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const sFRAME = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Alerts>\n  <Started>";

void ExpectDocument(const std::string& file) {
  const std::string text = ReadFile(file);
  EXPECT_THAT(text, StartsWith(sFRAME));
  EXPECT_THAT(text, EndsWith(">\n</Alerts>\n"));
  EXPECT_EQ(text.find("</Alerts>"), text.rfind("</Alerts>"));
}

std::string WhyUnusable(const std::string& folder) {
  try {
    AlertLog log(folder);
  } catch (const OutputUnusable& error) {
    return error.what();
  }
  return "it is fine";
}

void RaiseAndSurvive(const std::string& text) {
  try {
    try {
      OXA_RAISE_ERROR("Test.Log", InvalidParameter("text", text));
    }
    OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO("Way", "out"))
  } catch (const Error&) {
  }
}

TEST(AlertLog, OfNothingIsADocument) {
  const TemporaryFolder folder;
  const AlertLog log(folder.Path());
  EXPECT_EQ(folder.File("alerts.xml"), log.GetFile());
  ExpectDocument(log.GetFile());
}

TEST(AlertLog, CreatesItsFolderAndThoseAbove) {
  const TemporaryFolder folder;
  const AlertLog log(folder.File("a/b"));
  ExpectDocument(folder.File("a/b/alerts.xml"));
}

TEST(AlertLog, ReplacesAnOldDocument) {
  const TemporaryFolder folder;
  folder.Write("alerts.xml", std::string(100000, 'x'));
  const AlertLog log(folder.Path());
  ExpectDocument(log.GetFile());
}

TEST(AlertLog, IsADocumentAfterEveryAlert) {
  const TemporaryFolder folder;
  AlertLog log(folder.Path());
  for (int i = 0; i < 3; ++i) {
    RaiseAndSurvive("some text");
    ExpectDocument(log.GetFile());
    OXA_RAISE_WARNING("Test.Log", SampleLate(1, "a", Micro(2), Micro(1)));
    ExpectDocument(log.GetFile());
  }
  EXPECT_TRUE(log.IsGood());
}

TEST(AlertLog, HoldsAnErrorWithAllTheWayThatItCame) {
  const TemporaryFolder folder;
  const AlertLog log(folder.Path());
  RaiseAndSurvive("a<b & \"c\"");
  const std::string text = ReadFile(log.GetFile());
  EXPECT_THAT(
      text, HasSubstr("\n  <Error>\n    <Circumstance>The station has survived this error</Circumstance>\n"));
  EXPECT_THAT(text, HasSubstr("Invalid Parameter: text = a&lt;b &amp; &quot;c&quot;"));
  EXPECT_THAT(text, HasSubstr("<LogName>Test.Log</LogName>"));
  EXPECT_THAT(text, HasSubstr("<Way>out</Way>"));
}

TEST(AlertLog, ShowsBytesThatXmlForbids) {
  const TemporaryFolder folder;
  const AlertLog log(folder.Path());
  RaiseAndSurvive("a\x01\xB5z");
  EXPECT_THAT(ReadFile(log.GetFile()), HasSubstr("Invalid Parameter: text = a\\x01\\xB5z"));
}

TEST(AlertLog, HoldsAWarning) {
  const TemporaryFolder folder;
  const AlertLog log(folder.Path());
  OXA_RAISE_WARNING("Test.Log", SampleLate(7, "a", Micro(2), Micro(1)));
  const std::string text = ReadFile(log.GetFile());
  EXPECT_THAT(text, HasSubstr("\n  <Warning>\n"));
  EXPECT_THAT(text, HasSubstr("Sample 7 of series &quot;a&quot; came 2 microseconds late"));
  EXPECT_THAT(text, Not(HasSubstr("Circumstance")));
}

TEST(AlertLog, HoldsAnErrorThatNobodyCaught) {
  const TemporaryFolder folder;
  AlertLog log(folder.Path());
  InvalidParameter error("text", "fatal");
  log.UncaughtFatalError(error, "");
  ExpectDocument(log.GetFile());
  EXPECT_THAT(ReadFile(log.GetFile()), HasSubstr("Nobody has caught this error, and the station ends"));
}

TEST(AlertLog, HearsNothingBeforeAndAfterItsLife) {
  const TemporaryFolder folder;
  RaiseAndSurvive("too early");
  {
    const AlertLog log(folder.Path());
    RaiseAndSurvive("in time");
  }
  RaiseAndSurvive("too late");
  ExpectDocument(folder.File("alerts.xml"));
  EXPECT_THAT(ReadFile(folder.File("alerts.xml")), HasSubstr("in time"));
  EXPECT_THAT(ReadFile(folder.File("alerts.xml")), Not(HasSubstr("too ")));
}

TEST(AlertLog, NeedsAFolderThatCanBeCreated) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("file", "");
  EXPECT_EQ("The output folder \"" + file + "\" can't be used: Not a directory", WhyUnusable(file));
  EXPECT_EQ("The output folder \"" + file + "/x\" can't be used: Not a directory", WhyUnusable(file + "/x"));
  EXPECT_EQ("The output folder \"/proc/\\xB5\" can't be used: No such file or directory",
            WhyUnusable("/proc/\xB5"));
}

TEST(AlertLog, NeedsAFileThatCanBeWritten) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.File("alerts.xml"));
  EXPECT_EQ("The output folder \"" + folder.Path() + "\" can't be used: Is a directory",
            WhyUnusable(folder.Path()));
}

TEST(AlertLog, NeedsPermission) {
  const TemporaryFolder folder;
  std::filesystem::permissions(folder.Path(),
                               std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  const WithoutPrivileges nobody;
  EXPECT_EQ("The output folder \"" + folder.Path() + "\" can't be used: Permission denied",
            WhyUnusable(folder.Path()));
  EXPECT_EQ("The output folder \"" + folder.File("new") + "\" can't be used: Permission denied",
            WhyUnusable(folder.File("new")));
}

TEST(AlertLog, KnowsThatTheDiskIsFull) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const TemporaryFolder folder;
  std::filesystem::create_symlink("/dev/full", folder.File("alerts.xml"));
  AlertLog log(folder.Path());
  RaiseAndSurvive("lost");
  EXPECT_FALSE(log.IsGood());
}

}  // namespace
