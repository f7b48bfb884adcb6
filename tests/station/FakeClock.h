// A clock that stands still but for sleeping, and oversleeps by what the test tells it; and somebody who may
// ask to stop.
#ifndef STATION_TESTS_FAKECLOCK_H
#define STATION_TESTS_FAKECLOCK_H

#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/Time.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <utility>
#include <vector>

#include "Clock.h"

namespace StationTests {

using Oxa::Core::Elapse;

inline Elapse Micro(long long count) { return Elapse(count, Elapse::MicroSeconds); }

/// What a task hears from its thread.
class FakeDirective : public Oxa::Core::TaskDirective {
 public:
  bool MustStop() override { return m_bStop; }
  void Stop() { m_bStop = true; }

 private:
  std::atomic<bool> m_bStop{false};
};

/// For one thread.
class FakeClock : public Station::Clock {
 public:
  /// The wake-ups are late by `latenesses`, one after the other and again from the start.
  explicit FakeClock(std::vector<Elapse> latenesses) : m_latenesses(std::move(latenesses)) {}

  Elapse Now() override { return m_now; }
  bool SleepUntil(const Elapse& due, Oxa::Core::TaskDirective& directive) override {
    if (directive.MustStop() || m_dues.size() == m_uEndAfter) return false;
    const Elapse late = m_latenesses[m_dues.size() % m_latenesses.size()];
    m_dues.push_back(due);
    m_now = std::max(m_now, due) + late;
    return true;
  }

  void Advance(const Elapse& elapse) { m_now += elapse; }

  /// From the sleep after that many on, somebody wants the thread to stop.
  void EndAfter(std::size_t sleeps) { m_uEndAfter = sleeps; }

  /// What has been slept for.
  const std::vector<Elapse>& Dues() const { return m_dues; }

 private:
  std::vector<Elapse> m_latenesses;
  std::vector<Elapse> m_dues;
  std::size_t m_uEndAfter = static_cast<std::size_t>(-1);
  Elapse m_now = Elapse(1000);
};

}  // namespace StationTests

#endif
