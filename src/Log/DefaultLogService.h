// The log service that the log manager starts with and falls back on.
//
// It keeps the tree of logger paths with their filter words, hands entries to the registered handlers, and, as
// long as no handler takes them, writes them to the default log files and retains the last 1000 in memory for
// whoever registers late.
//
// Thread safety: any thread may call anything at any time, handlers from inside a call included.
// Locks: the handlers' mutex, then that of the retained entries, then that of the file; none of them is held while
// a handler or another service is called. The tree's mutex is held while the tree is told to another service, and
// by no operation while a handler or a listener to alerts is called.
// A handler that throws is unregistered behind the walk in which it did so, without a message.
// Failures: a path with an empty component, other than its first, raises InvalidLogPath where a walk comes to it.
// What leaves RegisterLogger, UnregisterLogger, EnumLoggers and the operations on filters is an Error. All under
// the log name "Oxa.Core.DefaultLogService".
#ifndef OXACORE_LOG_DEFAULTLOGSERVICE_H
#define OXACORE_LOG_DEFAULTLOGSERVICE_H

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <atomic>
#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Log/DefaultLogEntriesFile.h"
#include "Log/HandlerCalls.h"
#include "Log/LoggerTreeNode.h"

namespace Oxa::Core {

class LogBatch;

class DefaultLogService : public LogManager::IDefaultLogService {
 public:
  DefaultLogService();
  DefaultLogService(const DefaultLogService&) = delete;
  DefaultLogService& operator=(const DefaultLogService&) = delete;
  ~DefaultLogService() override;

  /// Hands the entry to every handler. If none took it, retains it and appends it to the default log; what can't
  /// be written there goes to standard error. Does nothing while the library unloads.
  void WriteLogEntry(const OxaLogEntry& entry) override;

  /// Takes the oldest of these entries out, does with each what WriteLogEntry does where there is no handler, and gives
  /// how many that were. None if there is a handler: call WriteLogEntry then. For one thread at a time.
  std::size_t WriteTogether(LogBatch& entries);

  /// Adds a handler, which isn't owned and must be unregistered before it dies. Null is ignored.
  void RegisterHandler(IOxaLogHandler* handler) override;

  /// Removes a handler: nobody calls it any more once this has returned, but for calls further up on the calling
  /// thread. Waits for calls to it on other threads, except where those wait in here for the calling one, and
  /// not at all from inside an OnLoggersChanged: whoever makes a logger, on whose thread that is called, holds locks
  /// that the others may be waiting for. Null is ignored.
  void UnregisterHandler(IOxaLogHandler* handler) override;

  /// Adds a logger, which isn't owned, at its path, and sets its filter word to the intersection of the words
  /// along that path. It keeps that word until it is registered anew. Null is ignored.
  void RegisterLogger(IOxaLogger* logger) override;

  /// Forgets a logger; its path stays in the tree, and comes into being if it wasn't there. Null is ignored.
  void UnregisterLogger(IOxaLogger* logger) override;

  /// Replaces `names` with the names, not the paths, of the direct children of `p_sRootPath`, in no promised
  /// order. A path that isn't there has none.
  void EnumLoggers(const std::string& p_sRootPath, std::list<std::string>& names) override;

  /// Sets the word of a path, which comes into being if it isn't there, for loggers that are yet to be registered
  /// at it or beneath. Bits that this takes away are gone from the words of all descendants for good.
  void SetSeverityFilters(const std::string& p_sPath, unsigned int filters) override;

  /// The word of a path itself, which comes into being if it isn't there.
  unsigned int GetSeverityFilters(const std::string& p_sPath) override;

  /// The number of handlers, but never 0: with no handler there is the file.
  int GetNumHandlers() override;

  /// Whether the tree has the path; "" is the root.
  bool Exists(const std::string& path) override;

  /// Whether there are retained entries, by a plain look without a lock.
  bool HasRetained() const;

  /// Takes the retained entries out and hands them to `service`, oldest first. What is retained meanwhile stays.
  /// If the service throws, that goes on to the caller, and what it didn't take is retained again.
  void FlushRetained(IOxaLogService& service);

  /// Hands loggers, words and handlers to a service that takes this one's place, and closes the file. Nothing of
  /// this is forgotten here, except for loggers that the service refuses, and handlers that throw when they are
  /// told. What the service throws goes on to the caller otherwise.
  void TransferTo(IOxaLogService& service);

  /// The handlers of this moment.
  std::vector<IOxaLogHandler*> GetHandlers();

 private:
  using Handlers = std::vector<IOxaLogHandler*>;
  enum class ECallResult { eRETURNED, eTHREW, eGONE };
  class RetainedInHand;

  LoggerTreeNode* FindLoggerNode(const std::string& path);
  LoggerTreeNode* GetLoggerNode(const std::string& path);
  bool ChangeSeverityFilters(LoggerTreeNode& node, unsigned int filters);

  template <class Call>
  std::size_t CallHandlers(const Handlers& handlers, const Call& call);
  template <class Call>
  ECallResult CallHandler(IOxaLogHandler* handler, const Call& call);
  bool IsRegistered(IOxaLogHandler* handler);
  void NotifyHandlers();
  Handlers NewHandlers(const Handlers& told, const OxaLogEntry& entry);
  void TransferHandlers(IOxaLogService& service, Handlers& failed);
  void Drop(const Handlers& handlers);

  bool RetainWithoutHandlers(const OxaLogEntry* entries, std::size_t count);
  void Retain(const OxaLogEntry& entry);
  void ReplaceOldest(const OxaLogEntry& entry);
  void CountRetained();

  void WriteToFile(const LogRun& entries);
  void TryWriteToFile(const LogRun& entries, std::size_t& done);
  bool OpenLogFilesIfClosed();
  bool OpenLogFiles();
  void CloseLogFiles();

  LoggerTreeNode m_root;
  ReadersWriterMutex m_treeMutex;  ///< guards m_root and all beneath it

  std::unordered_set<IOxaLogHandler*> m_handlers;
  ReadersWriterMutex m_handlerMutex;  ///< guards m_handlers
  HandlerCalls m_calls;               ///< of m_handlers

  DefaultLogEntriesFile m_entriesFile;
  Mutex m_fileMutex;  ///< held while the log files are opened or closed

  std::list<OxaLogEntry> m_retained;
  std::atomic<std::size_t> m_uRetained;  ///< the size of m_retained, for a look without the lock
  Mutex m_retainedMutex;                 ///< guards m_retained
};

}  // namespace Oxa::Core

#endif
