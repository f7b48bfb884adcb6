// The log manager: gives out loggers, keeps the log service in force, and hands entries to it on a thread of its
// own. It writes every error and every warning of the process into the log.
//
// The library builds the one manager while it loads and takes it down in ShutdownOxaCore. From then on Instance()
// is null, and what is written to a logger goes nowhere.
//
// Thread safety: any thread may call anything while the manager lives. Locks that a caller can meet: the one of the
// services, then the one of the loggers; both are reentrant, and held around the operations of services and, by
// way of these, of handlers. So a handler may ask for loggers, write, raise alerts, and register or unregister. It
// must not wait for another thread that makes a logger, or that installs or uninstalls a service; nor may it take the
// manager down by ShutdownOxaCore, although it may end the process.
// Failures: what a service throws is swallowed, except where an operation says otherwise; one that throws while it
// writes is thrown out, and the library's own takes over. Errors of locks reach the caller.
//
//   LogManager* const manager = LogManager::Instance();
//   if (manager != nullptr) manager->RegisterHandler(&m_window);
#ifndef INFRASTRUCTURE_OXACORE_LOGMANAGER_H
#define INFRASTRUCTURE_OXACORE_LOGMANAGER_H

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/Queue.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Oxa::Core {

class DefaultLogService;
class LogBatch;

/// See the top of this file.
class OXACORE_API LogManager : public Task, public AlertListener {
 public:
  /// The type by which the manager knows its own service.
  class OXACORE_API IDefaultLogService : public IOxaLogService {
   public:
    ~IDefaultLogService() override;
  };

  /// Starts "LogManager Thread" and gives it 10 ms to come up. For the library's globals only.
  LogManager();
  LogManager(const LogManager&) = delete;
  LogManager& operator=(const LogManager&) = delete;
  /// Leaves the alert manager, waits up to a second each for alerts and messages on their way, and shuts down.
  ~LogManager() override;

  /// The library's log manager; null before it is built and once it is being destroyed. Allocates nothing.
  static LogManager* Instance() noexcept;

  /// The logger of `path`, made and registered with the log service by the first call; the same object each time.
  /// Empty while the library unloads. Raises InvalidLogPath if the service refuses the path.
  boost::shared_ptr<Logger> GetLogger(const std::string& path);

  /// Forgets the logger of `path`, if there is one; whoever holds it may go on writing to it. Raises
  /// InvalidLogPath if the service does.
  void UnregisterLogger(const std::string& path);

  /// The filter of a path in the log service: for the loggers that are made later. Raises InvalidLogPath. If the
  /// service fails in another way, nothing is set, and uDEFAULT_LOG_FILTERS is the answer.
  void SetSeverityFilters(const std::string& path, unsigned int filters);
  unsigned int GetSeverityFilters(const std::string& path);

  /// Makes `names` the names of what stands directly beneath `rootPath`. What the service throws reaches the caller,
  /// InvalidLogPath among it.
  void EnumLoggers(const std::string& rootPath, std::list<std::string>& names);

  /// Whether the log service knows the path. Throws what EnumLoggers does.
  bool Exists(const std::string& path);

  /// Adds a receiver of entries. It isn't owned, and has to be unregistered before it dies. Raises NullPointer.
  void RegisterHandler(IOxaLogHandler* handler);

  /// Null and unknown ones are left to the services, the library's own of which ignores them. What a service throws
  /// reaches the caller; the library's own has forgotten the handler by then.
  void UnregisterHandler(IOxaLogHandler* handler);

  /// For services: handlers have come. Entries that the default service keeps for want of handlers are handed to
  /// the service in force.
  void OnLogHandlerChange();

  /// Makes `service` the one that gets entries, loggers and handlers. Not owned: uninstall it before it dies. Does
  /// nothing while another one is installed, or if `service` throws as it takes over.
  void InstallLogService(IOxaLogService& service);

  /// Goes back to the default service. Does nothing if `service` isn't the one in force.
  void UninstallLogService(IOxaLogService& service);

  /// Whether entries go by the queue and the manager's thread; true at first. False from the start if the system
  /// had no thread to give.
  bool GetBufferingMode() const noexcept { return m_bBuffering.load(std::memory_order_relaxed); }

  /// Off: what waits is sent, the thread ends (a second each is the limit for its last entry and for its end), and
  /// from then on every entry has reached the log service when the call that wrote it returns. Entries that are
  /// written while another one is being sent, on whatever thread, are then dropped. On: starts a new thread.
  void SetBufferingMode(bool on);

  /// Stops the thread, which may take 11 seconds if a handler hangs; what still waits in the queue is gone. Then
  /// unregisters the loggers, until the service throws; while the process ends nobody is told. Later calls do nothing.
  void Shutdown();

  /// The body of the thread. Not for hosts.
  int Run(TaskDirective& directive) override;

  // As a listener, it writes what it hears into the log, errors regardless of all filters.
  void ErrorRaised(Error& error) override;
  void ErrorHandled(Error& error) override;
  void UncaughtFatalError(Error& error, const std::string& fatalErrorPath) override;
  void WarningRaised(Warning& warning) override;

 private:
  friend class Logger;
  using Loggers = std::unordered_map<std::string, boost::shared_ptr<Logger>>;

  boost::shared_ptr<Logger> FindLogger(const std::string& path);
  std::vector<boost::shared_ptr<Logger>> GetLoggers();
  boost::shared_ptr<Logger> AddLogger(const std::string& path);
  void RegisterWithService(Logger& logger);
  void UnregisterFromService(Logger& logger);
  void ForgetLoggers();
  void ForgetFirstLogger();

  void WriteLog(OxaLogSeverityEnum severity, FormatOnce& message, const std::string& path, const char* form);
  void WriteBadFormat(const char* format, const std::string& path);
  void WriteText(OxaLogSeverityEnum severity, std::string text, const std::string& path, const char* form);
  void Store(OxaLogEntry& entry);
  void LogError(Error& error, const char* text, bool asXML);

  void SendDirectly(const OxaLogEntry& entry);
  void SendLogMessage(const OxaLogEntry& entry, bool direct);
  void Deliver(const OxaLogEntry& entry);
  void DropService(const IOxaLogService* failed, bool direct);
  void GoBackToDefault();
  bool IsDefaultInForce() const;
  void TakeLeaveOf(IOxaLogService& service);

  bool StartThread();
  bool EndThread();
  bool SendNext(TaskDirective& directive);
  void SendTaken(TaskDirective* directive);
  bool SendTogether();
  bool OnOwnThread() const noexcept;
  bool IsThreadRunning() const;
  void AskThreadToStop();
  bool AwaitThread(const Elapse& timeout);
  void StopThread();
  void KillStuckThread();

  void SwitchOn();
  void SwitchOff();
  void SwitchOnOwnThread(bool on);
  void AwaitEmptyQueue();
  std::size_t CountWaiting() const;
  void SendWaitingHere();

  std::unique_ptr<DefaultLogService> m_pDefaultService;
  IOxaLogService* m_pLogService;      // in force: m_pDefaultService, or one that isn't owned
  Loggers m_loggers;                  // by path
  ReadersWriterMutex m_loggerMutex;   // guards m_loggers; taken behind m_serviceMutex
  ReadersWriterMutex m_serviceMutex;  // guards m_pLogService
  Queue<OxaLogEntry> m_queue;         // between writers and the thread
  Mutex m_threadMutex;                // guards m_spThread and m_bShutDown; held while the thread is switched
  boost::shared_ptr<Thread> m_spThread;
  std::atomic<bool> m_bHasHandlers;  // false: entries go to the default service
  std::atomic<bool> m_bBuffering;
  std::unique_ptr<LogBatch> m_pTaken;     // what the thread has taken out of the queue and not sent yet
  std::atomic<std::size_t> m_uTaken;      // how many those may be, for others
  bool m_bTogether;                       // what the thread sent last went to the file, and in one piece
  std::atomic<unsigned long> m_ulThread;  // the id of the thread, 0 outside of Run
  unsigned long m_ulProcess;              // where the thread was started
  bool m_bShutDown;
};

}  // namespace Oxa::Core

#endif
