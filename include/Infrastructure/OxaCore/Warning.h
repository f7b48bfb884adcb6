// Warnings: alerts that stop nothing. They are told to the listeners on the raising thread, and the caller
// goes on. Never thrown.
//
//   class ProbeNoisy : public Warning {
//    public:
//     explicit ProbeNoisy(int channel) : Warning(AlertMessage("Probe %1% is noisy", channel)) {}
//   };
//   ...
//   OXA_RAISE_WARNING("Acme.Probe.Read", ProbeNoisy(3));
#ifndef INFRASTRUCTURE_OXACORE_WARNING_H
#define INFRASTRUCTURE_OXACORE_WARNING_H

#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/AlertMessage.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <string>

namespace Oxa::Core {

/// Base of all warnings. Its category stays "Unknown", and it has no inheritance.
class OXACORE_API Warning : public AlertInfo {
 public:
  /// Leaves the severity to the derived class, which calls SetSeverity(eWARNING).
  Warning();
  Warning(const Warning&) = default;
  Warning& operator=(const Warning&) = default;
  ~Warning() override;

  std::string XMLElementName() override;

  /// Tells the listeners, unless warnings of this class are silenced. While the library unloads the warning
  /// goes to standard error instead. Returns always, but for
  /// std::bad_alloc.
  void RaiseWarning(const CodeContext& context, const std::string& logName);

 protected:
  /// For derived classes: severity eWARNING and this message.
  explicit Warning(const std::string& message);
};

/// "%1% sliced to Oxa::Core::Error in Error base class Throw() method": a class forgot to override Throw.
class OXACORE_API ErrorSlicedOnThrow : public Warning {
 public:
  explicit ErrorSlicedOnThrow(const std::string& className);
  ~ErrorSlicedOnThrow() override;
};

}  // namespace Oxa::Core

#endif
