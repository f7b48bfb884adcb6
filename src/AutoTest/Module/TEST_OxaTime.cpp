#include "AutoTest/Module/TEST_OxaTime.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Time.h>

#include "AutoTest/Module/Streamed.h"
#include "AutoTest/Module/TestMethods.h"

#include "Platform/Clock.h"

namespace Oxa::Core {

namespace {

long Ticks(const Elapse& elapse) { return static_cast<long>(elapse.GetRawTimerTicks()); }

Time Summer() { return Time(8, 23, 1998, Elapse(2, 33, 17, 123000000)); }

// The moment that clocks show as `read` was given. Dates are read by the zone of the load, and told by the one in
// force: a host may have gone to another one.
Time Shown(const Time& read) {
  return read - Elapse(Platform::ZoneChange(read.GetRawTimerTicks()), Elapse::Seconds);
}

void CheckDate() {
  const Time date = Shown(Time(12, 23, 2004, Elapse(0, Elapse::Seconds)));
  OXA_TEST_EQUALS(2004, date.Year());
  OXA_TEST_EQUALS(12, date.Month());
  OXA_TEST_EQUALS(23, date.Day());
  OXA_TEST_EQUALS(0, date.Hour());
  OXA_TEST_EQUALS(0, date.Minute());
  OXA_TEST_EQUALS(0, date.Second());
  OXA_TEST_ASSERT(date.MonthName() == "December" && date.MonthAbbreviation() == "Dec");
}

void CheckText() {
  const std::string text = "1998/08/23 02:33:17.123";
  OXA_TEST_ASSERT(Shown(Summer()).ToString() == text);
  OXA_TEST_ASSERT(Streamed(Shown(Summer())) == text);
  Time parsed;
  OXA_TEST_ASSERT(parsed.ParseString(text) && parsed == Summer());
  OXA_TEST_ASSERT(!parsed.ParseString("1998/0//23 02:33:17.123"));
  OXA_TEST_ASSERT(parsed == Summer());  // left as it was
  OXA_TEST_ASSERT(Raises<Time::OsTimeApiError>([&] { parsed.ParseString("1998/13/23 02:33:17.123"); }));
}

void CheckOrder() {
  const Time later = Summer() + Elapse(1, Elapse::MilliSeconds);
  OXA_TEST_EQUALS(0, Summer().Compare(Time(Summer())));
  OXA_TEST_EQUALS(-1, Summer().Compare(later));
  OXA_TEST_EQUALS(1, later.Compare(Summer()));
  OXA_TEST_ASSERT(later - Summer() == Elapse(1, Elapse::MilliSeconds));
  OXA_TEST_ASSERT(Time() > Summer());
}

void CheckUnits() {
  OXA_TEST_EQUALS(0, Ticks(Elapse()));
  OXA_TEST_EQUALS_DELTA(0.0, Elapse().GetElapsed(Elapse::Seconds), 0.0);
  OXA_TEST_ASSERT(Elapse(5, Elapse::Seconds) == Elapse(0, 0, 5, 0));
  OXA_TEST_EQUALS_DELTA(4222.0, Elapse(4222, Elapse::MilliSeconds).GetElapsed(Elapse::MilliSeconds), 0.0);
  OXA_TEST_EQUALS_DELTA(1.5, Elapse(90, Elapse::Minutes).GetElapsed(Elapse::Hours), 0.0);
  OXA_TEST_ASSERT(Raises<InvalidParameter>([] { Elapse(1, static_cast<Elapse::TimeUnits>(8)); }));
}

// What is no whole tick is rounded up, also below zero.
void CheckRounding() {
  OXA_TEST_EQUALS(1, Ticks(Elapse(1, Elapse::NanoSeconds)));
  OXA_TEST_EQUALS_DELTA(100.0, Elapse(1, Elapse::NanoSeconds).GetElapsed(Elapse::NanoSeconds), 0.0);
  OXA_TEST_EQUALS(0, Ticks(Elapse(-150, Elapse::NanoSeconds)));
  OXA_TEST_EQUALS(1, Ticks(Elapse(-50, Elapse::NanoSeconds)));
}

void CheckElapseText() {
  const Elapse elapse(26, 3, 4, 5006700);
  OXA_TEST_ASSERT(elapse.ToString() == "26:03:04.005.006.700");
  Elapse parsed;
  OXA_TEST_ASSERT(parsed.ParseString(elapse.ToString()) && parsed == elapse);
  const Elapse negative(-1, Elapse::Seconds);
  OXA_TEST_ASSERT(negative.ToString() == "-00:00:01.000.000.000");
  OXA_TEST_ASSERT(parsed.ParseString(negative.ToString()));
  OXA_TEST_ASSERT(parsed == Elapse(1, Elapse::Seconds));  // the sign is not read
  OXA_TEST_ASSERT(Streamed(Elapse(1, Elapse::Days)) == "1440:0");
  OXA_TEST_ASSERT(Streamed(Elapse(1500, Elapse::MilliSeconds)) == Streamed(1.5) + " seconds");
  OXA_TEST_ASSERT(Streamed(Elapse(250, Elapse::MicroSeconds)) == "250 microseconds");
}

}  // namespace

TEST_OxaTime::TEST_OxaTime() : TestSuite("Oxa::Core::Time Tests") {
  AddTestMethods(*this,
                 {{"Test Oxa::Core::Time", &TEST_OxaTime::Moments}, {"Test Elapse", &TEST_OxaTime::Spans}});
}

void TEST_OxaTime::Moments(std::string&) {
  CheckDate();
  CheckText();
  CheckOrder();
  const Time early(Elapse(-1, Elapse::Hours));
  OXA_TEST_ASSERT(early.TimeSince() > Elapse(0) && early.TimeLeft() < Elapse(0));
}

void TEST_OxaTime::Spans(std::string&) {
  CheckUnits();
  CheckRounding();
  CheckElapseText();
  Elapse sum(2, Elapse::Seconds);
  sum += Elapse(500, Elapse::MilliSeconds);
  sum -= Elapse(1, Elapse::Seconds);
  OXA_TEST_ASSERT(sum == Elapse(1500, Elapse::MilliSeconds));
  OXA_TEST_ASSERT(Elapse(-1) < Elapse() && Elapse() < sum && sum >= sum);
}

}  // namespace Oxa::Core
