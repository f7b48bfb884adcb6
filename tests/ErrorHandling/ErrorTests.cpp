#include <Infrastructure/OxaCore/Error.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <gtest/gtest.h>

#include <future>
#include <regex>
#include <stdexcept>

namespace {

using namespace Oxa::Core;

class BasicError : public ErrorClass<BasicError, LogicError> {
 public:
  explicit BasicError(const std::string& message = "Basic Message") : ErrorClass(message) {}
};

class CriticalError : public ErrorClass<CriticalError, OSError> {
 public:
  CriticalError() : ErrorClass(std::string("critical")) { SetSeverity(eCRITICAL); }
};

class DerivedFromBasic : public ErrorClass<DerivedFromBasic, BasicError> {
 public:
  explicit DerivedFromBasic(int extra) : ErrorClass(std::string("base")), m_iExtra(extra) {}
  int m_iExtra;
};

class ManyArguments : public ErrorClass<ManyArguments, LogicError> {
 public:
  ManyArguments(char a, int b, int c, int d, int e, float f, double g, const std::string& h)
      : ErrorClass(AlertMessage("%1%,%2%,%3$x,%4%,%5$x,%6%,%7%,%8%", a, b, c, d, e, f, g, h)) {}
};

class WithoutOwnThrow : public Error {
 public:
  WithoutOwnThrow() : Error(eERROR) { AppendInheritance(typeid(WithoutOwnThrow)); }
};

class CategoryWithoutOwnThrow : public LogicError {
 public:
  CategoryWithoutOwnThrow() : LogicError("sliced") { AppendInheritance(typeid(CategoryWithoutOwnThrow)); }
};

class CountsRethrows : public ErrorClass<CountsRethrows, IOError> {
 public:
  CountsRethrows() : ErrorClass(std::string("rethrown")) {}
  int m_iRethrows = 0;

 protected:
  void OnRethrow() override { ++m_iRethrows; }
};

class Unprintable {};
std::ostream& operator<<(std::ostream&, const Unprintable&) { throw std::runtime_error("no text"); }

// Writes its own copy constructor, as a class with a handle of its own would.
class OwnCopy : public ErrorClass<OwnCopy, LogicError> {
 public:
  OwnCopy() : ErrorClass(std::string("own copy")) {}
  OwnCopy(const OwnCopy& other)
      : ErrorClass(other) {}  // NOLINT(modernize-use-equals-default): written on purpose
};

std::string Inheritance(const std::initializer_list<const char*>& names) {
  std::string chain;
  for (const char* name : names) chain += (chain.empty() ? "" : "=>") + std::string(name);
  return chain;
}

template <class Category>
void ExpectCategory(const std::string& text) {
  EXPECT_EQ(text, Category::sCATEGORY);
  const Category error("message");
  EXPECT_EQ(text, error.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ("message", error.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ("message", std::string(error.what()));
  EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
  EXPECT_EQ("Error", error.GetData(AlertInfo::sSEVERITY));
  EXPECT_EQ(Inheritance({typeid(Error).name(), typeid(Category).name()}), error.GetData(Error::sINHERITANCE));
  EXPECT_EQ("No Message", Category("").GetData(AlertInfo::sMESSAGE));
  const Category stored(AlertData{{"Category", "Mine"}, {"Inheritance", "Old"}}, {}, {});
  EXPECT_EQ("Mine", stored.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ("Old", stored.GetData(Error::sINHERITANCE));
  EXPECT_EQ(-1, stored.GetSeverity());
  EXPECT_THROW(OXA_RAISE_ERROR("Test", Category("thrown")), Category);
}

TEST(Error, CategoriesHaveTheirTexts) {
  ExpectCategory<LogicError>("Logic");
  ExpectCategory<IOError>("I/O");
  ExpectCategory<OSError>("OperatingSystem");
  ExpectCategory<HardwareError>("Hardware");
  ExpectCategory<UnknownError>("Unknown");
}

TEST(Error, ClassOnACategoryHasItsCategoryAndSeverity) {
  BasicError basicError;
  EXPECT_EQ(LogicError::sCATEGORY, basicError.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ(AlertInfo::eERROR, basicError.GetSeverity());
  EXPECT_EQ("Error", basicError.XMLElementName());
  CriticalError criticalError;
  EXPECT_EQ(AlertInfo::eCRITICAL, criticalError.GetSeverity());
  EXPECT_EQ("Critical", criticalError.GetData(AlertInfo::sSEVERITY));
}

TEST(Error, EmptyMessageLeavesNoMessage) {
  EXPECT_EQ("No Message", BasicError("").GetData(AlertInfo::sMESSAGE));
}

TEST(Error, InheritanceNamesTheChainBaseFirst) {
  EXPECT_EQ("Inheritance", Error::sINHERITANCE);
  EXPECT_EQ(Inheritance({typeid(Error).name(), typeid(LogicError).name(), typeid(BasicError).name(),
                         typeid(DerivedFromBasic).name()}),
            DerivedFromBasic(1).GetData(Error::sINHERITANCE));
}

TEST(Error, OwnCopyConstructorLeavesTheInheritanceAlone) {
  const std::string chain =
      Inheritance({typeid(Error).name(), typeid(LogicError).name(), typeid(OwnCopy).name()});
  try {
    OXA_RAISE_ERROR("Oxa.Test", OwnCopy());
  } catch (OwnCopy& error) {
    EXPECT_EQ(chain, error.Clone()->GetData(Error::sINHERITANCE));
  }
}

TEST(Error, LogNameMayBeAStringOrNull) {
  const std::string name = "Oxa.Test.String";
  try {
    OXA_RAISE_ERROR(name, BasicError());
  } catch (BasicError& error) {
    EXPECT_EQ(name, error.GetData(AlertInfo::sLOG_NAME));
  }
  const char* const null = nullptr;
  EXPECT_THROW(OXA_RAISE_ERROR(null, BasicError()), BasicError);
}

TEST(Error, TemplateTakesPositionalArguments) {
  const ManyArguments error('a', -15, 15, -31, 31, 1.5F, 2.5, "Basic Message");
  EXPECT_EQ("a,-15,f,-31,1f,1.5,2.5,Basic Message", error.GetData(AlertInfo::sMESSAGE));
}

TEST(Error, FailedFormattingIsToldAndReplaced) {
  testing::internal::CaptureStderr();
  const BasicError error(AlertMessage("%1%", Unprintable()));
  EXPECT_EQ("Failed to construct alert due to exception!\n", testing::internal::GetCapturedStderr());
  EXPECT_EQ("Failed to construct alert message due to exception.", error.GetData(AlertInfo::sMESSAGE));
}

TEST(Error, TooManyArgumentsAreAFailedFormatting) {
  testing::internal::CaptureStderr();
  EXPECT_EQ("Failed to construct alert message due to exception.", AlertMessage("%1%", 1, 2));
  EXPECT_EQ("Failed to construct alert due to exception!\n", testing::internal::GetCapturedStderr());
}

TEST(Error, CloneHasTheTypeAndTheDataOfItsSource) {
  DerivedFromBasic error(7);
  const boost::shared_ptr<Error> clone = error.Clone();
  ASSERT_TRUE(typeid(*clone) == typeid(DerivedFromBasic));
  EXPECT_EQ(7, static_cast<DerivedFromBasic&>(*clone).m_iExtra);
  error.SetData("Key", "shared");
  EXPECT_EQ("shared", clone->GetData("Key"));
  EXPECT_TRUE(typeid(*Error(AlertInfo::eERROR).Clone()) == typeid(Error));
}

TEST(Error, RaiseRecordsPlaceAndLogName) {
  const int line = __LINE__ + 2;
  try {
    OXA_RAISE_ERROR("Oxa.Test.Place", BasicError());
    FAIL() << "the raise returned";
  } catch (BasicError& e) {
    EXPECT_EQ("Oxa.Test.Place", e.GetData(AlertInfo::sLOG_NAME));
    ASSERT_EQ(1u, e.GetUnwindStack()->size());
    const CodeContext& place = e.GetUnwindStack()->front();
    EXPECT_NE(std::string::npos, place.Get(CodeContext::sFILE).find("ErrorTests.cpp"));
    EXPECT_EQ(std::to_string(line), place.Get(CodeContext::sLINE));
    EXPECT_NE(std::string::npos, place.Get(CodeContext::sFUNCTION).find("TestBody"));
    EXPECT_EQ(std::string::npos, place.Get(CodeContext::sFUNCTION).find('('));
    EXPECT_NE(std::string::npos, place.Get(CodeContext::sSIGNATURE).find("void "));
    EXPECT_TRUE(
        std::regex_match(place.Get(CodeContext::sBUILD_TIME),
                         std::regex("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}")));
  }
}

TEST(Error, CommasInTheLastArgumentDoNoHarm) {
  EXPECT_THROW(OXA_RAISE_ERROR("Oxa.Test", ManyArguments('a', 1, 2, 3, 4, 5.F, 6., "x")), ManyArguments);
  EXPECT_THROW(OXA_RAISE_ERROR_IN_PLACE("Oxa.Test", ManyArguments('a', 1, 2, 3, 4, 5.F, 6., "x")),
               ManyArguments);
}

TEST(Error, ClassWithoutOwnThrowIsSliced) {
  try {
    OXA_RAISE_ERROR("Oxa.Test", WithoutOwnThrow());
    FAIL() << "the raise returned";
  } catch (WithoutOwnThrow&) {
    FAIL() << "caught as its own class";
  } catch (Error& e) {
    EXPECT_TRUE(typeid(e) == typeid(Error));
    EXPECT_EQ(Inheritance({typeid(Error).name(), typeid(WithoutOwnThrow).name()}),
              e.GetData(Error::sINHERITANCE));
  }
}

TEST(Error, ClassOnACategoryWithoutOwnThrowIsCaughtAsTheCategory) {
  try {
    OXA_RAISE_ERROR("Oxa.Test", CategoryWithoutOwnThrow());
    FAIL() << "the raise returned";
  } catch (CategoryWithoutOwnThrow&) {
    FAIL() << "caught as its own class";
  } catch (LogicError& e) {
    EXPECT_STREQ("sliced", e.what());
  }
}

void Forward(int levels) {
  try {
    if (levels == 0) OXA_RAISE_ERROR("Oxa.Test.Forward", BasicError("deep"));
    if (levels > 0) Forward(levels - 1);
  }
  OXA_FORWARD_ERRORS
}

TEST(Error, ForwardingByASiteOfOnesOwnAddsItAndRethrowsTheErrorItself) {
  const CodeSite site("own.cpp", 7, "", "void f()");
  try {
    try {
      throw CountsRethrows();
    } catch (CountsRethrows& error) {
      error.m_iRethrows = 10;
      site.Forward(error);
    }
    FAIL() << "nothing was thrown";
  } catch (CountsRethrows& e) {
    EXPECT_EQ(11, e.m_iRethrows);
    ASSERT_EQ(1u, e.GetUnwindStack()->size());
    EXPECT_EQ("own.cpp", e.GetUnwindStack()->back().Get(CodeContext::sFILE));
  }
}

TEST(Error, EachForwardingLevelAddsItsPlace) {
  try {
    Forward(4);
    FAIL() << "nothing was thrown";
  } catch (BasicError& e) {
    EXPECT_EQ(6u, e.GetUnwindStack()->size());
    EXPECT_STREQ("deep", e.what());
    for (const CodeContext& place : *e.GetUnwindStack())
      EXPECT_EQ("Forward",
                place.Get(CodeContext::sFUNCTION).substr(place.Get(CodeContext::sFUNCTION).size() - 7));
  }
}

TEST(Error, ForwardingTurnsStandardExceptionsIntoErrors) {
  try {
    try {
      throw std::runtime_error("what it says");
    }
    OXA_FORWARD_ERRORS
    FAIL() << "nothing was thrown";
  } catch (StdException& e) {
    EXPECT_STREQ("Caught std::exception - what it says", e.what());
    EXPECT_EQ("", e.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ(1u, e.GetUnwindStack()->size());
  }
}

TEST(Error, ForwardingTurnsEverythingElseIntoUnknownErrors) {
  try {
    try {
      throw 42;
    }
    OXA_FORWARD_ERRORS
    FAIL() << "nothing was thrown";
  } catch (UnknownError& e) {
    EXPECT_STREQ("No Message", e.what());
    EXPECT_EQ("", e.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ(1u, e.GetUnwindStack()->size());
  }
}

template <class Thrown>
CodeContext ForwardedPlace(const Thrown& thrown) {
  const int channel = 3;
  const Unprintable unprintable;
  try {
    try {
      throw Thrown(thrown);
    }
    OXA_FORWARD_ERRORS_WITH_INFO(OXA_VARIABLE(channel), OXA_VARIABLE(unprintable),
                                 OXA_INFO("Step", "calibration"))
  } catch (Error& e) {
    return e.GetUnwindStack()->back();
  }
  return CodeContext(AlertData(), AlertData());
}

TEST(Error, ForwardingWithInfoDescribesThePlace) {
  const CodeContext places[] = {ForwardedPlace(BasicError()), ForwardedPlace(std::logic_error("x")),
                                ForwardedPlace(1)};
  for (const CodeContext& place : places) {
    EXPECT_EQ((AlertData{{"channel", "3"}, {"unprintable", ""}}), place.GetVariables());
    EXPECT_EQ("calibration", place.Get("Step"));
    EXPECT_NE("", place.Get(CodeContext::sLINE));
  }
}

template <class Thrown>
std::string ForwardedLogName(const Thrown& thrown) {
  try {
    try {
      thrown();
    }
    OXA_FORWARD_ERRORS_AS("Oxa.Test.Forwarded")
  } catch (Error& e) {
    return e.GetData(AlertInfo::sLOG_NAME);
  }
  return "nothing was thrown";
}

TEST(Error, ForwardingUnderALogNameNamesWhatBecomesAnErrorThere) {
  EXPECT_EQ("Oxa.Test.Forwarded", ForwardedLogName([] { throw std::logic_error("x"); }));
  EXPECT_EQ("Oxa.Test.Forwarded", ForwardedLogName([] { throw 1; }));
  EXPECT_EQ("Oxa.Test.Raised", ForwardedLogName([] { OXA_RAISE_ERROR("Oxa.Test.Raised", BasicError("x")); }));
}

TEST(Error, ForwardingUnderALogNameWithInfoDescribesThePlaceToo) {
  const int channel = 3;
  try {
    try {
      throw 1;
    }
    OXA_FORWARD_ERRORS_WITH_INFO_AS("Oxa.Test.Forwarded", OXA_VARIABLE(channel),
                                    OXA_INFO("Step", "calibration"))
    FAIL() << "nothing was thrown";
  } catch (UnknownError& e) {
    EXPECT_EQ("Oxa.Test.Forwarded", e.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ((AlertData{{"channel", "3"}}), e.GetUnwindStack()->back().GetVariables());
    EXPECT_EQ("calibration", e.GetUnwindStack()->back().Get("Step"));
  }
}

TEST(Error, RethrowCallsOnRethrow) {
  try {
    try {
      OXA_RAISE_ERROR("Oxa.Test", CountsRethrows());
    }
    OXA_FORWARD_ERRORS
    FAIL() << "nothing was thrown";
  } catch (CountsRethrows& e) {
    EXPECT_EQ(1, e.m_iRethrows);
  }
}

TEST(Error, SecondRaiseOfOneObjectOnlyThrows) {
  try {
    OXA_RAISE_ERROR("Oxa.Test.First", BasicError("once"));
  } catch (BasicError& e) {
    try {
      OXA_RAISE_ERROR("Oxa.Test.Second", e);
      FAIL() << "the raise returned";
    } catch (BasicError& again) {
      EXPECT_EQ(2u, again.GetUnwindStack()->size());
      EXPECT_EQ("Oxa.Test.Second", again.GetData(AlertInfo::sLOG_NAME));
    }
  }
}

TEST(Error, IsAStandardException) {
  try {
    OXA_RAISE_ERROR("Oxa.Test", BasicError("as standard"));
    FAIL() << "the raise returned";
  } catch (std::exception& e) {
    EXPECT_STREQ("as standard", e.what());
  }
}

TEST(Error, TravelsBetweenThreads) {
  for (int i = 0; i < 3 * g_iMAX_ERROR_RECURSION_DEPTH; ++i) {
    auto result = std::async(std::launch::async, [] { OXA_RAISE_ERROR("Oxa.Test", BasicError("afar")); });
    EXPECT_THROW(result.get(), BasicError);
  }
}

TEST(InvalidParameter, BuildsItsMessageFromNameAndValue) {
  const InvalidParameter nameOnly("units");
  EXPECT_STREQ("Invalid Parameter: units = {Not Provided}", nameOnly.what());
  EXPECT_EQ("units", nameOnly.GetData("ParamName"));
  EXPECT_EQ("{Not Provided}", nameOnly.GetData("ParamValue"));
  const InvalidParameter withValue("units", 42);
  EXPECT_STREQ("Invalid Parameter: units = 42", withValue.what());
  EXPECT_EQ("42", withValue.GetData("ParamValue"));
  EXPECT_STREQ("Invalid Parameter: p = text %1%", InvalidParameter("p", "text %1%").what());
  const InvalidParameter fromTable(AlertData{{"ParamName", "a"}, {"ParamValue", "b"}});
  EXPECT_STREQ("Invalid Parameter: a = b", fromTable.what());
  EXPECT_EQ("Logic", fromTable.GetData(AlertInfo::sCATEGORY));
  const InvalidParameter more(AlertData{{"ParamName", "a"}, {"Severity", "Critical"}, {"Extra", "kept"}});
  EXPECT_STREQ("Invalid Parameter: a = {Not Provided}", more.what());
  EXPECT_EQ("Error", more.GetData(AlertInfo::sSEVERITY));
  EXPECT_EQ("kept", more.GetData("Extra"));
  testing::internal::CaptureStderr();
  EXPECT_STREQ("Invalid Parameter: a = Failed to construct alert message due to exception.",
               InvalidParameter("a", Unprintable()).what());
  EXPECT_EQ("Failed to construct alert due to exception!\n", testing::internal::GetCapturedStderr());
}

template <class Class, class Base>
void ExpectMessage(const Class& error, const std::string& message) {
  EXPECT_EQ(message, error.what());
  EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
  EXPECT_EQ(Base::sCATEGORY, error.GetData(AlertInfo::sCATEGORY));
  EXPECT_TRUE((std::is_base_of<Base, Class>::value));
  EXPECT_THROW(OXA_RAISE_ERROR("Test", Class(error)), Class);
}

TEST(CommonErrors, HaveTheirMessages) {
  ExpectMessage<AssertionFailure, LogicError>(AssertionFailure("m_Mutex != 0"), "m_Mutex != 0");
  ExpectMessage<NullPointer, LogicError>(NullPointer("p_pTask"), "NULL pointer variable named p_pTask");
  ExpectMessage<StdException, LogicError>(StdException(std::runtime_error("x")), "Caught std::exception - x");
  ExpectMessage<IndexOutOfBounds, LogicError>(IndexOutOfBounds(-1, "exponents", 7),
                                              "Out of bounds index of -1 for exponents with size of 7");
  ExpectMessage<NoSuchFunction, LogicError>(NoSuchFunction("f", "m.so"),
                                            "No function named f exists in m.so");
  ExpectMessage<AllocationFailed, OSError>(AllocationFailed("4 GiB"), "Attempt to allocate 4 GiB failed");
  ExpectMessage<InvalidParameter, LogicError>(InvalidParameter("a", 1), "Invalid Parameter: a = 1");
}

class OpenWarning : public Warning {
 public:
  explicit OpenWarning(const std::string& text) : Warning(text) {}
};

TEST(Warning, HasSeverityMessageAndNoInheritance) {
  OpenWarning warning("careful");
  EXPECT_EQ(AlertInfo::eWARNING, warning.GetSeverity());
  EXPECT_EQ("Warning", warning.GetData(AlertInfo::sSEVERITY));
  EXPECT_EQ("careful", warning.GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ("Unknown", warning.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ("Warning", warning.XMLElementName());
  EXPECT_FALSE(warning.DataExists(Error::sINHERITANCE));
  EXPECT_EQ("No Message", OpenWarning("").GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ(-1, Warning().GetSeverity());
}

TEST(Warning, RaiseRecordsItsPlaceAndReturns) {
  OpenWarning warning("careful");
  OXA_RAISE_WARNING("Oxa.Test.Warn", warning);
  EXPECT_EQ("Oxa.Test.Warn", warning.GetData(AlertInfo::sLOG_NAME));
  ASSERT_EQ(1u, warning.GetUnwindStack()->size());
  EXPECT_FALSE(warning.GetCallStack());
}

TEST(Warning, SlicingHasItsText) {
  EXPECT_EQ("class X sliced to Oxa::Core::Error in Error base class Throw() method",
            ErrorSlicedOnThrow("class X").GetData(AlertInfo::sMESSAGE));
}

}  // namespace
