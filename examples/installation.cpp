#include <Infrastructure/OxaCore/ModuleTestSuite.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <iostream>

using namespace Oxa::Core;

// Names what didn't pass.
class Complaints : public Test::Listener {
  void TestCompleted(const Test& test) override {
    if (!test.IsTestSuite() && test.GetResult() != Test::Result::ePASSED) std::cout << test.GetName() << '\n';
  }
};

int main() {
  InitializeOxaCore();
  bool passed = false;
  {
    Complaints complaints;
    const boost::shared_ptr<TestSuite> tests = GetModuleTestSuite();
    tests->AddListener(complaints);
    passed = tests->RunTest() == Test::Result::ePASSED;
  }
  std::cout << (passed ? "the installation is sound" : "the installation is damaged") << '\n';
  ShutdownOxaCore();
  return passed ? 0 : 1;
}
