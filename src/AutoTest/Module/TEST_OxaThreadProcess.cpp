// The test of TEST_OxaThread that needs another process.
#include <Infrastructure/OxaCore/ModuleTestSuite.h>
#include <Infrastructure/OxaCore/ProcessMutex.h>

#include <atomic>
#include <random>

#include "AutoTest/Module/AlertTape.h"
#include "AutoTest/Module/HelperProcess.h"
#include "AutoTest/Module/Patience.h"
#include "AutoTest/Module/RaisedMessage.h"
#include "Platform/Clock.h"
#include "Platform/Machine.h"
#include "Platform/NamedLock.h"

namespace Oxa::Core {

namespace {

constexpr char sNAME[] = "TestProcessMutex";
constexpr char sFOR_ALL_SESSIONS[] = "Global\\";
constexpr char sLOG_NAME[] = "Oxa.Core.Test.ProcessMutex";
constexpr char sPROBE[] = "TestProcessMutex that a self-test only speaks of";
constexpr int iFREE = 0;
constexpr int iTAKEN = 1;

// A text that no other process has, also where containers share their locks, and each has a process of that id.
const std::string& OwnMark() {
  static const std::string s_sMark = std::to_string(Platform::ProcessId()) + '/' +
                                     std::to_string(Platform::NowTicks()) + '/' +
                                     std::to_string(std::random_device()());
  return s_sMark;
}

// A mutex of this run alone: others may test at the same time. Nothing of it stays on the machine.
class OwnProcessMutex : public ProcessMutex {
 public:
  explicit OwnProcessMutex(const std::string& name = sNAME) : ProcessMutex(NextName(name)) {}
  ~OwnProcessMutex() override { Platform::RemoveNamedLock((sFOR_ALL_SESSIONS + GetName()).c_str()); }

 private:
  static std::string NextName(const std::string& name) {
    static std::atomic<unsigned> s_uNames{0};
    return name + '/' + OwnMark() + '/' + std::to_string(++s_uNames);
  }
};

// What another process finds.
int OtherProcessTries(const ProcessMutex& mutex) {
  return HelperProcess({"-t", "ProcessMutex", "-p1", mutex.GetName()}).Await();
}

bool TryAndGiveBack(ProcessMutex& mutex) {
  const bool locked = mutex.TryLock();
  if (locked) mutex.Unlock();
  return locked;
}

void CheckHeldHere(ProcessMutex& mutex) {
  OXA_TEST_EQUALS(iFREE, OtherProcessTries(mutex));
  {
    const Lock outer(mutex);
    const Lock inner(mutex, Patience());
    OXA_TEST_EQUALS(iTAKEN, OtherProcessTries(mutex));
  }
  OXA_TEST_EQUALS(iFREE, OtherProcessTries(mutex));
}

// The other process holds it for as long as this one holds the gate.
void CheckHeldThere(ProcessMutex& mutex) {
  OwnProcessMutex gate;
  Lock closed(gate);
  HelperProcess holder({"-t", "ProcessMutexHeld", "-p1", mutex.GetName(), "-p2", gate.GetName()});
  OXA_TEST_ASSERT(Becomes([&mutex] { return !TryAndGiveBack(mutex); }));
  const Elapse limit(50, Elapse::MilliSeconds);
  OXA_TEST_ASSERT(MessageOf<LockTimeout>([&] { mutex.Lock(limit); }) ==
                  "Attempt to lock mutex timed out after waiting for " + limit.ToString());
  closed.Release();
  mutex.Lock(Patience());
  mutex.Unlock();
  OXA_TEST_EQUALS(iFREE, holder.Await());
}

// Whether warnings of this class are told at all: how many of them is up to the host.
bool IsAbandonmentTold() {
  const AlertTape tape(sPROBE);
  OXA_RAISE_WARNING(sLOG_NAME, WaitAbandoned(sPROBE));
  return !tape.GetHeard().empty();
}

// Whoever comes next has it all the same, and is warned.
void CheckLeftBehind(ProcessMutex& mutex) {
  OXA_TEST_EQUALS(iFREE, HelperProcess({"-t", "ProcessMutexAbandoned", "-p1", mutex.GetName()}).Await());
  const bool isTold = IsAbandonmentTold();
  const AlertTape tape(mutex.GetName());
  mutex.Lock(Patience());
  OXA_TEST_EQUALS(iTAKEN, OtherProcessTries(mutex));
  mutex.Unlock();
  OXA_TEST_EQUALS(iFREE, OtherProcessTries(mutex));
  OXA_TEST_EQUALS(isTold ? 1 : 0, static_cast<long>(tape.GetHeard().size()));
  OXA_TEST_ASSERT(!isTold ||
                  tape.GetHeard().front() == "warned Acquired process lock named " + mutex.GetName() +
                                                 " after lock owner terminated before releasing lock");
}

}  // namespace

void TEST_OxaThread::CrossProcessMutex(std::string&) {
  const OwnProcessMutex named("Test\\Backslash\\Replacement");
  OXA_TEST_ASSERT(named.GetName().rfind("Test/Backslash/Replacement/", 0) == 0);
  OwnProcessMutex mutex;
  CheckHeldHere(mutex);
  CheckHeldThere(mutex);
  CheckLeftBehind(mutex);
}

}  // namespace Oxa::Core
