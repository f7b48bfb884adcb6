// What conditions and semaphores do when the system has nothing for them.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Semaphore.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "Support/Eventually.h"

using namespace Oxa::Core;
using TestSupport::Eventually;

namespace {

std::atomic<int> s_iUntilFailure{0};  // the failing one of the allocations to come that may fail; 0: none
std::atomic<bool> s_bAllFail{false};

const std::string sNO_OBJECT = std::strerror(EINVAL);

template <class Object, class... Arguments>
std::string ToldOfMaking(std::unique_ptr<Object>& object, int failing, Arguments... arguments) {
  testing::internal::CaptureStderr();
  void* const room = std::malloc(sizeof(Object));
  s_iUntilFailure = failing;
  object.reset(::new (room) Object(arguments...));
  s_iUntilFailure = 0;
  return testing::internal::GetCapturedStderr();
}

std::string RaisedBy(const std::function<void()>& action) {
  try {
    action();
  } catch (const OSError& error) {
    return error.GetData(AlertInfo::sMESSAGE);
  }
  return "nothing";
}

// Does something on the raising thread, while the raise is told.
class WhileTold : public AlertListener {
 public:
  explicit WhileTold(std::function<void()> action) : m_action(action) {
    AlertManager::Instance()->AddAlertListener(*this);
  }
  ~WhileTold() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Error&) override { m_action(); }

 private:
  const std::function<void()> m_action;
};

bool Tells(const std::string& told, const std::string& assertion) {
  return told.find("): Failed Assertion(" + assertion + ")") != std::string::npos;
}

constexpr const char* sHANDLES[] = {"0 != m_hConditionSignal", "0 != m_hBroadcastCompleteSignal",
                                    "0 != m_hMutex"};

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (s_bAllFail) return nullptr;
  if (s_iUntilFailure > 0 && --s_iUntilFailure == 0) return nullptr;
  return std::malloc(size);
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

TEST(NoMemory, EachHandleOfAConditionHasItsAssertion) {
  for (int failing = 0; failing < 3; ++failing) {
    std::unique_ptr<Condition> condition;
    const std::string told = ToldOfMaking(condition, failing + 1, true);
    for (int handle = 0; handle < 3; ++handle)
      EXPECT_EQ(handle == failing, Tells(told, sHANDLES[handle])) << told;
  }
}

TEST(NoMemory, TheAssertionsOfAConditionComeInOrder) {
  std::unique_ptr<Condition> condition;
  s_bAllFail = true;
  const std::string told = ToldOfMaking(condition, 0, true);
  s_bAllFail = false;
  std::size_t at = 0;
  for (const char* const handle : sHANDLES) {
    at = told.find("): Failed Assertion(" + std::string(handle) + ")", at);
    ASSERT_NE(std::string::npos, at) << handle << " in " << told;
  }
}

// Nobody waits for the end of the broadcast then, but it reaches everybody.
TEST(NoMemory, ABroadcastWithoutItsSecondEventStillWakesAll) {
  std::unique_ptr<Condition> condition;
  ToldOfMaking(condition, 2, true);
  constexpr int count = 3;
  std::atomic<int> waiting{0}, returned{0};
  std::vector<std::thread> threads;
  for (int waiter = 0; waiter < count; ++waiter)
    threads.emplace_back([&] {
      const Lock lock(*condition);
      ++waiting;
      condition->Wait();
      ++returned;
    });
  EXPECT_TRUE(Eventually([&] { return waiting == count; }));
  {
    const Lock lock(*condition);  // released by the last of them when it began to wait
    condition->Broadcast();
  }
  if (!Eventually([&] { return returned == count; })) std::abort();  // threads that sleep can't be joined
  for (auto& thread : threads) thread.join();
  const Lock lock(*condition);
  EXPECT_FALSE(condition->TimedWait(Elapse(0)));
}

TEST(NoMemory, ABroadcastWithoutASignalComesBack) {
  std::unique_ptr<Condition> condition;
  ToldOfMaking(condition, 1, true);
  EXPECT_NO_THROW(condition->Broadcast());
  EXPECT_NO_THROW(condition->Notify());
}

TEST(NoMemory, AConditionWithoutALockRaises) {
  std::unique_ptr<Condition> condition;
  ToldOfMaking(condition, 3, true);
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { condition->Lock(); }));
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { condition->TryLock(); }));
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { condition->Wait(); }));
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { condition->TimedWait(Elapse(1)); }));
  EXPECT_NO_THROW(condition->Unlock());
  EXPECT_NO_THROW(condition->Notify());
}

TEST(NoMemory, AConditionWithoutASignalRaisesWhenWaitedOn) {
  std::unique_ptr<Condition> condition;
  ToldOfMaking(condition, 1, true);
  condition->Lock();
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { condition->Wait(); }));
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { condition->TimedWait(Elapse(1)); }));
  EXPECT_NO_THROW(condition->Signal());
}

TEST(NoMemory, ASemaphoreHasItsAssertion) {
  std::unique_ptr<Semaphore> semaphore;
  EXPECT_TRUE(Tells(ToldOfMaking(semaphore, 1, 2u), "0 != m_hSemaphore"));
  EXPECT_EQ(2u, semaphore->GetCount());
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { semaphore->Wait(); }));
  EXPECT_EQ(0u, semaphore->TryWaitForSome(2));
  testing::internal::CaptureStderr();
  semaphore->Post(0);
  EXPECT_TRUE(Tells(testing::internal::GetCapturedStderr(), "amount > 0"));
  EXPECT_EQ(2u, semaphore->GetCount());
}

// Other threads may use the gate meanwhile.
TEST(NoMemory, AGateWithoutASemaphoreRaisesWithItsMutexFree) {
  std::unique_ptr<MultiWait> gate;
  EXPECT_TRUE(Tells(ToldOfMaking(gate, 1), "0 != m_hSemaphore"));
  std::atomic<bool> released{false};
  std::thread other;
  bool inTime = false;
  {
    const WhileTold listener([&] {
      other = std::thread([&] {
        gate->releaseWaiters();
        released = true;
      });
      inTime = Eventually([&] { return released.load(); });
    });
    EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { gate->wait(nullptr); }));
  }
  other.join();
  EXPECT_TRUE(inTime);
  EXPECT_EQ(1u, gate->GetCount());
  Elapse timeout(1);
  EXPECT_EQ(sNO_OBJECT, RaisedBy([&] { gate->wait(&timeout); }));
}
