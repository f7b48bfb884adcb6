// Counts alerts.
#ifndef OXACORE_TESTS_SUPPORT_ALERTCOUNTER_H
#define OXACORE_TESTS_SUPPORT_ALERTCOUNTER_H

#include <Infrastructure/OxaCore/AlertManager.h>

#include <atomic>

namespace TestSupport {

/// Counts what it hears as long as it lives, without a lock and without allocating.
class AlertCounter : public Oxa::Core::AlertListener {
 public:
  AlertCounter() { Oxa::Core::AlertManager::Instance()->AddAlertListener(*this); }
  AlertCounter(const AlertCounter&) = delete;
  AlertCounter& operator=(const AlertCounter&) = delete;
  ~AlertCounter() override { Oxa::Core::AlertManager::Instance()->RemoveAlertListener(*this); }

  void ErrorRaised(Oxa::Core::Error&) override { ++m_lRaised; }
  void ErrorHandled(Oxa::Core::Error&) override { ++m_lHandled; }
  void WarningRaised(Oxa::Core::Warning&) override { ++m_lWarnings; }

  std::atomic<long> m_lRaised{0};
  std::atomic<long> m_lHandled{0};
  std::atomic<long> m_lWarnings{0};
};

}  // namespace TestSupport

#endif
