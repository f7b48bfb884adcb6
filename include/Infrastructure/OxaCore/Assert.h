// Assertions that report and go on. They are compiled into release builds.
//
// Thread safety: any thread may assert, at any time, also while the library loads or unloads. Locks: those of the log
// for LogAssertFailed, none otherwise.
// Failures: nothing raises and nothing throws; without memory only the message is reported. What the condition itself
// throws passes.
//
//   if (!OXA_ASSERT(channel >= 0)) return 0.0;
#ifndef INFRASTRUCTURE_OXACORE_ASSERT_H
#define INFRASTRUCTURE_OXACORE_ASSERT_H

#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <string>

namespace Oxa::Core {

/// Writes "file(line): Failed Assertion(message)" and a line end to the debugger's output (standard error
/// where there is no debugger). Gives false; nothing is raised, and the caller goes on. Any thread may call.
OXACORE_API bool AssertFailed(const std::string& message, const CodeContext& context);

/// The same, and an error entry in the log unless the library is unloading; for hosts. Without memory, or without
/// a log manager, that entry is left out.
OXACORE_API bool LogAssertFailed(const std::string& message, const CodeContext& context);

}  // namespace Oxa::Core

/// Tests the condition and reports its source text if it doesn't hold (variadic for the sake of commas). The value is
/// the outcome, so that code can leave early: `if (!OXA_ASSERT(p != 0)) return;`
#define OXA_ASSERT(...) ((__VA_ARGS__) ? true : OXA_CODE_SITE.FailAssertion(#__VA_ARGS__))

#endif
