#include <Infrastructure/OxaCore/Error.h>

#include <iostream>

namespace {

class ProbeGone : public Oxa::Core::ErrorClass<ProbeGone, Oxa::Core::HardwareError> {
 public:
  explicit ProbeGone(int channel) : ErrorClass(Oxa::Core::AlertMessage("Probe %1% is gone", channel)) {}
};

double Read(int channel) {
  OXA_RAISE_ERROR("Host.Probe.Read", ProbeGone(channel));
  return 0.0;
}

}  // namespace

int main() {
  try {
    Read(3);
  } catch (const Oxa::Core::HardwareError& error) {
    std::cout << "caught: " << error.what() << '\n';
    return 0;
  }
  return 1;
}
