// oxatest while a test hangs.
#ifndef OXACORE_TESTS_TOOLS_HANGINGOXATEST_H
#define OXACORE_TESTS_TOOLS_HANGINGOXATEST_H

#include <gtest/gtest.h>

#include <string>

#include "Support/BackgroundChild.h"
#include "Support/DyingChild.h"
#include "Support/Eventually.h"
#include "Support/TemporaryFolder.h"

namespace OxatestTests {

/// Starts a test that hangs by a shell's script, with what is temporary in a folder for that alone.
class HangingOxatest {
 public:
  HangingOxatest(const TestSupport::TemporaryFolder& temporary, const std::string& script)
      : m_oxatest({"/bin/sh", "-c", script, "/usr/bin/env", "TMPDIR=" + temporary.Path(),
                   "SUITE_MODULE_FILE=" + m_files.File("runs"), OXATEST, SUITE_MODULE,
                   "--only=Deadly/Hangs"}) {
    TestSupport::ExpectDeaths();
    const auto told = [this] { return m_files.Read("runs").find('\n') != std::string::npos; };
    EXPECT_TRUE(TestSupport::Eventually(told));
  }

  TestSupport::TemporaryFolder m_files;
  TestSupport::BackgroundChild m_oxatest;
};

}  // namespace OxatestTests

#endif
