// What lower floors send to the log.
#ifndef OXACORE_LOG_LOGHOOKS_H
#define OXACORE_LOG_LOGHOOKS_H

#include "ErrorHandling/Hooks.h"

namespace Oxa::Core {

/// Fills in the entries of Hooks that are the log's. Each looks for the log manager at every call and does nothing
/// without one.
void ConnectLog(Hooks& hooks) noexcept;

}  // namespace Oxa::Core

#endif
