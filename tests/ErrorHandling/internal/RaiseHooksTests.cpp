// What a raise asks of the rest of the library, seen through the hooks.
#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <string>
#include <vector>

#include "Core/LibraryState.h"
#include "ErrorHandling/Hooks.h"
#include "Support/RestoreHooks.h"

namespace {

using namespace Oxa::Core;
using Stack = std::vector<CodeContext>;

std::vector<std::string> s_calls;

class RaiseHooks : public testing::Test {
 protected:
  RaiseHooks() : m_before(TheHooks()) { s_calls.clear(); }
  ~RaiseHooks() override { TestSupport::RestoreHooks(m_before); }

 private:
  Hooks m_before;
};

class StackOfItsOwn : public ErrorClass<StackOfItsOwn, LogicError> {
 public:
  StackOfItsOwn() : ErrorClass(std::string("own stack")) {}

 protected:
  boost::shared_ptr<Stack> CreateCallStack() override {
    return boost::make_shared<Stack>(1, CodeContext("own.cpp", 1, "", "", ""));
  }
};

class Rebuilt : public ErrorClass<Rebuilt, LogicError> {
 public:
  Rebuilt(const AlertData& data, const Stack& calls, const Stack& unwinds)
      : ErrorClass(data, calls, unwinds) {}
};

boost::shared_ptr<Stack> OneFrame(int maxFrames) {
  return boost::make_shared<Stack>(1, CodeContext("walked.cpp", maxFrames, "", "", ""));
}

std::string FileOf(const CodeContext& frame) { return frame.Get(CodeContext::sFILE); }

TEST_F(RaiseHooks, StackOfAtMostAHundredFramesIsAskedFor) {
  TheHooks().walkStack = OneFrame;
  try {
    OXA_RAISE_ERROR("Test", LogicError("walked"));
  } catch (LogicError& error) {
    ASSERT_TRUE(error.GetCallStack());
    ASSERT_EQ(1u, error.GetCallStack()->size());
    EXPECT_EQ("100", error.GetCallStack()->front().Get(CodeContext::sLINE));
  }
}

TEST_F(RaiseHooks, RaiseGoesOnWithoutAStack) {
  TheHooks().walkStack = [](int) { return boost::shared_ptr<Stack>(); };
  try {
    OXA_RAISE_ERROR("Test", LogicError("walked"));
    FAIL() << "the raise returned";
  } catch (LogicError& error) {
    EXPECT_FALSE(error.GetCallStack());
  }
}

TEST_F(RaiseHooks, ClassMayMakeItsOwnStack) {
  try {
    OXA_RAISE_ERROR("Test", StackOfItsOwn());
  } catch (StackOfItsOwn& error) {
    ASSERT_EQ(1u, error.GetCallStack()->size());
    EXPECT_EQ("own.cpp", FileOf(error.GetCallStack()->front()));
  }
}

TEST_F(RaiseHooks, FramesAreAppendedToAStackThatIsThere) {
  TheHooks().walkStack = OneFrame;
  const Stack stored(1, CodeContext("stored.cpp", 1, "", "", ""));
  try {
    OXA_RAISE_ERROR("Test", Rebuilt(AlertData{{"Message", "rebuilt"}}, stored, Stack()));
  } catch (Rebuilt& error) {
    ASSERT_EQ(2u, error.GetCallStack()->size());
    EXPECT_EQ("stored.cpp", FileOf(error.GetCallStack()->front()));
    EXPECT_EQ("walked.cpp", FileOf(error.GetCallStack()->back()));
    EXPECT_EQ(-1, error.GetSeverity());
  }
}

TEST_F(RaiseHooks, StepsComeInTheirOrder) {
  TheHooks().walkStack = [](int frames) {
    s_calls.emplace_back("walk");
    return OneFrame(frames);
  };
  TheHooks().errorRaised = [](Error& error) {
    s_calls.emplace_back("raised " + error.GetData(AlertInfo::sLOG_NAME) + " " +
                         std::to_string(error.GetUnwindStack()->size()) +
                         std::to_string(error.GetCallStack()->size()));
  };
  TheHooks().settleInPlace = [](Error&) {
    s_calls.emplace_back("settle");
    return false;
  };
  TheHooks().errorHandled = [](Error&) { s_calls.emplace_back("handled"); };
  EXPECT_THROW(OXA_RAISE_ERROR_IN_PLACE("Test.Order", LogicError("x")), LogicError);
  EXPECT_EQ((std::vector<std::string>{"walk", "raised Test.Order 11", "settle", "handled"}), s_calls);
}

TEST_F(RaiseHooks, OnlyRaisesInPlaceAskForAHandler) {
  TheHooks().settleInPlace = [](Error&) {
    s_calls.emplace_back("settle");
    return true;
  };
  EXPECT_THROW(OXA_RAISE_ERROR("Test", LogicError("x")), LogicError);
  EXPECT_TRUE(s_calls.empty());
  EXPECT_NO_THROW(OXA_RAISE_ERROR_IN_PLACE("Test", LogicError("x")));
  EXPECT_EQ(std::vector<std::string>{"settle"}, s_calls);
}

TEST_F(RaiseHooks, WarningThatMayNotSpeakIsNotTold) {
  class Quiet : public Warning {
   public:
    Quiet() : Warning(std::string("quiet")) {}
  };
  TheHooks().mayWarn = [](const std::string& className) {
    s_calls.push_back(className);
    return false;
  };
  TheHooks().warningRaised = [](Warning&) { s_calls.emplace_back("told"); };
  OXA_RAISE_WARNING("Test", Quiet());
  EXPECT_EQ(std::vector<std::string>{typeid(Quiet).name()}, s_calls);
}

TEST_F(RaiseHooks, OnlyTheLogFormOfAFailedAssertReachesTheLog) {
  TheHooks().logFailedAssert = [](AssertionFailure& failure) {
    s_calls.push_back(std::string(failure.what()) + " " + std::to_string(failure.GetSeverity()));
  };
  testing::internal::CaptureStderr();
  AssertFailed("plain", CodeContext("a.cpp", 1, "", "", ""));
  LogAssertFailed("logged", CodeContext("a.cpp", 1, "", "", ""));
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::vector<std::string>{"logged 2"}, s_calls);
}

TEST_F(RaiseHooks, ListenerThatCopiesAHandledErrorIsToldOnce) {
  TheHooks().errorHandled = [](Error& error) {
    s_calls.emplace_back("handled");
    const Error copy(error);
    const boost::shared_ptr<Error> clone = error.Clone();
  };
  EXPECT_THROW(OXA_RAISE_ERROR("Test", LogicError("x")), LogicError);
  EXPECT_EQ(1u, s_calls.size());
}

TEST_F(RaiseHooks, ListenerThatRaisesWhenItHearsOfAHandledErrorComesToAnEnd) {
  TheHooks().errorHandled = [](Error&) {
    s_calls.emplace_back("handled");
    try {
      OXA_RAISE_ERROR("Test", LogicError("again"));
    } catch (LogicError&) {
    }
  };
  TheHooks().writeAlert = [](AlertInfo&, const char* circumstance) { s_calls.push_back(circumstance); };
  EXPECT_THROW(OXA_RAISE_ERROR("Test", LogicError("x")), LogicError);
  // Ten listeners deep; then the error that the tenth raises is only written, and so is its end.
  const std::vector<std::string> written(2, "Error in alert listener during alert notification");
  std::vector<std::string> expected(10, "handled");
  expected.insert(expected.end(), written.begin(), written.end());
  EXPECT_EQ(expected, s_calls);
}

TEST_F(RaiseHooks, UnraisedCloneLeavesTheMark) {
  TheHooks().errorHandled = [](Error& error) { s_calls.push_back(error.what()); };
  boost::shared_ptr<Error> kept;
  try {
    OXA_RAISE_ERROR("Test", StackOfItsOwn());
  } catch (Error& error) {
    kept = error.CloneUnraised();
  }
  EXPECT_EQ(std::vector<std::string>{"own stack"}, s_calls);
  EXPECT_TRUE(typeid(*kept) == typeid(StackOfItsOwn));
  kept.reset();
  EXPECT_EQ(1u, s_calls.size());
}

using RaiseHooksDeathTest = RaiseHooks;

bool Returns() {
  try {
    OXA_RAISE_ERROR("Test.Late", LogicError("late"));
    return true;
  } catch (...) {
    return false;
  }
}

TEST_F(RaiseHooksDeathTest, WhileExitingAfterAFatalErrorRaisesReturnAndWarningsAreTold) {
  class Told : public Warning {
   public:
    Told() : Warning(std::string("told")) {}
  };
  EXPECT_EXIT(
      {
        TheHooks().errorRaised = [](Error&) { s_calls.emplace_back("raised"); };
        TheHooks().errorHandled = [](Error&) { s_calls.emplace_back("handled"); };
        TheHooks().warningRaised = [](Warning&) { s_calls.emplace_back("warned"); };
        std::atexit([] {
          const bool returned = Returns();
          OXA_RAISE_WARNING("Test", Told());
          const bool required = returned && s_calls == std::vector<std::string>{"warned"};
          std::fputs(required ? "as required" : "otherwise", stderr);
        });
        ExitAfterFatalError(3);
      },
      testing::ExitedWithCode(3),
      "<Circumstance>Error Raised During OxaCore Shutdown</Circumstance>(.|\n)*late(.|\n)*as required");
}

TEST_F(RaiseHooksDeathTest, WhileUnloadingNothingIsTold) {
  EXPECT_EXIT(
      {
        TheHooks().errorRaised = [](Error&) { s_calls.emplace_back("raised"); };
        TheHooks().errorHandled = [](Error&) { s_calls.emplace_back("handled"); };
        TheHooks().warningRaised = [](Warning&) { s_calls.emplace_back("warned"); };
        TheHooks().logFailedAssert = [](AssertionFailure&) { s_calls.emplace_back("assert"); };
        SetLibraryUnloading();
        LogAssertFailed("x", CodeContext("a.cpp", 1, "", "", ""));
        std::_Exit(Returns() && s_calls.empty() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "Failed Assertion");
}

[[noreturn]] void EndWithWhetherAContextHasFiveKeys() {
  SetLibraryUnloading();
  const CodeContext context("a.cpp", 1, "built", "f", "void f()");
  const AlertData expected{{"File", "a.cpp"},
                           {"Line", "1"},
                           {"CompileTime", "built"},
                           {"FunctionName", "f"},
                           {"FunctionSignature", "void f()"}};
  std::_Exit(context.GetContextInfo() == expected ? 0 : 1);
}

TEST_F(RaiseHooksDeathTest, ContextOfTheUnloadingHasFiveKeys) {
  EXPECT_EXIT(EndWithWhetherAContextHasFiveKeys(), testing::ExitedWithCode(0), "");
}

}  // namespace
