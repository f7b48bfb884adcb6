// The folder that a dying process leaves its records in.
//
// One folder a process, named after the moment of the first death. It is found and made without the heap, so that
// the dump can go there first of all; the warnings that are owed for a fallback come when there is time for them.
#ifndef OXACORE_ERRORHANDLING_FATALERRORPATH_H
#define OXACORE_ERRORHANDLING_FATALERRORPATH_H

#include <cstddef>
#include <string>

#include "ErrorHandling/FatalErrorText.h"

namespace Oxa::Core {

/// More than the system takes for a name: one that doesn't fit fails there.
using FatalErrorName = FixedText<4096 + 128>;

/// What became of the attempt to make the folder.
struct FatalErrorFolder {
  enum EOutcome {
    eMADE,      ///< m_wanted is there
    eFALLBACK,  ///< m_fallback is there instead
    eNONE       ///< neither is
  };

  EOutcome m_eOutcome = eNONE;
  FatalErrorName m_wanted;    ///< below the base path; below the working folder while the library unloads
  FatalErrorName m_fallback;  ///< below the program's folder; empty while the library unloads
};

/// Sets the base path, which ends in a separator. One thread at a time.
void SetFatalErrorBase(const std::string& basePath) noexcept;

/// Makes the folder if it isn't there. Allocates nothing, raises nothing, waits for nobody. Any thread.
void MakeFatalErrorFolder(FatalErrorFolder& folder) noexcept;

/// Raises what is owed for `folder`, and gives its name; false if there is none.
bool TellFatalErrorFolder(const FatalErrorFolder& folder, std::string& path);

/// Both. The warnings come with each call.
bool CreateFatalErrorPath(std::string& path);

/// Makes all folders of `path`, which ends in a separator, that are missing, as PathName::CreateDirectoryA does; behind
/// a server those of the path itself, where that one makes others, as it loses the server. Allocates nothing.
bool MakeFoldersOf(const char* path) noexcept;

/// The working folder as an absolute path with a separator at its end; "./" if the system can't tell it. Allocates
/// nothing.
void WorkingFolder(FatalErrorName& path) noexcept;

}  // namespace Oxa::Core

#endif
