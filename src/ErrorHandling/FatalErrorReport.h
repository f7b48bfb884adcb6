// The report of a fatal error, as XML: for people and programs that read it on another machine, another day.
#ifndef OXACORE_ERRORHANDLING_FATALERRORREPORT_H
#define OXACORE_ERRORHANDLING_FATALERRORREPORT_H

#include <Infrastructure/OxaCore/Error.h>

#include <string>

#include "ErrorHandling/FatalErrorText.h"

namespace Oxa::Core {

using FatalErrorCause = FixedText<512>;

/// Puts a report of nothing but `info` (which may be null) and `cause` where the next one will stand, for the case that
/// it never will. Allocates nothing. Replaces no file. The entries may lie on a heap that is in ruins: where they can't
/// be read, the report does without.
void WriteFirstWords(const char* folder, const AlertData* info, const FatalErrorCause& cause) noexcept;

/// Writes the report into `folder`, whose name ends in a separator: ErrorInfo.xml, then ErrorInfo3.xml, ErrorInfo4.xml.
/// `info` comes ahead of the error. Raises the warning OpenXMLErrorReportFailed where there is no file to be had.
/// Throws what writing XML and warnings throw; what has been composed by then is in the file. Where there is no room
/// for that, first words that stand in the file stay, and an empty one gets what has room.
void WriteFatalErrorReport(const std::string& folder, const AlertData& info, Error& error);

}  // namespace Oxa::Core

#endif
