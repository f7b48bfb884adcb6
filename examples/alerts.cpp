#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <boost/make_shared.hpp>
#include <iostream>
#include <typeinfo>

using namespace Oxa::Core;

class SampleLost : public ErrorClass<SampleLost, HardwareError> {
 public:
  explicit SampleLost(int number) : ErrorClass(AlertMessage("Sample %1% is lost", number)) {}
};

class SampleLate : public Warning {
 public:
  SampleLate() : Warning(AlertMessage("A sample came late")) {}
};

// Hears all that is raised, before anything unwinds.
class Lamp : public AlertListener {
 public:
  ~Lamp() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  void ErrorRaised(Error& error) override { std::cout << "raised: " << error.what() << '\n'; }
  void ErrorHandled(Error& error) override { std::cout << "handled: " << error.what() << '\n'; }
  void WarningRaised(Warning&) override { std::cout << "a warning\n"; }
};

// Settles the first loss on the spot: its raise returns.
class Patience : public ErrorHandler {
 public:
  bool Handle(Error&) override { return m_iLeft-- > 0; }

 private:
  int m_iLeft = 1;
};

void Lose(int number) {
  try {
    OXA_RAISE_ERROR_IN_PLACE("Acme.Probe", SampleLost(number));
    std::cout << "went on without sample " << number << '\n';
  } catch (const SampleLost&) {
    std::cout << "gave up at sample " << number << '\n';
  }
}

int main() {
  InitializeOxaCore();
  AlertManager* const manager = AlertManager::Instance();
  Lamp lamp;
  manager->AddAlertListener(lamp);
  manager->AddErrorHandler(typeid(SampleLost).name(), boost::make_shared<Patience>());
  manager->SetMaxWarnings(typeid(SampleLate).name(), 2, true);
  Lose(1);
  Lose(2);
  for (int i = 0; i < 5; ++i) OXA_RAISE_WARNING("Acme.Probe", SampleLate());
  ShutdownOxaCore();
}
