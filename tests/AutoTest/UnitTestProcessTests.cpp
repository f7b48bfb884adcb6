// The program that the library's own tests start, as it is told from the command line.
#include <Infrastructure/OxaCore/ProcessMutex.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Support/BackgroundChild.h"
#include "Support/ChildProcess.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"

using Oxa::Core::ProcessMutex;
using TestSupport::ChildResult;

namespace {

constexpr int iFREE = 0;
constexpr int iTAKEN = 1;
constexpr int iWRONG_CALL = 2;

using Arguments = std::vector<std::string>;

Arguments Command(const Arguments& arguments) {
  Arguments command{UNIT_TEST_PROCESS};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

ChildResult Called(const Arguments& arguments) { return TestSupport::RunChild(Command(arguments)); }

// A lock of this test alone; what stands behind it is removed at the end.
class UnitTestProcess : public testing::Test {
 protected:
  UnitTestProcess() : m_sName(NewName()), m_sGate(NewName()), m_mutex(m_sName), m_gate(m_sGate) {}
  ~UnitTestProcess() override {
    for (const std::string& name : {m_sName, m_sGate})
      ::unlink(("/dev/shm/oxacore.lock.Global%5C" + name).c_str());
  }

  int OtherProcessTries() const { return Called({"-t", "ProcessMutex", "-p1", m_sName}).m_iStatus; }

  const std::string m_sName;
  const std::string m_sGate;
  ProcessMutex m_mutex;
  ProcessMutex m_gate;

 private:
  static std::string NewName() {
    static int s_iNumber = 0;
    return "TestUnitTestProcess." + std::to_string(::getpid()) + "." + std::to_string(++s_iNumber);
  }
};

TEST_F(UnitTestProcess, TellsWhetherTheMutexIsFree) {
  EXPECT_EQ(iFREE, OtherProcessTries());
  m_mutex.Lock();
  EXPECT_EQ(iTAKEN, OtherProcessTries());
  m_mutex.Unlock();
  EXPECT_EQ(iFREE, OtherProcessTries());
}

TEST_F(UnitTestProcess, HoldsItUntilItGetsTheGate) {
  m_gate.Lock();
  TestSupport::BackgroundChild holder(Command({"-t", "ProcessMutexHeld", "-p1", m_sName, "-p2", m_sGate}));
  EXPECT_TRUE(TestSupport::Eventually([this] { return OtherProcessTries() == iTAKEN; }));
  m_gate.Unlock();
  EXPECT_EQ(0, holder.Await());
  EXPECT_EQ(iFREE, OtherProcessTries());
}

TEST_F(UnitTestProcess, LeavesItAbandoned) {
  EXPECT_EQ(0, Called({"-t", "ProcessMutexAbandoned", "-p1", m_sName}).m_iStatus);
  EXPECT_FALSE(m_mutex.TryLock());  // owned all the same
  EXPECT_EQ(iTAKEN, OtherProcessTries());
  m_mutex.Unlock();
  EXPECT_EQ(iFREE, OtherProcessTries());
}

TEST_F(UnitTestProcess, TellsItsUsageWhereItUnderstandsNothing) {
  const std::vector<Arguments> wrong{{},
                                     {"-t"},
                                     {"-t", "ProcessMutex"},
                                     {"-t", "ProcessMutex", "-p1"},
                                     {"-t", "Nothing", "-p1", m_sName},
                                     {"-p1", m_sName, "-t", "ProcessMutex"},
                                     {"-t", "ProcessMutex", "-p2", m_sName},
                                     {"-t", "ProcessMutex", "-p1", m_sName, "-p2", m_sGate},
                                     {"-t", "ProcessMutex", "-p1", m_sName, "-p2"},
                                     {"-t", "ProcessMutexHeld", "-p1", m_sName},
                                     {"-t", "ProcessMutexHeld", "-p1", m_sName, "-x", m_sGate},
                                     {"--help"}};
  for (const Arguments& arguments : wrong) {
    const ChildResult result = Called(arguments);
    EXPECT_EQ(iWRONG_CALL, result.m_iStatus);
    EXPECT_EQ(
        "usage: UnitTestProcess.exe -t ProcessMutex -p1 NAME\n"
        "       UnitTestProcess.exe -t ProcessMutexHeld -p1 NAME -p2 GATE\n"
        "       UnitTestProcess.exe -t ProcessMutexAbandoned -p1 NAME\n",
        result.m_sError);
    EXPECT_EQ("", result.m_sOutput);
  }
}

TEST_F(UnitTestProcess, WritesNothingAnywhere) {
  const TestSupport::TemporaryFolder folder;
  const TestSupport::CurrentFolder current(folder.Path());
  const ChildResult result = Called({"-t", "ProcessMutex", "-p1", m_sName});
  EXPECT_EQ("", result.m_sOutput);
  EXPECT_EQ("", result.m_sError);
  EXPECT_TRUE(folder.Names().empty());
}

}  // namespace
