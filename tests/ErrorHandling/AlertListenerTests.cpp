#include <Infrastructure/OxaCore/AlertListener.h>

#include <gtest/gtest.h>

#include "ErrorHandling/TestAlerts.h"

namespace {

using namespace AlertTests;

class Filtering : public AlertListener {
 public:
  using AlertListener::m_dataFilter;
  using AlertListener::m_severityMask;
};

class PlainWarning : public Warning {
 public:
  PlainWarning() : Warning("plain") {}
};

class Critical : public ErrorClass<Critical, LogicError> {
 public:
  Critical() : ErrorClass(std::string("critical")) { SetSeverity(eCRITICAL); }
};

struct Interest {
  bool m_bWarning;
  bool m_bError;
  bool m_bCritical;
};

Interest WithMask(std::uint32_t mask) {
  Filtering listener;
  listener.m_severityMask = mask;
  PlainWarning warning;
  LogicError error("error");
  Critical criticalError;
  return {listener.IsInterestedIn(warning), listener.IsInterestedIn(error),
          listener.IsInterestedIn(criticalError)};
}

void ExpectInterest(const Interest& interest, bool warning, bool error, bool critical) {
  EXPECT_EQ(warning, interest.m_bWarning);
  EXPECT_EQ(error, interest.m_bError);
  EXPECT_EQ(critical, interest.m_bCritical);
}

TEST(AlertListener, FreshOneIsInterestedInEverything) {
  AlertListener listener;
  PlainWarning warning;
  LogicError error("error");
  Critical criticalError;
  EXPECT_TRUE(listener.IsInterestedIn(warning));
  EXPECT_TRUE(listener.IsInterestedIn(error));
  EXPECT_TRUE(listener.IsInterestedIn(criticalError));
  EXPECT_EQ(7U, Filtering().m_severityMask);
  EXPECT_TRUE(Filtering().m_dataFilter.empty());
}

TEST(AlertListener, MaskSixHearsNoWarnings) { ExpectInterest(WithMask(6), false, true, true); }

TEST(AlertListener, MaskOfOneSeverityHearsOnlyThat) {
  ExpectInterest(WithMask(1), true, false, false);
  ExpectInterest(WithMask(2), false, true, false);
  ExpectInterest(WithMask(4), false, false, true);
}

TEST(AlertListener, MaskZeroHearsNothing) { ExpectInterest(WithMask(0), false, false, false); }

TEST(AlertListener, RebuiltAlertHasEverySeverityBit) {
  Error rebuilt(AlertData{{"Message", "from a log"}}, {}, {});
  AlertInfo fresh;
  for (const std::uint32_t mask : {1U, 2U, 4U, 7U, 0x80000000U}) {
    Filtering listener;
    listener.m_severityMask = mask;
    EXPECT_TRUE(listener.IsInterestedIn(rebuilt)) << mask;
    EXPECT_TRUE(listener.IsInterestedIn(fresh)) << mask;
  }
  Filtering deaf;
  deaf.m_severityMask = 0;
  EXPECT_FALSE(deaf.IsInterestedIn(rebuilt));
}

TEST(AlertListener, DataFilterPassesTheValueAndNoOther) {
  Filtering listener;
  listener.m_dataFilter["TestKey"].insert("TestValue");
  LogicError error("error");
  EXPECT_FALSE(listener.IsInterestedIn(error)) << "no such key";
  error.SetData("TestKey", "OtherValue");
  EXPECT_FALSE(listener.IsInterestedIn(error));
  error.SetData("TestKey", "TestValue");
  EXPECT_TRUE(listener.IsInterestedIn(error));
  listener.m_dataFilter["TestKey"].insert("OtherValue");
  error.SetData("TestKey", "OtherValue");
  EXPECT_TRUE(listener.IsInterestedIn(error));
}

TEST(AlertListener, AllKeysOfTheDataFilterHaveToMatch) {
  Filtering listener;
  listener.m_dataFilter["First"] = {"1"};
  listener.m_dataFilter["Second"] = {"2"};
  LogicError error("error");
  error.SetData("First", "1");
  EXPECT_FALSE(listener.IsInterestedIn(error));
  error.SetData("Second", "2");
  EXPECT_TRUE(listener.IsInterestedIn(error));
  error.SetData("First", "2");
  EXPECT_FALSE(listener.IsInterestedIn(error));
}

TEST(AlertListener, KeyWithoutValuesIsIgnored) {
  Filtering listener;
  listener.m_dataFilter["TestKey"];
  LogicError error("error");
  EXPECT_TRUE(listener.IsInterestedIn(error));
}

TEST(AlertListener, MissingKeyMatchesTheEmptyValue) {
  Filtering listener;
  listener.m_dataFilter["TestKey"].insert("");
  LogicError error("error");
  EXPECT_TRUE(listener.IsInterestedIn(error));
}

TEST(AlertListener, SeverityCountsBesidesTheData) {
  Filtering listener;
  listener.m_severityMask = 1;
  listener.m_dataFilter["TestKey"].insert("TestValue");
  LogicError error("error");
  error.SetData("TestKey", "TestValue");
  EXPECT_FALSE(listener.IsInterestedIn(error));
}

TEST(AlertListener, OperationsDoNothingByDefault) {
  AlertListener listener;
  PlainWarning warning;
  LogicError error("error");
  listener.ErrorRaised(error);
  listener.ErrorHandled(error);
  listener.WarningRaised(warning);
  listener.UncaughtFatalError(error, "path");
  EXPECT_STREQ("error", error.what());
}

}  // namespace
