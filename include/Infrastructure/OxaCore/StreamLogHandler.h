// A receiver of log entries that writes them to a stream, a line each, for people who watch.
//
//   2011/03/03 02:33:17.123 Warning Acme.Probe: channel 3 is 0.4 K above its limit
//
// Of an alert the line has its text, not its markup.
//
// On a terminal the line has the colour of its severity, unless the environment variable NO_COLOR is set and not empty,
// or TERM says that the terminal is none ("dumb", or nothing); and control characters, which could make a terminal do
// things, are written as "\x1B": those of ASCII, and those from 128 to 159, as characters of UTF-8 or as single bytes.
// Everywhere else the bytes of the message go out as they are.
//
// Thread safety: any thread may call; lines don't mix. The stream has to outlive the handler, and what others write to
// it stands between the lines.
// Failures: a stream that fails swallows entries, and goes on when its owner clears it. One that throws, because its
// owner asked for that, makes the log drop this handler. A file at the limit for the size of files is a stream that
// fails.
//
//   StreamLogHandler screen(std::clog);
//   LogManager::Instance()->RegisterHandler(&screen);
//   ...
//   LogManager::Instance()->UnregisterHandler(&screen);
#ifndef INFRASTRUCTURE_OXACORE_STREAMLOGHANDLER_H
#define INFRASTRUCTURE_OXACORE_STREAMLOGHANDLER_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Log.h>

#include <iosfwd>
#include <string>

namespace Oxa::Core {

/// See the top of this file.
class OXACORE_API StreamLogHandler : public IOxaLogHandler {
 public:
  /// Looks once whether `out` leads to a terminal. A stream whose buffer is exchanged later needs another handler.
  explicit StreamLogHandler(std::ostream& out);
  StreamLogHandler(const StreamLogHandler&) = delete;
  StreamLogHandler& operator=(const StreamLogHandler&) = delete;
  ~StreamLogHandler() override;

  /// Does nothing.
  void OnLoggersChanged() override;

  /// Writes the line and flushes the stream. The time is empty where Time::ToString would raise.
  void HandleLogEntry(const OxaLogEntry& entry) override;

 private:
  std::string LineOf(const OxaLogEntry& entry) const;

  std::ostream& m_out;
  const bool m_bTerminal;
  const bool m_bColours;
  Mutex m_mutex;  // one line at a time
};

}  // namespace Oxa::Core

#endif
