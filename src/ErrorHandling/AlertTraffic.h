// Alerts that are being told right now. The unloading of the library waits for them, so that no listener's list
// and no record is taken away under a thread that walks it.
#ifndef OXACORE_ERRORHANDLING_ALERTTRAFFIC_H
#define OXACORE_ERRORHANDLING_ALERTTRAFFIC_H

namespace Oxa::Core {

/// Stands around every call out to the owners of alerts.
class AlertInFlight {
 public:
  AlertInFlight() noexcept;
  AlertInFlight(const AlertInFlight&) = delete;
  AlertInFlight& operator=(const AlertInFlight&) = delete;
  ~AlertInFlight();

  /// False once the library is unloading: the owners must not be called any more.
  bool MayProceed() const noexcept;

  /// How many of these stand on this thread, this one included.
  int Depth() const noexcept { return m_iDepth; }

 private:
  int m_iDepth;
};

/// Called once the library is marked as unloading. Waits until no other thread tells an alert, or for a second:
/// a listener may hang.
void AwaitAlertsInFlight() noexcept;

}  // namespace Oxa::Core

#endif
