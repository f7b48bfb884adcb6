#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <boost/make_shared.hpp>
#include <iostream>

using namespace Oxa::Core;
using Quantity = UnitizedValue<double>;

// Compares what it measures with two tolerances, whatever their units are.
class SupplyTest : public RangeTest {
 public:
  SupplyTest() : RangeTest("Supply", Quantity(4750, "mV"), Quantity(5.25, "V"), eGREATER, eLESS) {}

 private:
  void GetTestValue(Quantity& value) override { value = Quantity(4.98, "V"); }
};

// A suite whose methods are tests, too.
class ProbeTests : public TestSuite {
 public:
  ProbeTests() : TestSuite("Probe") {
    const boost::shared_ptr<ProbeTests> me(this, NoDelete());
    AddTest(boost::make_shared<TestMethod<ProbeTests>>("Channels", me, &ProbeTests::Channels));
    AddTest(boost::make_shared<SupplyTest>());
  }

 private:
  void Channels(std::string& text) {
    OXA_TEST_EQUALS(8, CountChannels());
    text = "all channels answer";
  }
  int CountChannels() const { return 8; }
};

// Shows each test as it begins, and its results.
class Progress : public Test::Listener {
  void ExecutingTest(const Test& test) override { std::cout << test.GetName() << "..." << std::endl; }
  void TestCompleted(const Test& test) override {
    if (test.IsTestSuite()) return;
    std::vector<Test::Result> results;
    test.GetResults(results);
    for (const Test::Result& result : results) std::cout << "  " << result.GetText() << '\n';
  }
};

int main() {
  InitializeOxaCore();
  bool passed = false;
  {
    ProbeTests tests;
    Progress progress;
    tests.AddListener(progress);
    passed = tests.RunTest() == Test::Result::ePASSED;
  }
  std::cout << (passed ? "passed" : "failed") << '\n';
  ShutdownOxaCore();
  return passed ? 0 : 1;
}
