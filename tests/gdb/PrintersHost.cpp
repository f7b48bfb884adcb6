// Stops with known values, for gdb to look at.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitDescriptor_Temperature.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <cstdint>
#include <cstring>
#include <limits>

using namespace Oxa::Core;

namespace Host {

class ProbeGone : public ErrorClass<ProbeGone, HardwareError> {
 public:
  explicit ProbeGone(int channel) : ErrorClass(AlertMessage("Probe %1% is \"gone\"\n", channel)) {}

  int m_iOwnField = 7;
};

class ProbeNoisy : public Warning {
 public:
  ProbeNoisy() : Warning("Probe is noisy") {}
};

struct Scale {
  virtual ~Scale() = default;
  double m_dOffset = 2.5;
};

// Its alert isn't its first base.
class ScaleBroken : public Scale, public ProbeGone {
 public:
  ScaleBroken() : ProbeGone(4) {}  // NOLINT(bugprone-throw-keyword-missing): a base
};

}  // namespace Host

extern "C" __attribute__((noinline)) void StopHere(const void* /*unused*/) { asm volatile("" ::: "memory"); }

namespace {

// Where nobody has built an object yet.
alignas(16) unsigned char g_zeros[512] = {};
alignas(16) unsigned char g_garbage[512];
// A table with one entry that follows itself for ever, and an alert that has it.
alignas(16) std::uint64_t g_node[9] = {};
alignas(16) std::uint64_t g_table[7] = {};
alignas(16) std::uint64_t g_circle[8] = {};
std::uint64_t g_longText[4] = {};

std::uint64_t AddressOf(const void* object) { return reinterpret_cast<std::uintptr_t>(object); }

void FillWithNonsense() {
  std::memset(g_garbage, 0xa5, sizeof g_garbage);
  g_node[0] = AddressOf(g_node);
  g_node[1] = g_node[5] = AddressOf(g_zeros);
  g_table[2] = AddressOf(g_node);
  g_table[3] = 1ULL << 60;
  g_circle[1] = AddressOf(g_table);
  g_longText[0] = AddressOf(g_zeros);
  g_longText[1] = 1ULL << 40;
}

struct Quantities {
  UnitizedValue<double> speed{90, "Mile per Hour"};
  UnitizedValue<double> number{0.1};
  UnitizedValue<double> area = UnitizedValue<double>(2, "Inch") * UnitizedValue<double>(1.5, "Inch");
  UnitDescriptor unit = *speed.GetUnits();
  UnitDescriptor nothing;
  UnitDescriptor_Celsius celsius;
};

void LookAt(const Error& error, const Error& broken) {
  const Error copy(error);
  const LogicError plain("bad");
  const InvalidParameter parameter("iCount", -3);
  const Host::ProbeNoisy noisy;
  const AlertInfo empty;
  const Quantities quantities;
  const Elapse spans[] = {Elapse(0),
                          Elapse(1, Elapse::TimerTicks),
                          Elapse(-612, Elapse::TimerTicks),
                          Elapse(9999, Elapse::TimerTicks),
                          Elapse(10000, Elapse::TimerTicks),
                          Elapse(20, Elapse::MilliSeconds),
                          Elapse(-15000001, Elapse::TimerTicks),
                          Elapse(60),
                          Elapse(3600),
                          Elapse(2, 3, 4, 500000000) + Elapse(5, Elapse::Days),
                          Elapse(std::numeric_limits<long long>::max(), Elapse::TimerTicks),
                          Elapse(std::numeric_limits<long long>::min(), Elapse::TimerTicks)};
  constexpr auto eTICKS = Time::ePlatformTimeCurrent;
  const Time moments[] = {Time(0LL, eTICKS),
                          Time(0LL, Time::ePlatformTimeSeconds),
                          Time(125483131971234567LL, eTICKS),
                          Time(-1LL, eTICKS),
                          Time(125962560000000000LL, eTICKS),   // 29 February 2000
                          Time(125911583999999999LL, eTICKS),   // the last tick of a year
                          Time(9223149887999999999LL, eTICKS),  // and of the last one
                          Time(9223149888000000000LL, eTICKS),
                          Time(std::numeric_limits<long long>::min(), eTICKS)};
  const PathName path("C:\\data\\run \"1\".txt");
  const PathName bytes("/gr\303\274n/\001");
  const PathName none;
  const PathName longName(std::string(300, 'x'));
  const PathName& reference = path;
  StopHere(&reference);
  StopHere(&copy);
  StopHere(&plain);
  StopHere(&parameter);
  StopHere(&noisy);
  StopHere(&empty);
  StopHere(&quantities);
  StopHere(&spans);
  StopHere(&moments);
  StopHere(&bytes);
  StopHere(&none);
  StopHere(&longName);
  StopHere(&broken);
}

}  // namespace

int main() {
  FillWithNonsense();
  const Host::ScaleBroken broken;
  try {
    OXA_RAISE_ERROR("Acme.Probe", Host::ProbeGone(3));
  } catch (const Error& error) {
    LookAt(error, broken);
  }
  return 0;
}
