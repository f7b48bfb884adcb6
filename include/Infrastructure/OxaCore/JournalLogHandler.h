// A receiver of log entries that writes them to the system's journal, with their parts as fields.
//
// | Field | What it holds |
// |---|---|
// | MESSAGE | the message; of an alert its text |
// | PRIORITY | 1 of an alarm, 3 of an error, 4 of a warning, 6 of information, 7 of debug and verbose |
// | SYSLOG_IDENTIFIER | the program, or what the constructor was given |
// | OXA_LOGGER, OXA_SEVERITY, OXA_FORM | the logger's path, "Alarm" to "Verbose", "plain" or "xml" |
// | OXA_TIME_USEC | when the entry was made, in microseconds since 1970 |
// | CODE_FILE, CODE_LINE, CODE_FUNC, OXA_XML | of an alert: where it was raised, and the whole of it |
//
// The journal is written to by its own socket; nothing is linked or opened for it. An entry of any size goes through.
//
// Where there is no journal, or it has gone away, entries are lost and counted; JournalUnreachable is raised once, with
// the first of them. The handler finds a journal that comes back, and tells there how many entries are missing. A
// journal that is too busy holds the log up for a tenth of a second at most, and not again before it takes entries.
//
// Thread safety: any thread may call anything.
//
//   JournalLogHandler journal;
//   LogManager::Instance()->RegisterHandler(&journal);  // journalctl -t station OXA_LOGGER=Acme.Probe
#ifndef INFRASTRUCTURE_OXACORE_JOURNALLOGHANDLER_H
#define INFRASTRUCTURE_OXACORE_JOURNALLOGHANDLER_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <string>

namespace Oxa::Core {

/// "The system's journal can't be reached: %1%", with the system's text. Under "Oxa.Core.JournalLogHandler".
class OXACORE_API JournalUnreachable : public Warning {
 public:
  explicit JournalUnreachable(const std::string& systemText);
  ~JournalUnreachable() override;
};

/// See the top of this file.
class OXACORE_API JournalLogHandler : public IOxaLogHandler {
 public:
  /// `identifier` is what the journal lists the entries under; "" stands for the name of the process.
  explicit JournalLogHandler(const std::string& identifier = std::string());
  JournalLogHandler(const JournalLogHandler&) = delete;
  JournalLogHandler& operator=(const JournalLogHandler&) = delete;
  ~JournalLogHandler() override;

  /// Does nothing.
  void OnLoggersChanged() override;

  /// Sends the entry. Throws nothing but std::bad_alloc and errors of locks.
  void HandleLogEntry(const OxaLogEntry& entry) override;

  /// Whether the last entry reached the journal; true before the first.
  bool IsReachable() const;

  /// Entries that didn't reach it, from the beginning.
  unsigned long GetLostEntries() const;

 private:
  int Send(const std::string& record, bool& hasBegun, unsigned long& missing);
  void TellOfMissing(unsigned long count);

  const std::string m_sIdentifier;
  mutable Mutex m_mutex;  // guards all below, and is held while a record is sent
  bool m_bReachable;
  unsigned long m_ulLost;
  unsigned long m_ulUntold;  // those of them that the journal hasn't been told of
};

}  // namespace Oxa::Core

#endif
