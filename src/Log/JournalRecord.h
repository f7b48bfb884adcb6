// A log entry in the form that the system's journal takes.
#ifndef OXACORE_LOG_JOURNALRECORD_H
#define OXACORE_LOG_JOURNALRECORD_H

#include <Infrastructure/OxaCore/Log.h>

#include <string>

namespace Oxa::Core {

/// All fields of an entry.
std::string JournalRecord(const OxaLogEntry& entry, const std::string& identifier);

/// The fields that a remark of the handler's own has.
std::string JournalRemark(const std::string& message, const std::string& identifier);

}  // namespace Oxa::Core

#endif
