// Logging as its users see it: loggers to write to, what becomes of a message, and who may receive it.
//
// LogManager::Instance()->GetLogger(path) gives the logger of a dotted path. A message that the logger's filter
// lets through is expanded on the calling thread, becomes an OxaLogEntry and goes on a queue; a thread of the
// log manager hands it to the log service in force. A writer never waits for a disk: while 3000 entries wait,
// further ones are dropped.
//
// Thread safety: any thread may write to a logger and set its filter. Assigning to a logger wants it alone.
// Failures: writing fails silently: an entry for which there is no memory or no log manager any more is lost. Only
// errors of locks pass through.
//
//   const boost::shared_ptr<Logger> log = LogManager::Instance()->GetLogger("Acme.Probe");
//   log->WriteLog(eLOG_WARNING, "channel %d is %.1f K above its limit", channel, excess);
#ifndef INFRASTRUCTURE_OXACORE_LOG_H
#define INFRASTRUCTURE_OXACORE_LOG_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Time.h>

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <list>
#include <memory>
#include <string>

namespace Oxa::Core {

class LogManager;

/// How bad it is. Severity s passes a filter word whose bit s is set.
enum OxaLogSeverityEnum : int {
  eLOG_ALARM = 1,
  eLOG_ERROR,
  eLOG_WARNING,
  eLOG_DEBUG,
  eLOG_INFORMATIONAL,
  eLOG_VERBOSE
};

/// The filter word that every logger and every path starts with: alarms, errors, warnings and information.
constexpr unsigned int uDEFAULT_LOG_FILTERS = 46;

/// One message on its way. A plain value.
struct OxaLogEntry {
  Time m_time;                                          ///< of creation
  OxaLogSeverityEnum m_eSeverity = eLOG_INFORMATIONAL;  ///< one of the six
  std::string m_sMessage;                               ///< expanded
  std::string m_sLoggerPath;                            ///< the dotted path of the logger
  std::string m_sForm;  ///< "plain", or "xml" when the message is a piece of XML
};

/// What a log service knows of a logger.
class OXACORE_API IOxaLogger {
 public:
  /// The dotted path, "Acme.Probe".
  virtual std::string GetPath() const = 0;

  /// The last component of the path, "Probe".
  virtual std::string GetName() const = 0;

  /// Bit s stands for severity s.
  virtual unsigned int GetSeverityFilters() const = 0;
  virtual void SetSeverityFilters(unsigned int filters) = 0;

  virtual ~IOxaLogger();

 protected:
  IOxaLogger() = default;
  IOxaLogger(const IOxaLogger&) = default;
  IOxaLogger& operator=(const IOxaLogger&) = default;
};

/// A printf format with its arguments, expanded at most once, on first use. Short-lived: it keeps the format as a
/// pointer, and the arguments must be there until it has expanded them. For one thread.
class OXACORE_API FormatOnce {
 public:
  /// Buffers of this many bytes are tried first, then twice as many, for as long as that stays below uLIMIT.
  static constexpr std::size_t uFIRST_BUFFER = 4096;
  /// No buffer is as large as this.
  static constexpr std::size_t uLIMIT = 32768;

  /// `format` may be null: that can't be expanded. `args` is copied.
  FormatOnce(const char* format, std::va_list args);
  FormatOnce(const FormatOnce&) = delete;
  FormatOnce& operator=(const FormatOnce&) = delete;
  ~FormatOnce();

  /// The expanded text, the same on every call and valid as long as this lives; null if the format is null or
  /// incomplete. Text that the largest buffer, or the one that memory allows, can't hold is cut. Never throws.
  const char* GetText() noexcept;

  /// As given; may be null.
  const char* GetFormat() const noexcept { return m_pFormat; }

  /// Whether GetText has been called, and so has done its work.
  bool IsExpanded() const noexcept { return m_bExpanded; }

 private:
  const char* Expand() noexcept;
  int Print(char* buffer, std::size_t size) noexcept;
  const char* ExpandBeyond(std::size_t length) noexcept;

  const char* m_pFormat;
  std::va_list m_args;
  bool m_bExpanded = false;
  const char* m_pText = nullptr;
  std::unique_ptr<char[]> m_longBuffer;
  char m_buffer[uFIRST_BUFFER];
};

/// Writes messages under one path. Made by LogManager::GetLogger, which gives the same one for the same path.
class OXACORE_API Logger : public IOxaLogger {
 public:
  ~Logger() override;

  std::string GetPath() const override;
  std::string GetName() const override;
  unsigned int GetSeverityFilters() const override;

  /// For this object only: neither its path in the log service nor other loggers change.
  void SetSeverityFilters(unsigned int filters) override;

  /// Takes over path, name and filter word.
  Logger& operator=(const IOxaLogger& other);
  Logger& operator=(const Logger& other);

  /// Whether a message of `severity` would be written.
  bool IsEnabledFor(OxaLogSeverityEnum severity) const noexcept {
    const unsigned int bit = static_cast<unsigned int>(severity);
    return bit < 32U && ((m_uFilters.load(std::memory_order_relaxed) >> bit) & 1U) != 0;
  }

  /// Expands the printf-style `format` and writes the text, if `severity` is enabled; otherwise nothing is
  /// expanded or allocated. Compilers check the arguments against the format. A null or incomplete format gives an
  /// entry that says so, and so does a text that can't be expanded for another reason; see FormatOnce for long ones.
#if defined(__GNUC__) && !defined(__clang__)
  [[gnu::format(printf, 3, 4), gnu::always_inline]] void WriteLog(OxaLogSeverityEnum severity,
                                                                  const char* format, ...) {
    if (IsEnabledFor(severity)) WriteEnabled(severity, format, __builtin_va_arg_pack());
  }
#else
  [[gnu::format(printf, 3, 4)]] void WriteLog(OxaLogSeverityEnum severity, const char* format, ...) {
    if (!IsEnabledFor(severity)) return;
    std::va_list args;
    va_start(args, format);
    WriteExpanded(severity, format, args);
    va_end(args);
  }
#endif

  /// The same for a format that comes as a string, which is copied first. Nobody checks the arguments.
  void WriteLog(OxaLogSeverityEnum severity, std::string format, ...);

  /// The same with the arguments of another variadic function; expands right away. `args` may be used no more.
  void WriteLogVarArgs(OxaLogSeverityEnum severity, std::string format, std::va_list args);

 protected:
  /// The name is what stands behind the last "." of `path`; the filter word is uDEFAULT_LOG_FILTERS.
  explicit Logger(const std::string& path);

 private:
  friend class LogManager;

  void WriteEnabled(OxaLogSeverityEnum severity, const char* format, ...);
  void WriteExpanded(OxaLogSeverityEnum severity, const char* format, std::va_list args);
  void DoWriteLog(OxaLogSeverityEnum severity, FormatOnce& message, const std::string& path);

  std::string m_sPath;
  std::string m_sName;
  std::atomic<unsigned int> m_uFilters;
};

/// Receives entries. Implemented by hosts, and registered with LogManager::RegisterHandler, which doesn't own it.
/// Both operations are called with locks of the log manager held. They may log, ask for loggers, raise alerts, and
/// register or unregister handlers, but must not wait for another thread that does. A handler that throws is dropped
/// without a word.
class OXACORE_API IOxaLogHandler {
 public:
  /// Loggers have come or a filter has changed. May be called on any thread.
  virtual void OnLoggersChanged() = 0;

  /// Called for each entry, as a rule on the thread of the log manager.
  virtual void HandleLogEntry(const OxaLogEntry& entry) = 0;

  virtual ~IOxaLogHandler();

 protected:
  IOxaLogHandler() = default;
  IOxaLogHandler(const IOxaLogHandler&) = default;
  IOxaLogHandler& operator=(const IOxaLogHandler&) = default;
};

/// Where entries go. A host may install its own with LogManager::InstallLogService; the library's own stands by.
/// All pointers are the caller's and may be kept until they are unregistered. Operations may be called on any
/// thread, and by several at once. Operations that take a path raise InvalidLogPath for one that they refuse.
class OXACORE_API IOxaLogService {
 public:
  /// Takes an entry. What it throws ends the time of this service: see LogManager.
  virtual void WriteLogEntry(const OxaLogEntry& entry) = 0;

  // Handlers aren't owned. As LogManager's operations of these names.
  virtual void RegisterHandler(IOxaLogHandler* handler) = 0;
  virtual void UnregisterHandler(IOxaLogHandler* handler) = 0;

  /// Sets the filter of `logger` to what its path allows.
  virtual void RegisterLogger(IOxaLogger* logger) = 0;
  virtual void UnregisterLogger(IOxaLogger* logger) = 0;

  /// Makes `names` the names of what stands directly beneath `rootPath`.
  virtual void EnumLoggers(const std::string& rootPath, std::list<std::string>& names) = 0;

  // The word of a path. As LogManager's operations of these names.
  virtual void SetSeverityFilters(const std::string& path, unsigned int filters) = 0;
  virtual unsigned int GetSeverityFilters(const std::string& path) = 0;

  /// 0 means that entries had better go to the default service.
  virtual int GetNumHandlers() = 0;

  /// Whether the path is known.
  virtual bool Exists(const std::string& path) = 0;

  virtual ~IOxaLogService();

 protected:
  IOxaLogService() = default;
  IOxaLogService(const IOxaLogService&) = default;
  IOxaLogService& operator=(const IOxaLogService&) = default;
};

/// "Invalid log path: %1%": a path that a log service refuses.
class OXACORE_API InvalidLogPath : public ErrorClass<InvalidLogPath, LogicError> {
 public:
  explicit InvalidLogPath(const std::string& path);
  ~InvalidLogPath() override;
};

}  // namespace Oxa::Core

#endif
