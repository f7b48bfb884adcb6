// What serialises the parses of the process.
#ifndef OXACORE_XML_XMLPARSEMUTEX_H
#define OXACORE_XML_XMLPARSEMUTEX_H

#include <Infrastructure/OxaCore/Lock.h>

#include "Core/Immortal.h"

namespace Oxa::Core {

/// Held for the length of a parse, and taken before any lock that a handler takes. Static objects of hosts, and
/// alerts, may still be written as XML after the library's own objects are gone.
extern Immortal<Mutex> g_xmlParseMutex;

}  // namespace Oxa::Core

#endif
