// The seam's form for processors whose faults can't be told apart: it remembers what it is told, and the calls that
// are to be safe are plain calls.
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include "Platform/Faults.h"

using namespace Oxa::Core::Platform;

namespace {

void Translate(unsigned int, _EXCEPTION_POINTERS*) {}
long Filter(_EXCEPTION_POINTERS*) { return 0; }
void Count(void* count) { ++*static_cast<int*>(count); }

TEST(NoFaults, TheTranslatorIsRememberedForTheThread) {
  EXPECT_EQ(nullptr, SetFaultTranslator(&Translate));
  EXPECT_EQ(&Translate, CurrentFaultTranslator());
  std::thread([] { EXPECT_EQ(nullptr, CurrentFaultTranslator()); }).join();
  EXPECT_EQ(&Translate, SetFaultTranslator(nullptr));
}

TEST(NoFaults, TheLastChanceIsRememberedAndNoSignalIsTaken) {
  EXPECT_EQ(nullptr, SetLastChance(&Filter));
  struct sigaction action = {};
  ::sigaction(SIGSEGV, nullptr, &action);
  EXPECT_EQ(&Filter, SetLastChance(nullptr));
  struct sigaction later = {};
  ::sigaction(SIGSEGV, nullptr, &later);
  EXPECT_EQ(later.sa_sigaction, action.sa_sigaction);
}

TEST(NoFaults, CallsAreMade) {
  int count = 0;
  EXPECT_TRUE(CallGuarded(&Count, &count));
  CallOnNewStack(1 << 20, &Count, &count);
  CallWithRoom(1 << 20, &Count, &count);
  EXPECT_EQ(3, count);
  EXPECT_EQ(0u, EndOfStack());
}

TEST(NoFaults, EverythingIsForgotten) {
  SetFaultTranslator(&Translate);
  SetLastChance(&Filter);
  RemoveFaultHandling();
  EXPECT_EQ(nullptr, CurrentFaultTranslator());
  EXPECT_EQ(nullptr, SetLastChance(nullptr));
  ClearFloatingPointState();
}

}  // namespace
