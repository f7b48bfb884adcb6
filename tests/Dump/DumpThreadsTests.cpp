// The list of threads, from folders of a test's making.
#include "Platform/Linux/DumpThreads.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Dump/OpenFile.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core::Platform;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using TestSupport::OpenFile;
using TestSupport::TemporaryFolder;

constexpr int iCALLER = 7;

class DumpThreadsTests : public testing::Test {
 protected:
  void SetUp() override {
    s_threads.Clear();
    s_threads.AddCaller(iCALLER, m_context);
  }

  void Make(int id) const { std::filesystem::create_directory(m_folder.File(std::to_string(id))); }

  void Make(int id, const std::string& place) const {
    Make(id);
    m_folder.Write(std::to_string(id) + "/syscall", place);
  }

  static std::vector<int> Ids() {
    std::vector<int> ids;
    for (const DumpThread& thread : s_threads) ids.push_back(thread.m_iId);
    return ids;
  }

  static DumpThread& Thread(int id) {
    for (DumpThread& thread : s_threads)
      if (thread.m_iId == id) return thread;
    ADD_FAILURE() << id;
    return *s_threads.begin();
  }

  const TemporaryFolder m_folder;
  const OpenFile m_tasks{m_folder.Path()};
  CONTEXT m_context = {};
  static DumpThreads s_threads;
};
DumpThreads DumpThreadsTests::s_threads;

TEST_F(DumpThreadsTests, EachIsThereOnceAndTheSparedOneIsNot) {
  for (const int id : {iCALLER, 8, 9, 10}) Make(id);
  EXPECT_EQ(s_threads.AddFrom(m_tasks.Get(), 9), 2U);
  EXPECT_EQ(s_threads.begin()->m_iId, iCALLER);
  EXPECT_EQ(s_threads.begin()->m_eState, DumpThread::eCALLER);
  EXPECT_THAT(Ids(), UnorderedElementsAre(iCALLER, 8, 10));
  EXPECT_EQ(Thread(8).m_eState, DumpThread::eRUNNING);
}

TEST_F(DumpThreadsTests, ThoseThatStartMeanwhileAreFoundLater) {
  Make(8);
  EXPECT_EQ(s_threads.AddFrom(m_tasks.Get(), 0), 1U);
  EXPECT_EQ(s_threads.AddFrom(m_tasks.Get(), 0), 0U);
  Make(9);
  EXPECT_EQ(s_threads.AddFrom(m_tasks.Get(), 0), 1U);
  EXPECT_THAT(Ids(), ElementsAre(iCALLER, 8, 9));
}

// The folder of open files has as many names, which are numbers too.
TEST_F(DumpThreadsTests, MoreThanItHoldsAreCut) {
  constexpr std::size_t uMOST = 4096;
  std::vector<std::unique_ptr<OpenFile>> files;
  for (std::size_t i = 0; i < uMOST + 50; ++i) files.push_back(std::make_unique<OpenFile>("/dev/null"));
  if (files.back()->Get() < 0) GTEST_SKIP() << "the system gives no more";
  const OpenFile names("/proc/self/fd");
  EXPECT_EQ(s_threads.AddFrom(names.Get(), 0), uMOST - 1);
  EXPECT_EQ(s_threads.Count(), uMOST);
}

TEST_F(DumpThreadsTests, OneInTheMiddleCanGo) {
  for (const int id : {8, 9, 10}) Make(id);
  s_threads.AddFrom(m_tasks.Get(), 0);
  s_threads.Remove(&Thread(9));
  EXPECT_THAT(Ids(), UnorderedElementsAre(iCALLER, 8, 10));
}

TEST_F(DumpThreadsTests, PlacesAreWhatTheSystemTellsOfThem) {
  Make(11, "202 0x7ffd1 0x80 0x0 0x0 0x0 0x0 0x7ffc0001000 0x7f0000beef\n");  // waits in a call
  Make(12, "-1 0x7ffc0002000 0x7f0000cafe\n");                                // waits in none
  Make(13, "running\n");
  Make(14, "0 0x0\n");
  Make(15, "");
  Make(16);
  s_threads.AddFrom(m_tasks.Get(), 0);
  s_threads.ReadPlaces(m_tasks.Get());
  EXPECT_EQ(s_threads.begin()->m_eState, DumpThread::eCALLER);
  for (const int id : {11, 12}) {
    Minidump::Registers registers;
    s_threads.ReadRegisters(Thread(id), registers);
    EXPECT_EQ(Thread(id).m_eState, DumpThread::ePLACE) << id;
    EXPECT_EQ(registers.m_uFlags, Minidump::eREGISTERS_CONTROL) << id;
    EXPECT_EQ(registers.m_general[4], id == 11 ? 0x7ffc0001000U : 0x7ffc0002000U) << id;
    EXPECT_EQ(registers.m_uPlace, id == 11 ? 0x7f0000beefU : 0x7f0000cafeU) << id;
  }
  for (const int id : {13, 14, 15, 16}) {
    EXPECT_EQ(Thread(id).m_eState, DumpThread::eRUNNING) << id;
    EXPECT_EQ(Thread(id).m_uPlace, 0U) << id;
    EXPECT_EQ(Thread(id).m_uStack, 0U) << id;
  }
}

}  // namespace
