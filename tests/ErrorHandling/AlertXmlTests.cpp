#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Warning.h>
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace Oxa::Core;

namespace {

using Stack = std::vector<CodeContext>;

std::string Compact(AlertInfo& alert, const std::string& circumstance = "") {
  XMLWriter writer(XMLFormatter::CreateCompact());
  std::ostringstream out;
  alert.ToXML(writer, out, circumstance);
  return out.str();
}

CodeContext Place(const AlertData& data, const AlertData& variables = AlertData()) {
  return CodeContext(data, variables);
}

std::size_t Count(const std::string& text, const std::string& piece) {
  std::size_t count = 0;
  for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++count;
  return count;
}

class TestWarning : public Warning {
 public:
  TestWarning() : Warning("noisy") {}
};

}  // namespace

TEST(AlertXml, OneElementPerDataKey) {
  AlertInfo alert(AlertData{{"Message", "1 < 2 & 'a' > \"b\""}}, Stack(), Stack());
  EXPECT_EQ("<Alert><Message>1 &lt; 2 &amp; &apos;a&apos; &gt; &quot;b&quot;</Message></Alert>",
            Compact(alert));
}

TEST(AlertXml, FreshAlertHasItsDefaults) {
  AlertInfo alert;
  alert.SetData(AlertInfo::sTIME_STAMP, "now");
  const std::string xml = Compact(alert);
  for (const char* element : {"<Message>No Message</Message>", "<Severity>Unknown</Severity>",
                              "<Category>Unknown</Category>", "<LogName/>", "<TimeStamp>now</TimeStamp>"})
    EXPECT_EQ(1u, Count(xml, element)) << element;
  EXPECT_EQ(0u, Count(xml, "TypeName"));
  EXPECT_EQ(0u, xml.find("<Alert>"));
  EXPECT_EQ(xml.size() - 8, xml.find("</Alert>"));
}

TEST(AlertXml, OrderIsThatOfTheTable) {
  AlertData data;
  for (int i = 0; i < 30; ++i) data["Key" + std::to_string(i)] = std::to_string(i);
  AlertInfo alert(data, Stack(), Stack());
  AlertData table;
  alert.GetAllData(table);
  std::string expected = "<Alert>";
  for (const auto& entry : table)
    expected += "<" + entry.first + ">" + entry.second + "</" + entry.first + ">";
  EXPECT_EQ(expected + "</Alert>", Compact(alert));
}

TEST(AlertXml, CircumstanceComesFirstAndOnlyIfGiven) {
  AlertInfo alert(AlertData{{"Message", "m"}}, Stack(), Stack());
  EXPECT_EQ("<Alert><Circumstance>at the &amp; end</Circumstance><Message>m</Message></Alert>",
            Compact(alert, "at the & end"));
  EXPECT_EQ("<Alert><Message>m</Message></Alert>", Compact(alert, ""));
}

TEST(AlertXml, EmptyStacksAreLeftOut) {
  AlertInfo fresh;
  ASSERT_TRUE(fresh.GetUnwindStack());
  ASSERT_TRUE(fresh.GetUnwindStack()->empty());
  ASSERT_FALSE(fresh.GetCallStack());
  EXPECT_EQ(0u, Count(Compact(fresh), "Stack"));
  AlertInfo present(AlertData{}, Stack{}, Stack{});
  ASSERT_TRUE(present.GetCallStack());
  EXPECT_EQ("<Alert></Alert>", Compact(present));
}

TEST(AlertXml, StacksListTheirContexts) {
  const Stack call = {Place({{"File", "deep.cpp"}}), Place({{"File", "high.cpp"}})};
  const Stack unwind = {Place({{"Line", "7"}})};
  AlertInfo alert(AlertData{{"Message", "m"}}, call, unwind);
  EXPECT_EQ(
      "<Alert><Message>m</Message>"
      "<CallStack><Context><File>deep.cpp</File></Context><Context><File>high.cpp</File></Context></"
      "CallStack>"
      "<UnwindStack><Context><Line>7</Line></Context></UnwindStack></Alert>",
      Compact(alert));
}

TEST(AlertXml, VariablesStandInTheirContext) {
  const Stack call = {Place({{"File", "f.cpp"}}, {{"x", "1 < 2"}}), Place({{"File", "g.cpp"}})};
  AlertInfo alert(AlertData(), call, Stack());
  EXPECT_EQ(
      "<Alert><CallStack><Context><File>f.cpp</File><Variables><Var name=\"x\">1 &lt; "
      "2</Var></Variables></Context>"
      "<Context><File>g.cpp</File></Context></CallStack></Alert>",
      Compact(alert));
}

TEST(AlertXml, VariableWithoutAValue) {
  AlertInfo alert(AlertData(), Stack(), {Place({}, {{"x", ""}})});
  EXPECT_EQ(
      "<Alert><UnwindStack><Context><Variables><Var name=\"x\"/></Variables></Context></UnwindStack></Alert>",
      Compact(alert));
}

TEST(AlertXml, NamesOfVariablesAreNotEscaped) {
  AlertInfo alert(AlertData(), Stack(), {Place({}, {{"vector<int>", "&"}})});
  EXPECT_EQ(1u, Count(Compact(alert), "<Var name=\"vector<int>\">&amp;</Var>"));
}

TEST(AlertXml, ElementIsNamedAfterTheFamily) {
  TestWarning warning;
  EXPECT_EQ(0u, Compact(warning).find("<Warning>"));
  NullPointer error("p");
  EXPECT_EQ(0u, Compact(error).find("<Error>"));
}

TEST(AlertXml, RaisedErrorTellsItsPlace) {
  try {
    OXA_RAISE_ERROR("Test.AlertXml", NullPointer("p<0>"));
    FAIL();
  } catch (NullPointer& error) {
    const std::string xml = Compact(error, "Test");
    EXPECT_EQ(0u, xml.find("<Error><Circumstance>Test</Circumstance>"));
    EXPECT_EQ(1u, Count(xml, "<Message>NULL pointer variable named p&lt;0&gt;</Message>"));
    EXPECT_EQ(1u, Count(xml, "<LogName>Test.AlertXml</LogName>"));
    ASSERT_EQ(1u, Count(xml, "<UnwindStack><Context>"));
    // The call stack ahead of it may name the file as well.
    EXPECT_EQ(1u, Count(xml.substr(xml.find("<UnwindStack>")), "AlertXmlTests.cpp</File>"));
  }
}

TEST(AlertXml, StandsInsideWhatTheWriterHasOpen) {
  XMLWriter writer;
  std::ostringstream out;
  AlertInfo alert(AlertData{{"Message", "m"}}, Stack(), {Place({{"Line", "7"}}, {{"x", "1"}})});
  out << writer.StartDocA() << writer.StartTag("Alerts");
  alert.ToXML(writer, out, "Test");
  out << writer.EndDoc();
  EXPECT_EQ(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<Alerts>\n"
      "  <Alert>\n"
      "    <Circumstance>Test</Circumstance>\n"
      "    <Message>m</Message>\n"
      "    <UnwindStack>\n"
      "      <Context>\n"
      "        <Line>7</Line>\n"
      "        <Variables>\n"
      "          <Var name=\"x\" >1</Var>\n"
      "        </Variables>\n"
      "      </Context>\n"
      "    </UnwindStack>\n"
      "  </Alert>\n"
      "</Alerts>\n",
      out.str());
}
