#include <Infrastructure/OxaCore/AlertManager.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ErrorHandling/TestAlerts.h"

namespace {

using namespace AlertTests;
using testing::ElementsAre;

constexpr unsigned long ulINFINITE = 4294967295UL;

class Critical : public ErrorClass<Critical, OSError> {
 public:
  Critical() : ErrorClass(std::string("critical")) { SetSeverity(eCRITICAL); }
};

class Speaking : public WarningRecord {
 public:
  using WarningRecord::ShouldWarningBeRaised;
};

template <class Tag>
void Raise(int times) {
  for (int i = 0; i < times; ++i) OXA_RAISE_WARNING("Test", TagWarning<Tag>());
}

template <class Tag>
void RaiseErrors(int times) {
  for (int i = 0; i < times; ++i) {
    try {
      OXA_RAISE_ERROR("Test", TagError<Tag>());
    } catch (Error&) {
    }
  }
}

template <class Tag>
void Limit(unsigned long max, bool createIfAbsent) {
  AlertManager::Instance()->SetMaxWarnings(typeid(TagWarning<Tag>).name(), max, createIfAbsent);
}

template <class Tag>
WarningRecord RecordOfWarnings() {
  return FindWarning(WarningRecord(TagWarning<Tag>()).GetClass());
}

template <class Tag>
ErrorRecord RecordOfErrors() {
  return FindError(ErrorRecord(TagError<Tag>()).GetClass());
}

class Accepting : public ErrorHandler {
 public:
  bool Handle(Error&) override { return true; }
};

TEST(AlertRecords, DefaultIsUnknown) {
  EXPECT_EQ("[Unknown]", AlertRecord().GetClass());
  EXPECT_EQ("Unknown", AlertRecord().GetCategory());
  EXPECT_EQ(0U, AlertRecord().GetRaisedCount());
  EXPECT_EQ("[Unknown]", ErrorRecord().GetClass());
  EXPECT_EQ("", ErrorRecord().GetSeverity());
  EXPECT_EQ("[Unknown]", WarningRecord().GetClass());
  EXPECT_EQ(ulINFINITE, AlertRecord::GetInfiniteWarnings());
}

TEST(AlertRecords, NamesAreTaken) {
  const AlertRecord record("class A", "B");
  EXPECT_EQ("class A", record.GetClass());
  EXPECT_EQ("B", record.GetCategory());
  const WarningRecord warning("class C", "D");
  EXPECT_EQ("class C", warning.GetClass());
  EXPECT_EQ("D", warning.GetCategory());
  EXPECT_EQ(ulINFINITE, warning.GetMaxWarnings());
}

TEST(AlertRecords, AlertDescribesItsClass) {
  const AlertRecord warning{BasicWarning()};
  EXPECT_EQ("class BasicWarning", warning.GetClass());
  EXPECT_EQ("Unknown", warning.GetCategory());
  const AlertRecord error{NullPointer("p")};
  EXPECT_EQ("class Oxa::Core::NullPointer", error.GetClass());
  EXPECT_EQ("Logic", error.GetCategory());
  EXPECT_EQ("Error", ErrorRecord(NullPointer("p")).GetSeverity());
  EXPECT_EQ("Critical", ErrorRecord(Critical()).GetSeverity());
  EXPECT_EQ(0U, error.GetRaisedCount());
}

TEST(AlertRecords, NewWarningRecordIsUnlimitedAndEmpty) {
  const WarningRecord record;
  EXPECT_EQ(ulINFINITE, record.GetMaxWarnings());
  EXPECT_EQ(0U, record.GetWarningCount());
  EXPECT_EQ(0U, record.GetSilencedCount());
}

TEST(AlertRecords, RecordAloneFollowsTheRuleOfItsMaximum) {
  Speaking record;
  EXPECT_TRUE(record.ShouldWarningBeRaised());
  EXPECT_EQ(1U, record.GetWarningCount());
  record.SetMaxWarnings(2);
  EXPECT_TRUE(record.ShouldWarningBeRaised());
  EXPECT_FALSE(record.ShouldWarningBeRaised());
  EXPECT_EQ(2U, record.GetWarningCount());
  EXPECT_EQ(1U, record.GetSilencedCount());
  record.ResetWarningCount();
  EXPECT_EQ(0U, record.GetWarningCount());
  EXPECT_EQ(1U, record.GetSilencedCount());
  EXPECT_TRUE(record.ShouldWarningBeRaised());
  EXPECT_EQ(0U, record.GetRaisedCount()) << "only the alert manager counts raises";
}

TEST(AlertRecords, MaximumBeyond32BitsIsInfinite) {
  WarningRecord record;
  record.SetMaxWarnings(5);
  EXPECT_EQ(5U, record.GetMaxWarnings());
  record.SetMaxWarnings(ulINFINITE + 5);
  EXPECT_EQ(ulINFINITE, record.GetMaxWarnings());
}

TEST(AlertRecords, CountsStayAtTheirTop) {
  SaturatingCount count(4294967294U);
  count.Add();
  EXPECT_EQ(4294967295U, count.Get());
  count.Add();
  EXPECT_EQ(4294967295U, count.Get());
  count.Reset();
  EXPECT_EQ(0U, count.Get());
  EXPECT_EQ(4U, sizeof(count));
}

TEST(AlertRecords, WarningsAreFoundByTheirUndecoratedName) {
  OXA_RAISE_WARNING("Test", BasicWarning());
  EXPECT_LE(1U, FindWarning("class BasicWarning").GetRaisedCount());
}

TEST(AlertRecords, FirstWarningMakesTheRecordAndOnlyLaterOnesCountAsLetThrough) {
  struct Tag {};
  Raise<Tag>(1);
  EXPECT_EQ(1U, RecordOfWarnings<Tag>().GetRaisedCount());
  EXPECT_EQ(0U, RecordOfWarnings<Tag>().GetWarningCount());
  Raise<Tag>(2);
  EXPECT_EQ(3U, RecordOfWarnings<Tag>().GetRaisedCount());
  EXPECT_EQ(2U, RecordOfWarnings<Tag>().GetWarningCount());
  EXPECT_EQ(0U, RecordOfWarnings<Tag>().GetSilencedCount());
}

TEST(AlertRecords, WarningsBeyondTheMaximumAreSilenced) {
  struct Tag {};
  Recorder recorder;
  Limit<Tag>(1, true);
  Raise<Tag>(3);
  const WarningRecord record = RecordOfWarnings<Tag>();
  const WarningRecord* const pRecord = &record;
  EXPECT_TRUE(1 == pRecord->GetMaxWarnings());
  EXPECT_TRUE(1 == pRecord->GetWarningCount());
  EXPECT_TRUE(1 <= pRecord->GetSilencedCount());
  EXPECT_EQ(2U, pRecord->GetSilencedCount());
  EXPECT_EQ(1U, pRecord->GetRaisedCount()) << "a silenced warning doesn't count as raised";
  EXPECT_THAT(recorder.m_heard, ElementsAre("warning tag warning"));
}

TEST(AlertRecords, RecordMadeByALimitIsFilledInByTheFirstWarning) {
  struct Tag {};
  Limit<Tag>(10, true);
  EXPECT_EQ("[Unknown]", RecordOfWarnings<Tag>().GetClass()) << "not listed before it is raised";
  Raise<Tag>(1);
  EXPECT_EQ(1U, RecordOfWarnings<Tag>().GetRaisedCount());
  EXPECT_EQ("Unknown", RecordOfWarnings<Tag>().GetCategory());
  EXPECT_EQ(1U, RecordOfWarnings<Tag>().GetWarningCount());
}

TEST(AlertRecords, LimitWithoutCreationNeedsARecord) {
  struct Tag {};
  Recorder recorder;
  Limit<Tag>(0, false);
  Raise<Tag>(1);
  EXPECT_EQ(1U, recorder.m_heard.size());
  Limit<Tag>(0, false);
  Raise<Tag>(1);
  EXPECT_EQ(1U, recorder.m_heard.size());
  EXPECT_EQ(1U, RecordOfWarnings<Tag>().GetSilencedCount());
}

TEST(AlertRecords, SilencedClassWasNeverRaised) {
  struct Tag {};
  Limit<Tag>(0, true);
  Raise<Tag>(2);
  EXPECT_EQ("[Unknown]", RecordOfWarnings<Tag>().GetClass());
}

TEST(AlertRecords, ResetLetsTheClassSpeakAnew) {
  struct Tag {};
  Recorder recorder;
  Limit<Tag>(1, true);
  Raise<Tag>(2);
  AlertManager::Instance()->ResetWarningCount(typeid(TagWarning<Tag>).name());
  EXPECT_EQ(0U, RecordOfWarnings<Tag>().GetWarningCount());
  EXPECT_EQ(1U, RecordOfWarnings<Tag>().GetSilencedCount());
  Raise<Tag>(2);
  EXPECT_EQ(2U, recorder.m_heard.size());
  EXPECT_EQ(2U, RecordOfWarnings<Tag>().GetSilencedCount());
}

TEST(AlertRecords, ResetOfAnUnknownClassDoesNothing) {
  struct Tag {};
  AlertManager::Instance()->ResetWarningCount(typeid(TagWarning<Tag>).name());
  EXPECT_EQ("[Unknown]", RecordOfWarnings<Tag>().GetClass());
}

TEST(AlertRecords, ErrorsAreCountedWithCategoryAndSeverity) {
  struct Tag {};
  RaiseErrors<Tag>(2);
  EXPECT_EQ(2U, RecordOfErrors<Tag>().GetRaisedCount());
  EXPECT_EQ("Logic", RecordOfErrors<Tag>().GetCategory());
  EXPECT_EQ("Error", RecordOfErrors<Tag>().GetSeverity());
}

TEST(AlertRecords, OfAClassTellOfItsFirstError) {
  struct Tag {};
  RaiseErrors<Tag>(1);
  TagError<Tag> other;
  other.SetData(AlertInfo::sCATEGORY, "Other");
  other.SetData(AlertInfo::sSEVERITY, "Critical");
  EXPECT_THROW(OXA_RAISE_ERROR("Test", other), TagError<Tag>);
  EXPECT_EQ(2U, RecordOfErrors<Tag>().GetRaisedCount());
  EXPECT_EQ("Logic", RecordOfErrors<Tag>().GetCategory());
  EXPECT_EQ("Error", RecordOfErrors<Tag>().GetSeverity());
}

TEST(AlertRecords, RecordMadeForAHandlerIsFilledInByTheFirstError) {
  struct Tag {};
  const boost::shared_ptr<ErrorHandler> handler(new Accepting);
  AlertManager::Instance()->AddErrorHandler(typeid(TagError<Tag>).name(), handler);
  EXPECT_EQ("[Unknown]", RecordOfErrors<Tag>().GetClass()) << "not listed before it is raised";
  std::set<ErrorRecord, SSortErrors> records;
  AlertManager::Instance()->GetRaisedErrorRecords(records);
  for (const ErrorRecord& record : records) EXPECT_NE("[Unknown]", record.GetClass());
  RaiseErrors<Tag>(1);
  EXPECT_EQ(1U, RecordOfErrors<Tag>().GetRaisedCount());
  EXPECT_EQ("Error", RecordOfErrors<Tag>().GetSeverity());
}

TEST(AlertRecords, ListsAreClearedFirstAndTheirSizeIsGiven) {
  struct Tag {};
  RaiseErrors<Tag>(1);
  Raise<Tag>(1);
  std::set<ErrorRecord, SSortErrors> errors;
  const int numberOfErrors = AlertManager::Instance()->GetRaisedErrorRecords(errors);
  EXPECT_EQ(errors.size(), static_cast<std::size_t>(numberOfErrors));
  errors.insert(ErrorRecord());
  EXPECT_EQ(numberOfErrors, AlertManager::Instance()->GetRaisedErrorRecords(errors));
  std::set<WarningRecord, SSortWarnings> warnings;
  warnings.insert(WarningRecord());
  const int numberOfWarnings = AlertManager::Instance()->GetRaisedWarningRecords(warnings);
  EXPECT_EQ(warnings.size(), static_cast<std::size_t>(numberOfWarnings));
  for (const WarningRecord& record : warnings) EXPECT_NE("[Unknown]", record.GetClass());
}

TEST(AlertRecords, MostRaisedComesFirstAndTiesGoByName) {
  struct A {};
  struct B {};
  struct C {};
  Raise<B>(1000);
  Raise<A>(1000);
  Raise<C>(1001);
  std::set<WarningRecord, SSortWarnings> records;
  AlertManager::Instance()->GetRaisedWarningRecords(records);
  std::vector<std::string> names;
  for (const WarningRecord& record : records) {
    if (record.GetRaisedCount() >= 1000) names.push_back(record.GetClass());
  }
  EXPECT_THAT(names, ElementsAre(RecordOfWarnings<C>().GetClass(), RecordOfWarnings<A>().GetClass(),
                                 RecordOfWarnings<B>().GetClass()));
}

TEST(AlertRecords, ErrorsSortTheSameWay) {
  struct A {};
  struct B {};
  RaiseErrors<B>(60);
  RaiseErrors<A>(60);
  const ErrorRecord a = RecordOfErrors<A>();
  const ErrorRecord b = RecordOfErrors<B>();
  EXPECT_TRUE(SSortErrors()(a, b));
  EXPECT_FALSE(SSortErrors()(b, a));
  EXPECT_TRUE(SSortErrors()(b, ErrorRecord()));
  EXPECT_FALSE(SSortErrors()(a, a));
}

}  // namespace
