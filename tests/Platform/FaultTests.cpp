#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Platform/Faults.h"

using namespace Oxa::Core::Platform;

namespace {

struct Caught {
  FaultFacts m_facts;
};

void Translate(unsigned int, _EXCEPTION_POINTERS* pointers) { throw Caught{FactsOf(*pointers)}; }
long NoLastChance(_EXCEPTION_POINTERS*) { return 0; }

class FaultTests : public testing::Test {
 protected:
  void SetUp() override {
    SetLastChance(&NoLastChance);
    SetFaultTranslator(&Translate);
  }
  void TearDown() override { RemoveFaultHandling(); }
};

__attribute__((noinline)) void WriteTo(volatile int* place) { *place = 1; }
__attribute__((noinline)) int Divide(volatile int a, volatile int b) { return a / b; }
__attribute__((noinline)) int Recurse(volatile int* depth) {
  volatile char room[512];
  std::memset(const_cast<char*>(room), 1, sizeof(room));
  *depth = *depth + 1;
  if (*depth < 0) return 0;
  return Recurse(depth) + room[*depth % 512];
}

TEST_F(FaultTests, ABadPointerIsTranslated) {
  int* volatile null = nullptr;
  try {
    WriteTo(null);
    FAIL();
  } catch (const Caught& caught) {
    EXPECT_EQ(eACCESS_VIOLATION, caught.m_facts.m_uCode);
    EXPECT_TRUE(caught.m_facts.m_bWrite);
    EXPECT_EQ(0u, caught.m_facts.m_uTouched);
  }
}

TEST_F(FaultTests, ADivisionByZeroIsTranslated) {
  try {
    Divide(1, 0);
    FAIL();
  } catch (const Caught& caught) {
    EXPECT_EQ(eINT_DIVIDE_BY_ZERO, caught.m_facts.m_uCode);
  }
}

TEST_F(FaultTests, AnOverflowOfTheStackIsCaughtAgainAndAgain) {
  for (int i = 0; i < 3; ++i) {
    volatile int depth = 0;
    try {
      Recurse(&depth);
      FAIL();
    } catch (const Caught& caught) {
      EXPECT_EQ(eSTACK_OVERFLOW, caught.m_facts.m_uCode);
    }
  }
}

TEST_F(FaultTests, ACallThroughNullIsCaughtByItsCaller) {
  void (*volatile nowhere)() = nullptr;
  try {
    nowhere();
    FAIL();
  } catch (const Caught& caught) {
    EXPECT_EQ(eACCESS_VIOLATION, caught.m_facts.m_uCode);
    EXPECT_EQ(0u, caught.m_facts.m_uPlace);
  }
}

TEST_F(FaultTests, AGuardedCallIsCutShort) {
  EXPECT_TRUE(CallGuarded([](void* done) { *static_cast<bool*>(done) = true; }, new bool));
  EXPECT_FALSE(CallGuarded([](void*) { WriteTo(reinterpret_cast<int*>(8)); }, nullptr));
}

struct Places {
  std::intptr_t m_iDistance;
  int m_iHere;
};

TEST_F(FaultTests, ANewStackIsAnotherAndFaultsAreCaughtOnIt) {
  Places places = {0, 0};
  CallOnNewStack(
      1 << 20,
      [](void* argument) {
        Places& told = *static_cast<Places*>(argument);
        int there = 0;
        told.m_iDistance = reinterpret_cast<char*>(&there) - reinterpret_cast<char*>(&told);
        try {
          WriteTo(nullptr);
        } catch (const Caught&) {
          told.m_iHere = 7;
        }
      },
      &places);
  EXPECT_EQ(7, places.m_iHere);
  EXPECT_GT(std::abs(places.m_iDistance), 1 << 20);
}

}  // namespace
