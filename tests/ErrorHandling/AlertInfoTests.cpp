#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <regex>

namespace {

using Oxa::Core::AlertData;
using Oxa::Core::AlertInfo;
using Oxa::Core::CodeContext;

class OpenAlert : public AlertInfo {
 public:
  using AlertInfo::AddCallStack;
  using AlertInfo::SetSeverity;
};

CodeContext Place(const std::string& file) { return CodeContext(file, 1, "", "", ""); }

TEST(AlertInfo, PublishesItsKeys) {
  EXPECT_EQ("Message", AlertInfo::sMESSAGE);
  EXPECT_EQ("Severity", AlertInfo::sSEVERITY);
  EXPECT_EQ("Category", AlertInfo::sCATEGORY);
  EXPECT_EQ("LogName", AlertInfo::sLOG_NAME);
  EXPECT_EQ("TimeStamp", AlertInfo::sTIME_STAMP);
  EXPECT_EQ("TypeName", AlertInfo::sTYPE_NAME);
}

TEST(AlertInfo, SeveritiesAreBits) {
  EXPECT_EQ(1, AlertInfo::eWARNING);
  EXPECT_EQ(2, AlertInfo::eERROR);
  EXPECT_EQ(4, AlertInfo::eCRITICAL);
  EXPECT_EQ(4u, sizeof(AlertInfo::ESeverity));
}

TEST(AlertInfo, FreshAlertHasItsDefaults) {
  AlertInfo alert;
  EXPECT_EQ("No Message", alert.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ("Unknown", alert.GetData(AlertInfo::sSEVERITY));
  EXPECT_EQ("Unknown", alert.GetData(AlertInfo::sCATEGORY));
  EXPECT_TRUE(alert.DataExists(AlertInfo::sLOG_NAME));
  EXPECT_EQ("", alert.GetData(AlertInfo::sLOG_NAME));
  EXPECT_TRUE(std::regex_match(alert.GetData(AlertInfo::sTIME_STAMP),
                               std::regex("\\d{4}/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}")));
  EXPECT_FALSE(alert.DataExists(AlertInfo::sTYPE_NAME));
  EXPECT_EQ(-1, alert.GetSeverity());
  EXPECT_EQ("Alert", alert.XMLElementName());
  EXPECT_FALSE(alert.GetCallStack());
  ASSERT_TRUE(alert.GetUnwindStack());
  EXPECT_TRUE(alert.GetUnwindStack()->empty());
}

TEST(AlertInfo, UnsetKeyIsEmptyAndDoesNotExist) {
  const AlertInfo alert;
  EXPECT_EQ("", alert.GetData("No such key"));
  EXPECT_FALSE(alert.DataExists("No such key"));
}

TEST(AlertInfo, SeverityIsHeldAsNumberAndAsText) {
  const std::pair<int, const char*> rows[] = {{1, "Warning"}, {2, "Error"},   {4, "Critical"},
                                              {0, "Unknown"}, {3, "Unknown"}, {-1, "Unknown"}};
  for (const auto& [value, text] : rows) {
    OpenAlert alert;
    alert.SetSeverity(static_cast<AlertInfo::ESeverity>(value));
    EXPECT_EQ(value, alert.GetSeverity());
    EXPECT_EQ(text, alert.GetData(AlertInfo::sSEVERITY));
  }
}

TEST(AlertInfo, SetDataSetsAndReplaces) {
  AlertInfo alert;
  EXPECT_TRUE(alert.SetData("Key", "first"));
  EXPECT_TRUE(alert.SetData("Key", "second"));
  EXPECT_EQ("second", alert.GetData("Key"));
}

TEST(AlertInfo, GetAllDataCopiesTheTable) {
  AlertInfo alert;
  alert.SetData("Key", "value");
  AlertData all{{"Old", "gone"}};
  EXPECT_TRUE(alert.GetAllData(all));
  EXPECT_EQ(0u, all.count("Old"));
  EXPECT_EQ("value", all["Key"]);
  all["Key"] = "changed";
  EXPECT_EQ("value", alert.GetData("Key"));
}

TEST(AlertInfo, CopiesShareDataAndStacks) {
  AlertInfo first;
  AlertInfo second(first);
  AlertInfo third;
  third = first;
  second.SetData("Key", "shared");
  third.PushContext(Place("a.cpp"));
  EXPECT_EQ("shared", first.GetData("Key"));
  EXPECT_EQ("shared", third.GetData("Key"));
  EXPECT_EQ(1u, first.GetUnwindStack()->size());
  EXPECT_EQ(first.GetUnwindStack(), second.GetUnwindStack());
}

TEST(AlertInfo, CopiesHaveTheirOwnSeverityNumber) {
  OpenAlert first;
  OpenAlert second(first);
  second.SetSeverity(AlertInfo::eERROR);
  EXPECT_EQ(-1, first.GetSeverity());
  EXPECT_EQ("Error", first.GetData(AlertInfo::sSEVERITY));
}

TEST(AlertInfo, CopiesTakeTheSeverityNumber) {
  OpenAlert first;
  first.SetSeverity(AlertInfo::eCRITICAL);
  EXPECT_EQ(AlertInfo::eCRITICAL, AlertInfo(first).GetSeverity());
  AlertInfo second;
  second = first;
  EXPECT_EQ(AlertInfo::eCRITICAL, second.GetSeverity());
}

TEST(AlertInfo, TimeStampIsTheTimeOfConstruction) {
  const std::string before = Oxa::Core::Time().ToString();
  const AlertInfo alert;
  const std::string after = Oxa::Core::Time().ToString();
  EXPECT_LE(before, alert.GetData(AlertInfo::sTIME_STAMP));
  EXPECT_GE(after, alert.GetData(AlertInfo::sTIME_STAMP));
}

TEST(AlertInfo, BuiltFromStoredPartsItHoldsDeepCopiesAndNoSeverity) {
  AlertData data{{"Severity", "Critical"}, {"Message", "stored"}};
  std::vector<CodeContext> calls{Place("call.cpp")};
  std::vector<CodeContext> unwinds{Place("unwind.cpp"), Place("unwind2.cpp")};
  const AlertInfo alert(data, calls, unwinds);
  data.clear();
  calls.clear();
  unwinds.clear();
  EXPECT_EQ(-1, alert.GetSeverity());
  EXPECT_EQ("Critical", alert.GetData(AlertInfo::sSEVERITY));
  EXPECT_EQ("stored", alert.GetData(AlertInfo::sMESSAGE));
  EXPECT_FALSE(alert.DataExists(AlertInfo::sTIME_STAMP));
  ASSERT_EQ(1u, alert.GetCallStack()->size());
  EXPECT_EQ("call.cpp", alert.GetCallStack()->front().Get(CodeContext::sFILE));
  EXPECT_EQ(2u, alert.GetUnwindStack()->size());
}

TEST(AlertInfo, PushContextAppends) {
  AlertInfo alert;
  alert.PushContext(Place("first.cpp"));
  alert.PushContext(Place("second.cpp"));
  ASSERT_EQ(2u, alert.GetUnwindStack()->size());
  EXPECT_EQ("first.cpp", alert.GetUnwindStack()->front().Get(CodeContext::sFILE));
  EXPECT_EQ("second.cpp", alert.GetUnwindStack()->back().Get(CodeContext::sFILE));
}

TEST(AlertInfo, CallStackIsTakenOrAppended) {
  OpenAlert alert;
  const auto first = boost::make_shared<std::vector<CodeContext>>(1, Place("first.cpp"));
  const auto second = boost::make_shared<std::vector<CodeContext>>(2, Place("second.cpp"));
  alert.AddCallStack(nullptr);
  EXPECT_FALSE(alert.GetCallStack());
  alert.AddCallStack(first);
  EXPECT_EQ(first, alert.GetCallStack());
  alert.AddCallStack(second);
  EXPECT_EQ(first, alert.GetCallStack());
  EXPECT_EQ(3u, first->size());
  EXPECT_EQ(2u, second->size());
}

}  // namespace
