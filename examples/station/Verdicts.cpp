#include "Verdicts.h"

#include <Infrastructure/OxaCore/LogManager.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstddef>
#include <ostream>
#include <string>

#include "Loggers.h"
#include "SeriesTest.h"
#include "ShownText.h"
#include "Utf8.h"

namespace Station {

using Oxa::Core::eLOG_INFORMATIONAL;
using Oxa::Core::LogManager;
using Oxa::Core::Test;
using Oxa::Core::TestSuite;

namespace {

const char* const sSUITE = "Station";
const char* const sTITLE = "A series passes if its 99th percentile is less than its tolerance:\n\n";
const char* const sPASSED = " passed: ";
const char* const sFAILED = " FAILED: ";
const char* const sHAVE_PASSED = " series passed\n";
const char* const sVERDICT = "Judged:%s%s";

const char* Word(const Test::Result& result) {
  return result.GetType() == Test::Result::ePASSED ? sPASSED : sFAILED;
}

// Follows the run of a suite, and writes how far it has come and what came out.
class Follower : public Test::Listener {
 public:
  Follower(std::ostream& out, std::size_t tests) : m_out(out), m_uTests(tests) {}

 protected:
  void ExecutingTest(const Test& test) override {
    if (test.IsTestSuite()) m_out << '\n' << sTITLE;
  }

  void TestCompleted(const Test& test) override {
    if (test.IsTestSuite()) {
      m_out << m_uPassed << " of " << m_uTests << sHAVE_PASSED << std::flush;
    } else {
      Tell(test);
    }
  }

 private:
  void Tell(const Test& test) {
    std::vector<Test::Result> results;
    test.GetResults(results);
    for (const Test::Result& result : results) {
      if (result.GetType() == Test::Result::ePASSED) ++m_uPassed;
      m_out << '[' << ++m_uDone << '/' << m_uTests << "] " << test.GetName() << Word(result)
            << ToUtf8(result.GetText()) << '\n';
      LogManager::Instance()
          ->GetLogger(SeriesLogger(test.GetName()))
          ->WriteLog(eLOG_INFORMATIONAL, sVERDICT, Word(result), Shown(result.GetText()).c_str());
    }
  }

  std::ostream& m_out;
  const std::size_t m_uTests;
  std::size_t m_uDone = 0;
  std::size_t m_uPassed = 0;
};

}  // namespace

Verdicts Judge(std::ostream& out, const std::vector<Measurement>& measurements) {
  Verdicts verdicts;
  if (measurements.empty()) return verdicts;
  TestSuite suite(sSUITE);
  for (const Measurement& measurement : measurements)
    suite.AddTest(boost::make_shared<SeriesTest>(measurement));
  Follower follower(out, measurements.size());
  suite.AddListener(follower);
  suite.RunTest(verdicts);
  suite.RemoveListener(follower);
  return verdicts;
}

bool HaveAllPassed(const Verdicts& verdicts) {
  return !verdicts.empty() && std::all_of(verdicts.begin(), verdicts.end(), [](const Test::Result& result) {
    return result.GetType() == Test::Result::ePASSED;
  });
}

}  // namespace Station
