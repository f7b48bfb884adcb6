#include <Infrastructure/OxaCore/Lock.h>

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <type_traits>
#include <vector>

using namespace Oxa::Core;

namespace {

static_assert(std::is_abstract_v<IMutex>);
static_assert(std::has_virtual_destructor_v<IMutex>);
static_assert(std::is_base_of_v<IMutex, Mutex>);
static_assert(!std::is_polymorphic_v<Lock>);
static_assert(sizeof(Lock) == sizeof(void*));
static_assert(std::is_base_of_v<LogicError, LockTimeout>);
static_assert(std::is_base_of_v<LogicError, MutexDestroyedBeforeLockAcquired>);
static_assert(std::is_base_of_v<Warning, WaitAbandoned>);
static_assert(std::is_base_of_v<OSError, WaitFailed>);

// Writes down what it is asked.
class RecordingMutex : public IMutex {
 public:
  void Lock(const Elapse& timeout) override {
    m_calls.push_back("Lock " + timeout.ToString());
    if (m_bRefuse) OXA_RAISE_ERROR("Test.Lock", LockTimeout(timeout.ToString()));
  }
  bool TryLock(const Elapse& timeout) override {
    m_calls.push_back("TryLock " + timeout.ToString());
    return true;
  }
  void Unlock() override {
    m_calls.emplace_back("Unlock");
    if (m_bRefuseUnlock) OXA_RAISE_ERROR("Test.Lock", LogicError("stuck"));
  }

  std::vector<std::string> m_calls;
  bool m_bRefuse = false;
  bool m_bRefuseUnlock = false;
};

using Calls = std::vector<std::string>;

const std::string& InfiniteText() {
  static const std::string* const text = new std::string(Elapse(0x7FFFFFFF, Elapse::Seconds).ToString());
  return *text;
}

}  // namespace

TEST(IMutex, DefaultTimeouts) {
  EXPECT_EQ(Elapse(0x7FFFFFFF, Elapse::Seconds), IMutex::sINFINITE);
  EXPECT_EQ(Elapse(0, Elapse::Seconds), IMutex::sNO_WAIT);
  RecordingMutex recorder;
  IMutex& mutex = recorder;
  mutex.Lock();
  mutex.TryLock();
  mutex.Unlock();
  EXPECT_EQ((Calls{"Lock " + InfiniteText(), "TryLock " + Elapse(0).ToString(), "Unlock"}), recorder.m_calls);
}

TEST(IMutex, CopiesAndAssigns) {
  RecordingMutex first;
  first.Unlock();
  RecordingMutex second(first);
  EXPECT_EQ(1u, second.m_calls.size());
  second.Unlock();
  first = second;
  EXPECT_EQ(2u, first.m_calls.size());
}

TEST(Lock, LocksWithTheTimeoutAndUnlocksAtTheEnd) {
  RecordingMutex mutex;
  {
    const Lock lock(mutex, Elapse(3));
    EXPECT_EQ((Calls{"Lock " + Elapse(3).ToString()}), mutex.m_calls);
  }
  EXPECT_EQ((Calls{"Lock " + Elapse(3).ToString(), "Unlock"}), mutex.m_calls);
}

TEST(Lock, WaitsWithoutLimitByDefaultAndTakesConstMutexes) {
  RecordingMutex mutex;
  const IMutex& asConst = mutex;
  { const Lock lock(asConst); }
  EXPECT_EQ((Calls{"Lock " + InfiniteText(), "Unlock"}), mutex.m_calls);
}

TEST(Lock, ReleasedByHandDoesNotUnlockAgain) {
  RecordingMutex mutex;
  {
    Lock lock(mutex);
    lock.Release();
    EXPECT_EQ("Unlock", mutex.m_calls.back());
    lock.Release();
  }
  EXPECT_EQ(2u, mutex.m_calls.size());
}

TEST(Lock, ATimeoutOfTheConstructorUnlocksNothing) {
  RecordingMutex mutex;
  mutex.m_bRefuse = true;
  EXPECT_THROW(Lock(mutex, Elapse(1)), LockTimeout);
  EXPECT_EQ(1u, mutex.m_calls.size());
}

TEST(Lock, TheDestructorKeepsWhatUnlockRaises) {
  RecordingMutex mutex;
  mutex.m_bRefuseUnlock = true;
  EXPECT_NO_THROW({ const Lock lock(mutex); });
  EXPECT_EQ("Unlock", mutex.m_calls.back());
  Lock byHand(mutex);
  EXPECT_THROW(byHand.Release(), LogicError);
}

TEST(Lock, IsHandedAroundAsAPointer) {
  RecordingMutex mutex;
  boost::shared_ptr<Lock> first(new Lock(mutex));
  const boost::shared_ptr<Lock> second = first;
  first.reset();
  EXPECT_EQ(1u, mutex.m_calls.size());
  const_cast<boost::shared_ptr<Lock>&>(second).reset();
  EXPECT_EQ("Unlock", mutex.m_calls.back());
}

// The reference comes from a null pointer by mistake: told, and nothing is touched.
[[gnu::no_sanitize("undefined")]] static void LockNothing() {
  IMutex* volatile nothing = nullptr;
  const Lock lock(*nothing);
}

TEST(Lock, ANullReferenceFailsTheAssertion) {
  testing::internal::CaptureStderr();
  LockNothing();
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, told.find("): Failed Assertion(m_Mutex != 0)")) << told;
}

TEST(LockErrors, Texts) {
  EXPECT_EQ("Attempt to lock mutex timed out after waiting for 00:00:01.000.000.000",
            LockTimeout("00:00:01.000.000.000").GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ("A mutex object was destroyed before its lock could be acquired",
            MutexDestroyedBeforeLockAcquired().GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ("Acquired process lock named Disk after lock owner terminated before releasing lock",
            WaitAbandoned("Disk").GetData(AlertInfo::sMESSAGE));
  EXPECT_EQ("Failed to acquire lock for process mutex named Disk due to following error: \n\nGone",
            WaitFailed("Disk", "Gone").GetData(AlertInfo::sMESSAGE));
}

TEST(LockErrors, Severities) {
  EXPECT_EQ(AlertInfo::eERROR, LockTimeout("1").GetSeverity());
  EXPECT_EQ(AlertInfo::eERROR, MutexDestroyedBeforeLockAcquired().GetSeverity());
  EXPECT_EQ(AlertInfo::eWARNING, WaitAbandoned("Disk").GetSeverity());
  EXPECT_EQ(AlertInfo::eERROR, WaitFailed("Disk", "Gone").GetSeverity());
}

TEST(LockErrors, AreCaughtAsWhatTheyAre) {
  EXPECT_THROW(OXA_RAISE_ERROR("Test", LockTimeout("1")), LockTimeout);
  EXPECT_THROW(OXA_RAISE_ERROR("Test", MutexDestroyedBeforeLockAcquired()), MutexDestroyedBeforeLockAcquired);
  EXPECT_THROW(OXA_RAISE_ERROR("Test", WaitFailed("Disk", "Gone")), WaitFailed);
}
