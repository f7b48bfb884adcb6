// What a context tells of the moment besides its place.
#ifndef OXACORE_SYSTEM_CIRCUMSTANCES_H
#define OXACORE_SYSTEM_CIRCUMSTANCES_H

#include <Infrastructure/OxaCore/CodeContext.h>

namespace Oxa::Core {

/// Adds process, thread, operating system and host to the table of a context, each only if there is something
/// to tell. Adds nothing once the System object is gone.
void AddCircumstances(AlertData& context);

}  // namespace Oxa::Core

#endif
