// The order in which locks, tasks, threads and callbacks have their virtual operations.
#include <Infrastructure/OxaCore/Callback.h>
#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/ProcessMutex.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "Support/VirtualSlots.h"

using namespace Oxa::Core;
using TestSupport::SlotOf;

namespace {

using Slots = std::vector<std::size_t>;

// Derived, since one of the operations is for derived classes.
class SlotsOfListener : public Thread::Listener {
 public:
  static Slots All() {
    return {SlotOf(&SlotsOfListener::AddNotificationSource),
            SlotOf(&SlotsOfListener::RemoveNotificationSource),
            SlotOf(&SlotsOfListener::NotificationSourceIsRemoved), SlotOf(&SlotsOfListener::OnThreadComplete),
            SlotOf(&SlotsOfListener::OnThreadError)};
  }
};

template <class Lockable>
Slots SlotsOfMutex() {
  return {SlotOf(&Lockable::Lock), SlotOf(&Lockable::TryLock), SlotOf(&Lockable::Unlock)};
}

}  // namespace

TEST(ThreadSlots, EachMutexHasItsDestructorFirst) {
  const Slots expected = {2, 3, 4};
  EXPECT_EQ(expected, SlotsOfMutex<IMutex>());
  EXPECT_EQ(expected, SlotsOfMutex<Mutex>());
  EXPECT_EQ(expected, SlotsOfMutex<Condition>());
  EXPECT_EQ(expected, SlotsOfMutex<ProcessMutex>());
}

TEST(ThreadSlots, TasksAndTheirDirectives) {
  EXPECT_EQ(2u, SlotOf(&Task::Run));
  EXPECT_EQ((Slots{2, 3, 4}),
            (Slots{SlotOf(&TaskDirective::MustStop), SlotOf(&TaskDirective::WaitForStopRequest),
                   SlotOf(&TaskDirective::TimedWaitForStopRequest)}));
}

TEST(ThreadSlots, AListenerOfThreadsAddsTwoToThoseOfEveryListener) {
  EXPECT_EQ((Slots{0, 1, 4, 5, 6}), SlotsOfListener::All());
}

TEST(ThreadSlots, CallbacksAreCalledBehindTheirDestructor) {
  EXPECT_EQ(2u, SlotOf(&Callback::operator()));
  EXPECT_EQ(2u, SlotOf(&CallbackRet<int>::operator()));
  EXPECT_EQ(2u, SlotOf(&CallbackArg<int>::operator()));
  EXPECT_EQ(2u, (SlotOf(&CallbackRetArg<int, int>::operator())));
}

TEST(ThreadSlots, AThreadBeginsWithItsCount) {
  const boost::shared_ptr<Thread> thread = Thread::Create("");
  const void* const whole = thread.get();
  EXPECT_EQ(whole, static_cast<RefCountedObject*>(thread.get()));
  EXPECT_NE(whole, static_cast<TaskDirective*>(thread.get()));
}
