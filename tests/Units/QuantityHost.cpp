// Static objects of a host use quantities from their constructors and in their destructors.
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>

#include <cstdio>

namespace {

using namespace Oxa::Core;

void Use(const char* moment) {
  UnitizedValue<double> way(90, "Mile per Hour");
  way *= UnitizedValue<double>(2, "Minutes");
  std::printf("%s: %s, %s, %lld ticks\n", moment, way.ToString("Kilometer").c_str(),
              (uvNEGATIVE_PI * way.Get("ft")).ToString().c_str(),
              ToElapse(UnitizedValue<double>(0.25, "msec")).GetRawTimerTicks());
  try {
    way.ConvertTo("Second");
  } catch (Error& error) {
    std::printf("%s\n", error.what());
  }
}

class User {
 public:
  User() { Use("constructor"); }
  ~User() { Use("destructor"); }

  UnitizedValue<double> m_value{5, "Kilometer"};
};

User s_user;
const UnitizedValue<double> s_length(12, "Inch");

}  // namespace

int main() {
  std::printf("main: %s %s\n", (s_user.m_value + s_length).ToString("Meter").c_str(),
              (uv2_PI * s_length).ToString().c_str());
  ShutdownOxaCore();
  return 0;
}
