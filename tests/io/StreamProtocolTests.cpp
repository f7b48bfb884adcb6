// A stream knows what is stacked on it: who is served when, and who stands still.
#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "Support/OtherThread.h"
#include "io/Streams.h"

namespace {

using namespace IoTests;
using testing::ElementsAre;

const std::string sLISTENER_FAILED = "Listener threw error during notification: ";

bool LockedByAnother(Mutex& mutex) { return !TestSupport::OtherThreadCanLock(mutex); }

// A filter with a lock, which tells of what happens to it.
class LockedInput : public BinaryInputStreamFilter {
 public:
  LockedInput(BinaryInputStream& source, const std::string& name, Calls& calls)
      : BinaryInputStreamFilter(source), m_sName(name), m_calls(calls) {}

  void AcquireReadLocks(LockSet& locks) override {
    m_calls.push_back(m_sName + " locks");
    AddLock(locks, m_mutex);
  }
  void DoBufferedInputInvalidation() override {
    m_calls.push_back(m_sName + (LockedByAnother(m_mutex) ? " drops" : " drops without its lock"));
    if (m_fail) m_fail();
  }

  std::string m_sName;
  Calls& m_calls;
  std::function<void()> m_fail;
  Mutex m_mutex;
};

class LockedOutput : public BinaryOutputStreamFilter {
 public:
  LockedOutput(BinaryOutputStream& sink, const std::string& name, Calls& calls)
      : BinaryOutputStreamFilter(sink), m_sName(name), m_calls(calls) {}

  void AcquireWriteLocks(LockSet& locks) override {
    m_calls.push_back(m_sName + " locks");
    AddLock(locks, m_mutex);
  }
  void DoOutputBufferFlush() override {
    m_calls.push_back(m_sName + (LockedByAnother(m_mutex) ? " writes" : " writes without its lock"));
    if (m_fail) m_fail();
  }

  std::string m_sName;
  Calls& m_calls;
  std::function<void()> m_fail;
  Mutex m_mutex;
};

// A source and a sink at the bottom that have locks.
class LockedSource : public MemorySource {
 public:
  void AcquireReadLocks(LockSet& locks) override {
    m_calls.push_back("source locks");
    AddLock(locks, m_mutex);
  }
  Mutex m_mutex;
};

class LockedSink : public MemorySink {
 public:
  void AcquireWriteLocks(LockSet& locks) override {
    m_calls.push_back("sink locks");
    AddLock(locks, m_mutex);
  }
  Mutex m_mutex;
};

TEST(Invalidation, ServesTheOutermostFirstAndLocksTheSourceLast) {
  LockedSource source;
  Calls& calls = source.m_calls;
  LockedInput inner(source, "inner", calls);
  LockedInput outer(inner, "outer", calls);
  LockSet locks;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_THAT(calls, ElementsAre("outer locks", "outer drops", "inner locks", "inner drops", "source locks"));
  EXPECT_EQ(3u, locks.size());
}

TEST(Invalidation, HoldsAllLocksUntilTheSetIsEmptied) {
  LockedSource source;
  LockedInput inner(source, "inner", source.m_calls);
  LockedInput outer(inner, "outer", source.m_calls);
  LockSet locks;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_TRUE(LockedByAnother(outer.m_mutex));
  EXPECT_TRUE(LockedByAnother(inner.m_mutex));
  EXPECT_TRUE(LockedByAnother(source.m_mutex));
  locks.clear();
  EXPECT_FALSE(LockedByAnother(outer.m_mutex));
  EXPECT_FALSE(LockedByAnother(inner.m_mutex));
  EXPECT_FALSE(LockedByAnother(source.m_mutex));
}

TEST(Invalidation, ReleasesWhatTheSetHeldBefore) {
  Mutex before;
  LockSet locks;
  AddLock(locks, before);
  EXPECT_TRUE(LockedByAnother(before));
  MemorySource source;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_TRUE(locks.empty());
  EXPECT_FALSE(LockedByAnother(before));
}

TEST(Invalidation, ReachesEachOfSeveralFiltersOnOneStream) {
  LockedSource source;
  LockedInput first(source, "first", source.m_calls);
  LockedInput second(source, "second", source.m_calls);
  LockSet locks;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_THAT(source.m_calls,
              ElementsAre("first locks", "first drops", "second locks", "second drops", "source locks"));
}

TEST(Invalidation, OfAFilterReachesOnlyWhatIsStackedOnIt) {
  LockedSource source;
  LockedInput inner(source, "inner", source.m_calls);
  LockedInput outer(inner, "outer", source.m_calls);
  LockSet locks;
  inner.InvalidateAllBufferedInput(locks);
  EXPECT_THAT(source.m_calls, ElementsAre("outer locks", "outer drops", "inner locks"));
}

TEST(Invalidation, NoLongerReachesAFilterThatDied) {
  LockedSource source;
  LockSet locks;
  { LockedInput filter(source, "filter", source.m_calls); }
  source.InvalidateAllBufferedInput(locks);
  EXPECT_THAT(source.m_calls, ElementsAre("source locks"));
}

TEST(Invalidation, TheSourceMayDieBeforeTheFilter) {
  auto source = std::make_unique<LockedSource>();
  Calls calls;
  LockedInput filter(*source, "filter", calls);
  source.reset();
  LockSet locks;
  filter.InvalidateAllBufferedInput(locks);
  EXPECT_THAT(calls, ElementsAre("filter locks"));
}

TEST(Invalidation, AFailureInAFilterIsAWarningAndStopsNobody) {
  LockedSource source;
  LockedInput inner(source, "inner", source.m_calls);
  LockedInput outer(inner, "outer", source.m_calls);
  outer.m_fail = RaiseTestError;
  Warnings warnings;
  LockSet locks;
  source.InvalidateAllBufferedInput(locks);
  EXPECT_THAT(source.m_calls,
              ElementsAre("outer locks", "outer drops", "inner locks", "inner drops", "source locks"));
  EXPECT_THAT(warnings.m_messages, ElementsAre(sLISTENER_FAILED + sRAISED));
  EXPECT_EQ(3u, locks.size());
}

TEST(Invalidation, EventPassesOverOtherListeners) {
  class Other : public NotificationListener {
  } other;
  LockSet locks;
  BinaryInputStream::InvalidateBufferedInputEvent invalidate(locks);
  BinaryOutputStream::FlushBufferedOutputEvent flush(locks);
  invalidate.Notify(other);
  flush.Notify(other);
  EXPECT_TRUE(locks.empty());
}

TEST(FlushAll, ServesTheOutermostFirstThenLocksAndFlushesTheSink) {
  LockedSink sink;
  Calls& calls = sink.m_calls;
  LockedOutput inner(sink, "inner", calls);
  LockedOutput outer(inner, "outer", calls);
  LockSet locks;
  sink.FlushAllBufferedOutput(locks);
  EXPECT_THAT(calls, ElementsAre("outer locks", "outer writes", "inner locks", "inner writes", "sink locks",
                                 "flush"));
  EXPECT_EQ(3u, locks.size());
}

TEST(FlushAll, HoldsAllLocksUntilTheSetIsEmptied) {
  LockedSink sink;
  LockedOutput inner(sink, "inner", sink.m_calls);
  LockedOutput outer(inner, "outer", sink.m_calls);
  {
    LockSet locks;
    sink.FlushAllBufferedOutput(locks);
    EXPECT_TRUE(LockedByAnother(outer.m_mutex));
    EXPECT_TRUE(LockedByAnother(inner.m_mutex));
    EXPECT_TRUE(LockedByAnother(sink.m_mutex));
  }
  EXPECT_FALSE(LockedByAnother(outer.m_mutex));
  EXPECT_FALSE(LockedByAnother(inner.m_mutex));
  EXPECT_FALSE(LockedByAnother(sink.m_mutex));
}

TEST(FlushAll, ReleasesWhatTheSetHeldBefore) {
  Mutex before;
  LockSet locks;
  AddLock(locks, before);
  MemorySink sink;
  sink.FlushAllBufferedOutput(locks);
  EXPECT_TRUE(locks.empty());
  EXPECT_FALSE(LockedByAnother(before));
  EXPECT_THAT(sink.m_calls, ElementsAre("flush"));
}

TEST(FlushAll, ReachesEachOfSeveralFiltersOnOneStream) {
  LockedSink sink;
  LockedOutput first(sink, "first", sink.m_calls);
  LockedOutput second(sink, "second", sink.m_calls);
  LockSet locks;
  sink.FlushAllBufferedOutput(locks);
  EXPECT_THAT(sink.m_calls, ElementsAre("first locks", "first writes", "second locks", "second writes",
                                        "sink locks", "flush"));
}

TEST(FlushAll, OfAFilterReachesOnlyWhatIsStackedOnItAndFlushesDown) {
  LockedSink sink;
  LockedOutput inner(sink, "inner", sink.m_calls);
  LockedOutput outer(inner, "outer", sink.m_calls);
  LockSet locks;
  inner.FlushAllBufferedOutput(locks);
  EXPECT_THAT(sink.m_calls, ElementsAre("outer locks", "outer writes", "inner locks", "flush"));
}

TEST(FlushAll, NoLongerReachesAFilterThatDied) {
  LockedSink sink;
  LockSet locks;
  { LockedOutput filter(sink, "filter", sink.m_calls); }
  sink.FlushAllBufferedOutput(locks);
  EXPECT_THAT(sink.m_calls, ElementsAre("sink locks", "flush"));
}

TEST(FlushAll, TheSinkMayDieBeforeTheFilter) {
  auto sink = std::make_unique<LockedSink>();
  Calls calls;
  LockedOutput filter(*sink, "filter", calls);
  sink.reset();
  EXPECT_TRUE(calls.empty());
}

TEST(FlushAll, AFailureInAFilterIsAWarningAndStopsNobody) {
  LockedSink sink;
  LockedOutput inner(sink, "inner", sink.m_calls);
  LockedOutput outer(inner, "outer", sink.m_calls);
  inner.m_fail = RaiseTestError;
  Warnings warnings;
  LockSet locks;
  sink.FlushAllBufferedOutput(locks);
  EXPECT_THAT(sink.m_calls, ElementsAre("outer locks", "outer writes", "inner locks", "inner writes",
                                        "sink locks", "flush"));
  EXPECT_THAT(warnings.m_messages, ElementsAre(sLISTENER_FAILED + sRAISED));
}

TEST(FlushAll, AFailureOfTheSinksOwnFlushIsTheCallersError) {
  LockedSink sink;
  sink.m_bFailFlush = true;
  LockSet locks;
  EXPECT_THROW(sink.FlushAllBufferedOutput(locks), XIOSystemCallFailure);
  EXPECT_EQ(1u, locks.size());
}

TEST(AddLock, WaitsForEver) {
  class Noted : public IMutex {
   public:
    void Lock(const Elapse& timeout) override { m_timeouts.push_back(timeout); }
    bool TryLock(const Elapse&) override { return false; }
    void Unlock() override {}
    std::vector<Elapse> m_timeouts;
  } mutex;
  LockSet locks;
  AddLock(locks, mutex);
  EXPECT_EQ(std::vector<Elapse>{Elapse(2147483647)}, mutex.m_timeouts);
}

TEST(AddLock, MayHoldOneMutexSeveralTimes) {
  Mutex mutex;
  LockSet locks;
  AddLock(locks, mutex);
  AddLock(locks, mutex);
  EXPECT_EQ(2u, locks.size());
  locks.erase(locks.begin());
  EXPECT_TRUE(LockedByAnother(mutex));
  locks.clear();
  EXPECT_FALSE(LockedByAnother(mutex));
}

}  // namespace
