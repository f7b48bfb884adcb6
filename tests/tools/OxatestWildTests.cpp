// oxatest on modules that know no bounds.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>

#include "Message.h"
#include "Oxatest.h"

using namespace OxatestTests;

namespace {

TEST(OxatestOnWildModules, CutsATextThatIsTooLong) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Says much"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  ASSERT_TRUE(run.m_bParsed);
  const std::string text = run.Case("Says much").Child("system-out").m_sText;
  EXPECT_EQ(std::string(65535, 'x') + "\n[10485760 bytes left out]", text) << text.substr(65530, 100);
}

TEST(OxatestOnWildModules, KeepsNotAllOfManyTexts) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Talkative"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ("300", run.m_junit.Attribute("tests"));
  EXPECT_GT(run.Case("Talks 0").Child("system-out").m_sText.size(), 65000U);
  EXPECT_EQ("[left out: the tests of this module have said too much]\n",
            run.Case("Talks 299").Child("system-out").m_sText);
}

TEST(OxatestOnWildModules, KeepsTheEndOfWhatIsPrintedOutsideOfTests) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Loud*"});
  ASSERT_TRUE(run.m_bParsed);
  const std::string output = run.m_junit.m_children[0].Child("system-out").m_sText;
  EXPECT_EQ(0U, output.find("[the beginning is left out]\n")) << output.substr(0, 50);
  EXPECT_GT(output.size(), 60000U);
  EXPECT_LT(output.size(), 66000U);
}

// The test itself sees it, while it runs.
TEST(OxatestOnWildModules, GivesTheSpaceOfOldOutputBack) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Prints much and waits"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sOutput;
  const std::string output = run.Case("Prints much and waits").Child("system-out").m_sText;
  EXPECT_NE(std::string::npos, output.find(".\nthe end\n"));
  EXPECT_EQ(std::string::npos, output.find('\0'));
  EXPECT_GT(output.size(), 65000U);
}

TEST(OxatestOnWildModules, ShowsWhatATestAnnounces) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Announces"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_TRUE(run.Says(
      "  announces              Announces\n      This will take\n      about 2 \xEF\xBF\xBD minutes.\n"))
      << run.m_sOutput;
}

TEST(OxatestOnWildModules, TakesNoAnnouncementForAStep) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Announces for ever", "--timeout=" HANG_LIMIT});
  EXPECT_EQ(1, run.m_iStatus) << run.m_sError;
  EXPECT_EQ("hung", run.Case("Announces for ever").Child("error").Attribute("type"));
}

TEST(OxatestOnWildModules, EndsADaemon) {
  const TestSupport::TemporaryFolder folder;
  const RunResult run =
      RunOxatest({WILD_MODULE, "--only=Handles/Starts a daemon"}, {"WILD_MODULE_FILE=" + folder.File("id")});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sOutput;
  const pid_t daemon = std::atoi(folder.Read("id").c_str());
  ASSERT_GT(daemon, 0);
  EXPECT_NE(0, ::kill(daemon, 0));
}

TEST(OxatestOnWildModules, EndsAProcessThatHasLeftItsGroup) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Handles/Leaves the group", "--timeout=" HANG_LIMIT});
  EXPECT_EQ(1, run.m_iStatus) << run.m_sOutput;
  EXPECT_EQ("hung", run.Case("Leaves the group").Child("error").Attribute("type"));
}

TEST(OxatestOnWildModules, EndsACopyThatComesOutOfATest) {
  const RunResult run =
      RunOxatest({WILD_MODULE, "--only=Handles/Comes out twice", "--only=Handles/After", "--timeout=20"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sOutput;
  EXPECT_EQ("2", run.m_junit.Attribute("tests"));
  EXPECT_EQ(
      "of the test\n"
      "oxatest: a copy of the process that a test has made by fork came out of the test\n",
      run.Case("Comes out twice").Child("system-out").m_sText);
}

TEST(OxatestOnWildModules, NamesTheTestThatWritesIntoItsChannel) {
  const RunResult run =
      RunOxatest({WILD_MODULE, "--only=Handles/Writes into pipes", "--only=Handles/After", "--timeout=20"});
  EXPECT_EQ(1, run.m_iStatus) << run.m_sOutput;
  EXPECT_EQ("ended since a test wrote into what tells the runner how it goes",
            run.Case("Writes into pipes").Child("error").Attribute("message"));
  EXPECT_EQ("not run", run.Case("After").Child("skipped").Attribute("message"));
}

TEST(OxatestOnWildModules, NamesTheTestThatEndsWithinAMessage) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Handles/Dies within a message", "--timeout=20"});
  EXPECT_EQ(1, run.m_iStatus) << run.m_sOutput;
  EXPECT_EQ("ended with exit status 0",
            run.Case("Dies within a message").Child("error").Attribute("message"));
}

TEST(OxatestOnWildModules, WritesIntoNoFileOfATest) {
  const TestSupport::TemporaryFolder folder;
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Handles/Replaces pipes", "--timeout=20"},
                                   {"WILD_MODULE_FILE=" + folder.File("own")});
  EXPECT_EQ(1, run.m_iStatus) << run.m_sOutput;
  const Element test = run.Case("Replaces pipes");
  EXPECT_EQ("ended with exit status 1", test.Child("error").Attribute("message"));
  EXPECT_EQ("oxatest: a test has closed a handle that it hadn&apos;t opened: the process can&apos;t go on\n",
            test.Child("system-out").m_sText);
  EXPECT_TRUE(folder.Has("own"));
  EXPECT_EQ("", folder.Read("own"));
}

TEST(OxatestOnWildModules, TellsATestFromOneThatItRuns) {
  const RunResult run = RunOxatest({WILD_MODULE, "--only=Nested"});
  EXPECT_EQ(1, run.m_iStatus) << run.m_sError;
  EXPECT_EQ("after another one", run.Case("Outer").Child("failure").Attribute("message")) << run.m_sOutput;
  EXPECT_EQ("at rest", run.Case("Inner").Child("system-out").m_sText);
  ASSERT_EQ(1U, run.m_junit.m_children.size());
  const Element within = run.m_junit.m_children[0].m_children.back();
  EXPECT_EQ("Wild Tests.Nested/Outer", within.Attribute("classname"));
  EXPECT_EQ("Inner", within.Attribute("name"));
  EXPECT_EQ("at rest", within.Child("system-out").m_sText);
  EXPECT_TRUE(run.Says("2 passed, 1 failed in ")) << run.m_sOutput;
}

TEST(OxatestOnWildModules, CountsRepetitionsThatItForgets) {
  const TestSupport::ChildResult run = TestSupport::RunChild({OXATEST, BAD_MODULE, "--repeat=500"});
  EXPECT_EQ(0, run.m_iStatus) << run.m_sError;
  EXPECT_NE(std::string::npos, run.m_sOutput.find(", 1 test, time 500\n"));
  EXPECT_NE(std::string::npos, run.m_sOutput.find("\n500 passed in "));
}

OxaTest::Message Result(const std::string& text) {
  OxaTest::Message message;
  message.m_eKind = OxaTest::Message::eRESULT;
  message.m_uOutput = 7;
  message.m_texts = {"suite", text};
  return message;
}

// Taking each off the front of all the others would take hours.
TEST(OxatestMessages, AreTakenInOneGo) {
  const int count = 500000;
  std::string bytes;
  for (int i = 0; i < count; ++i) bytes += OxaTest::Encode(Result("test " + std::to_string(i)));
  std::string::size_type at = 0;
  OxaTest::Message message;
  for (int i = 0; i < count; ++i) {
    ASSERT_EQ(OxaTest::eMESSAGE, OxaTest::Decode(bytes, at, message));
    ASSERT_EQ("test " + std::to_string(i), message.Text(1));
  }
  EXPECT_EQ(bytes.size(), at);
  EXPECT_EQ(7U, message.m_uOutput);
}

TEST(OxatestMessages, AreTakenWhole) {
  const std::string bytes = OxaTest::Encode(Result("test"));
  OxaTest::Message message;
  for (std::string::size_type size = 0; size < bytes.size(); ++size) {
    std::string::size_type at = 0;
    EXPECT_EQ(OxaTest::eNOT_WHOLE, OxaTest::Decode(bytes.substr(0, size), at, message));
    EXPECT_EQ(0U, at);
  }
}

TEST(OxatestMessages, HoldTextsUpToALimitWithoutTheRestOfACharacter) {
  const std::string longest(65536, 'a');
  EXPECT_EQ(longest, OxaTest::Limited(longest));
  EXPECT_EQ(longest + "\n[1 bytes left out]", OxaTest::Limited(longest + 'b'));
  const std::string character = "\xF0\x9F\x98\x80";
  for (const std::string::size_type in : {1U, 2U, 3U}) {
    const std::string before(65536 - in, 'a');
    EXPECT_EQ(before + "\n[4 bytes left out]", OxaTest::Limited(before + character)) << in;
  }
  const std::string before(65532, 'a');
  EXPECT_EQ(before + character + "\n[1 bytes left out]", OxaTest::Limited(before + character + 'b'));
}

TEST(OxatestMessages, AreRefusedWhenDamaged) {
  const std::string whole = OxaTest::Encode(Result("test"));
  OxaTest::Message message;
  for (const std::string::size_type place : {0U, 3U, 7U, 11U, 22U, 23U}) {
    std::string bytes = whole;
    bytes[place] = '\x7F';
    std::string::size_type at = 0;
    EXPECT_EQ(OxaTest::eDAMAGED, OxaTest::Decode(bytes, at, message)) << place;
    EXPECT_EQ(0U, at);
  }
}

}  // namespace
