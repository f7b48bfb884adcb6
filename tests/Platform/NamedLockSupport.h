// What the tests of named locks share.
#ifndef OXACORE_TESTS_PLATFORM_NAMEDLOCKSUPPORT_H
#define OXACORE_TESTS_PLATFORM_NAMEDLOCKSUPPORT_H

#include <gtest/gtest.h>

#include <list>
#include <string>

#include "Platform/Machine.h"
#include "Platform/NamedLock.h"

namespace NamedLockTests {

using Oxa::Core::Platform::NamedLock;

/// Removes what stands behind the lock of that name, so that tests leave nothing on the machine. Each system
/// has its own.
void RemoveLock(const std::string& name);

/// A test with locks of its own, that no other process of the machine uses.
class NamedLockTest : public testing::Test {
 protected:
  ~NamedLockTest() override {
    for (const std::string& name : m_names) RemoveLock(name);
  }

  /// A name of this test alone, with `part` at its end. The test's next run in this process has others: what it
  /// had is removed then, and would still be known here.
  const char* Name(const std::string& part = "lock") {
    static int number = 0;
    m_names.push_back("OxaCore test " + std::to_string(Oxa::Core::Platform::ProcessId()) + "/" +
                      testing::UnitTest::GetInstance()->current_test_info()->name() + "/" +
                      std::to_string(++number) + "/" + part);
    return m_names.back().c_str();
  }

  static NamedLock& Open(const char* name) {
    int code = -1;
    NamedLock* const lock = NamedLock::Open(name, code);
    EXPECT_NE(nullptr, lock) << name;
    EXPECT_EQ(0, code) << name;
    return *lock;
  }

  NamedLock& Open() { return Open(Name()); }

 private:
  std::list<std::string> m_names;  // a list: the texts stay where they are
};

}  // namespace NamedLockTests

#endif
