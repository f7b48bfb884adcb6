// What a context tells of the moment besides its place.
#ifndef OXACORE_SYSTEM_CIRCUMSTANCES_H
#define OXACORE_SYSTEM_CIRCUMSTANCES_H

#include <Infrastructure/OxaCore/CodeContext.h>

#include "ErrorHandling/Hooks.h"

namespace Oxa::Core {

/// Adds process, thread, operating system and host to the table of a context, each only if there is something
/// to tell. Adds nothing once the System object is gone.
void AddCircumstances(AlertData& context);

/// What AddCircumstances depends on; not there once the System object is gone.
CircumstancesMark MarkCircumstances();

/// To be called when the process or a thread has got another name, before anybody can be told that it has.
void ChangeCircumstances() noexcept;

}  // namespace Oxa::Core

#endif
