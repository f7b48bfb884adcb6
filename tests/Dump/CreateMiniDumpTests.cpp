// Dumps as hosts ask for them: the file, or the warning that tells why there is none.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <gmock/gmock.h>

#include "Dump/DumpScene.h"
#include "Platform/Linux/FaultContext.h"
#include "Support/LeakDetector.h"

namespace {

using namespace TestSupport;
using namespace Oxa::Core;
using MSWindows::DebugHelp;
using testing::ElementsAre;
using testing::IsEmpty;

// The way to a private field, which an explicit instantiation may name.
template <auto field>
struct Opened {
  friend auto& FieldOf(DebugHelp& help) { return help.*field; }
};
auto& FieldOf(DebugHelp& help);
template struct Opened<&DebugHelp::m_pMiniDumpWriteDump>;

class Listener : public AlertListener {
 public:
  Listener() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Listener() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void WarningRaised(Warning& warning) override {
    m_warnings.push_back(warning.GetData(AlertInfo::sLOG_NAME) + ": " + warning.GetData(AlertInfo::sMESSAGE));
  }
  std::vector<std::string> m_warnings;
};

class CreateMiniDump : public testing::Test {
 protected:
  void SetUp() override {
    if (!m_spHelp) GTEST_SKIP() << "the library for symbols isn't installed";
    Platform::CaptureContext(m_context);
    m_record.m_signal.si_signo = SIGFPE;
  }

  void Create(const std::string& file, EDumpPolicy policy = eDUMP_NORMAL) {
    PathName path(file);
    m_spHelp->CreateMiniDump(path, m_pointers, policy);
  }
  const std::vector<std::string>& Warnings() const { return m_listener.m_warnings; }

  const TemporaryFolder m_folder;
  const boost::shared_ptr<DebugHelp> m_spHelp = DebugHelp::Instance();

 private:
  Listener m_listener;
  CONTEXT m_context = {};
  _EXCEPTION_RECORD m_record = {};
  _EXCEPTION_POINTERS m_pointers = {&m_record, &m_context};
};

TEST_F(CreateMiniDump, HasTheContentsOfThePolicyAndTheFaultOfThisThread) {
  for (const int policy : {0, 1, 2, 3, 17}) {
    Create(m_folder.File("x.dmp"), static_cast<EDumpPolicy>(policy));
    const DumpReader dump = ReadDump(m_folder.File("x.dmp"));
    const unsigned contents[] = {0, uPOLICY_1, uPOLICY_2, uPOLICY_3};
    EXPECT_EQ(dump.Contents(), policy < 4 ? contents[policy] : 0U);
    EXPECT_EQ(dump.TheException().m_uCode, static_cast<unsigned>(SIGFPE));
    EXPECT_EQ(dump.TheException().m_uThread, static_cast<unsigned>(::syscall(SYS_gettid)));
  }
  EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(CreateMiniDump, WritesOverAnOldFile) {
  Create(m_folder.Write("x.dmp", "old"));
  EXPECT_EQ(m_folder.Read("x.dmp").substr(0, 4), "MDMP");
}

TEST_F(CreateMiniDump, OfAFolderThatDoesntExistWarnsWithTheSystemsTextAndWritesNothing) {
  const std::string file = m_folder.File("missing/x.dmp");
  Create(file);
  EXPECT_THAT(Warnings(), ElementsAre("Microsoft.DebugHelp: Failed to create minidump file named:\n\n" +
                                      file + "\n\nwith the following error:\n\nNo such file or directory"));
  EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(CreateMiniDump, WithoutTheFunctionForItWarnsAndWritesNothing) {
  const void* const before = FieldOf(*m_spHelp);
  FieldOf(*m_spHelp) = nullptr;
  Create(m_folder.File("x.dmp"));
  FieldOf(*m_spHelp) = before;
  EXPECT_THAT(Warnings(),
              ElementsAre("Microsoft.DebugHelp: Failed to find MiniDumpWriteDump in the loaded dbghelp.dll"));
  EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(CreateMiniDump, ThreadsWaitForEachOther) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([this, i] { Create(m_folder.File("x" + std::to_string(i))); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(m_folder.Names().size(), 3U);
  for (const std::string& name : m_folder.Names()) EXPECT_NO_THROW(DumpReader(m_folder.Read(name)).Threads());
  EXPECT_THAT(Warnings(), IsEmpty());
}

// A dump that nobody ends would be the last one.
TEST_F(CreateMiniDump, AThreadIsKilledBehindItOnly) {
  struct Dumping : Task {
    explicit Dumping(const std::function<void()>& dump) : m_dump(dump) {}
    int Run(TaskDirective&) override {
      TestSupport::ForgiveLeaks();
      for (;;) {
        m_bStarted = true;
        m_dump();
      }
    }
    std::function<void()> m_dump;
    std::atomic<bool> m_bStarted{false};
  };
  for (int i = 0; i < 2; ++i) {
    const boost::shared_ptr<Dumping> task(new Dumping([this] { Create(m_folder.File("x.dmp")); }));
    const boost::shared_ptr<Thread> thread = Thread::Create("dumping");
    thread->Start(task);
    ASSERT_TRUE(Eventually([&task] { return task->m_bStarted.load(); }));
    thread->Kill(Elapse(20, Elapse::Seconds));
    EXPECT_NO_THROW(ReadDump(m_folder.File("x.dmp")).Threads()) << "the thread's";
    Create(m_folder.File("y.dmp"));
    EXPECT_NO_THROW(ReadDump(m_folder.File("y.dmp")).Threads());
  }
  EXPECT_THAT(Warnings(), IsEmpty());
}

}  // namespace
