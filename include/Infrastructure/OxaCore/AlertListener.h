// Base of everything that wants to hear of errors and warnings.
//
// Register one with AlertManager::Instance()->AddAlertListener. ErrorRaised and WarningRaised are called on the
// thread that raises, before anything unwinds; ErrorHandled on the thread that lets the error go; all of them
// for several threads at once. The alert is to be read only. Don't keep a reference to it; of an error keep a
// CloneUnraised, since a copy would take the raised mark. What a listener throws is told as a
// ListenerErrorOnNotification and goes no further.
// Thread safety: set the two filters before registering. A subclass removes itself in its own destructor, before
// its members die.
//
//   class Lamp : public AlertListener {
//    public:
//     Lamp() { m_severityMask = AlertInfo::eERROR | AlertInfo::eCRITICAL; }
//     ~Lamp() override { AlertManager::Instance()->RemoveAlertListener(*this); }
//     void ErrorRaised(Error& error) override { SwitchOn(error.what()); }
//   };
#ifndef INFRASTRUCTURE_OXACORE_ALERTLISTENER_H
#define INFRASTRUCTURE_OXACORE_ALERTLISTENER_H

#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Notifications.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace Oxa::Core {

/// Hears alerts. A fresh one is interested in everything and does nothing about it.
class OXACORE_API AlertListener : public NotificationListener {
 public:
  AlertListener();
  ~AlertListener() override;

  /// Whether ErrorRaised, ErrorHandled and WarningRaised are to be called for `alert`: its severity has a bit
  /// in m_severityMask, and every key of m_dataFilter that has values finds one of them in `alert`.
  virtual bool IsInterestedIn(AlertInfo& alert) const;

  /// `error` has been raised and is about to be thrown, or settled in place.
  virtual void ErrorRaised(Error& error);

  /// The catch clause that ended the flight of `error` is letting it go: it is being destroyed.
  virtual void ErrorHandled(Error& error);

  /// Nobody caught `error`, and the process is about to end; its report lies in the folder `fatalErrorPath`,
  /// which is empty if there is none. Not subject to IsInterestedIn.
  virtual void UncaughtFatalError(Error& error, const std::string& fatalErrorPath);

  /// A warning was raised, on this thread. Does nothing here.
  virtual void WarningRaised(Warning& warning);

 protected:
  /// AlertInfo::ESeverity bits; 7 at first.
  std::uint32_t m_severityMask;

  /// Per key of the data table the accepted values; a key with none is ignored. Empty at first.
  std::unordered_map<std::string, std::unordered_set<std::string>> m_dataFilter;
};

}  // namespace Oxa::Core

#endif
