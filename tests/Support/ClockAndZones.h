// The clock and the zones of the library as a test wants them. For tests that link the library's objects.
#ifndef OXACORE_TESTS_SUPPORT_CLOCKANDZONES_H
#define OXACORE_TESTS_SUPPORT_CLOCKANDZONES_H

#include <Infrastructure/OxaCore/Time.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Platform/Clock.h"

namespace TestSupport {

/// Puts the clock at a moment for as long as this lives. It runs on from there.
class ClockAt {
 public:
  explicit ClockAt(const Oxa::Core::Time& moment) { Set(moment); }
  ClockAt(const ClockAt&) = delete;
  ClockAt& operator=(const ClockAt&) = delete;
  ~ClockAt() { Oxa::Core::Platform::SetClockOffset(0, 0); }

  void Set(const Oxa::Core::Time& moment) {
    Oxa::Core::Platform::SetClockOffset(0, 0);
    Oxa::Core::Platform::SetClockOffset((moment - Oxa::Core::Time()).GetRawTimerTicks(), 0);
  }
};

/// The zone of the moment and the zone of the load, both as they were before once this is gone.
class Zones {
 public:
  Zones(const char* ofLoad, const char* ofTheMoment)
      : m_bWasSet(std::getenv("TZ") != nullptr), m_sBefore(TextOf(std::getenv("TZ"))) {
    ::setenv("TZ", ofLoad, 1);
    EXPECT_EQ(0, Oxa::Core::Platform::LoadZone());
    ::setenv("TZ", ofTheMoment, 1);
  }
  explicit Zones(const char* both) : Zones(both, both) {}
  Zones(const Zones&) = delete;
  Zones& operator=(const Zones&) = delete;
  ~Zones() {
    m_bWasSet ? ::setenv("TZ", m_sBefore.c_str(), 1) : ::unsetenv("TZ");
    Oxa::Core::Platform::LoadZone();
  }

 private:
  static std::string TextOf(const char* value) { return value != nullptr ? value : ""; }

  bool m_bWasSet;
  std::string m_sBefore;
};

}  // namespace TestSupport

#endif
