#include <Infrastructure/OxaCore/CodeContext.h>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <memory>
#include <utility>

namespace {

using Oxa::Core::AlertData;
using Oxa::Core::CodeContext;

using Sharing = CodeContext (*)(boost::shared_ptr<const AlertData>, AlertData&&);

// The way to a private function, which an explicit instantiation may name.
struct Opening {
  friend Sharing SharingOf(Opening opening);
};
template <Sharing pFunction>
struct Opened {
  friend Sharing SharingOf(Opening /*opening*/) { return pFunction; }
};
template struct Opened<&CodeContext::Sharing>;

TEST(CodeContext, PublishesItsKeys) {
  EXPECT_EQ("File", CodeContext::sFILE);
  EXPECT_EQ("Line", CodeContext::sLINE);
  EXPECT_EQ("CompileTime", CodeContext::sBUILD_TIME);
  EXPECT_EQ("FunctionName", CodeContext::sFUNCTION);
  EXPECT_EQ("FunctionSignature", CodeContext::sSIGNATURE);
  EXPECT_EQ("ProcessName", CodeContext::sPROCESS);
  EXPECT_EQ("ProcessID", CodeContext::sPROCESS_ID);
  EXPECT_EQ("ThreadName", CodeContext::sTHREAD);
  EXPECT_EQ("ThreadID", CodeContext::sTHREAD_ID);
  EXPECT_EQ("HostName", CodeContext::sHOST);
  EXPECT_EQ("OperatingSystem", CodeContext::sOPERATING_SYSTEM);
}

TEST(CodeContext, StoresThePlace) {
  const CodeContext context("a.cpp", 42, "Tue Jan 14 08:28:11 2014", "f", "void f(int)");
  EXPECT_EQ("a.cpp", context.Get(CodeContext::sFILE));
  EXPECT_EQ("42", context.Get(CodeContext::sLINE));
  EXPECT_EQ("Tue Jan 14 08:28:11 2014", context.Get(CodeContext::sBUILD_TIME));
  EXPECT_EQ("f", context.Get(CodeContext::sFUNCTION));
  EXPECT_EQ("void f(int)", context.Get(CodeContext::sSIGNATURE));
}

TEST(CodeContext, NegativeLineIsUnknownAndZeroIsNot) {
  EXPECT_EQ("Unknown", CodeContext("a.cpp", -1, "", "", "").Get(CodeContext::sLINE));
  EXPECT_EQ("0", CodeContext("a.cpp", 0, "", "", "").Get(CodeContext::sLINE));
}

TEST(CodeContext, StoresTheFileEvenIfEmptyAndLeavesOutOtherEmptyTexts) {
  const CodeContext context("", 1, "", "", "");
  const AlertData& data = context.GetContextInfo();
  EXPECT_EQ(1u, data.count(CodeContext::sFILE));
  EXPECT_EQ(0u, data.count(CodeContext::sBUILD_TIME));
  EXPECT_EQ(0u, data.count(CodeContext::sFUNCTION));
  EXPECT_EQ(0u, data.count(CodeContext::sSIGNATURE));
}

TEST(CodeContext, MissingKeyGivesEmptyTextAndLeavesTheTableUnchanged) {
  const CodeContext context("a.cpp", 1, "", "", "");
  const AlertData before = context.GetContextInfo();
  EXPECT_EQ("", context.Get("No such key"));
  EXPECT_EQ(&context.Get("No such key"), &context.Get("Another one"));
  EXPECT_EQ(before, context.GetContextInfo());
}

TEST(CodeContext, BuiltFromTablesItHoldsDeepCopies) {
  AlertData info{{"File", "b.cpp"}};
  AlertData variables{{"x", "1"}};
  const CodeContext context(info, variables);
  info["File"] = "changed";
  variables["x"] = "changed";
  EXPECT_EQ("b.cpp", context.Get(CodeContext::sFILE));
  EXPECT_EQ((AlertData{{"x", "1"}}), context.GetVariables());
  EXPECT_EQ(1u, context.GetContextInfo().size());
}

TEST(CodeContext, TellsWhetherItHasVariables) {
  EXPECT_FALSE(CodeContext("a.cpp", 1, "", "", "").HasVariableInfo());
  EXPECT_FALSE(CodeContext(AlertData{{"File", "a"}}, AlertData()).HasVariableInfo());
  EXPECT_TRUE(CodeContext(AlertData(), AlertData{{"x", ""}}).HasVariableInfo());
}

TEST(CodeContext, CopiesAreDeep) {
  const CodeContext first(AlertData{{"File", "a"}}, AlertData{{"x", "1"}});
  CodeContext second(first);
  second = CodeContext(AlertData{{"File", "b"}}, AlertData());
  EXPECT_EQ("a", first.Get(CodeContext::sFILE));
  EXPECT_TRUE(first.HasVariableInfo());
  EXPECT_EQ("b", second.Get(CodeContext::sFILE));
}

TEST(CodeContext, OutlivesTheOneThatItWasCopiedFrom) {
  auto first = std::make_unique<CodeContext>(AlertData{{"File", "a"}}, AlertData{{"x", "1"}});
  CodeContext second(*first);
  first.reset();
  CodeContext third(std::move(second));
  EXPECT_EQ("a", third.Get(CodeContext::sFILE));
  EXPECT_EQ((AlertData{{"x", "1"}}), third.GetVariables());
}

TEST(CodeContext, WithoutTablesIsEmpty) {
  for (const CodeContext& context :
       {CodeContext(AlertData(), AlertData()), SharingOf(Opening())(nullptr, AlertData())}) {
    EXPECT_TRUE(context.GetContextInfo().empty());
    EXPECT_TRUE(context.GetVariables().empty());
    EXPECT_FALSE(context.HasVariableInfo());
    EXPECT_EQ("", context.Get(CodeContext::sFILE));
  }
}

TEST(CodeContext, SharesATable) {
  const auto table = boost::make_shared<const AlertData>(AlertData{{"File", "a"}});
  const CodeContext context = SharingOf(Opening())(table, AlertData{{"x", "1"}});
  EXPECT_EQ(table.get(), &context.GetContextInfo());
  EXPECT_EQ((AlertData{{"x", "1"}}), context.GetVariables());
}

}  // namespace
