// The dump of a dying process: where it lies, and what there is to say about that.
#ifndef OXACORE_ERRORHANDLING_FATALDUMP_H
#define OXACORE_ERRORHANDLING_FATALDUMP_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

#include "ErrorHandling/FatalErrorPath.h"

namespace Oxa::Core {

/// The steps of the last filter ahead of the terminate handler's own, in two halves: first what needs neither the heap
/// nor a lock, since the fault may be in either; then the warnings that the first half owes, in the order of its steps.
/// Large: stands on a stack with room.
class FatalDump {
 public:
  FatalDump() = default;

  /// Counts this entry, finds the folder, puts the first words of the report there and writes the dump, unless there
  /// can be none. Ends within the time that a dump may take, but for one that another thread is writing, which is
  /// waited for as long again.
  void Write(const _EXCEPTION_POINTERS& pointers) noexcept;

  /// Raises what is owed. Whatever goes wrong with one warning, the others are raised.
  void Tell() const noexcept;

 private:
  enum EOutcome { eTRIED, eHALTED, eUNAVAILABLE };

  void FindFolder() noexcept;
  void ComposeName() noexcept;
  void WriteDump(const _EXCEPTION_POINTERS& pointers) noexcept;
  void TellOfDump() const;

  EOutcome m_eOutcome = eTRIED;
  int m_iEntries = 0;  ///< this one included
  int m_iCode = 0;     ///< the system's, if there is no dump
  FatalErrorFolder m_folder;
  FatalErrorName m_path;  ///< of the folder that is used
  FatalErrorName m_dump;
};

}  // namespace Oxa::Core

#endif
