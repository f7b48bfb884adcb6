#include "ErrorHandling/PlaceTables.h"

#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "ErrorHandling/FunctionName.h"
#include "ErrorHandling/Hooks.h"
#include "Support/Allocations.h"
#include "Support/RestoreHooks.h"

using namespace Oxa::Core;

namespace {

constexpr CodePlace g_PLACE{"a.cpp", 42, "Tue Jan 14 08:28:11 2014", "void Acme::Probe::Read(int)"};

AlertData Expected(const CodePlace& place) {
  return CodeContext(place.m_pFile, place.m_iLine, place.m_pBuildTime, FunctionName(place.m_pSignature),
                     place.m_pSignature)
      .GetContextInfo();
}

std::vector<std::string> InOrder(const AlertData& table) {
  std::vector<std::string> texts;
  for (const auto& [key, value] : table) texts.emplace_back(key).append("=").append(value);
  return texts;
}

class NamesRestored {
 public:
  NamesRestored() { System::Instance()->GetProcessName(m_sProcess); }
  ~NamesRestored() {
    System::Instance()->SetProcessName(m_sProcess);
    System::Instance()->SetCurrentThreadName("");
  }

 private:
  std::string m_sProcess;
};

}  // namespace

TEST(PlaceTables, TellWhatAContextTellsInTheSameOrder) {
  for (int turn = 0; turn < 2; ++turn)
    EXPECT_EQ(InOrder(Expected(g_PLACE)), InOrder(*TableOf(g_PLACE))) << turn;
}

TEST(PlaceTables, OfOnePlaceAndThreadAreShared) {
  const PlaceTable first = TableOf(g_PLACE);
  EXPECT_EQ(first.get(), TableOf(g_PLACE).get());
  const CodeSite site("b.cpp", 7, "now", "void f()");
  const CodeContext context = site.MakeContext();
  EXPECT_EQ(&context.GetContextInfo(), &site.MakeContext().GetContextInfo());
}

TEST(PlaceTables, OfManyPlacesDoNotDriveOneAnotherOut) {
  constexpr unsigned uPLACES = 100;
  const auto place = [](unsigned number) {
    return CodePlace{"c.cpp", static_cast<int>(number * number), "now", "void h()"};
  };
  std::array<PlaceTable, uPLACES> tables;
  for (unsigned number = 0; number < uPLACES; ++number) tables.at(number) = TableOf(place(number));
  int same = 0;
  for (unsigned number = 0; number < uPLACES; ++number)
    same += TableOf(place(number)) == tables.at(number) ? 1 : 0;
  EXPECT_GE(same, 92);  // one place for each hash of 256 would leave some 80
}

TEST(PlaceTables, FollowTheNamesOfProcessAndThread) {
  const NamesRestored restored;
  const PlaceTable unnamed = TableOf(g_PLACE);
  System::Instance()->SetCurrentThreadName("Measuring");
  EXPECT_EQ("Measuring", TableOf(g_PLACE)->at(CodeContext::sTHREAD));
  System::Instance()->SetCurrentThreadName("Waiting");
  EXPECT_EQ("Waiting", TableOf(g_PLACE)->at(CodeContext::sTHREAD));
  System::Instance()->SetProcessName("Station");
  EXPECT_EQ("Station", TableOf(g_PLACE)->at(CodeContext::sPROCESS));
  EXPECT_EQ(Expected(g_PLACE), *TableOf(g_PLACE));
  System::Instance()->SetCurrentThreadName("");
  EXPECT_EQ(0U, TableOf(g_PLACE)->count(CodeContext::sTHREAD));
  EXPECT_EQ(unnamed->count(CodeContext::sTHREAD), 0U) << "what is told already doesn't change";
}

TEST(PlaceTables, TellApartWhatDiffersInAnyText) {
  for (const CodePlace& other :
       {CodePlace{"b.cpp", 42, g_PLACE.m_pBuildTime, g_PLACE.m_pSignature},
        CodePlace{"a.cpp", 43, g_PLACE.m_pBuildTime, g_PLACE.m_pSignature},
        CodePlace{"a.cpp", 42, "", g_PLACE.m_pSignature}, CodePlace{"a.cpp", 42, g_PLACE.m_pBuildTime, ""}}) {
    EXPECT_EQ(Expected(g_PLACE), *TableOf(g_PLACE));
    EXPECT_EQ(Expected(other), *TableOf(other));
  }
}

// As when a module is unloaded and another one takes its place in memory.
TEST(PlaceTables, DontTrustTheAddressesOfLiterals) {
  char file[16] = "a.cpp";
  char time[16] = "now";
  char signature[32] = "void f()";
  const CodePlace place{file, 1, time, signature};
  const PlaceTable before = TableOf(place);
  std::strcpy(signature, "void g()");
  EXPECT_EQ("g", TableOf(place)->at(CodeContext::sFUNCTION));
  std::strcpy(file, "b.cpp");
  EXPECT_EQ("b.cpp", TableOf(place)->at(CodeContext::sFILE));
  std::strcpy(time, "then");
  EXPECT_EQ("then", TableOf(place)->at(CodeContext::sBUILD_TIME));
  EXPECT_EQ("void f()", before->at(CodeContext::sSIGNATURE)) << "tables own their texts";
}

TEST(PlaceTables, AreEachThreadsOwn) {
  std::string own;
  System::Instance()->GetCurrentThreadId(own);
  EXPECT_EQ(own, TableOf(g_PLACE)->at(CodeContext::sTHREAD_ID));
  std::thread([] {
    std::string other;
    System::Instance()->GetCurrentThreadId(other);
    EXPECT_EQ(other, TableOf(g_PLACE)->at(CodeContext::sTHREAD_ID));
    EXPECT_EQ(Expected(g_PLACE), *TableOf(g_PLACE));
  }).join();
  EXPECT_EQ(own, TableOf(g_PLACE)->at(CodeContext::sTHREAD_ID));
}

TEST(PlaceTables, OfManyThreadsAtOnceAreRight) {
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int number = 0; number < 4; ++number)
    threads.emplace_back([] {
      const AlertData expected = Expected(g_PLACE);
      for (int turn = 0; turn < 5000; ++turn) ASSERT_EQ(expected, *TableOf(g_PLACE));
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(PlaceTables, OfAForkedChildTellTheChild) {
  const std::string parent = TableOf(g_PLACE)->at(CodeContext::sPROCESS_ID);
  const pid_t child = ::fork();
  if (child == 0) {
    const PlaceTable table = TableOf(g_PLACE);
    ::_exit(table->at(CodeContext::sPROCESS_ID) == std::to_string(::getpid()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
  EXPECT_EQ(parent, TableOf(g_PLACE)->at(CodeContext::sPROCESS_ID));
}

TEST(PlaceTables, AreNotKeptWhileNobodyTellsWhatTheyDependOn) {
  const Hooks before = TheHooks();
  TheHooks().markCircumstances = [] { return CircumstancesMark(); };
  TheHooks().addCircumstances = [](AlertData& table) { table["Step"] = "1"; };
  EXPECT_EQ("1", TableOf(g_PLACE)->at("Step"));
  TheHooks().addCircumstances = [](AlertData& table) { table["Step"] = "2"; };
  EXPECT_EQ("2", TableOf(g_PLACE)->at("Step"));
  TestSupport::RestoreHooks(before);
}

TEST(PlaceTables, ThatHadNoMemoryForAllOfItAreNotKept) {
  const AlertData expected = Expected(g_PLACE);
  bool happened = true;
  for (unsigned long failing = 1; happened; ++failing) {
    ForgetPlaceTables();
    {
      const TestSupport::FailAllocation fail(failing);
      try {
        TableOf(g_PLACE);
      } catch (const std::bad_alloc&) {
      }
      happened = fail.Happened();
    }
    ASSERT_EQ(expected, *TableOf(g_PLACE)) << failing;
  }
}

TEST(PlaceTables, ComeAnewAfterTheyWereForgotten) {
  const PlaceTable before = TableOf(g_PLACE);
  ForgetPlaceTables();
  const PlaceTable behind = TableOf(g_PLACE);
  EXPECT_NE(before.get(), behind.get());
  EXPECT_EQ(*before, *behind);
}
