// Names of types in call stacks, and which of them a call stack is spared.
#ifndef OXACORE_ERRORHANDLING_MICROSOFTDEBUGSYMBOLNAMES_H
#define OXACORE_ERRORHANDLING_MICROSOFTDEBUGSYMBOLNAMES_H

#include <string>

#include "Platform/Variables.h"

namespace MSWindows {

/// The name of a type; empty if the debug data doesn't tell it. It's kept with the type.
const std::string& TypeName(const Oxa::Core::Platform::TypeFacts& type);

/// Whether a variable or member is left out of a call stack: functions, string streams, the error system's own objects
/// and objects that nothing but the name is known of.
bool IsLeftOut(const std::string& name, const Oxa::Core::Platform::TypeFacts& type);

/// Whether it's a basic type that texts are made of.
bool IsCharacter(const Oxa::Core::Platform::TypeFacts* pType);

}  // namespace MSWindows

#endif
