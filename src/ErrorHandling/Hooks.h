// The one place where the library calls upward.
//
// A lock raises an error, and the alert manager that is told of it takes a lock: such circles are cut here.
// Every entry starts with a default that does no harm and is filled in first thing while the library loads,
// with functions that look for their owner at each call. A raise before the owner lives or after it has died
// works, and is told to nobody.
#ifndef OXACORE_ERRORHANDLING_HOOKS_H
#define OXACORE_ERRORHANDLING_HOOKS_H

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <string>
#include <vector>

namespace Oxa::Core {

/// Two marks that are there and equal: a context made now tells the same of process, thread, host and system as one
/// made then.
struct CircumstancesMark {
  unsigned long m_ulThread = 0;   ///< id of the calling thread; 0: the mark isn't there
  unsigned long m_ulProcess = 0;  ///< id of the process
  unsigned long m_ulChanges = 0;  ///< how often a thread or the process was named

  bool IsThere() const { return m_ulThread != 0; }
  bool operator==(const CircumstancesMark& other) const {
    return m_ulThread == other.m_ulThread && m_ulProcess == other.m_ulProcess &&
           m_ulChanges == other.m_ulChanges;
  }
};

struct Hooks {
  /// Adds process, thread, host and system to the table of a context.
  void (*addCircumstances)(AlertData& context);

  /// What that depends on, at this moment.
  CircumstancesMark (*markCircumstances)();

  /// The current call stack, innermost frame first, or null.
  boost::shared_ptr<std::vector<CodeContext>> (*walkStack)(int maxFrames);

  void (*errorRaised)(Error& error);
  void (*errorHandled)(Error& error);

  /// Whether a registered handler settled the error.
  bool (*settleInPlace)(Error& error);

  /// Whether a warning of the class (decorated name) may be told; counts it either way.
  bool (*mayWarn)(const std::string& className);
  void (*warningRaised)(Warning& warning);

  /// Writes the alert as one XML element to standard error. Never throws.
  void (*writeAlert)(AlertInfo& alert, const char* circumstance);

  /// The same as a whole XML document. Never throws.
  void (*writeAlertDocument)(AlertInfo& alert, const char* circumstance);

  /// Receives the failed asserts that hosts want in the log.
  void (*logFailedAssert)(AssertionFailure& failure);

  /// Writes an error entry for a thread that ended by an error. `text` is taken as it stands.
  void (*logThreadError)(const std::string& text);

  /// Logs an error that was made but never raised, as if it had been.
  void (*logErrorRaised)(Error& error);

  /// What waits to be logged goes to disk now, and what is logged from now on goes at once.
  void (*stopBuffering)();

  /// Lets the machine faults of the calling thread become errors.
  void (*translateFaults)();

  /// Ends the process, which an exception without a catch clause or a call of std::terminate wants. Does not return.
  void (*endUncaught)();

  /// Raises the use count of the fault adapter, or installs it; the second undoes one use.
  void (*useFaultAdapter)();
  void (*releaseFaultAdapter)();
};

/// The table in force. Written only while the library loads, by one thread.
Hooks& TheHooks() noexcept;

}  // namespace Oxa::Core

#endif
