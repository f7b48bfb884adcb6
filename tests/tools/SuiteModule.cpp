// A module with a suite of every kind of test; those that end the process stand under "Deadly".
#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <unistd.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Support/FaultSite.h"
#include "Tests.h"

using namespace Oxa::Core;
using namespace ModuleTests;

namespace {

class ProbeGone : public ErrorClass<ProbeGone, HardwareError> {
 public:
  ProbeGone() : ErrorClass("Probe <3 & 4> is gone") {}
};

std::string Nothing() { return ""; }

OXA_FAULT_SITE void WriteToNull() { *static_cast<volatile int*>(nullptr) = 1; }

std::string PrintMuch() {
  for (int i = 0; i < 100000; ++i) std::printf("line %d of what nobody reads\n", i);
  return "printed";
}

[[noreturn]] std::string Hang() {
  std::puts("waits for ever");
  for (;;) std::this_thread::sleep_for(std::chrono::seconds(1));
}

// Tells by a file that it runs: for those who want to interrupt it.
[[noreturn]] std::string HangAndTell() {
  if (const char* const file = std::getenv("SUITE_MODULE_FILE")) std::ofstream(file) << ::getpid() << '\n';
  Hang();
}

// A process that goes on by itself, with all that this one has open.
[[noreturn]] std::string HangTogether() {
  if (::fork() == 0) std::this_thread::sleep_for(std::chrono::hours(1));
  HangAndTell();
}

SuitePtr Good() {
  SuitePtr suite = boost::make_shared<Suite>("Good");
  suite->With("Passes", [] { return "all channels answer"; }).With("Prints", [] {
    std::puts("out of C");
    std::cout << "out of C++\n";
    std::cerr << "an error of C++" << std::endl;
    return "";
  });
  suite->With("Prints a lot", &PrintMuch).With("Silent", &Nothing);
  suite->With("Not now", &Nothing);
  std::vector<boost::shared_ptr<Test>> tests;
  suite->GetTests(tests);
  tests.back()->Enable(false);
  return suite;
}

SuitePtr Bad() {
  SuitePtr suite = boost::make_shared<Suite>("Bad");
  suite->With("Fails", [] {
    std::puts("said before the failure");
    OXA_TEST_EQUALS(8, 7);
    return "";
  });
  suite->With("Raises", [] {
    OXA_RAISE_ERROR("Acme.Probe", ProbeGone());
    return "";
  });
  suite->With("Throws", []() -> std::string { throw std::runtime_error("of the language"); });
  suite->With("Null write", [] {
    WriteToNull();
    return "";
  });
  return suite;
}

SuitePtr Deadly() {
  SuitePtr suite = boost::make_shared<Suite>("Deadly");
  suite->With("Before", &Nothing);
  suite->With("Crashes", [] {
    std::puts("said before the crash");
    std::thread(&WriteToNull).join();  // a thread without the translator
    return "";
  });
  suite->With("Aborts", []() -> std::string { std::abort(); });
  suite->With("Exits", []() -> std::string { std::exit(3); });
  suite->With("Exits as if all were well", []() -> std::string { std::_Exit(0); });
  suite->With("Hangs", &HangAndTell).With("Hangs together", &HangTogether);
  suite->With(
      "Crashes in its tear-down", [] { return "its text"; }, [] { ::raise(SIGKILL); });
  suite->With("Closes all", [] {
    for (int handle = 0; handle < 256; ++handle) ::close(handle);
    return "";
  });
  suite->With("After", &Nothing);
  return suite;
}

SuitePtr Deep(int depth) {
  SuitePtr suite = boost::make_shared<Suite>("Deep");
  if (depth == 0)
    suite->With("Bottom", &Nothing);
  else
    suite->AddTest(Deep(depth - 1));
  return suite;
}

SuitePtr Strange() {
  SuitePtr suite = boost::make_shared<Suite>("Strange <names> & \"texts\"");
  suite->With("[a*b?] 'q'/x", &Nothing);
  suite->With("two\nlines", &Nothing);
  suite->With("\x1B[31m \xB5s \xC2\xB5s \xE2\x82\xAC \xEF\xBF\xBF", [] {
    std::fwrite("\0\x01]]>\r\nnext\rlast\xFF", 1, 17, stdout);
    OXA_TEST_ASSERT_MSG(false, "]]>\t\x01 <![CDATA[ \xB0 \xED\xA0\x80 &amp;");
    return "";
  });
  suite->With("", &Nothing);
  return suite;
}

// Suites that fail by themselves.
void AddUnsound(Suite& root) {
  const SuitePtr raising =
      boost::make_shared<Suite>("Raises in its set-up", [] { OXA_RAISE_ERROR("Acme.Probe", ProbeGone()); });
  raising->With("Never", &Nothing);
  const SuitePtr ending = boost::make_shared<Suite>("Ends in its set-up", [] { ::raise(SIGKILL); });
  ending->With("Never", &Nothing);
  root.AddTest(raising);
  root.AddTest(ending);
}

SuitePtr Root() {
  SuitePtr root = boost::make_shared<Suite>("Module <Tests>");
  root->AddTest(Good());
  root->AddTest(Bad());
  root->AddTest(Deadly());
  root->AddTest(Deep(30));
  root->AddTest(Strange());
  AddUnsound(*root);
  root->AddTest(boost::make_shared<Suite>("Empty"));
  root->With("Back\\slash \\*", &Nothing);
  // Fails from its second tree on, as what leaves something behind.
  static int s_trees = 0;
  const int tree = ++s_trees;
  root->With("Once only", [tree] {
    OXA_TEST_EQUALS(1, tree);
    return "";
  });
  return root;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) boost::shared_ptr<TestSuite> GetModuleTestSuite();
boost::shared_ptr<TestSuite> GetModuleTestSuite() { return Root(); }
