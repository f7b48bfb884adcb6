// Tells the runner the steps of a run, as a listener on the root of the tree.
#ifndef OXATEST_REPORTER_H
#define OXATEST_REPORTER_H

#include "Channel.h"

#include <Infrastructure/OxaCore/AutoTest.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace OxaTest {

class Reporter : public Oxa::Core::Test::Listener {
 public:
  explicit Reporter(Channel& channel) : m_channel(channel) {}

  /// On any thread.
  void CustomNotification(const Oxa::Core::Test& test) override;

 protected:
  void SettingUpTest(const Oxa::Core::Test& test) override;
  void TestCompleted(const Oxa::Core::Test& test) override;
  void TearingDownTest(const Oxa::Core::Test& test) override;

 private:
  // A test or suite that was begun and not torn down.
  struct Level {
    const Oxa::Core::Test* m_pTest;
    std::string m_sSuites;  // around it, without the root
    std::chrono::steady_clock::time_point m_begin;
    std::size_t m_uOfChildren = 0;  // results that its tests delivered
  };

  bool IsInnermost(const Oxa::Core::Test& test) const;
  std::string SuitesWithin() const;
  void TellOwnResults(const Level& level, const std::vector<Oxa::Core::Test::Result>& results);

  Channel& m_channel;
  std::vector<Level> m_levels;  // the root first
};

}  // namespace OxaTest

#endif
