// What modules say may hold any bytes.
#include <gtest/gtest.h>

#include "Oxatest.h"

using namespace OxatestTests;

namespace {

const char* const sREPLACED = "\xEF\xBF\xBD";

TEST(OxatestOnStrangeTexts, WritesADocument) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Strange*"});
  EXPECT_EQ(1, run.m_iStatus);
  ASSERT_TRUE(run.m_bParsed);
  EXPECT_EQ("4", run.m_junit.Attribute("tests"));
  EXPECT_EQ("Module &lt;Tests&gt;.Strange &lt;names&gt; &amp; &quot;texts&quot;",
            run.Case("two&#10;lines").Attribute("classname"));
  EXPECT_EQ("testcase", run.Case("[a*b?] &apos;q&apos;/x").m_sName);
  EXPECT_EQ("testcase", run.Case("").m_sName);
}

TEST(OxatestOnStrangeTexts, ReplacesWhatADocumentCannotHold) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Strange*"});
  const std::string r = sREPLACED;
  const Element test = run.Case(r + "[31m \xC2\xB5s \xC2\xB5s \xE2\x82\xAC " + r);
  EXPECT_EQ("]]&gt;&#9;" + r + " &lt;![CDATA[ \xC2\xB0 \xC3\xAD\xC2\xA0" + r + " &amp;amp;",
            test.Child("failure").Attribute("message"));
  EXPECT_EQ(0U, test.Child("failure").m_sText.find("]]&gt;\t")) << test.Child("failure").m_sText;
  EXPECT_EQ(r + r + "]]&gt;\nnext\nlast\xC3\xBF", test.Child("system-out").m_sText);
}

TEST(OxatestOnStrangeTexts, ShowsThemHarmlessly) {
  const RunResult run = RunOxatest({SUITE_MODULE, "--only", "Strange*"});
  const std::string r = sREPLACED;
  EXPECT_EQ(std::string::npos, run.m_sOutput.find('\x1B'));
  EXPECT_TRUE(run.Says(" s  Strange <names> & \"texts\"/two lines\n")) << run.m_sOutput;
  EXPECT_TRUE(run.Says("      | next\n      | last\xC3\xBF\n  passed ")) << run.m_sOutput;
  EXPECT_TRUE(run.Says("/" + r + "[31m \xC2\xB5s \xC2\xB5s \xE2\x82\xAC " + r + "\n")) << run.m_sOutput;
}

}  // namespace
