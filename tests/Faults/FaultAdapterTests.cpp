// What the first use of the adapter sets, and the last one puts back.
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include <gtest/gtest.h>

#include "Platform/Faults.h"

namespace {

using namespace MSWindows;
namespace Platform = Oxa::Core::Platform;

constexpr unsigned uMODE = 0x8007;
constexpr unsigned uOWN_MODE = 0x1234;

void OwnTranslator(unsigned int, _EXCEPTION_POINTERS*) {}
long OwnFilter(_EXCEPTION_POINTERS*) { return 0; }

// Each setter gives what was there.
unsigned Mode() {
  const unsigned mode = Platform::SetErrorMode(0);
  Platform::SetErrorMode(mode);
  return mode;
}

Platform::LastChance Filter() {
  const Platform::LastChance filter = Platform::SetLastChance(&OwnFilter);
  Platform::SetLastChance(filter);
  return filter;
}

void ExpectInForce(const char* when) {
  EXPECT_EQ(uMODE, Mode()) << when;
  EXPECT_EQ(&SEH_To_OXA_Translator, Platform::CurrentFaultTranslator()) << when;
  EXPECT_EQ(&OxaUnhandledExceptionFilter, Filter()) << when;
}

void ExpectOwn(const char* when) {
  EXPECT_EQ(uOWN_MODE, Mode()) << when;
  EXPECT_EQ(&OwnTranslator, Platform::CurrentFaultTranslator()) << when;
  EXPECT_EQ(&OwnFilter, Filter()) << when;
}

void Set(unsigned mode, Platform::FaultTranslator translator, Platform::LastChance filter) {
  Platform::SetErrorMode(mode);
  Platform::SetFaultTranslator(translator);
  Platform::SetLastChance(filter);
}

// The load is the only use so far.
class FaultAdapter : public testing::Test {
 protected:
  void SetUp() override {
    ExpectInForce("from the load on");
    m_adapter.Shutdown();
  }
  void TearDown() override {
    Set(0, nullptr, nullptr);
    m_adapter.Initialize();
  }

  SEHAdapter& m_adapter = SEHAdapter::Instance();
};

TEST_F(FaultAdapter, LeavesNothingOfItsOwn) {
  EXPECT_EQ(0U, Mode());
  EXPECT_EQ(nullptr, Platform::CurrentFaultTranslator());
  EXPECT_EQ(nullptr, Filter());
}

TEST_F(FaultAdapter, FirstUseSetsAndTheLastPutsBack) {
  Set(uOWN_MODE, &OwnTranslator, &OwnFilter);
  m_adapter.Initialize();
  ExpectInForce("first use");
  m_adapter.Initialize();
  m_adapter.Shutdown();
  ExpectInForce("one of two uses is left");
  m_adapter.Shutdown();
  ExpectOwn("no use is left");
}

TEST_F(FaultAdapter, FurtherUsesSetNothing) {
  m_adapter.Initialize();
  Set(uOWN_MODE, &OwnTranslator, &OwnFilter);
  m_adapter.Initialize();
  m_adapter.Shutdown();
  ExpectOwn("the second use came and went");
  m_adapter.Shutdown();
  EXPECT_EQ(0U, Mode());
}

TEST_F(FaultAdapter, CountsBelowZeroWithoutEffect) {
  Set(uOWN_MODE, &OwnTranslator, &OwnFilter);
  m_adapter.Shutdown();
  ExpectOwn("one below");
  m_adapter.Initialize();
  ExpectOwn("back at zero");
  m_adapter.Initialize();
  ExpectInForce("the first use again");
  m_adapter.Shutdown();
  ExpectOwn("and its end");
}

}  // namespace
