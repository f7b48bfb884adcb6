// Alerts that are being told right now. The unloading of the library waits for them, so that no listener's list
// and no record is taken away under a thread that walks it.
#ifndef OXACORE_ERRORHANDLING_ALERTTRAFFIC_H
#define OXACORE_ERRORHANDLING_ALERTTRAFFIC_H

#include <Infrastructure/OxaCore/Error.h>

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

  /// Whether so many of these stand on this thread that listeners must be calling each other without end. The
  /// alert then goes to the raw channel.
  bool NeverEnds() const noexcept { return m_iDepth > g_iMAX_ERROR_RECURSION_DEPTH; }

  /// For a thread that is being killed: nobody is to wait for what it was telling. The last that it does here.
  static void DropThisThread() noexcept;

 private:
  static int Enter() noexcept;

  int m_iDepth;
};

/// The circumstance under which an alert of such a depth is written.
constexpr char sLISTENERS_NEVER_END[] = "Error in alert listener during alert notification";

/// Called once the library is marked as unloading, or a listener has been removed that is to die. Waits until no
/// other thread tells an alert, or for a second: a listener may hang.
void AwaitAlertsInFlight() noexcept;

}  // namespace Oxa::Core

#endif
