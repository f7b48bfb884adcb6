// A log entry as it stands in the default log: an XML element, and a line that sets it apart from the next.
//
// Any thread may call, at any time.
#ifndef OXACORE_LOG_LOGENTRYTEXT_H
#define OXACORE_LOG_LOGENTRYTEXT_H

#include <Infrastructure/OxaCore/Log.h>

#include <string>
#include <string_view>

namespace Oxa::Core {

/// The last of every entry, and in no message, since those are escaped.
constexpr std::string_view sLOG_ENTRY_SEPARATOR =
    "<!-- ========================================================================  -->\n\n";

/// What a severity is called in the log, as in "Warning"; null for a value that is none.
const char* SeverityWord(OxaLogSeverityEnum severity) noexcept;

/// The entry in the layout of an XMLWriter with its default formatter, with the separator and the empty lines
/// around that. A message of the form "xml" stands in it as markup, laid out anew; of one that isn't well-formed, as
/// much as was recognised, with end tags for what that leaves open (LogFormatter.h). Every other message
/// is escaped text in an element "Message"; as ever with XMLWriter, control characters and bytes above 127 go
/// through.
/// Raises Time::OsTimeApiError for a time that the system can't break down; if that returns, the time is empty.
std::string LogEntryText(const OxaLogEntry& entry);

/// The same for a caller that needs it for a moment: one of usual length allocates nothing. Stands on a stack.
class BriefLogEntryText {
 public:
  explicit BriefLogEntryText(const OxaLogEntry& entry);
  BriefLogEntryText(const BriefLogEntryText&) = delete;
  BriefLogEntryText& operator=(const BriefLogEntryText&) = delete;

  /// Lives as long as this does.
  std::string_view Get() const noexcept { return m_text; }

 private:
  char m_room[2048];
  std::string m_long;
  std::string_view m_text;
};

}  // namespace Oxa::Core

#endif
