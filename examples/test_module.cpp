#include <Infrastructure/OxaCore/AutoTest.h>

#include <boost/make_shared.hpp>

using namespace Oxa::Core;

// What this module gives its users.
int CountChannels() { return 8; }

class ProbeTests : public TestSuite {
 public:
  ProbeTests() : TestSuite("Probe Tests") {
    const boost::shared_ptr<ProbeTests> me(this, NoDelete());
    AddTest(boost::make_shared<TestMethod<ProbeTests>>("Channels", me, &ProbeTests::Channels));
  }

 private:
  void Channels(std::string& text) {
    OXA_TEST_EQUALS(8, CountChannels());
    text = "all channels answer";
  }
};

// Runners find it by its plain name.
extern "C" __attribute__((visibility("default"))) boost::shared_ptr<TestSuite> GetModuleTestSuite();
boost::shared_ptr<TestSuite> GetModuleTestSuite() { return boost::make_shared<ProbeTests>(); }
