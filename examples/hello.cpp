#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <iostream>

class ProbeGone : public Oxa::Core::ErrorClass<ProbeGone, Oxa::Core::HardwareError> {
 public:
  explicit ProbeGone(int channel) : ErrorClass(Oxa::Core::AlertMessage("Probe %1% is gone", channel)) {}
};

double Measure(int channel) {
  try {
    OXA_RAISE_ERROR("Hello.Measure", ProbeGone(channel));
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_VARIABLE(channel))
  return 0.0;  // a raise can return, while the library is unloading for one
}

int main() {
  InitializeOxaCore();
  try {
    std::cout << Measure(3) << '\n';
  } catch (const Oxa::Core::Error& error) {
    std::cout << error.what() << ", says " << error.GetData(Oxa::Core::AlertInfo::sLOG_NAME) << '\n';
  }
  Oxa::Core::LogManager::Instance()->SetBufferingMode(false);  // what waits for the log is written now
  ShutdownOxaCore();
}
