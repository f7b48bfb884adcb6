// One error from its raise to its end, as listeners see it.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Oxa::Core;

class RoadError : public ErrorClass<RoadError, LogicError> {
 public:
  explicit RoadError(const std::string& message) : ErrorClass(message) {}
};

class SlicedError : public Error {
 public:
  SlicedError() : Error(eERROR) { AppendInheritance(typeid(SlicedError)); }
};

class RecordingListener : public AlertListener {
 public:
  RecordingListener() { AlertManager::Instance()->AddAlertListener(*this); }
  ~RecordingListener() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void ErrorRaised(Error& error) override {
    m_events.push_back("raised " + error.GetData(AlertInfo::sMESSAGE));
  }
  void ErrorHandled(Error& error) override {
    m_events.push_back("handled " + error.GetData(AlertInfo::sMESSAGE));
  }
  void WarningRaised(Warning& warning) override {
    m_events.push_back("warned " + warning.GetData(AlertInfo::sMESSAGE));
    m_logNames.push_back(warning.GetData(AlertInfo::sLOG_NAME));
  }

  std::vector<std::string> m_events;
  std::vector<std::string> m_logNames;
};

using Events = std::vector<std::string>;

void Forward(int levels) {
  try {
    if (levels == 0) OXA_RAISE_ERROR("Oxa.Test.Road", RoadError("far"));
    if (levels > 0) Forward(levels - 1);
  }
  OXA_FORWARD_ERRORS
}

TEST(Road, ErrorThroughFiveLevelsIsRaisedOnceAndHandledOnce) {
  RecordingListener listener;
  try {
    Forward(5);
    FAIL() << "nothing was thrown";
  } catch (RoadError& error) {
    EXPECT_EQ(Events{"raised far"}, listener.m_events);
    EXPECT_EQ(1u + 6u, error.GetUnwindStack()->size());
  }
  EXPECT_EQ((Events{"raised far", "handled far"}), listener.m_events);
}

TEST(Road, CloneKeepsTheErrorUnhandled) {
  RecordingListener listener;
  boost::shared_ptr<Error> kept;
  try {
    OXA_RAISE_ERROR("Oxa.Test.Road", RoadError("kept"));
  } catch (Error& error) {
    kept = error.Clone();
  }
  EXPECT_EQ(Events{"raised kept"}, listener.m_events);
  kept.reset();
  EXPECT_EQ((Events{"raised kept", "handled kept"}), listener.m_events);
}

TEST(Road, CopyWithoutTransferLeavesTheMarkWhereItIs) {
  RecordingListener listener;
  Error stored(AlertInfo::eERROR);
  try {
    OXA_RAISE_ERROR("Oxa.Test.Road", RoadError("copied"));
  } catch (Error& error) {
    stored.Copy(error, false);
  }
  EXPECT_EQ((Events{"raised copied", "handled copied"}), listener.m_events);
}

TEST(Road, ReplacedErrorIsHandled) {
  RecordingListener listener;
  Error target(AlertInfo::eERROR);
  try {
    OXA_RAISE_ERROR("Oxa.Test.Road", RoadError("first"));
  } catch (Error& error) {
    target = error;
  }
  target = RoadError("second");  // NOLINT(cppcoreguidelines-slicing): that is the point
  EXPECT_EQ((Events{"raised first", "handled first"}), listener.m_events);
}

TEST(Road, SecondRaiseOfOneObjectIsNotTold) {
  RecordingListener listener;
  try {
    OXA_RAISE_ERROR("Oxa.Test.Road", RoadError("once"));
  } catch (RoadError& error) {
    EXPECT_THROW(OXA_RAISE_ERROR("Oxa.Test.Road", error), RoadError);
  }
  EXPECT_EQ((Events{"raised once", "handled once"}), listener.m_events);
}

TEST(Road, ErrorThatIsNeverRaisedIsNotTold) {
  RecordingListener listener;
  { const RoadError error("quiet"); }
  EXPECT_TRUE(listener.m_events.empty());
}

TEST(Road, ClassWithoutOwnThrowIsWarnedOfOnce) {
  RecordingListener listener;
  EXPECT_THROW(OXA_RAISE_ERROR("Oxa.Test.Road", SlicedError()), Error);
  ASSERT_EQ(3u, listener.m_events.size());
  EXPECT_EQ("raised No Message", listener.m_events[0]);
  EXPECT_EQ(
      "warned class (anonymous namespace)::SlicedError sliced to Oxa::Core::Error in Error base class "
      "Throw() method",
      listener.m_events[1]);
  EXPECT_EQ("Oxa.Core.Error", listener.m_logNames.at(0));
  EXPECT_EQ("handled No Message", listener.m_events[2]);
}

TEST(Road, PlainErrorIsNotSliced) {
  RecordingListener listener;
  EXPECT_THROW(OXA_RAISE_ERROR("Oxa.Test.Road", Error(AlertInfo::eERROR)), Error);
  EXPECT_EQ((Events{"raised No Message", "handled No Message"}), listener.m_events);
}

class ContextListener : public RecordingListener {
 public:
  void ErrorRaised(Error& error) override { m_bHasStackYet = error.GetUnwindStack()->size() == 1; }
  bool m_bHasStackYet = false;
};

TEST(Road, PlaceOfTheRaiseIsThereWhenListenersHear) {
  ContextListener listener;
  EXPECT_THROW(OXA_RAISE_ERROR("Oxa.Test.Road", RoadError("placed")), RoadError);
  EXPECT_TRUE(listener.m_bHasStackYet);
}

}  // namespace
