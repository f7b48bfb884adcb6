#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "Support/ChildProcess.h"
#include "Support/DyingChild.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using TestSupport::ChildResult;
using TestSupport::RecordsIn;
using TestSupport::RunDying;
using TestSupport::TemporaryFile;
using TestSupport::TemporaryFolder;

constexpr int iMINUS_ONE = 255;

ChildResult Die(const TemporaryFolder& folder, const char* scenario) {
  return RunDying(folder, {TERMINATE_HOST, scenario});
}

ChildResult Die(const char* scenario) { return Die(TemporaryFolder(), scenario); }

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// The one XML document on standard error, without what the unload writes behind it.
std::string Document(const ChildResult& result) {
  const auto begin = result.m_sError.find("<?xml");
  const auto end = result.m_sError.find("</Error>");
  if (begin != 0 || end == std::string::npos) return "";
  return result.m_sError.substr(0, end + 9);
}

void ExpectWellFormed(const std::string& document) {
  if (std::system("command -v xmllint > /dev/null 2>&1") != 0) GTEST_SKIP() << "no xmllint on this machine";
  const TemporaryFile file;
  std::ofstream(file.Name()) << document;
  EXPECT_EQ(0, std::system(("xmllint --noout " + file.Name()).c_str())) << document;
}

// Died with status -1, with one document on standard error that tells `message`.
void ExpectReport(const ChildResult& result, const std::string& message) {
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  const std::string document = Document(result);
  EXPECT_EQ(0U, document.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>")) << result.m_sError;
  EXPECT_EQ(1, Count(result.m_sError, "<?xml"));
  EXPECT_THAT(document, HasSubstr("<Circumstance>Fatal unhandled error</Circumstance>"));
  EXPECT_THAT(document, HasSubstr("<Message>" + message + "</Message>"));
}

TEST(Terminate, UncaughtErrorIsTheLastWordOfTheProcess) {
  const TemporaryFolder folder;
  const ChildResult result = Die(folder, "raise");
  ExpectReport(result, "nobody &lt;catches&gt; this");
  EXPECT_THAT(Document(result), HasSubstr("<LogName>Test.Host</LogName>"));
  EXPECT_EQ("uncaught: nobody <catches> this, path \"" + RecordsIn(folder) + "\"\n", result.m_sOutput)
      << "listeners hear of it whatever they are interested in";
}

TEST(Terminate, DocumentIsWellFormed) {
  const std::string document = Document(Die("raise"));
  ASSERT_NE("", document);
  ExpectWellFormed(document);
}

TEST(Terminate, FatalErrorIsNotToldAsHandled) {
  EXPECT_THAT(Die("handled").m_sOutput, Not(HasSubstr("handled")));
}

TEST(Terminate, WithoutAnyErrorAnUnknownOneStandsIn) {
  const ChildResult result = Die("number");
  ExpectReport(result, "No Message");
  EXPECT_THAT(Document(result), HasSubstr("<Category>Unknown</Category>"));
  EXPECT_THAT(result.m_sOutput, StartsWith("uncaught: No Message, path \"/"));
}

TEST(Terminate, PlainCallIsReportedTheSameWay) { ExpectReport(Die("terminate"), "No Message"); }

TEST(Terminate, LastErrorOfTheThreadStandsForAForeignException) {
  ExpectReport(Die("number-after-error"), "caught before");
}

TEST(Terminate, DyingThreadsOwnErrorComesFirst) { ExpectReport(Die("own-thread"), "of the dying thread"); }

TEST(Terminate, AnotherThreadsErrorStandsInForAThreadWithoutOne) {
  ExpectReport(Die("any-thread"), "of the main thread");
}

TEST(Terminate, UncaughtErrorOfAThreadEndsTheProcess) {
  ExpectReport(Die("thread"), "nobody &lt;catches&gt; this");
}

TEST(Terminate, ErrorAtANoexceptWallEndsTheProcess) {
  ExpectReport(Die("noexcept"), "nobody &lt;catches&gt; this");
}

TEST(Terminate, WithoutReportsItGoesStraightToTheExit) {
  const ChildResult result = Die("no-reports");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_EQ(0, Count(result.m_sError, "<?xml"));
  EXPECT_EQ("", result.m_sOutput);
}

TEST(Terminate, SecondUncaughtErrorGoesStraightToTheExit) {
  const ChildResult result = Die("second-during-first");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_EQ(0, Count(result.m_sError, "<?xml"));
  EXPECT_EQ(1, Count(result.m_sOutput, "uncaught: "));
}

TEST(Terminate, SecondIsReportedWhereTwoReportsAreAllowed) {
  const ChildResult result = Die("two-reports");
  ExpectReport(result, "nobody &lt;catches&gt; this");
  EXPECT_EQ(2, Count(result.m_sOutput, "uncaught: "));
}

TEST(Terminate, ListenerThatThrowsDoesNotKeepTheErrorFromStandardError) {
  ExpectReport(Die("bad-listener"), "nobody &lt;catches&gt; this");
}

TEST(Terminate, StaticObjectsDieAndTheirRaisesReturn) {
  const ChildResult result = Die("static-objects");
  EXPECT_EQ(iMINUS_ONE, result.m_iStatus);
  EXPECT_THAT(result.m_sOutput, HasSubstr("static object died\nthe raise returned\n"));
  EXPECT_THAT(result.m_sError, HasSubstr("Error Raised During OxaCore Shutdown"));
  EXPECT_THAT(result.m_sError, HasSubstr("raised while exiting"));
}

TEST(Terminate, PreviousHandlerIsNeitherCalledNorLostByALibraryThatIsLoadedAndUnloaded) {
  const ChildResult dying = RunDying(TemporaryFolder(), {LATE_HOST, "terminate-loaded", OXACORE_LIBRARY});
  EXPECT_EQ(iMINUS_ONE, dying.m_iStatus);
  EXPECT_EQ("", dying.m_sOutput);
  EXPECT_EQ(1, Count(dying.m_sError, "<?xml"));
  const ChildResult unloaded =
      RunDying(TemporaryFolder(), {LATE_HOST, "terminate-unloaded", OXACORE_LIBRARY});
  EXPECT_EQ(7, unloaded.m_iStatus);
  EXPECT_EQ("the host's own handler\n", unloaded.m_sOutput);
  EXPECT_EQ(0, Count(unloaded.m_sError, "<?xml"));
}

}  // namespace
