// What becomes of a wait that the system ended: one table of texts, and one place that raises them.
#ifndef OXACORE_THREADS_WAITFAILURES_H
#define OXACORE_THREADS_WAITFAILURES_H

#include <Infrastructure/OxaCore/RaiseSite.h>

#include "Platform/Threads.h"

namespace Oxa::Core {

/// One operation's messages.
struct WaitTexts {
  const char* m_pLogName;
  const char* m_pAbandoned;
  const char* m_pTimedOut;  ///< null: running out of time is a result and not raised
  const char* m_pOther;
  /// Raises the warning about an interrupted wait; null: that end is one of the other ends.
  void (*m_pWarnOfInterruption)(const CodeSite& site);
};

/// True if the wait got what it wanted. Anything else is raised at `site` as `texts` says, as an OSError or a
/// warning; false if that returns, and for a time that ran out silently.
bool Succeeded(const Platform::WaitResult& result, const WaitTexts& texts, const CodeSite& site);

}  // namespace Oxa::Core

#endif
