#include <Infrastructure/OxaCore/AlertManager.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "ErrorHandling/TestAlerts.h"

namespace {

using namespace AlertTests;
using testing::ElementsAre;

class CriticalBase : public ErrorClass<CriticalBase, LogicError> {
 public:
  explicit CriticalBase(const std::string& message = "base") : ErrorClass(message) { SetSeverity(eCRITICAL); }
};

class CriticalDerived : public ErrorClass<CriticalDerived, CriticalBase> {
 public:
  CriticalDerived() : ErrorClass(std::string("derived")) {}
};

using Calls = std::vector<std::string>;

// Writes down what it is told, under its name, and answers as it was asked to.
class Handler : public ErrorHandler {
 public:
  Handler(Calls& calls, const std::string& name, bool accepts)
      : m_calls(calls), m_sName(name), m_bAccepts(accepts) {}
  ~Handler() override = default;

  bool Handle(Error& error) override {
    m_calls.push_back(m_sName + " asked");
    if (m_onHandle) m_onHandle(error);
    return m_bAccepts;
  }
  void HandledByPrior(Error&) override { m_calls.push_back(m_sName + " by prior"); }
  void HandledByLatter(Error&) override { m_calls.push_back(m_sName + " by latter"); }

  std::function<void(Error&)> m_onHandle;

 private:
  Calls& m_calls;
  std::string m_sName;
  bool m_bAccepts;
};

// Registers a handler for a class as long as it lives.
template <class Class>
class Registered {
 public:
  Registered(Calls& calls, const std::string& name, bool accepts)
      : m_spHandler(new Handler(calls, name, accepts)) {
    AlertManager::Instance()->AddErrorHandler(typeid(Class).name(), m_spHandler);
  }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;
  ~Registered() { AlertManager::Instance()->RemoveErrorHandler(typeid(Class).name(), m_spHandler); }

  boost::shared_ptr<Handler> m_spHandler;
};

// Whether the raise came back.
template <class Class>
bool RaiseInPlace() {
  try {
    OXA_RAISE_ERROR_IN_PLACE("Test", Class());
    return true;
  } catch (Class&) {
    return false;
  }
}

TEST(ErrorHandlers, FirstThatAcceptsSettlesAndTheSecondHearsOfAPrior) {
  Calls calls;
  const Registered<CriticalBase> first(calls, "first", true);
  const Registered<CriticalBase> second(calls, "second", true);
  EXPECT_TRUE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre("first asked", "second by prior"));
}

TEST(ErrorHandlers, FirstThatDeclinesHearsOfALatter) {
  Calls calls;
  const Registered<CriticalBase> first(calls, "first", false);
  const Registered<CriticalBase> second(calls, "second", true);
  EXPECT_TRUE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre("first asked", "second asked", "first by latter"));
}

TEST(ErrorHandlers, ThoseBehindTheAcceptingOneHearOfAPriorAndThoseBeforeItOfALatter) {
  Calls calls;
  const Registered<CriticalBase> h1(calls, "1", false);
  const Registered<CriticalBase> h2(calls, "2", false);
  const Registered<CriticalBase> h3(calls, "3", true);
  const Registered<CriticalBase> h4(calls, "4", true);
  const Registered<CriticalBase> h5(calls, "5", false);
  EXPECT_TRUE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre("1 asked", "2 asked", "3 asked", "4 by prior", "5 by prior", "1 by latter",
                                 "2 by latter"));
}

TEST(ErrorHandlers, BaseClassHearsNothingWhenTheDerivedClassSettles) {
  Calls calls;
  const Registered<CriticalBase> base(calls, "base", true);
  const Registered<CriticalDerived> derived(calls, "derived", true);
  EXPECT_TRUE(RaiseInPlace<CriticalDerived>());
  EXPECT_THAT(calls, ElementsAre("derived asked"));
}

TEST(ErrorHandlers, BaseClassIsAskedWhenTheDerivedClassDeclines) {
  Calls calls;
  const Registered<Error> root(calls, "root", true);
  const Registered<LogicError> category(calls, "category", true);
  const Registered<CriticalBase> base(calls, "base", false);
  const Registered<CriticalDerived> derived(calls, "derived", false);
  EXPECT_TRUE(RaiseInPlace<CriticalDerived>());
  EXPECT_THAT(calls, ElementsAre("derived asked", "base asked", "category asked", "derived by latter",
                                 "base by latter"));
}

TEST(ErrorHandlers, DerivedClassIsNotAskedForABaseError) {
  Calls calls;
  const Registered<CriticalDerived> derived(calls, "derived", true);
  EXPECT_FALSE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre());
}

TEST(ErrorHandlers, ErrorThatNobodySettlesIsThrownAndNobodyHearsMore) {
  Calls calls;
  Recorder recorder;
  const Registered<CriticalBase> first(calls, "first", false);
  const Registered<CriticalBase> second(calls, "second", false);
  EXPECT_FALSE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre("first asked", "second asked"));
  EXPECT_THAT(recorder.m_heard, ElementsAre("raised base", "handled base"));
}

TEST(ErrorHandlers, WithoutHandlersTheErrorIsThrown) { EXPECT_FALSE(RaiseInPlace<CriticalBase>()); }

TEST(ErrorHandlers, OrdinaryRaiseAsksNobody) {
  Calls calls;
  const Registered<CriticalBase> handler(calls, "handler", true);
  EXPECT_THROW(OXA_RAISE_ERROR("Test", CriticalBase()), CriticalBase);
  EXPECT_THAT(calls, ElementsAre());
}

TEST(ErrorHandlers, SettledErrorIsToldAsRaisedAndHandled) {
  Calls calls;
  Recorder recorder;
  const Registered<CriticalBase> handler(calls, "handler", true);
  handler.m_spHandler->m_onHandle = [&](Error&) {
    EXPECT_THAT(recorder.m_heard, ElementsAre("raised base")) << "told before it is settled";
  };
  EXPECT_TRUE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(recorder.m_heard, ElementsAre("raised base", "handled base"));
}

TEST(ErrorHandlers, HandlerSeesTheRaisedObject) {
  Calls calls;
  std::string seen;
  const Registered<CriticalBase> handler(calls, "handler", true);
  handler.m_spHandler->m_onHandle = [&](Error& error) {
    seen = error.GetData(AlertInfo::sLOG_NAME) + ' ' + typeid(error).name();
    error.SetData("Settled", "yes");
  };
  CriticalDerived error;
  OXA_RAISE_ERROR_IN_PLACE("Test.Place", error);
  EXPECT_EQ(std::string("Test.Place ") + typeid(CriticalDerived).name(), seen);
  EXPECT_EQ("yes", error.GetData("Settled"));
}

TEST(ErrorHandlers, OneAddedTwiceIsAskedOnce) {
  Calls calls;
  const Registered<CriticalBase> handler(calls, "handler", false);
  AlertManager::Instance()->AddErrorHandler(typeid(CriticalBase).name(), handler.m_spHandler);
  EXPECT_FALSE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre("handler asked"));
}

TEST(ErrorHandlers, NullHandlerIsIgnored) {
  AlertManager::Instance()->AddErrorHandler(typeid(CriticalBase).name(), boost::shared_ptr<ErrorHandler>());
  EXPECT_FALSE(RaiseInPlace<CriticalBase>());
}

TEST(ErrorHandlers, RemovedOneIsNotAsked) {
  Calls calls;
  { const Registered<CriticalBase> handler(calls, "handler", true); }
  EXPECT_FALSE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre());
}

TEST(ErrorHandlers, RemovalForAnUnknownClassIsNoFault) {
  struct Tag {};
  Calls calls;
  const boost::shared_ptr<ErrorHandler> handler(new Handler(calls, "handler", true));
  AlertManager::Instance()->RemoveErrorHandler(typeid(TagError<Tag>).name(), handler);
  EXPECT_FALSE(RaiseInPlace<TagError<Tag>>());
}

TEST(ErrorHandlers, HandlerMayRemoveItselfAndAddOthers) {
  Calls calls;
  const boost::shared_ptr<Handler> leaving(new Handler(calls, "leaving", false));
  const boost::shared_ptr<Handler> coming(new Handler(calls, "coming", true));
  const std::string name = typeid(CriticalBase).name();
  leaving->m_onHandle = [&](Error&) {
    AlertManager::Instance()->RemoveErrorHandler(name, leaving);
    AlertManager::Instance()->AddErrorHandler(name, coming);
  };
  AlertManager::Instance()->AddErrorHandler(name, leaving);
  EXPECT_FALSE(RaiseInPlace<CriticalBase>());
  EXPECT_TRUE(RaiseInPlace<CriticalBase>());
  EXPECT_THAT(calls, ElementsAre("leaving asked", "coming asked"));
  AlertManager::Instance()->RemoveErrorHandler(name, coming);
}

TEST(ErrorHandlers, HandlerMayRaiseAndSettleAnotherErrorOnItsThread) {
  Calls calls;
  Recorder recorder;
  const Registered<CriticalBase> handler(calls, "handler", true);
  handler.m_spHandler->m_onHandle = [](Error&) {
    EXPECT_THROW(OXA_RAISE_ERROR("Test", NullPointer("inner")), NullPointer);
  };
  EXPECT_TRUE(RaiseInPlace<CriticalBase>());
  EXPECT_EQ(4U, recorder.m_heard.size());
}

TEST(ErrorHandlers, WhatAHandlerThrowsLeavesInPlaceOfTheError) {
  Calls calls;
  Recorder recorder;
  const Registered<CriticalBase> handler(calls, "handler", true);
  handler.m_spHandler->m_onHandle = [](Error&) { throw std::runtime_error("handler is broken"); };
  EXPECT_THROW(RaiseInPlace<CriticalBase>(), std::runtime_error);
  EXPECT_THAT(recorder.m_heard, ElementsAre("raised base", "handled base"));
  handler.m_spHandler->m_onHandle = nullptr;
  EXPECT_TRUE(RaiseInPlace<CriticalBase>()) << "no lock was left behind";
  std::thread([&] { EXPECT_TRUE(RaiseInPlace<CriticalBase>()); }).join();
}

TEST(ErrorHandlers, RebuiltErrorIsOfferedByItsRecordedInheritance) {
  Calls calls;
  const Registered<CriticalBase> handler(calls, "handler", true);
  Error rebuilt(
      AlertData{{"Message", "m"},
                {"Inheritance", std::string(typeid(Error).name()) + "=>" + typeid(CriticalBase).name()}},
      {}, {});
  OXA_RAISE_ERROR_IN_PLACE("Test", rebuilt);
  EXPECT_THAT(calls, ElementsAre("handler asked"));
}

TEST(ErrorHandlers, HandlersOfManyThreadsTakeTurns) {
  Calls calls;
  const Registered<CriticalBase> handler(calls, "handler", true);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int raise = 0; raise < 200; ++raise) EXPECT_TRUE(RaiseInPlace<CriticalBase>());
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(800U, calls.size()) << "the unguarded list of calls was written one call at a time";
}

// Counts those of all classes that are being asked at one moment.
class Crowd : public ErrorHandler {
 public:
  bool Handle(Error&) override {
    if (s_iInside.fetch_add(1) > 0) s_bMet = true;
    std::this_thread::yield();
    s_iInside.fetch_sub(1);
    return true;
  }
  static std::atomic<int> s_iInside;
  static std::atomic<bool> s_bMet;
};
std::atomic<int> Crowd::s_iInside{0};
std::atomic<bool> Crowd::s_bMet{false};

template <class Tag>
std::thread RaiseAgainAndAgain() {
  const char* const className = typeid(TagError<Tag>).name();
  AlertManager::Instance()->AddErrorHandler(className, boost::shared_ptr<ErrorHandler>(new Crowd));
  return std::thread([] {
    for (int raise = 0; raise < 2000; ++raise) EXPECT_TRUE(RaiseInPlace<TagError<Tag>>());
  });
}

TEST(ErrorHandlers, OneErrorIsOfferedAtATimeWhateverItsClass) {
  struct Some {};
  struct Others {};
  std::thread some = RaiseAgainAndAgain<Some>();
  std::thread others = RaiseAgainAndAgain<Others>();
  some.join();
  others.join();
  EXPECT_FALSE(Crowd::s_bMet);
}

}  // namespace
