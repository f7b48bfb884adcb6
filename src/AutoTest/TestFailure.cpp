#include <Infrastructure/OxaCore/AutoTest.h>

#include <cmath>
#include <sstream>

#include "AutoTest/UnthrownFailures.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.Test.Failure";
const char* const sEXPECTED = "expected: ";
const char* const sDELTA = " within a delta of: ";
const char* const sACTUAL = " but was: ";

template <class Number>
void RaiseBeyondDelta(Number expected, Number actual, Number delta, const CodeContext& context) {
  std::ostringstream text;
  text << sEXPECTED << expected << sDELTA << delta << sACTUAL << actual;
  RaiseTestFailure(text.str(), context);
}

}  // namespace

Test::Failure::Failure(const std::string& text) : ErrorClass(AlertMessage("%1%", text)) {}
Test::Failure::~Failure() = default;

void RaiseTestFailure(const std::string& text, const CodeContext& context) {
  Test::Failure(text).RaiseError(context, sLOG_NAME, false);
  UnthrownFailures::Add();
}

void TestEquals(long expected, long actual, const CodeContext& context) {
  if (expected == actual) return;
  std::ostringstream text;
  text << sEXPECTED << expected << sACTUAL << actual;
  RaiseTestFailure(text.str(), context);
}

void TestEquals(float expected, float actual, float delta, const CodeContext& context) {
  const float difference = std::fabs(expected - actual);
  if (static_cast<double>(difference) > static_cast<double>(delta)) {
    RaiseBeyondDelta(expected, actual, delta, context);
  }
}

void TestEquals(double expected, double actual, double delta, const CodeContext& context) {
  if (std::fabs(expected - actual) > delta) RaiseBeyondDelta(expected, actual, delta, context);
}

}  // namespace Oxa::Core
