#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/LiveRaises.h"
#include "Support/RestoreHooks.h"

namespace {

using namespace Oxa::Core;

const char* const sHALTED =
    "Detected potential infinite error recursion, halting recursion and throwing original error";

class PlainError : public ErrorClass<PlainError, LogicError> {
 public:
  explicit PlainError(const std::string& message = "plain") : ErrorClass(message) {}
};

// Its own raise raises the same class again.
class RecursiveError : public ErrorClass<RecursiveError, LogicError> {
 public:
  RecursiveError() : ErrorClass("recursion " + std::to_string(sm_iRecursionCount)) { ++sm_iRecursionCount; }
  static int sm_iRecursionCount;

 protected:
  boost::shared_ptr<std::vector<CodeContext>> CreateCallStack() override {
    OXA_RAISE_ERROR("Oxa.Test", RecursiveError());
    return {};
  }
};
int RecursiveError::sm_iRecursionCount = 0;

class StackFailsToAllocate : public ErrorClass<StackFailsToAllocate, LogicError> {
 public:
  StackFailsToAllocate() : ErrorClass(std::string("no memory")) {}

 protected:
  boost::shared_ptr<std::vector<CodeContext>> CreateCallStack() override { throw std::bad_alloc(); }
};

int LiveHere() { return ThreadSpecificErrorRecursionCount::Get(); }

TEST(Recursion, DepthIsTen) { EXPECT_EQ(10, g_iMAX_ERROR_RECURSION_DEPTH); }

TEST(Recursion, IsHaltedWithAPlainCopyOfTheFirstError) {
  RecursiveError::sm_iRecursionCount = 0;
  testing::internal::CaptureStderr();
  try {
    OXA_RAISE_ERROR("Oxa.Test", RecursiveError());
    FAIL() << "the raise returned";
  } catch (Error& e) {
    EXPECT_TRUE(typeid(e) == typeid(Error));
    EXPECT_STREQ("recursion 0", e.what());
  }
  EXPECT_EQ(0, LiveHere());
  EXPECT_EQ(g_iMAX_ERROR_RECURSION_DEPTH, RecursiveError::sm_iRecursionCount);
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(sHALTED));
}

void NestInCatchClauses(int depth) {
  try {
    OXA_RAISE_ERROR("Oxa.Test", PlainError("nested " + std::to_string(depth)));
  } catch (PlainError&) {
    NestInCatchClauses(depth + 1);
  }
}

TEST(Recursion, LiveErrorsInCatchClausesCountToo) {
  testing::internal::CaptureStderr();
  try {
    NestInCatchClauses(0);
  } catch (Error& e) {
    EXPECT_TRUE(typeid(e) == typeid(Error));
    EXPECT_STREQ("nested 0", e.what());
  }
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("nested 9"));
  EXPECT_EQ(0, LiveHere());
}

int s_iHandled = 0;

TEST(Recursion, LeavesEachErrorThatWasToldToItsEnd) {
  const Hooks before = TheHooks();
  s_iHandled = 0;
  TheHooks().errorHandled = [](Error&) { ++s_iHandled; };
  testing::internal::CaptureStderr();
  EXPECT_THROW(NestInCatchClauses(0), Error);
  testing::internal::GetCapturedStderr();
  TestSupport::RestoreHooks(before);
  EXPECT_EQ(g_iMAX_ERROR_RECURSION_DEPTH - 1, s_iHandled) << "the tenth is thrown, and was told to nobody";
}

TEST(Recursion, HandledErrorIsOffTheCountWhenListenersHear) {
  const Hooks before = TheHooks();
  s_iHandled = -1;
  TheHooks().errorHandled = [](Error&) { s_iHandled = LiveHere(); };
  EXPECT_THROW(OXA_RAISE_ERROR("Oxa.Test", PlainError()), PlainError);
  TestSupport::RestoreHooks(before);
  EXPECT_EQ(0, s_iHandled);
}

TEST(Recursion, CountFollowsTheRaisedMark) {
  EXPECT_EQ(0, LiveHere());
  boost::shared_ptr<Error> kept;
  try {
    OXA_RAISE_ERROR("Oxa.Test", PlainError());
  } catch (Error& e) {
    EXPECT_EQ(1, LiveHere());
    kept = e.Clone();
    EXPECT_EQ(1, LiveHere());
  }
  EXPECT_EQ(1, LiveHere());
  kept.reset();
  EXPECT_EQ(0, LiveHere());
}

TEST(Recursion, CopiesThatAreStoredDoNotCount) {
  Error stored(AlertInfo::eERROR);
  try {
    OXA_RAISE_ERROR("Oxa.Test", PlainError());
  } catch (Error& e) {
    stored.Copy(e, false);
  }
  EXPECT_EQ(0, LiveHere());
  EXPECT_STREQ("plain", stored.what());
}

TEST(Recursion, AssignmentMovesTheMark) {
  Error target(AlertInfo::eERROR);
  try {
    OXA_RAISE_ERROR("Oxa.Test", PlainError());
  } catch (Error& e) {
    target = e;
  }
  EXPECT_EQ(1, LiveHere());
  Error& same = target;
  target = same;
  EXPECT_EQ(1, LiveHere());
  target.Copy(PlainError("other"), true);
  EXPECT_EQ(0, LiveHere());
}

TEST(Recursion, FirstErrorThatDiesEarlyIsNotThrown) {
  std::vector<boost::shared_ptr<Error>> kept;
  const auto raise = [&kept](int number) {
    try {
      OXA_RAISE_ERROR("Oxa.Test", PlainError("kept " + std::to_string(number)));
    } catch (Error& e) {
      kept.push_back(e.Clone());
    }
  };
  for (int i = 0; i < 9; ++i) raise(i);
  kept.erase(kept.begin());
  EXPECT_EQ(8, LiveHere());
  raise(9);
  testing::internal::CaptureStderr();
  try {
    OXA_RAISE_ERROR("Oxa.Test", PlainError("tenth"));
    FAIL() << "the raise returned";
  } catch (LogicError& e) {
    EXPECT_STREQ("Detected potential infinite error recursion, halted recursion and threw this generic error",
                 e.what());
  }
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(sHALTED));
  EXPECT_EQ(0, LiveHere());
  kept.clear();
  EXPECT_EQ(0, LiveHere());
}

TEST(Recursion, IsHaltedWithTheErrorThatTookTheMarkOver) {
  PlainError source("first");
  testing::internal::CaptureStderr();
  try {
    try {
      OXA_RAISE_ERROR("Oxa.Test", source);
    } catch (PlainError&) {
      source = PlainError("another");
      NestInCatchClauses(1);
    }
    FAIL() << "the raise returned";
  } catch (Error& e) {
    EXPECT_STREQ("first", e.what());
  }
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(sHALTED));
  EXPECT_EQ(0, LiveHere());
}

TEST(Recursion, RaisesAreCountedForTheThreadThatRaised) {
  std::exception_ptr flight;
  std::thread raiser([&flight] {
    try {
      OXA_RAISE_ERROR("Oxa.Test", PlainError());
    } catch (...) {
      flight = std::current_exception();
      EXPECT_EQ(1, LiveHere());
    }
  });
  raiser.join();
  EXPECT_EQ(0, LiveHere());
  flight = nullptr;
  EXPECT_EQ(0, LiveHere());
}

TEST(Recursion, ErrorThatDiesOnAnotherThreadIsTakenOffItsOwn) {
  std::exception_ptr flight;
  try {
    OXA_RAISE_ERROR("Oxa.Test", PlainError());
  } catch (...) {
    flight = std::current_exception();
  }
  EXPECT_EQ(1, LiveHere());
  std::thread([&flight] { flight = nullptr; }).join();
  EXPECT_EQ(0, LiveHere());
}

TEST(Recursion, ThreadsDoNotAddUp) {
  std::vector<std::future<int>> counts;
  counts.reserve(2 * g_iMAX_ERROR_RECURSION_DEPTH);
  for (int i = 0; i < 2 * g_iMAX_ERROR_RECURSION_DEPTH; ++i) {
    counts.push_back(std::async(std::launch::async, [] {
      try {
        OXA_RAISE_ERROR("Oxa.Test", PlainError());
      } catch (PlainError&) {
        return LiveHere();
      }
      return -1;
    }));
  }
  for (auto& count : counts) EXPECT_EQ(1, count.get());
}

TEST(Recursion, RaiseThatFailsOnItsWayIsNotCounted) {
  EXPECT_THROW(OXA_RAISE_ERROR("Oxa.Test", StackFailsToAllocate()), std::bad_alloc);
  EXPECT_EQ(0, LiveHere());
}

}  // namespace
