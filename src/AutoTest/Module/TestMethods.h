// What the module's own suites have in common: constructors that are tables of one line per test, and assertions.
#ifndef OXACORE_AUTOTEST_MODULE_TESTMETHODS_H
#define OXACORE_AUTOTEST_MODULE_TESTMETHODS_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <boost/shared_ptr.hpp>
#include <initializer_list>
#include <string>

namespace Oxa::Core {

/// A test's name, and the member function of its suite that it calls.
template <class Suite>
struct NamedMethod {
  const char* sName;
  void (Suite::*pfnMethod)(std::string&);
};

/// Appends one TestMethod per row. They don't own the suite, which holds them: a tree that its owner drops is gone.
template <class Suite>
void AddTestMethods(Suite& suite, std::initializer_list<NamedMethod<Suite>> methods) {
  const boost::shared_ptr<Suite> me(&suite, NoDelete());
  for (const NamedMethod<Suite>& row : methods) {
    suite.AddTest(boost::shared_ptr<Test>(new TestMethod<Suite>(row.sName, me, row.pfnMethod)));
  }
}

/// Whether `action` raises an `Expected`. Errors of other classes pass.
template <class Expected, class Action>
bool Raises(Action action) {
  try {
    action();
  } catch (const Expected&) {
    return true;
  }
  return false;
}

}  // namespace Oxa::Core

#endif
