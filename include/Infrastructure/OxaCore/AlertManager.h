// The process's one meeting point for alerts: who is told of them, how often each class was raised, how often
// a warning may speak, who settles errors in place, and what becomes of an error that nobody catches.
//
// Everything here runs on the thread that raised; there is no thread of its own.
// Thread safety: any thread may call anything, except AddFatalErrorInfo, which a host calls before others may die.
// Locks that a caller can meet: one for the records of errors and their handlers, held around handler calls, then the
// handler's own; one for the records of warnings; one for the base path of fatal reports, which a dying thread doesn't
// take; one in CurrentErrors. None is held during a broadcast, unless a handler raises: listeners then hear that with
// the first two held. All are reentrant.
// Failures: nothing that a listener throws reaches the code that raised.
//
//   class Retry : public ErrorHandler {
//    public:
//     bool Handle(Error& error) override { return TryAgain(error); }
//   };
//   ...
//   AlertManager* const manager = AlertManager::Instance();
//   manager->AddAlertListener(m_listener);
//   manager->AddErrorHandler(typeid(SampleLost).name(), boost::shared_ptr<ErrorHandler>(new Retry));
//   manager->SetMaxWarnings(typeid(SampleLate).name(), 100, true);
#ifndef INFRASTRUCTURE_OXACORE_ALERTMANAGER_H
#define INFRASTRUCTURE_OXACORE_ALERTMANAGER_H

#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Notifications.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <exception>
#include <list>
#include <set>
#include <string>
#include <unordered_map>

namespace Oxa::Core {

/// A count of 32 bits that stays at its top.
class SaturatingCount {
 public:
  /// The top.
  static constexpr std::uint32_t uTOP = 4294967295U;

  // Beginning, counting one, beginning anew, and the count.
  constexpr explicit SaturatingCount(std::uint32_t count = 0) : m_uCount(count) {}
  constexpr void Add() {
    if (m_uCount < uTOP) ++m_uCount;
  }
  constexpr void Reset() { m_uCount = 0; }
  constexpr std::uint32_t Get() const { return m_uCount; }

 private:
  std::uint32_t m_uCount;
};

/// What is known of one class of alert. A copyable value.
class OXACORE_API AlertRecord {
 public:
  /// The maximum of a warning that may always speak: 4294967295.
  static unsigned long GetInfiniteWarnings();

  /// Class name "[Unknown]", category "Unknown".
  AlertRecord();
  AlertRecord(const std::string& className, const std::string& category);
  /// The class name is the run-time type's, the category what stands under AlertInfo::sCATEGORY.
  explicit AlertRecord(const AlertInfo& alert);

  /// Undecorated, as in "class BasicWarning".
  const std::string& GetClass() const { return m_sClass; }
  const std::string& GetCategory() const { return m_sCategory; }
  /// How often the class was raised and told; stays at 4294967295.
  unsigned long GetRaisedCount() const { return m_raised.Get(); }

 protected:
  /// Takes class name and category from `alert`.
  void Describe(const AlertInfo& alert);

 private:
  friend class AlertManager;

  std::string m_sClass;
  std::string m_sCategory;
  SaturatingCount m_raised;
};

/// What is known of one class of warning.
class OXACORE_API WarningRecord : public AlertRecord {
 public:
  WarningRecord();
  // For the class of that name, or for that of the alert; nothing is counted yet.
  WarningRecord(const std::string& className, const std::string& category);
  explicit WarningRecord(const AlertInfo& warning);

  /// How many more than the warning count may be told; GetInfiniteWarnings at first.
  unsigned long GetMaxWarnings() const { return m_uMaxWarnings; }
  /// A maximum above GetInfiniteWarnings is taken for that.
  void SetMaxWarnings(unsigned long max);
  /// Warnings that were let through since the record exists, or since the last reset.
  unsigned long GetWarningCount() const { return m_warnings.Get(); }
  void ResetWarningCount() { m_warnings.Reset(); }
  /// Warnings that nobody heard.
  unsigned long GetSilencedCount() const { return m_silenced.Get(); }

 protected:
  /// Whether one more warning may be told; counts it as let through or as silenced.
  bool ShouldWarningBeRaised();

 private:
  friend class AlertManager;

  SaturatingCount m_silenced;
  std::uint32_t m_uMaxWarnings;
  SaturatingCount m_warnings;
};

/// Settles errors of a class, or of classes below it, on the spot: the raise then returns instead of
/// throwing.
///
/// Called on the raising thread with the lock of the error records and the handler's own held, so a handler
/// must not wait for another thread that may raise. What it throws leaves the raise in place of the error.
class OXACORE_API ErrorHandler {
 public:
  ErrorHandler();
  ErrorHandler(const ErrorHandler&) = delete;
  ErrorHandler& operator=(const ErrorHandler&) = delete;
  virtual ~ErrorHandler();

  /// Whether `error` is settled now.
  virtual bool Handle(Error& error) = 0;

  /// A handler of the same class that was added before this one has settled `error`. The handler's own lock
  /// is not held. Does nothing by default.
  virtual void HandledByPrior(Error& error);

  /// This handler declined `error`, and a later one settled it; otherwise as above.
  virtual void HandledByLatter(Error& error);

 private:
  friend class AlertManager;

  Mutex m_mutex;  // held while Handle runs
};

/// What is known of one class of error.
class OXACORE_API ErrorRecord : public AlertRecord {
 public:
  ErrorRecord();
  /// For the class of the alert; nothing is counted yet.
  explicit ErrorRecord(const AlertInfo& error);

  /// "Error" or "Critical", as under AlertInfo::sSEVERITY.
  const std::string& GetSeverity() const { return m_sSeverity; }

 private:
  friend class AlertManager;
  using Handlers = std::list<boost::shared_ptr<ErrorHandler>>;

  void Describe(const AlertInfo& error);

  std::string m_sSeverity;
  Handlers m_handlers;  // in order of addition
};

/// Highest raised count first, ties by class name.
struct OXACORE_API SSortErrors {
  /// Whether `left` comes first.
  bool operator()(const ErrorRecord& left, const ErrorRecord& right) const;
};

/// The same for warnings.
struct OXACORE_API SSortWarnings {
  /// Whether `left` comes first.
  bool operator()(const WarningRecord& left, const WarningRecord& right) const;
};

/// The last error that was raised on each thread, as a copy that never holds the raised mark. An entry stays
/// until its thread raises again, even if the thread is gone.
class OXACORE_API CurrentErrors {
 public:
  CurrentErrors();
  CurrentErrors(const CurrentErrors&) = delete;
  CurrentErrors& operator=(const CurrentErrors&) = delete;
  ~CurrentErrors();

  /// Keeps a copy of `error` as the entry of that thread. May throw std::bad_alloc.
  void Store(unsigned long threadId, const Error& error);

  /// Makes `found` a copy of the thread's entry; of any entry if the thread has none. False, and `found` is
  /// untouched, if there is none at all.
  bool Find(unsigned long threadId, Error& found) const;

 private:
  mutable Mutex m_mutex;  // guards m_errors; taken alone
  std::unordered_map<unsigned long, Error> m_errors;
};

/// Calls ErrorRaised of every AlertListener that is interested.
class OXACORE_API ErrorRaised : public Notification {
 public:
  /// `error` is only referred to.
  explicit ErrorRaised(Error& error) : m_error(error) {}
  ~ErrorRaised() override;
  void Notify(NotificationListener& listener) override;

 private:
  Error& m_error;
};

/// Calls ErrorHandled of every AlertListener that is interested.
class OXACORE_API ErrorHandled : public Notification {
 public:
  /// `error` is only referred to.
  explicit ErrorHandled(Error& error) : m_error(error) {}
  ~ErrorHandled() override;
  void Notify(NotificationListener& listener) override;

 private:
  Error& m_error;
};

/// Calls WarningRaised of every AlertListener that is interested.
class OXACORE_API WarningRaised : public Notification {
 public:
  /// `warning` is only referred to.
  explicit WarningRaised(Warning& warning) : m_warning(warning) {}
  ~WarningRaised() override;
  void Notify(NotificationListener& listener) override;

 private:
  Warning& m_warning;
};

/// Calls UncaughtFatalError of every AlertListener, interested or not.
class OXACORE_API UncaughtFatalErrorNotification : public Notification {
 public:
  /// `error` is only referred to; `fatalErrorPath` is where the records lie.
  UncaughtFatalErrorNotification(Error& error, const std::string& fatalErrorPath)
      : m_error(error), m_sFatalErrorPath(fatalErrorPath) {}
  ~UncaughtFatalErrorNotification() override;
  void Notify(NotificationListener& listener) override;

 private:
  Error& m_error;
  std::string m_sFatalErrorPath;
};

/// "Error occurred during an alert notification:\n%1%".
class OXACORE_API ErrorDuringAlertNotification : public Warning {
 public:
  explicit ErrorDuringAlertNotification(const std::string& message);
  ~ErrorDuringAlertNotification() override;
};

/// What a memory dump of a dying process holds. Any other value counts as eDUMP_NORMAL.
enum EDumpPolicy : int {
  eDUMP_NORMAL = 0,             ///< threads and their stacks
  eDUMP_REFERENCED_MEMORY = 1,  ///< and what they point to
  eDUMP_PRIVATE_MEMORY = 2,     ///< and all data that the process can write
  eDUMP_FULL_MEMORY = 3         ///< everything
};

/// See the top of this file. The library owns the one object, from load to unload.
class OXACORE_API AlertManager : public AlertListener {
 public:
  /// Installs the terminate handler and adds the global "CurrentErrors". For the library's globals only.
  AlertManager();
  AlertManager(const AlertManager&) = delete;
  AlertManager& operator=(const AlertManager&) = delete;
  /// Puts the terminate handler back that was in force before.
  ~AlertManager() override;

  /// The library's alert manager; null before it is built and after its death. Allocates nothing.
  static AlertManager* Instance() noexcept;

  /// The last listener that was added hears first. Listeners are not owned; a dying one leaves by itself.
  void AddAlertListener(AlertListener& listener);
  void RemoveAlertListener(AlertListener& listener);

  /// `className` is a decorated name, typeid(T).name(), as in the inheritance of an error; classes of one name in
  /// different anonymous namespaces share theirs. A null handler, or one that the class has already, is ignored.
  /// A handler is shared until it is removed, or until the library is unloaded: a plug-in removes its own before
  /// it goes. One that is removed while handlers are being asked may still be asked.
  void AddErrorHandler(const std::string& className, boost::shared_ptr<ErrorHandler> handler);
  void RemoveErrorHandler(const std::string& className, boost::shared_ptr<ErrorHandler> handler);

  /// Warnings of the class beyond `max` are silenced: nobody hears them, and they don't count as raised.
  /// `className` is a decorated name. A class that was never raised is left alone unless `createIfAbsent`.
  void SetMaxWarnings(const std::string& className, unsigned long max, bool createIfAbsent);

  /// Lets the class speak anew, up to its maximum. The silenced count stays.
  void ResetWarningCount(const std::string& className);

  /// Copies of the records of all classes that were raised; give their number.
  int GetRaisedErrorRecords(std::set<ErrorRecord, SSortErrors>& records);
  int GetRaisedWarningRecords(std::set<WarningRecord, SSortWarnings>& records);

  /// The folder below which the records of the process's end go; at first that of the running program. Ends in a
  /// separator.
  std::string GetFatalErrorBasePath();

  /// Sets it; one that doesn't end in a separator gets "/" at its end. What PathName::IsValid refuses leaves the path
  /// as it was and gives false, with the warning InvalidFatalErrorPath. Nothing has to be there: the folder is made
  /// when it is needed.
  bool SetFatalErrorBasePath(const std::string& path);

  /// Sets one entry that every fatal report shows ahead of the error, as an element called `key`; characters that no
  /// element's name may have become "_". An entry of that key is replaced.
  void AddFatalErrorInfo(const std::string& key, const std::string& value);

  /// eDUMP_REFERENCED_MEMORY at first.
  EDumpPolicy GetDumpPolicy();
  void SetDumpPolicy(EDumpPolicy policy);

  /// How many uncaught errors of one process get a report before it exits; 1 at first, 0 for none.
  static int GetMaxFatalErrorReports();
  static void SetMaxFatalErrorReports(int max);

  /// Whether a process that dies of a fault or an uncaught error ends by the fault's signal, SIGABRT for an error, once
  /// it has left its record: for supervisors, and for core files. No exit routine and no static destructor runs then.
  /// False at first: it exits with status -1.
  static bool GetEndBySignal();
  static void SetEndBySignal(bool bySignal);

  // As a listener, it keeps the records.
  void ErrorRaised(Error& error) override;
  void ErrorHandled(Error& error) override;
  void WarningRaised(Warning& warning) override;

 protected:
  friend class Error;
  friend class Warning;
  friend struct AlertHooks;

  /// Tells all listeners. Nothing escapes from it but the cancellation of the thread.
  void Broadcast(Notification& notification);

  /// Offers `error` to the handlers, those of its own class first; whether one of them settled it.
  bool UseErrorHandler(Error& error);

  /// Whether a warning of the class (decorated name) may be told; counts it either way.
  bool ShouldDoWarningBroadcast(const std::string& className);

  /// Has the report of an uncaught error written and tells the listeners where it lies.
  void OnFatalError(Error& error);

 private:
  using Handlers = ErrorRecord::Handlers;

  static bool AskHandlers(Handlers handlers, Error& error, Handlers& declined);
  static void OnTerminate();
  static void ReportUncaughtError() noexcept;
  void UseFatalErrorBasePath(const std::string& path);

  NotificationSupport m_support;
  std::unordered_map<std::string, WarningRecord> m_warningRecords;  // by decorated class name
  std::unordered_map<std::string, ErrorRecord> m_errorRecords;      // by decorated class name
  Mutex m_warningsMutex;                                            // guards m_warningRecords
  Mutex m_errorsMutex;    // guards m_errorRecords, the handlers included
  Mutex m_basePathMutex;  // guards m_sFatalErrorBasePath; a dying thread reads a copy that needs no lock
  std::string m_sFatalErrorBasePath;
  std::string m_sFatalErrorPath;  // folder of the report in hand
  std::terminate_handler m_previousTerminateHandler;
  std::atomic<EDumpPolicy> m_eDumpPolicy;
  AlertData m_fatalErrorInfo;

  static std::atomic<int> sm_iMaxFatalErrorReports;
};

}  // namespace Oxa::Core

#endif
