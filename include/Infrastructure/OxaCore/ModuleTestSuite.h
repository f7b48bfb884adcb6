// The library's own self-tests, for hosts that offer their users a check of the product as it is installed, and for
// runners that look in every module for a function of the name GetModuleTestSuite.
//
// The tests of GetModuleTestSuite run inside any host, with its listeners and handlers in place: they need neither
// rights nor network nor a display, leave no file and no setting behind, write only below the system's folder for
// temporary files, and take a few seconds. They raise errors and warnings on purpose: listeners, and the log, hear
// them. They may run again and again, also two trees at once, each on a thread of its own; and after ShutdownOxaCore,
// but not while the library unloads.
//
// A module of one's own offers its tests in the same way, for the same runners.
//
//   boost::shared_ptr<TestSuite> tests = GetModuleTestSuite();
//   tests->AddListener(progress);
//   const bool passed = tests->RunTest() == Test::Result::ePASSED;
#ifndef INFRASTRUCTURE_OXACORE_MODULETESTSUITE_H
#define INFRASTRUCTURE_OXACORE_MODULETESTSUITE_H

#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/Export.h>

#include <boost/shared_ptr.hpp>
#include <string>

// Its name is plain, so that it can be looked up; its result is of C++ all the same, and clang++ would warn of that.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

/// A new tree at each call, the caller's own: the suite "OxaCore Tests" with sixteen suites in it. Everything is
/// enabled. The tree, its results included, has to be gone before the library is.
/// Raises nothing of its own; std::bad_alloc where there is no memory for the tree. Any thread may call it.
extern "C" OXACORE_API boost::shared_ptr<Oxa::Core::TestSuite> GetModuleTestSuite();

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

namespace Oxa::Core {

// Three suites that a host builds and runs by itself, because they take long, start threads by the dozen, or end them
// by force. They are no part of the tree above.

/// "Oxa::Core::Dictionary Tests": the dictionary of names, also under many threads.
class OXACORE_API TEST_OxaDictionary : public TestSuite {
 public:
  TEST_OxaDictionary();
  ~TEST_OxaDictionary() override;

 private:
  void Basics(std::string& text);
  void Shortcuts(std::string& text);
  void Convert(std::string& text);
  void Stress(std::string& text);
};

/// "OxaRWMutex Tests": the lock for one writer or many readers. Its test "Test OxaRWMutex - multiple threads" takes
/// about 2 minutes, and says so when it begins: by a Test::CustomNotification of a test whose name is that text.
class OXACORE_API TEST_OxaRWMutex : public TestSuite {
 public:
  TEST_OxaRWMutex();
  ~TEST_OxaRWMutex() override;

 private:
  void SingleThread(std::string& text);
  void MultipleThreads(std::string& text);
  void Deadlock(std::string& text);
};

/// "Oxa::Core::Thread Tests": threads, from their start to their end by force, pools, and locks within and between
/// processes. "Named Cross Process Mutex Test" starts the program UnitTestProcess.exe, which comes with the library.
class OXACORE_API TEST_OxaThread : public TestSuite {
 public:
  TEST_OxaThread();
  ~TEST_OxaThread() override;

 private:
  void Threads(std::string& text);
  void Deadlock(std::string& text);
  void LifetimeManagement(std::string& text);
  void ThreadNotifications(std::string& text);
  void Pool(std::string& text);
  void Startup(std::string& text);
  void MutexLock(std::string& text);
  void KillThread(std::string& text);
  void CrossProcessMutex(std::string& text);
};

}  // namespace Oxa::Core

#endif
